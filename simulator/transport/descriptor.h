#pragma once

namespace scnsim {

/// Owns a file descriptor; -1 is none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : m_number(other.release())
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

    /// Gives the descriptor away.
    int release();

private:
    int m_number = -1;
};

} // namespace scnsim
