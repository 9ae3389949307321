#include "visa/descriptortransport_posix.h"

#include <poll.h>

#include <cerrno>
#include <utility>

namespace scn::visa {
namespace {

/// Errors of a socket or a terminal whose other side has gone.
constexpr int kLossErrors[] = {EPIPE,     ECONNRESET,   ECONNABORTED, ENOTCONN, ESHUTDOWN,
                               ETIMEDOUT, EHOSTUNREACH, EHOSTDOWN,    ENETDOWN, ENETUNREACH,
                               ENETRESET, EIO,          ENXIO,        ENODEV};

Transport::State stateOfError(int error)
{
    if (error == EAGAIN || error == EWOULDBLOCK || error == EINTR) {
        return Transport::State::Nothing;
    }
    for (const int loss : kLossErrors) {
        if (error == loss) {
            return Transport::State::Lost;
        }
    }
    return Transport::State::Failed;
}

short eventsOf(Transport::Direction direction)
{
    switch (direction) {
    case Transport::Direction::Input:
        return POLLIN;
    case Transport::Direction::Output:
        return POLLOUT;
    case Transport::Direction::Neither:
        break;
    }
    return 0;
}

} // namespace

Transport::Wait waitForDescriptor(int descriptor, short events, int wakeDescriptor,
                                  const Deadline& deadline)
{
    // poll() ignores an entry with a negative descriptor.
    pollfd entries[2] = {{events == 0 ? -1 : descriptor, events, 0}, {wakeDescriptor, POLLIN, 0}};
    for (;;) {
        const auto timeoutMs = static_cast<int>(deadline.remaining().count());
        const int ready = ::poll(entries, 2, timeoutMs);
        if (ready < 0 && errno != EINTR) {
            return Transport::Wait::Failed;
        }
        if (ready > 0) {
            if (entries[1].revents != 0) {
                return Transport::Wait::Interrupted;
            }
            return (entries[0].revents & events) != 0 ? Transport::Wait::Ready
                                                      : Transport::Wait::HungUp;
        }
        if (deadline.passed()) {
            return Transport::Wait::TimedOut;
        }
    }
}

ViStatus statusOfOpenError(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return VI_ERROR_NPERMISSION;
    case EBUSY:
        return VI_ERROR_RSRC_BUSY;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
        return VI_ERROR_ALLOC;
    default:
        return VI_ERROR_RSRC_NFOUND;
    }
}

DescriptorTransport::DescriptorTransport(FileDescriptor descriptor, WakePipe wakePipe)
    : m_descriptor(std::move(descriptor))
    , m_wakePipe(std::move(wakePipe))
{
}

Transport::Wait DescriptorTransport::wait(Direction direction, const Deadline& deadline)
{
    return waitForDescriptor(m_descriptor.get(), eventsOf(direction), m_wakePipe.readEnd(),
                             deadline);
}

void DescriptorTransport::interrupt()
{
    m_wakePipe.wake();
}

Transport::Result DescriptorTransport::resultOfRead(long count)
{
    if (count > 0) {
        return {State::Moved, static_cast<std::size_t>(count)};
    }
    return {count == 0 ? State::Lost : stateOfError(errno), 0};
}

Transport::Result DescriptorTransport::resultOfWrite(long count)
{
    if (count > 0) {
        return {State::Moved, static_cast<std::size_t>(count)};
    }
    return {count == 0 ? State::Nothing : stateOfError(errno), 0};
}

} // namespace scn::visa
