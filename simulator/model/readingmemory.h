#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace scnsim {

/// Stands for a value beyond the range or an open input.
constexpr double kOverload = 9.9e37;

/// One reading as the memory holds it.
struct MemoryReading
{
    double value = 0;
    std::string unit;
    /// Time on the instrument's clock, in milliseconds since the start of 2000.
    std::int64_t stampMs = 0;
    /// Time since the start of the scan, in milliseconds.
    std::int64_t sinceStartMs = 0;
    int channel = 0;
    int alarm = 0;
};

/// The bounded reading memory. When it is full, the oldest reading goes.
class ReadingMemory
{
public:
    explicit ReadingMemory(std::size_t capacity)
        : m_capacity(capacity)
    {
    }

    void store(MemoryReading reading);

    /// Removes and returns up to this many of the oldest.
    std::vector<MemoryReading> take(std::size_t count);

    std::size_t count() const { return m_readings.size(); }
    void clear();

    /// True once after readings were lost; later losses are reported only after the memory has been
    /// read or cleared.
    bool takeLossNotice();

private:
    enum class Loss { Nothing, Unreported, Reported };

    std::size_t m_capacity;
    std::deque<MemoryReading> m_readings;
    Loss m_loss = Loss::Nothing;
};

} // namespace scnsim
