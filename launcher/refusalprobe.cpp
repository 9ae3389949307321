#include "launcher/refusalprobe.h"

#include "visa/resourcename.h"

namespace scnlauncher {

RefusalProbe::RefusalProbe(QObject* parent)
    : QObject(parent)
{
    connect(&m_socket, &QTcpSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError error) {
                if (error == QAbstractSocket::ConnectionRefusedError) {
                    emit refused();
                }
            });
    connect(&m_socket, &QTcpSocket::connected, &m_socket, &QTcpSocket::abort);
}

void RefusalProbe::start(const QString& resource)
{
    const auto name = scn::visa::parseResourceName(resource.trimmed().toStdString());
    if (name && name->kind == scn::visa::ResourceName::Kind::Socket) {
        m_socket.abort();
        m_socket.connectToHost(QString::fromStdString(name->host), name->port);
    }
}

} // namespace scnlauncher
