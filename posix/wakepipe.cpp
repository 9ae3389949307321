#include "posix/wakepipe.h"

#include <unistd.h>

#include <utility>

namespace scn {

WakePipe::WakePipe()
{
    int ends[2];
    if (::pipe(ends) != 0) {
        return;
    }
    FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    if (!readEnd.makeNonBlocking() || !writeEnd.makeNonBlocking()) {
        return;
    }
    m_readEnd = std::move(readEnd);
    m_writeEnd = std::move(writeEnd);
}

void WakePipe::wake()
{
    // A pipe that takes no more has been woken often enough, so the result does not matter.
    const char token = 0;
    const auto written = ::write(m_writeEnd.get(), &token, 1);
    static_cast<void>(written);
}

} // namespace scn
