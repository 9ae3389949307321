#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace scnsim {

/// What stands for a value that the range or the input does not allow.
constexpr double kOverload = 9.9e37;

/// One measured value as it lies in the memory.
struct Reading
{
    double value = 0;
    std::string unit;
    /// The instrument's clock, in milliseconds since the beginning of 2000.
    std::int64_t stampMs = 0;
    /// Milliseconds since the start of the scan.
    std::int64_t sinceStartMs = 0;
    int channel = 0;
    int alarm = 0;
};

/// The bounded memory of readings. When it is full, the oldest gives way.
class ReadingMemory
{
public:
    explicit ReadingMemory(std::size_t capacity)
        : m_capacity(capacity)
    {
    }

    void store(Reading reading);

    /// Removes and returns up to this many of the oldest.
    std::vector<Reading> take(std::size_t count);

    std::size_t count() const { return m_readings.size(); }
    void clear();

    /// True once after readings were lost: the first loss since the memory was last read or
    /// cleared tells, the following ones do not tell again.
    bool takeLossNotice();

private:
    enum class Loss { Nothing, Unreported, Reported };

    std::size_t m_capacity;
    std::deque<Reading> m_readings;
    Loss m_loss = Loss::Nothing;
};

} // namespace scnsim
