#include "app/standardinput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

namespace scn {

StandardInput::Status StandardInput::read(QByteArray& bytes, std::chrono::milliseconds patience)
{
    pollfd descriptors[] = {{STDIN_FILENO, POLLIN, 0}, {m_interruption.readEnd(), POLLIN, 0}};
    const int limit = m_interruption.isOpen() ? -1 : static_cast<int>(patience.count());
    const int ready = ::poll(descriptors, std::size(descriptors), limit);
    if (ready == 0 || (ready > 0 && descriptors[1].revents != 0) || (ready < 0 && errno == EINTR)) {
        return Status::Quiet;
    }
    if (ready < 0) {
        return Status::End;
    }

    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count > 0) {
        bytes = QByteArray(buffer, static_cast<int>(count));
        return Status::Data;
    }
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return Status::Quiet;
    }
    return Status::End;
}

} // namespace scn
