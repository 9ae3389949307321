#include "unit/visa/backgroundwork_posix.h"

#include <QByteArray>
#include <QFile>
#include <QTest>

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace {

constexpr int kPatienceMs = 5000;

/// The poll of the C library, which not every processor has as a system call of its own.
bool isPoll(long call)
{
#ifdef SYS_poll
    if (call == SYS_poll) {
        return true;
    }
#endif
    return call == SYS_ppoll;
}

} // namespace

bool isInPoll(pid_t thread)
{
    QFile file(QStringLiteral("/proc/self/task/%1/syscall").arg(thread));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    // "running", or the number of the call that blocks the thread and its arguments.
    bool isBlocked = false;
    const QByteArray line = file.readAll();
    const long call = line.left(line.indexOf(' ')).toLong(&isBlocked);
    return isBlocked && isPoll(call);
}

BackgroundWork::BackgroundWork(std::function<void()> work)
    : m_thread([this, work = std::move(work)] {
        m_id = ::gettid();
        work();
        m_isOver = true;
    })
{
}

bool BackgroundWork::waitUntilInPoll() const
{
    const auto isDecided = [this] { return m_isOver || (m_id != 0 && isInPoll(m_id)); };
    return QTest::qWaitFor(isDecided, kPatienceMs) && !m_isOver;
}

void BackgroundWork::signal(int number)
{
    ::pthread_kill(m_thread.native_handle(), number);
}

void BackgroundWork::join()
{
    if (m_thread.joinable()) {
        m_thread.join();
    }
}
