#pragma once

#include <QByteArray>

/// The process's standard input, read in pieces and never for longer than asked. One reader only.
class StandardInput
{
public:
    enum class Status {
        Data,  ///< bytes were read
        Quiet, ///< nothing came within the time
        End,   ///< the other side has closed, or the stream failed
    };

    /// Waits up to `timeoutMs` for input and stores what there is in `bytes`.
    /// Linux, macOS: poll() and read(). Another system needs its own source file behind this class
    /// (on Windows: PeekNamedPipe and ReadFile on the standard input handle).
    Status read(QByteArray& bytes, int timeoutMs);
};
