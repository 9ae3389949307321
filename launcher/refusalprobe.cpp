#include "launcher/refusalprobe.h"

#include <QRegularExpression>

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
    static const QRegularExpression form(QStringLiteral("^TCPIP\\d*::([^:]+)::(\\d+)::SOCKET$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(resource.trimmed());
    if (match.hasMatch()) {
        m_socket.abort();
        m_socket.connectToHost(match.captured(1), match.captured(2).toUShort());
    }
}

} // namespace scnlauncher
