#pragma once

#include "posix/wakepipe.h"

#include <QByteArray>

#include <chrono>

namespace scn {

/// Reads the process's standard input. One reader only.
/// Linux, macOS: poll() and read(). Another system needs its own class (on Windows: PeekNamedPipe and
/// ReadFile on the standard input handle).
class StandardInput
{
public:
    enum class Status {
        Data,  ///< bytes were read
        Quiet, ///< ended by interrupt(), or without one after `patience`
        End,   ///< the other side has closed it, or it failed
    };

    /// Waits for input and stores it in `bytes`. Without a descriptor for interrupt() it waits no longer
    /// than `patience`.
    Status read(QByteArray& bytes, std::chrono::milliseconds patience);

    /// Ends this and every later wait. Any thread.
    void interrupt() { m_interruption.wake(); }

private:
    WakePipe m_interruption;
};

} // namespace scn
