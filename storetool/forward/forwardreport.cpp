#include "storetool/forward/forwardreport.h"

#include <QTime>

#include <algorithm>
#include <utility>

namespace scnstore {

namespace {

using Seconds = std::chrono::duration<double>;

QString inSeconds(std::chrono::steady_clock::duration duration)
{
    return QString::number(Seconds(duration).count(), 'f', 1);
}

} // namespace

ForwardReport::ForwardReport(std::chrono::milliseconds interval, Say say)
    : m_interval(interval)
    , m_say(std::move(say))
{
}

void ForwardReport::say(const QString& text) const
{
    m_say(QTime::currentTime().toString(QStringLiteral("HH:mm:ss ")) + text);
}

void ForwardReport::noteStored(qint64 readings, qint64 newReadings, Clock::time_point waitingSince)
{
    m_readings += readings;
    m_readingsOfInterval += readings;
    m_newReadings += newReadings;
    m_longestLag = std::max(m_longestLag, Clock::now() - waitingSince);
}

void ForwardReport::noteNews(const QStringList& sentences)
{
    for (const QString& sentence : sentences) {
        say(sentence);
    }
}

void ForwardReport::noteFault(const QString& sentence)
{
    if (sentence != m_fault) {
        m_fault = sentence;
        say(sentence);
    }
}

void ForwardReport::noteServer()
{
    if (!std::exchange(m_fault, QString()).isEmpty()) {
        say(QStringLiteral("The server takes readings again."));
    }
}

void ForwardReport::noteFiles(FollowedFiles& files)
{
    const QStringList damaged = files.takeDamageNews();
    for (const QString& path : damaged) {
        say(QStringLiteral("%1 is damaged: what cannot be read in it is not forwarded.").arg(path));
    }
    noteNews(files.takeFaultNews());
    const int unusable = files.unusableReadings();
    if (unusable > m_unusable) {
        say(QStringLiteral("%1 readings have a time that the database does not know and are not "
                           "forwarded.")
                .arg(unusable - m_unusable));
        m_unusable = unusable;
    }
}

void ForwardReport::noteStart(const QStringList& emptyDirectories)
{
    if (std::exchange(m_hasStarted, true)) {
        return;
    }
    for (const QString& directory : emptyDirectories) {
        say(QStringLiteral("There is no run below %1.").arg(directory));
    }
}

void ForwardReport::tellIfDue(const FollowedFiles& files)
{
    const Clock::time_point now = Clock::now();
    const Clock::duration passed = now - m_intervalStart;
    if (passed < m_interval) {
        return;
    }
    if (const auto since = files.waitingSince()) {
        m_longestLag = std::max(m_longestLag, now - *since);
    }
    const double rate = static_cast<double>(m_readingsOfInterval) / Seconds(passed).count();
    say(QStringLiteral("%1 instruments, %2 files open: %3 readings/s, lag %4 s")
            .arg(files.instruments())
            .arg(files.open().size())
            .arg(rate, 0, 'f', 0)
            .arg(inSeconds(m_longestLag)));
    m_intervalStart = now;
    m_readingsOfInterval = 0;
    m_longestLag = {};
}

void ForwardReport::tellEnd()
{
    say(QStringLiteral("%1 readings forwarded in %2 s, %3 of them new to the database.")
            .arg(m_readings)
            .arg(inSeconds(Clock::now() - m_start))
            .arg(m_newReadings));
}

} // namespace scnstore
