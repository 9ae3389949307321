#pragma once

#include <QObject>
#include <QTcpSocket>

namespace scnlauncher {

/// Finds out why a network resource was not found: VISA has one status for a host that is not there and for
/// one that refuses the connection.
class RefusalProbe : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RefusalProbe)

public:
    explicit RefusalProbe(QObject* parent);

    /// Tries a connection to a TCPIP...::SOCKET resource; does nothing for others.
    void start(const QString& resource);

signals:
    /// The host is there, and nobody listens at the port.
    void refused();

private:
    QTcpSocket m_socket;
};

} // namespace scnlauncher
