#pragma once

#include "storetool/forward/followedfiles.h"

#include <QString>
#include <QtGlobal>

#include <chrono>
#include <functional>

namespace scnstore {

/// What the user is told while readings are forwarded: the rate and the lag once in an interval, and each
/// fault and its end.
class ForwardReport
{
public:
    using Clock = std::chrono::steady_clock;

    /// Takes a line.
    using Say = std::function<void(const QString&)>;

    ForwardReport(std::chrono::milliseconds interval, Say say);

    /// Readings went into the database; the oldest had waited since this moment.
    void noteStored(qint64 readings, qint64 newReadings, Clock::time_point waitingSince);

    /// Sentences that are told as they are.
    void noteNews(const QStringList& sentences);

    /// The server failed; the same fault is told once.
    void noteFault(const QString& sentence);
    void noteServer();

    void noteFiles(FollowedFiles& files);

    /// The first call tells which directories have no run: a mistyped one does not look like one without news.
    void noteStart(const QStringList& emptyDirectories);

    /// The line of the interval, if it is over.
    void tellIfDue(const FollowedFiles& files);

    /// The sum at the end.
    void tellEnd();

private:
    void say(const QString& text) const;

    const std::chrono::milliseconds m_interval;
    const Say m_say;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_intervalStart = m_start;
    Clock::duration m_longestLag{};
    qint64 m_readings = 0;
    qint64 m_readingsOfInterval = 0;
    qint64 m_newReadings = 0;
    int m_unusable = 0;
    bool m_hasStarted = false;
    QString m_fault;
};

} // namespace scnstore
