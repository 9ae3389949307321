#include "posix/filedescriptor.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <utility>

namespace scn {

FileDescriptor::~FileDescriptor()
{
    close();
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    if (this != &other) {
        close();
        m_descriptor = std::exchange(other.m_descriptor, -1);
    }
    return *this;
}

bool FileDescriptor::makeNonBlocking()
{
    const int flags = ::fcntl(m_descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(m_descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           ::fcntl(m_descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

void FileDescriptor::close() noexcept
{
    if (m_descriptor < 0) {
        return;
    }
    int state = PTHREAD_CANCEL_ENABLE;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    ::close(m_descriptor);
    ::pthread_setcancelstate(state, nullptr);
    m_descriptor = -1;
}

} // namespace scn
