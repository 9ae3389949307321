#pragma once

#include "model/calendar.h"
#include "model/instant.h"

#include <cstdint>

namespace scnsim {

/// The instrument's clock and calendar. It runs on from whatever it was set to.
class InstrumentClock
{
public:
    /// @param atPowerOn what it shows at instant 0
    explicit InstrumentClock(const DateTime& atPowerOn)
        : m_offsetMs(toMilliseconds(atPowerOn))
    {
    }

    /// The time shown, in milliseconds since the start of 2000.
    std::int64_t milliseconds(Instant now) const;

    DateTime read(Instant now) const { return fromMilliseconds(milliseconds(now)); }

    /// Sets the date and keeps the time of day. The date must be valid.
    void setDate(int year, int month, int day, Instant now);

    /// Sets the time of day and keeps the date. The time must be valid.
    void setTime(int hour, int minute, int second, int millisecond, Instant now);

    /// Jumps forward or back and runs on from there. It stops at the first or last time it can
    /// show.
    void jump(std::int64_t milliseconds, Instant now);

private:
    void set(const DateTime& time, Instant now);

    std::int64_t m_offsetMs;
};

} // namespace scnsim
