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

void setOption(int descriptor, int level, int option)
{
    const int on = 1;
    setsockopt(descriptor, level, option, &on, sizeof on);
}

} // namespace

bool TcpListener::listen(std::uint16_t port, std::string& error)
{
    scn::FileDescriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (listener.isOpen()) {
        setOption(listener.get(), SOL_SOCKET, SO_REUSEADDR);
    }
    if (!listener.isOpen() || bind(listener.get(), generic, size) != 0 ||
        ::listen(listener.get(), kBacklog) != 0 || !listener.makeNonBlocking() ||
        getsockname(listener.get(), generic, &size) != 0) {
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
        m_descriptor = scn::FileDescriptor();
    }
}

void TcpListener::reset(scn::FileDescriptor stream)
{
    const linger atOnce = {1, 0};
    setsockopt(stream.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

scn::FileDescriptor TcpListener::accept()
{
    scn::FileDescriptor stream(::accept(m_descriptor.get(), nullptr, nullptr));
    if (!stream.isOpen() || !stream.makeNonBlocking()) {
        return {};
    }
    setOption(stream.get(), IPPROTO_TCP, TCP_NODELAY);
    return stream;
}

} // namespace scnsim
