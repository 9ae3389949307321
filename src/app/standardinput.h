#pragma once

#include <QByteArray>

#include <chrono>

namespace scn {

/// Reads the process's standard input without blocking for longer than asked. One reader only.
class StandardInput
{
public:
    enum class Status {
        Data,  ///< bytes were read
        Quiet, ///< nothing arrived in time
        End,   ///< the other side has closed it, or it failed
    };

    /// Waits up to `patience` for input and stores it in `bytes`.
    /// Linux, macOS: poll() and read(). Another system needs its own source file behind this class
    /// (on Windows: PeekNamedPipe and ReadFile on the standard input handle).
    Status read(QByteArray& bytes, std::chrono::milliseconds patience);
};

} // namespace scn
