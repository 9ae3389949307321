#include "support/standardstreams_posix.h"

#include <QFile>
#include <QTest>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

namespace {

/// A duplicate descriptor of the stream, not inherited by child processes.
int duplicate(int descriptor)
{
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

} // namespace

CapturedOutput::CapturedOutput()
    : m_before(duplicate(STDOUT_FILENO))
{
    std::fflush(stdout);
    if (m_file.open()) {
        ::dup2(m_file.handle(), STDOUT_FILENO);
    }
}

CapturedOutput::~CapturedOutput()
{
    std::fflush(stdout);
    ::dup2(m_before, STDOUT_FILENO);
    ::close(m_before);
    if (QTest::currentTestFailed()) {
        // The failure's report was captured as well.
        const QByteArray caught = flushed();
        std::fwrite(caught.constData(), 1, static_cast<std::size_t>(caught.size()), stdout);
    }
}

QByteArray CapturedOutput::flushed()
{
    // Read through another handle: the object's own shares its position with the writer.
    QFile file(m_file.fileName());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray CapturedOutput::flushed(const QByteArray& expected)
{
    constexpr int kPatienceMs = 5000;
    const int watch = ::inotify_init1(IN_CLOEXEC);
    ::inotify_add_watch(watch, QFile::encodeName(m_file.fileName()).constData(), IN_MODIFY);
    pollfd entry{watch, POLLIN, 0};
    QByteArray bytes = flushed();
    while (bytes.size() < expected.size() && ::poll(&entry, 1, kPatienceMs) > 0) {
        inotify_event changes[16];
        if (::read(watch, changes, sizeof changes) <= 0) {
            break;
        }
        bytes = flushed();
    }
    ::close(watch);
    return bytes;
}

FedInput::FedInput()
    : m_before(duplicate(STDIN_FILENO))
{
    int ends[2];
    if (::pipe(ends) != 0) {
        return;
    }
    m_writeEnd = duplicate(ends[1]);
    ::dup2(ends[0], STDIN_FILENO);
    ::close(ends[0]);
    ::close(ends[1]);
}

FedInput::~FedInput()
{
    close();
    ::dup2(m_before, STDIN_FILENO);
    ::close(m_before);
}

void FedInput::write(const QByteArray& bytes)
{
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(m_writeEnd, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count <= 0) {
            return;
        }
        written += static_cast<int>(count);
    }
}

bool FedInput::isTaken() const
{
    int left = 0;
    return ::ioctl(STDIN_FILENO, FIONREAD, &left) == 0 && left == 0;
}

void FedInput::close()
{
    if (m_writeEnd >= 0) {
        ::close(m_writeEnd);
    }
    m_writeEnd = -1;
}

PipedOutput::PipedOutput()
    : m_before(duplicate(STDOUT_FILENO))
{
    std::fflush(stdout);
    int ends[2];
    if (::pipe(ends) != 0) {
        return;
    }
    m_readEnd = duplicate(ends[0]);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[0]);
    ::close(ends[1]);
}

PipedOutput::~PipedOutput()
{
    ::dup2(m_before, STDOUT_FILENO);
    ::close(m_before);
    ::close(m_readEnd);
}

QByteArray PipedOutput::read(int timeoutMs)
{
    QByteArray bytes;
    pollfd entry{m_readEnd, POLLIN, 0};
    while (::poll(&entry, 1, bytes.isEmpty() ? timeoutMs : 0) > 0) {
        char buffer[4096];
        const ssize_t count = ::read(m_readEnd, buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        bytes.append(buffer, static_cast<int>(count));
    }
    return bytes;
}

bool PipedOutput::isFull() const
{
    pollfd entry{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&entry, 1, 0) == 0;
}
