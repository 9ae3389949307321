#include "app/launcheroutput.h"

#include "app/standardoutput.h"

#include <QDebug>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace scn {
namespace {

constexpr int kMostEchoBytes = 1 << 20;

struct Line
{
    QByteArray bytes;
    bool mayBeDropped;
};

} // namespace

struct LauncherOutput::Shared
{
    explicit Shared(const LauncherTiming& outputTiming)
        : timing(outputTiming)
    {
    }

    const LauncherTiming timing;
    std::mutex mutex; ///< Guards everything but the flag; never held during a write.
    std::condition_variable changed;
    std::deque<Line> pending;
    int echoBytes = 0;
    bool isDropping = false; ///< Echoes were dropped since the queue was last empty.
    bool isEnding = false;
    bool hasEnded = false;
    std::atomic<bool> isAbandoned{false}; ///< The time allowed for the last lines is over.
};

LauncherOutput::LauncherOutput(const LauncherTiming& timing)
    : m_shared(std::make_shared<Shared>(timing))
{
}

LauncherOutput::~LauncherOutput()
{
    if (!m_thread.joinable()) {
        return;
    }
    std::unique_lock<std::mutex> lock(m_shared->mutex);
    const auto hasEnded = [this] { return m_shared->hasEnded; };
    m_shared->isEnding = true;
    m_shared->changed.notify_all();
    if (!m_shared->changed.wait_for(lock, m_shared->timing.farewell, hasEnded)) {
        m_shared->isAbandoned = true;
        m_shared->changed.wait_for(lock, m_shared->timing.lastLine, hasEnded);
    }
    const bool canJoin = m_shared->hasEnded;
    lock.unlock();
    if (canJoin) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void LauncherOutput::tell(const QByteArray& text)
{
    send(text, false);
}

void LauncherOutput::echo(const QByteArray& text)
{
    send(text, true);
}

void LauncherOutput::send(const QByteArray& text, bool mayBeDropped)
{
    bool beginsToDrop = false;
    {
        const std::lock_guard<std::mutex> lock(m_shared->mutex);
        std::deque<Line>& pending = m_shared->pending;
        if (m_shared->hasEnded) {
            return;
        }
        pending.push_back({text + '\n', mayBeDropped});
        if (mayBeDropped) {
            m_shared->echoBytes += pending.back().bytes.size();
        }
        while (m_shared->echoBytes > kMostEchoBytes) {
            const auto oldest = std::find_if(pending.begin(), pending.end(),
                                             [](const Line& line) { return line.mayBeDropped; });
            m_shared->echoBytes -= oldest->bytes.size();
            pending.erase(oldest);
            beginsToDrop = beginsToDrop || !m_shared->isDropping;
            m_shared->isDropping = true;
        }
        m_shared->changed.notify_all();
    }
    if (beginsToDrop) {
        qWarning() << "启动器未读取标准输出，最早的回复被丢弃";
    }
    if (!m_thread.joinable()) {
        m_thread = std::thread([shared = m_shared] { writeAll(*shared); });
    }
}

/// Body of the thread: writes line by line until the end or a failed write.
void LauncherOutput::writeAll(Shared& shared)
{
    std::unique_lock<std::mutex> lock(shared.mutex);
    for (bool goesOn = true; goesOn;) {
        shared.changed.wait(lock, [&shared] { return shared.isEnding || !shared.pending.empty(); });
        if (shared.pending.empty()) {
            break;
        }
        const Line line = shared.pending.front();
        shared.pending.pop_front();
        shared.echoBytes -= line.mayBeDropped ? line.bytes.size() : 0;
        lock.unlock();
        goesOn = writeLine(shared, line.bytes);
        lock.lock();
        shared.isDropping = shared.isDropping && !shared.pending.empty();
    }
    shared.pending.clear();
    shared.hasEnded = true;
    shared.changed.notify_all();
}

/// Returns false if the line could not be written.
bool LauncherOutput::writeLine(Shared& shared, const QByteArray& line)
{
    StandardOutput output;
    for (int done = 0; done < line.size();) {
        int written = 0;
        const auto status = output.write(line.constData() + done, line.size() - done,
                                         shared.timing.outputPoll, written);
        if (status == StandardOutput::Status::Gone ||
            (status == StandardOutput::Status::Busy && shared.isAbandoned)) {
            return false;
        }
        done += written;
    }
    return true;
}

} // namespace scn
