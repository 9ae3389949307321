#pragma once

/// The process's standard output, written in pieces and never waited for longer than asked. One
/// writer only.
class StandardOutput
{
public:
    enum class Status {
        Moved, ///< bytes were written
        Busy,  ///< the other side took none within the time
        Gone,  ///< the other side has closed, or the stream failed
    };

    /// Waits up to `timeoutMs` until the stream takes bytes, writes what fits and stores how much
    /// that was in `written`.
    /// Linux, macOS: poll() and write(). Another system needs its own source file behind this class
    /// (on Windows: WriteFile on the standard output handle, on the thread that alone writes there).
    Status write(const char* bytes, int size, int timeoutMs, int& written);
};
