#pragma once

#include <QByteArray>
#include <QString>

#include <netinet/in.h>

/// The instrument's end of a TCP connection, on a free port of 127.0.0.1.
class TcpPeer
{
public:
    TcpPeer();
    ~TcpPeer();
    TcpPeer(const TcpPeer&) = delete;
    TcpPeer& operator=(const TcpPeer&) = delete;

    QByteArray resource() const;

    /// Takes the connection that a client has made. False where none comes within 5 s.
    bool accept();

    /// All bytes are sent, or the peer is gone and false is returned.
    bool send(const QByteArray& bytes);

    /// Bytes that come in, at least as many as asked for; fewer where the time runs out (5 s) or
    /// the client has gone.
    QByteArray receive(int count);

    /// Ends the connection properly: the client sees an end of file.
    void close();
    /// Says that nothing more will come; the client may go on sending.
    void finishSending();
    /// Ends the connection with a reset.
    void reset();
    /// Nobody listens from now on.
    void stopListening();

    /// Shrinks the window, so that a client that writes much has to wait. Before the connection.
    void useSmallBuffers();

private:
    int m_listener = -1;
    int m_connection = -1;
    quint16 m_port = 0;
};

/// The instrument's end of a pseudo-terminal.
class PtyPeer
{
public:
    PtyPeer();
    ~PtyPeer();
    PtyPeer(const PtyPeer&) = delete;
    PtyPeer& operator=(const PtyPeer&) = delete;

    /// Path of the program's end.
    QByteArray device() const { return m_device; }
    QByteArray resource() const { return "ASRL" + m_device + "::INSTR"; }

    bool send(const QByteArray& bytes);
    QByteArray receive(int count);

    /// Hangs the line up.
    void close();

    /// The instrument's end, through which the settings of the line can be read.
    int descriptor() const { return m_master; }

private:
    int m_master = -1;
    QByteArray m_device;
};
