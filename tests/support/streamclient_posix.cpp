#include "support/streamclient_posix.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMs = 10000;

} // namespace

bool StreamClient::connectTo(quint16 port)
{
    close();
    m_descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return connect(m_descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

bool StreamClient::openDevice(const QString& path)
{
    close();
    m_descriptor = open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    return m_descriptor >= 0;
}

void StreamClient::close()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    m_descriptor = -1;
    m_received.clear();
}

bool StreamClient::send(const QByteArray& bytes)
{
    int sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            write(m_descriptor, bytes.constData() + sent, static_cast<size_t>(bytes.size() - sent));
        if (count <= 0) {
            return false;
        }
        sent += static_cast<int>(count);
    }
    return true;
}

QByteArray StreamClient::readLine()
{
    int end = m_received.indexOf('\n');
    while (end < 0) {
        pollfd waiting = {m_descriptor, POLLIN, 0};
        char bytes[65536];
        if (poll(&waiting, 1, kPatienceMs) <= 0) {
            return {};
        }
        const ssize_t count = read(m_descriptor, bytes, sizeof bytes);
        if (count <= 0) {
            return {};
        }
        m_received.append(bytes, static_cast<int>(count));
        end = m_received.indexOf('\n');
    }
    const QByteArray line = m_received.left(end);
    m_received.remove(0, end + 1);
    return line;
}

QByteArray StreamClient::ask(const QByteArray& line)
{
    return send(line + '\n') ? readLine() : QByteArray();
}

QByteArray StreamClient::readFor(int ms)
{
    QElapsedTimer timer;
    timer.start();
    QByteArray bytes = m_received;
    m_received.clear();
    pollfd waiting = {m_descriptor, POLLIN, 0};
    for (qint64 left = ms; left > 0; left = ms - timer.elapsed()) {
        char piece[65536];
        if (poll(&waiting, 1, static_cast<int>(left)) <= 0) {
            continue;
        }
        const ssize_t count = read(m_descriptor, piece, sizeof piece);
        if (count <= 0) {
            break;
        }
        bytes.append(piece, static_cast<int>(count));
    }
    return bytes;
}

bool StreamClient::waitForEnd()
{
    m_received.clear();
    pollfd waiting = {m_descriptor, POLLIN, 0};
    char bytes[65536];
    while (poll(&waiting, 1, kPatienceMs) > 0) {
        if (read(m_descriptor, bytes, sizeof bytes) <= 0) {
            return true;
        }
    }
    return false;
}
