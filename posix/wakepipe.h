#pragma once

#include "posix/filedescriptor.h"

namespace scn {

/// A pipe that wakes waiting threads: its reading end becomes readable with the first wake() and
/// stays so.
class WakePipe
{
public:
    WakePipe();

    /// False where the operating system had no descriptors left.
    bool isOpen() const { return m_readEnd.isOpen(); }
    int readEnd() const { return m_readEnd.get(); }
    void wake();

private:
    FileDescriptor m_readEnd;
    FileDescriptor m_writeEnd;
};

} // namespace scn
