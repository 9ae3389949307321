#include "model/calendar.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace scnsim {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kFirstYear = 2000;
constexpr int kLastYear = 2099;
/// The start of 2000 in the C library's time.
constexpr seconds kEpoch(946684800);

std::tm brokenDown(const DateTime& time)
{
    std::tm fields{};
    fields.tm_year = time.year - 1900;
    fields.tm_mon = time.month - 1;
    fields.tm_mday = time.day;
    fields.tm_hour = time.hour;
    fields.tm_min = time.minute;
    fields.tm_sec = time.second;
    return fields;
}

} // namespace

DateTime dateTime(const std::tm& fields, int millisecond)
{
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
            fields.tm_min,         fields.tm_sec,     millisecond};
}

bool isValidDate(int year, int month, int day)
{
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31) {
        return false;
    }
    // A day past the end of the month comes back in the next month.
    std::tm fields = brokenDown({year, month, day});
    timegm(&fields);
    return fields.tm_mon == month - 1;
}

std::int64_t toMilliseconds(const DateTime& time)
{
    std::tm fields = brokenDown(time);
    return milliseconds(seconds(timegm(&fields)) - kEpoch).count() + time.millisecond;
}

DateTime fromMilliseconds(std::int64_t sinceEpoch)
{
    const milliseconds time = milliseconds(sinceEpoch) + kEpoch;
    const seconds whole = std::chrono::floor<seconds>(time);
    const std::time_t wholeSeconds = whole.count();
    std::tm fields{};
    gmtime_r(&wholeSeconds, &fields);
    return dateTime(fields, static_cast<int>((time - whole).count()));
}

std::string timeStampText(const DateTime& time)
{
    char text[96];
    std::snprintf(text, sizeof text, "%04d,%02d,%02d,%02d,%02d,%02d.%03d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second, time.millisecond);
    return text;
}

} // namespace scnsim
