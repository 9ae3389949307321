#pragma once

#include <QByteArray>
#include <QString>

/// A client connection to the simulator: TCP or a serial device. Reading gives up after ten
/// seconds.
class StreamClient
{
public:
    StreamClient() = default;
    ~StreamClient() { close(); }
    StreamClient(const StreamClient&) = delete;
    StreamClient& operator=(const StreamClient&) = delete;

    bool connectTo(quint16 port);
    bool openDevice(const QString& path);
    void close();

    /// Sends all bytes.
    bool send(const QByteArray& bytes);

    /// The next line without its line feed; empty if none comes.
    QByteArray readLine();

    /// Sends a line and reads one.
    QByteArray ask(const QByteArray& line);

    /// All bytes that arrive within this many milliseconds.
    QByteArray readFor(int ms);

    /// Waits until the other side has closed the connection; discards what arrives before.
    bool waitForEnd();

private:
    int m_descriptor = -1;
    QByteArray m_received;
};
