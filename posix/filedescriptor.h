#pragma once

namespace scn {

/// Owns a file descriptor; -1 is none. A thread cannot be terminated while it closes one: that
/// happens in destructors, which must not be unwound.
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

} // namespace scn
