#include "transport/tcplistener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace scnsim {

namespace {

constexpr int kBacklog = 16;

bool makeNonBlocking(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

void setOption(int descriptor, int level, int option)
{
    const int on = 1;
    setsockopt(descriptor, level, option, &on, sizeof on);
}

} // namespace

bool TcpListener::listen(std::uint16_t port, std::string& error)
{
    Descriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (listener.isOpen()) {
        setOption(listener.number(), SOL_SOCKET, SO_REUSEADDR);
    }
    if (!listener.isOpen() || bind(listener.number(), generic, size) != 0 ||
        ::listen(listener.number(), kBacklog) != 0 || !makeNonBlocking(listener.number()) ||
        getsockname(listener.number(), generic, &size) != 0) {
        error = "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno);
        return false;
    }
    m_port = ntohs(address.sin_port);
    m_descriptor = std::move(listener);
    return true;
}

void TcpListener::setOpen(bool open)
{
    if (m_port == 0 || open == m_descriptor.isOpen()) {
        return;
    }
    if (open) {
        std::string ignored;
        listen(m_port, ignored);
    } else {
        m_descriptor = Descriptor();
    }
}

void TcpListener::reset(Descriptor stream)
{
    const linger atOnce = {1, 0};
    setsockopt(stream.number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

Descriptor TcpListener::accept()
{
    Descriptor stream(::accept(m_descriptor.number(), nullptr, nullptr));
    if (!stream.isOpen() || !makeNonBlocking(stream.number())) {
        return {};
    }
    setOption(stream.number(), IPPROTO_TCP, TCP_NODELAY);
    return stream;
}

} // namespace scnsim
