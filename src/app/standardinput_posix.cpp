#include "app/standardinput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace scn {

StandardInput::Status StandardInput::read(QByteArray& bytes, std::chrono::milliseconds patience)
{
    pollfd descriptor{STDIN_FILENO, POLLIN, 0};
    const int ready = ::poll(&descriptor, 1, static_cast<int>(patience.count()));
    if (ready == 0 || (ready < 0 && errno == EINTR)) {
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
