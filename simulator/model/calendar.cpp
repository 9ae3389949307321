#include "model/calendar.h"

#include <cstdio>

namespace scnsim {

namespace {

constexpr int kFirstYear = 2000;
constexpr int kLastYear = 2099;
constexpr std::int64_t kMsPerDay = 86400000;
constexpr int kMonthLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool isLeapYear(std::int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int monthLength(std::int64_t year, int month)
{
    return kMonthLengths[month - 1] + (month == 2 && isLeapYear(year) ? 1 : 0);
}

/// Leap days between the beginnings of 2000 and of a later year.
std::int64_t leapDaysBefore(std::int64_t year)
{
    const auto upTo = [](std::int64_t y) { return y / 4 - y / 100 + y / 400; };
    return upTo(year - 1) - upTo(kFirstYear - 1);
}

std::int64_t daysBeforeYear(std::int64_t year)
{
    return (year - kFirstYear) * 365 + leapDaysBefore(year);
}

} // namespace

bool isValidDate(int year, int month, int day)
{
    return year >= kFirstYear && year <= kLastYear && month >= 1 && month <= 12 && day >= 1 &&
           day <= monthLength(year, month);
}

bool isValidTime(int hour, int minute, int second, int millisecond)
{
    return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60 &&
           millisecond >= 0 && millisecond < 1000;
}

std::int64_t toMilliseconds(const DateTime& time)
{
    std::int64_t days = daysBeforeYear(time.year) + time.day - 1;
    for (int month = 1; month < time.month; ++month) {
        days += monthLength(time.year, month);
    }
    const std::int64_t seconds = (time.hour * 60 + time.minute) * 60 + time.second;
    return days * kMsPerDay + seconds * 1000 + time.millisecond;
}

DateTime fromMilliseconds(std::int64_t milliseconds)
{
    std::int64_t days = milliseconds / kMsPerDay;
    std::int64_t rest = milliseconds % kMsPerDay;
    if (rest < 0) {
        rest += kMsPerDay;
        --days;
    }
    std::int64_t year = kFirstYear + days / 366;
    while (daysBeforeYear(year + 1) <= days) {
        ++year;
    }
    while (daysBeforeYear(year) > days) {
        --year;
    }
    DateTime time;
    time.year = static_cast<int>(year);
    int dayOfYear = static_cast<int>(days - daysBeforeYear(year));
    while (dayOfYear >= monthLength(year, time.month)) {
        dayOfYear -= monthLength(year, time.month);
        ++time.month;
    }
    time.day = dayOfYear + 1;
    time.hour = static_cast<int>(rest / 3600000);
    time.minute = static_cast<int>(rest / 60000 % 60);
    time.second = static_cast<int>(rest / 1000 % 60);
    time.millisecond = static_cast<int>(rest % 1000);
    return time;
}

std::string timeStampText(const DateTime& time)
{
    char text[96];
    std::snprintf(text, sizeof text, "%04d,%02d,%02d,%02d,%02d,%02d.%03d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second, time.millisecond);
    return text;
}

} // namespace scnsim
