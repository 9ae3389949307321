#include "acquisition/recorddecoder.h"

#include <QDebug>
#include <QStringView>

#include <algorithm>
#include <array>
#include <exception>

namespace {

using RecordFields = std::array<QStringView, kRecordFieldCount>;

enum FieldIndex {
    ReadingField,
    YearField,
    MonthField,
    DayField,
    HourField,
    MinuteField,
    SecondsField,
    ChannelField,
    AlarmField
};

constexpr int kMaxHeaderDigits = 10;
constexpr int kMillisecondDigits = 3;

/// A record on the wire is about this long; it sizes the batch, nothing depends on it.
constexpr int kTypicalRecordLength = 48;

bool isAsciiDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isSign(QChar c)
{
    return c == QLatin1Char('+') || c == QLatin1Char('-');
}

/// Qt's own parsers serve for every spelling that the quick paths below leave alone; a view has none.
QString borrowed(QStringView text)
{
    return QString::fromRawData(text.data(), static_cast<int>(text.size()));
}

/// As QString::toInt(), base 10: 0 for anything that is no int.
int toInt(QStringView text)
{
    // Nine digits always fit.
    constexpr int kMaxQuickDigits = 9;
    const bool isSigned = !text.isEmpty() && isSign(text.front());
    const QStringView digits = isSigned ? text.mid(1) : text;
    if (digits.isEmpty() || digits.size() > kMaxQuickDigits) {
        return borrowed(text).toInt();
    }
    int magnitude = 0;
    for (const QChar c : digits) {
        if (!isAsciiDigit(c)) {
            return borrowed(text).toInt();
        }
        magnitude = magnitude * 10 + (c.unicode() - '0');
    }
    return isSigned && text.front() == QLatin1Char('-') ? -magnitude : magnitude;
}

/// Reads digits from `position` on into `number` and returns how many there were.
int takeDigits(QStringView text, int& position, quint64& number)
{
    const int begin = position;
    while (position < text.size() && isAsciiDigit(text[position])) {
        number = number * 10 + (text[position].unicode() - quint64{'0'});
        ++position;
    }
    return position - begin;
}

/// The exponent part of a number from `position` to the end of the text; false, and no exponent, when
/// it is no such or of more digits than a double can use.
bool takeExponent(QStringView text, int& position, int& exponent)
{
    const QChar mark = text[position];
    if (mark != QLatin1Char('e') && mark != QLatin1Char('E')) {
        return false;
    }
    ++position;
    const bool negative = position < text.size() && text[position] == QLatin1Char('-');
    if (position < text.size() && isSign(text[position])) {
        ++position;
    }
    constexpr int kMaxExponentDigits = 3;
    quint64 magnitude = 0;
    const int digits = takeDigits(text, position, magnitude);
    if (digits == 0 || digits > kMaxExponentDigits || position != text.size()) {
        return false;
    }
    exponent = negative ? -static_cast<int>(magnitude) : static_cast<int>(magnitude);
    return true;
}

/// As QString::toDouble(): 0 for anything that is no number. A mantissa below 2^53 and a power of ten
/// up to 10^22 are exact doubles, so that one multiplication or division of them rounds correctly.
double toDouble(QStringView text)
{
    constexpr std::array<double, 23> powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                    1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int kMaxExactDigits = 15;
    constexpr int kMaxQuickLength = 24;
    if (text.isEmpty() || text.size() > kMaxQuickLength) {
        return borrowed(text).toDouble();
    }
    int position = isSign(text.front()) ? 1 : 0;
    quint64 mantissa = 0;
    const int wholeDigits = takeDigits(text, position, mantissa);
    int fractionDigits = 0;
    if (position < text.size() && text[position] == QLatin1Char('.')) {
        ++position;
        fractionDigits = takeDigits(text, position, mantissa);
    }
    int exponent = 0;
    const bool wellFormed = wholeDigits > 0 && wholeDigits + fractionDigits <= kMaxExactDigits &&
                            (position == text.size() || takeExponent(text, position, exponent));
    exponent -= fractionDigits;
    const auto power = static_cast<std::size_t>(exponent < 0 ? -exponent : exponent);
    if (!wellFormed || power >= powersOfTen.size()) {
        return borrowed(text).toDouble();
    }
    const auto exact = static_cast<double>(mantissa);
    const double magnitude = exponent < 0 ? exact / powersOfTen[power] : exact * powersOfTen[power];
    return text.front() == QLatin1Char('-') ? -magnitude : magnitude;
}

/// Seconds and milliseconds from "s" or "s.fff": the fraction is filled with zeros, or cut, to three
/// characters. What follows a second point is ignored.
QTime timeOfDay(int hour, int minute, QStringView seconds)
{
    const auto point = seconds.indexOf(QLatin1Char('.'));
    if (point < 0) {
        return QTime(hour, minute, toInt(seconds));
    }
    std::array<QChar, kMillisecondDigits> fraction;
    fraction.fill(QLatin1Char('0'));
    auto source = point + 1;
    for (QChar& c : fraction) {
        if (source >= seconds.size() || seconds[source] == QLatin1Char('.')) {
            break;
        }
        c = seconds[source];
        ++source;
    }
    return QTime(hour, minute, toInt(seconds.left(point)),
                 toInt(QStringView(fraction.data(), kMillisecondDigits)));
}

/// What a record finds out that the next one mostly needs again.
struct LastFound
{
    QString unit;

