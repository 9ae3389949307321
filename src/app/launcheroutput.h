#pragma once

#include "app/windowtiming.h"

#include <QByteArray>

#include <memory>
#include <thread>

namespace scn {

/// Writes lines for the launcher to standard output, in order, on a thread of its own: a launcher that
/// does not read blocks nothing else. Pending lines are kept, but echoes only up to 1 MiB, the oldest
/// being dropped first. After a failed write, such as to a launcher that is gone, all lines are dropped.
///
/// tell() and echo() are called from one thread.
class LauncherOutput
{
public:
    explicit LauncherOutput(const LauncherTiming& timing = {});

    /// Allows pending lines their time, half a second by default.
    ~LauncherOutput();
    LauncherOutput(const LauncherOutput&) = delete;
    LauncherOutput& operator=(const LauncherOutput&) = delete;

    /// Sends a line that the launcher needs; it is never dropped. The text has no line feed.
    void tell(const QByteArray& text);

    /// Sends a line that may be dropped if the launcher does not read.
    void echo(const QByteArray& text);

private:
    struct Shared;

    void send(const QByteArray& text, bool mayBeDropped);
    static void writeAll(Shared& shared);
    static bool writeLine(Shared& shared, const QByteArray& line);

    /// Shared with the thread, which outlives this object if it hangs in a write.
    std::shared_ptr<Shared> m_shared;
    std::thread m_thread; ///< Started by the first line.
};

} // namespace scn
