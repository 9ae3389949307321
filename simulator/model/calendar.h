#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace scnsim {

/// A date and time of day on the instrument's clock, which has no time zone and no summer time.
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

/// Converts the C library's broken-down time.
DateTime dateTime(const std::tm& fields, int millisecond);

/// Whether the date exists. The clock shows the years 2000 to 2099.
bool isValidDate(int year, int month, int day);

/// Milliseconds since the start of 2000, in the Gregorian calendar.
std::int64_t toMilliseconds(const DateTime& time);
DateTime fromMilliseconds(std::int64_t sinceEpoch);

/// "yyyy,mm,dd,hh,mm,ss.fff", the form of a reading's time stamp.
std::string timeStampText(const DateTime& time);

} // namespace scnsim
