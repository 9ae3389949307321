#include "unit/visa/peers_posix.h"

#include <QTest>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

namespace {

constexpr int kPatienceMs = 5000;

bool waitFor(int descriptor, short events)
{
    pollfd entry = {descriptor, events, 0};
    return ::poll(&entry, 1, kPatienceMs) == 1;
}

void closeDescriptor(int& descriptor)
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    descriptor = -1;
}

template <typename Read>
QByteArray receiveAll(int descriptor, int count, Read readSome)
{
    QByteArray bytes;
    while (bytes.size() < count && waitFor(descriptor, POLLIN)) {
        char chunk[65536];
        const ssize_t got = readSome(chunk, sizeof chunk);
        if (got <= 0) {
            break;
        }
        bytes.append(chunk, static_cast<int>(got));
    }
    return bytes;
}

} // namespace

TcpPeer::TcpPeer()
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::listen(m_listener, 4);
    socklen_t size = sizeof address;
    ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
    m_port = ntohs(address.sin_port);
}

TcpPeer::~TcpPeer()
{
    closeDescriptor(m_connection);
    closeDescriptor(m_listener);
}

QByteArray TcpPeer::resource() const
{
    return "TCPIP0::127.0.0.1::" + QByteArray::number(m_port) + "::SOCKET";
}

bool TcpPeer::accept()
{
    closeDescriptor(m_connection);
    if (!waitFor(m_listener, POLLIN)) {
        return false;
    }
    m_connection = ::accept(m_listener, nullptr, nullptr);
    const int on = 1;
    ::setsockopt(m_connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return m_connection >= 0;
}

bool TcpPeer::send(const QByteArray& bytes)
{
    int sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_connection, bytes.constData() + sent,
                                     static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += static_cast<int>(count);
    }
    return true;
}

bool TcpPeer::waitUntilArrived() const
{
    const auto isAcknowledged = [this] {
        int pending = -1;
        return ::ioctl(m_connection, SIOCOUTQ, &pending) == 0 && pending == 0;
    };
    return QTest::qWaitFor(isAcknowledged, kPatienceMs);
}

QByteArray TcpPeer::receive(int count)
{
    return receiveAll(m_connection, count, [this](char* chunk, std::size_t size) {
        return ::recv(m_connection, chunk, size, 0);
    });
}

void TcpPeer::close()
{
    closeDescriptor(m_connection);
}

bool TcpPeer::finishSending()
{
    ::shutdown(m_connection, SHUT_WR);
    const auto isAcknowledged = [this] {
        tcp_info info = {};
        socklen_t size = sizeof info;
        return ::getsockopt(m_connection, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 &&
               info.tcpi_state == TCP_FIN_WAIT2;
    };
    return QTest::qWaitFor(isAcknowledged, kPatienceMs);
}

void TcpPeer::reset()
{
    const linger abort = {1, 0};
    ::setsockopt(m_connection, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    closeDescriptor(m_connection);
}

void TcpPeer::stopListening()
{
    closeDescriptor(m_listener);
}

void TcpPeer::useSmallBuffers()
{
    const int size = 4096;
    ::setsockopt(m_listener, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

PtyPeer::PtyPeer()
{
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ::grantpt(m_master);
    ::unlockpt(m_master);
    m_device = ::ptsname(m_master);
}

PtyPeer::~PtyPeer()
{
    closeDescriptor(m_master);
}

bool PtyPeer::send(const QByteArray& bytes)
{
    int sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::write(m_master, bytes.constData() + sent,
                                      static_cast<std::size_t>(bytes.size() - sent));
        if (count <= 0) {
            return false;
        }
        sent += static_cast<int>(count);
    }
    return true;
}

bool PtyPeer::waitUntilArrived(int count) const
{
    int end = ::open(m_device.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto isWaiting = [end, count] {
        int pending = 0;
        return ::ioctl(end, FIONREAD, &pending) == 0 && pending == count;
    };
    const bool arrived = QTest::qWaitFor(isWaiting, kPatienceMs);
    closeDescriptor(end);
    return arrived;
}

QByteArray PtyPeer::receive(int count)
{
    return receiveAll(m_master, count, [this](char* chunk, std::size_t size) {
        return ::read(m_master, chunk, size);
    });
}

void PtyPeer::close()
{
    closeDescriptor(m_master);
}
