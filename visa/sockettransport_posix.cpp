#include "visa/sockettransport_posix.h"

#include "visa/hostlookup_posix.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace scn::visa {
namespace {

// Systems without the flag have a socket option instead.
#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;
#endif

void setFlag(int descriptor, int level, int option)
{
    const int on = 1;
    ::setsockopt(descriptor, level, option, &on, sizeof on);
}

/// Sends short commands at once, and keeps a closed connection from raising a signal.
void setOptions(int descriptor)
{
    setFlag(descriptor, IPPROTO_TCP, TCP_NODELAY);
#ifdef SO_NOSIGPIPE
    setFlag(descriptor, SOL_SOCKET, SO_NOSIGPIPE);
#endif
}

ViStatus statusOfConnectError(int error)
{
    switch (error) {
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
        return VI_ERROR_ALLOC;
    case EACCES:
    case EPERM:
        return VI_ERROR_NPERMISSION;
    case ETIMEDOUT:
        return VI_ERROR_TMO;
    default:
        return VI_ERROR_RSRC_NFOUND;
    }
}

/// Waits until a connect that has begun succeeds or fails.
ViStatus finishConnect(int descriptor, const Deadline& deadline)
{
    switch (waitForDescriptor(descriptor, POLLOUT, -1, deadline)) {
    case Transport::Wait::TimedOut:
        return VI_ERROR_TMO;
    case Transport::Wait::Failed:
        return VI_ERROR_SYSTEM_ERROR;
    default:
        break;
    }
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
        return VI_ERROR_SYSTEM_ERROR;
    }
    return error == 0 ? VI_SUCCESS : statusOfConnectError(error);
}

ViStatus connectTo(const SocketAddress& address, const Deadline& deadline, FileDescriptor& socket)
{
    socket = FileDescriptor(::socket(address.family, SOCK_STREAM, 0));
    if (!socket.isOpen()) {
        return statusOfConnectError(errno);
    }
    if (!socket.makeNonBlocking()) {
        return VI_ERROR_SYSTEM_ERROR;
    }
    setOptions(socket.get());
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address.storage),
                  address.size) == 0) {
        return VI_SUCCESS;
    }
    // A connect interrupted by a signal continues by itself.
    if (errno != EINPROGRESS && errno != EINTR) {
        return statusOfConnectError(errno);
    }
    return finishConnect(socket.get(), deadline);
}

} // namespace

Transport::Result SocketTransport::readSome(char* buffer, std::size_t size)
{
    return resultOfRead(::recv(descriptor(), buffer, size, 0));
}

Transport::Result SocketTransport::writeSome(const char* bytes, std::size_t size)
{
    return resultOfWrite(::send(descriptor(), bytes, size, kSendFlags));
}

ViStatus SocketTransport::setSerialAttribute(ViAttr, ViAttrState)
{
    return VI_ERROR_NSUP_ATTR;
}

OpenedTransport openSocket(const std::string& host, std::uint16_t port, const Deadline& deadline)
{
    WakePipe wakePipe;
    if (!wakePipe.isOpen()) {
        return {VI_ERROR_ALLOC, nullptr};
    }
    const HostLookup lookup = lookUpHost(host, port, deadline);
    ViStatus status = lookup.status;
    for (const SocketAddress& address : lookup.addresses) {
        FileDescriptor socket;
        status = connectTo(address, deadline, socket);
        if (status == VI_SUCCESS) {
            return {VI_SUCCESS,
                    std::make_unique<SocketTransport>(std::move(socket), std::move(wakePipe))};
        }
    }
    return {status, nullptr};
}

} // namespace scn::visa
