#include "app/standardstreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

void scn::openMissingStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // A new descriptor gets the lowest free number: all below are open by now.
        if (::fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
            static_cast<void>(::open("/dev/null", O_RDWR));
        }
    }
}
