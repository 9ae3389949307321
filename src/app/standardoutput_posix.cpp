#include "app/standardoutput.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace scn {

StandardOutput::Status StandardOutput::write(const char* bytes, int size,
                                             std::chrono::milliseconds patience, int& written)
{
    written = 0;
    pollfd descriptor{STDOUT_FILENO, POLLOUT, 0};
    const int ready = ::poll(&descriptor, 1, static_cast<int>(patience.count()));
    if (ready == 0 || (ready < 0 && errno == EINTR)) {
        return Status::Busy;
    }
    if (ready < 0) {
        return Status::Gone;
    }

    // A ready pipe takes this much without blocking. The stream must not be made non-blocking: the
    // launcher may share it.
    const auto piece = static_cast<std::size_t>(std::min(size, PIPE_BUF));
    const ssize_t count = ::write(STDOUT_FILENO, bytes, piece);
    if (count > 0) {
        written = static_cast<int>(count);
        return Status::Moved;
    }
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return Status::Busy;
    }
    return Status::Gone;
}

} // namespace scn
