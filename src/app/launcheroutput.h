#pragma once

#include <QByteArray>

#include <memory>
#include <thread>

/// The lines for the launcher. A thread of its own writes them to standard output, in order, so that
/// a launcher that does not read holds up nobody else. What it has not taken yet is kept; of the
/// echoes at most 1 MiB, and the oldest are dropped first. Once a write has failed, as to a launcher
/// that has gone, lines are dropped.
///
/// tell() and echo() are for one thread.
class LauncherOutput
{
public:
    LauncherOutput();

    /// Gives the lines that are left half a second.
    ~LauncherOutput();
    LauncherOutput(const LauncherOutput&) = delete;
    LauncherOutput& operator=(const LauncherOutput&) = delete;

    /// Sends a line that the launcher cannot do without: it is never dropped. The text comes without
    /// its line feed.
    void tell(const QByteArray& text);

    /// Sends a line that may be dropped when the launcher does not read.
    void echo(const QByteArray& text);

private:
    struct Shared;

    void send(const QByteArray& text, bool mayBeDropped);
    static void writeAll(Shared& shared);
    static bool writeLine(Shared& shared, const QByteArray& line);

    /// Shared with the thread: one that hangs in a write outlives this object.
    std::shared_ptr<Shared> m_shared;
    std::thread m_thread; ///< Started by the first line.
};
