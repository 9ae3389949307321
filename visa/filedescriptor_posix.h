#pragma once

/// Owner of a file descriptor. Closing is kept from being a place where a thread can be
/// terminated: it happens in destructors, which must not be unwound.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }

    /// Makes reading and writing return at once, and keeps the descriptor out of child processes.
    /// False when the operating system refuses.
    bool makeNonBlocking();

private:
    void close() noexcept;

    int m_descriptor = -1;
};

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
