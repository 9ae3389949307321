#include "acquisition/recorddecoder.h"

#include <QDebug>
#include <QLocale>
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

/// Takes the spellings that QString::toInt() and QString::toDouble() take, and no group separators.
QLocale strictCLocale()
{
    QLocale locale = QLocale::c();
    locale.setNumberOptions(locale.numberOptions() | QLocale::RejectGroupSeparator);
    return locale;
}

const QLocale& numbers()
{
    static const QLocale locale = strictCLocale();
    return locale;
}

/// 0 for anything that is no int.
int toInt(QStringView text)
{
    return numbers().toInt(text);
}

/// 0 for anything that is no number.
double toDouble(QStringView text)
{
    return numbers().toDouble(text);
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
