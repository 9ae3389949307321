#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace scnsim {

/// A broken-down time of the instrument's own clock. It knows no zone and no summer time.
struct DateTime
{
    int year = 2000;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// The C library's fields as a time of ours.
DateTime dateTime(const std::tm& fields, int millisecond);

/// Whether the date exists and the time of day lies within a day. Years are those that the clock
/// can show, 2000 to 2099.
bool isValidDate(int year, int month, int day);
bool isValidTime(int hour, int minute, int second, int millisecond);

/// Milliseconds since the beginning of the year 2000, by the Gregorian calendar.
std::int64_t toMilliseconds(const DateTime& time);
DateTime fromMilliseconds(std::int64_t sinceEpoch);

/// "yyyy,mm,dd,hh,mm,ss.fff", the form of a time stamp in a reading.
std::string timeStampText(const DateTime& time);

} // namespace scnsim