    /// A minute that the local clock shows only once.
    QDate date;
    int minuteOfDay = -1;
};

/// By how much, in seconds, clocks are put back: nearly everywhere by an hour.
constexpr std::array<qint64, 3> kClockSetBacks = {3600, 1800, 7200};

/// Of two moments that a clock put back shows alike, the first. Which of them the C library takes
/// depends on what any thread had it convert before, so that readings would jump to and fro. That one
/// of the two is summer time says nothing: some zones count their winter as that. Where none is, as
/// when a country moves to another zone, the result cannot hold the choice.
QDateTime firstMoment(const QDate& date, const QTime& time, LastFound& last)
{
    constexpr int kMsPerMinute = 60 * 1000;
    const QDateTime moment(date, time, Qt::LocalTime);
    const int minuteOfDay = time.msecsSinceStartOfDay() / kMsPerMinute;
    const bool isUnique = date == last.date && minuteOfDay == last.minuteOfDay;
    if (isUnique || !moment.isValid()) {
        return moment;
    }
    for (const qint64 seconds : kClockSetBacks) {
        const QDateTime earlier = moment.addSecs(-seconds);
        if (earlier.time() == time) {
            return earlier;
        }
    }
    last.date = date;
    last.minuteOfDay = minuteOfDay;
    return moment;
}

/// The unit's text, shared with the record before where it is the same.
QString sharedUnit(QStringView text, LastFound& last)
{
    if (text != last.unit) {
        last.unit = text.toString();
    }
    return last.unit;
}

void readFields(const RecordFields& fields, LastFound& last, MeasurementData& record)
{
    // Trimmed, so that a blank has text on both sides.
    const QStringView reading = fields[ReadingField].trimmed();
    const auto blank = reading.lastIndexOf(QLatin1Char(' '));
    if (blank < 0) {
        qWarning() << "Invalid voltage format:" << fields[ReadingField];
        return;
    }
    record.value = toDouble(reading.left(blank));
    record.unit = sharedUnit(reading.mid(blank + 1), last);

    const QDate date(toInt(fields[YearField]), toInt(fields[MonthField]), toInt(fields[DayField]));
    const QTime time =
        timeOfDay(toInt(fields[HourField]), toInt(fields[MinuteField]), fields[SecondsField]);
    // An invalid time would silently count as midnight, so it is looked at by itself.
    const QDateTime moment = time.isValid() ? firstMoment(date, time, last) : QDateTime();
    if (!moment.isValid()) {
        qWarning() << "无效的日期时间格式";
        return;
    }
    record.time = moment;
    record.channel = toInt(fields[ChannelField]);
    record.alarm = toInt(fields[AlarmField]);
    record.valid = true;
}

MeasurementData decodeFields(const RecordFields& fields, LastFound& last)
{
    MeasurementData record;
    // Not every exception: a terminated thread unwinds by one of its own, which must pass through.
    try {
        readFields(fields, last, record);
    } catch (const std::exception&) {
        qWarning() << "解析数据时发生错误";
    }
    return record;
}

/// Length of the block header in front of the records. It ends after ten digits or at the first
/// character that is no digit, which is the first value's sign.
qsizetype headerLength(QStringView reply)
{
    if (reply.isEmpty() || reply.front() != QLatin1Char('#')) {
        return 0;
    }
    qsizetype end = 1;
    while (end < reply.size() && end <= kMaxHeaderDigits && reply[end].isDigit()) {
        ++end;
    }
    return end > 1 ? end : 0;
}

} // namespace

QList<MeasurementData> decodeResponse(const QString& reply)
{
    QList<MeasurementData> batch;
    batch.reserve(reply.size() / kTypicalRecordLength);

    RecordFields fields;
    std::size_t filled = 0;
    LastFound last;
    const QStringView text(reply);
    qsizetype begin = headerLength(text);
    while (begin < text.size()) {
        qsizetype end = begin;
        while (end < text.size() && text[end] != QLatin1Char(',')) {
            ++end;
        }
        if (end > begin) {
            fields[filled++] = text.mid(begin, end - begin);
        }
        begin = end + 1;
        if (filled < fields.size()) {
            continue;
        }
        filled = 0;
        const MeasurementData record = decodeFields(fields, last);
        if (record.valid) {
            batch.append(record);
        } else {
            qWarning() << "无效的数据记录，跳过解析";
        }
    }
    if (filled != 0) {
        qWarning() << "存在不完整的数据记录，已忽略";
    }
    return batch;
}

MeasurementData decodeRecord(const QStringList& fields)
{
    if (fields.size() != kRecordFieldCount) {
        qWarning() << "字段数量不正确，预期9个，实际" << fields.size() << "个";
        return {};
    }
    RecordFields views;
    std::copy(fields.cbegin(), fields.cend(), views.begin());
    LastFound last;
    return decodeFields(views, last);
}
