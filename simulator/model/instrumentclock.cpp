#include "model/instrumentclock.h"

#include <algorithm>

namespace scnsim {

namespace {

std::int64_t wholeMilliseconds(Instant now)
{
    return std::chrono::floor<std::chrono::milliseconds>(now).count();
}

} // namespace

std::int64_t InstrumentClock::milliseconds(Instant now) const
{
    return m_offsetMs + wholeMilliseconds(now);
}

void InstrumentClock::setDate(int year, int month, int day, Instant now)
{
    DateTime time = read(now);
    time.year = year;
    time.month = month;
    time.day = day;
    set(time, now);
}

void InstrumentClock::setTime(int hour, int minute, int second, int millisecond, Instant now)
{
    DateTime time = read(now);
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    time.millisecond = millisecond;
    set(time, now);
}

void InstrumentClock::jump(std::int64_t milliseconds, Instant now)
{
    const std::int64_t last = toMilliseconds({2099, 12, 31, 23, 59, 59, 999});
    const std::int64_t wanted = this->milliseconds(now) + milliseconds;
    m_offsetMs = std::clamp<std::int64_t>(wanted, 0, last) - wholeMilliseconds(now);
}

void InstrumentClock::set(const DateTime& time, Instant now)
{
    m_offsetMs = toMilliseconds(time) - wholeMilliseconds(now);
}

} // namespace scnsim
