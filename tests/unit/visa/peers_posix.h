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

    /// Accepts a client's connection. False if none arrives within 5 s.
    bool accept();

    /// Sends all bytes; false if the peer is gone.
    bool send(const QByteArray& bytes);

    /// Returns once everything sent has reached the client's side of the connection; false if it
    /// does not within 5 s.
    bool waitUntilArrived() const;

    /// Received bytes, at least as many as requested; fewer if the time runs out (5 s) or the
    /// client is gone.
    QByteArray receive(int count);

    /// Closes the connection: the client sees an end of file.
    void close();
    /// Shuts down sending and returns once the client's side knows; false if it does not within
    /// 5 s. The client may go on sending.
    bool finishSending();
    /// Closes the connection with a reset.
    void reset();
    /// Stops listening.
    void stopListening();

    /// Shrinks the receive window, so that a client that writes much has to wait. Call before
    /// connecting.
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

    /// Returns once this many bytes wait at the program's end; false if they do not within 5 s.
    bool waitUntilArrived(int count) const;

    QByteArray receive(int count);

    /// Hangs up the line.
    void close();

    /// The instrument's end, which also shows the line's settings.
    int descriptor() const { return m_master; }

private:
    int m_master = -1;
    QByteArray m_device;
};
