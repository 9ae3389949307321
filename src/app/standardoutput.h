#pragma once

#include <chrono>

namespace scn {

/// Writes to the process's standard output without blocking for longer than asked. One writer only.
class StandardOutput
{
public:
    enum class Status {
        Moved, ///< bytes were written
        Busy,  ///< the other side took nothing in time
        Gone,  ///< the other side has closed it, or it failed
    };

    /// Waits up to `patience` until the stream accepts bytes, writes as many as fit and stores their number
    /// in `written`.
    /// Linux, macOS: poll() and write(). Another system needs its own source file behind this class
    /// (on Windows: WriteFile on the standard output handle, on the only thread that writes there).
    Status write(const char* bytes, int size, std::chrono::milliseconds patience, int& written);
};

} // namespace scn
