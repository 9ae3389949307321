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

/// Approximate length of a record on the wire; only reserves space for the batch.
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
int wholeNumber(QStringView text)
{
    return numbers().toInt(text);
}

/// 0 for anything that is no number.
double number(QStringView text)
{
    return numbers().toDouble(text);
}

/// Takes seconds as "s" or "s.fff": the fraction is padded with zeros, or cut, to three characters.
/// A second point ends it.
QTime timeOfDay(int hour, int minute, QStringView seconds)
{
    const auto point = seconds.indexOf(QLatin1Char('.'));
    if (point < 0) {
        return QTime(hour, minute, wholeNumber(seconds));
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
    return QTime(hour, minute, wholeNumber(seconds.left(point)),
                 wholeNumber(QStringView(fraction.data(), kMillisecondDigits)));
}

/// Results that the next record mostly needs again.
struct LastFound
{
    QString unit;

    /// A minute that occurs only once in local time.
    QDate date;
    int minuteOfDay = -1;
};

/// By how many seconds clocks are set back: nearly everywhere by an hour.
constexpr std::array<qint64, 3> kClockSetBacks = {3600, 1800, 7200};

/// The first of two moments with the same local time, as after a clock is set back. Which one the C
/// library picks depends on its earlier conversions on any thread, so readings would jump back and
/// forth. Summer time does not tell them apart: some zones declare their winter as such. Where
/// neither is, as when a country changes its zone, QDateTime cannot hold the choice.
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

/// The unit's text, shared with the previous record if it is the same.
QString sharedUnit(QStringView text, LastFound& last)
{
    if (text != last.unit) {
        last.unit = text.toString();
    }
    return last.unit;
}

void readFields(const RecordFields& fields, LastFound& last, MeasurementData& record)
{
    // Trimmed, so a blank always has text on both sides.
    const QStringView reading = fields[ReadingField].trimmed();
    const auto blank = reading.lastIndexOf(QLatin1Char(' '));
    if (blank < 0) {
        qWarning() << "Invalid voltage format:" << fields[ReadingField];
        return;
    }
    record.value = number(reading.left(blank));
    record.unit = sharedUnit(reading.mid(blank + 1), last);

    const QDate date(wholeNumber(fields[YearField]), wholeNumber(fields[MonthField]),
                     wholeNumber(fields[DayField]));
    const QTime time = timeOfDay(wholeNumber(fields[HourField]), wholeNumber(fields[MinuteField]),
                                 fields[SecondsField]);
    // QDateTime would silently turn an invalid time into midnight.
    const QDateTime moment = time.isValid() ? firstMoment(date, time, last) : QDateTime();
    if (!moment.isValid()) {
        qWarning() << "无效的日期时间格式";
        return;
    }
    record.time = moment;
    record.channel = wholeNumber(fields[ChannelField]);
    record.alarm = wholeNumber(fields[AlarmField]);
    record.valid = true;
}

MeasurementData decodeFields(const RecordFields& fields, LastFound& last)
{
    MeasurementData record;
    // Not all exceptions: a terminated thread unwinds by one of its own, which must pass.
    try {
        readFields(fields, last, record);
    } catch (const std::exception&) {
        qWarning() << "解析数据时发生错误";
    }
    return record;
}

/// Length of the block header in front of the records. It ends after ten digits or before the first
/// character that is not a digit: the sign of the first value.
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
