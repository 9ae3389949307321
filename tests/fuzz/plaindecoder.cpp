#include "plaindecoder.h"

#include "check.h"
#include "timezones.h"

#include <QDebug>
#include <QRegExp>

#include <cstring>
#include <optional>

namespace {

/// Outside these years Qt uses rules of its own instead of the C library's.
constexpr int kFirstExactYear = 1971;
constexpr int kLastExactYear = 2036;

bool isExactYear(int year)
{
    return year >= kFirstExactYear && year <= kLastExactYear;
}

QString formatWarning(const QString& field)
{
    QString line;
    QDebug(&line) << "Invalid voltage format:" << field;
    return line.trimmed();
}

QTime plainTime(const QStringList& fields)
{
    const QStringList seconds = fields[6].split(QLatin1Char('.'));
    int milliseconds = 0;
    if (seconds.size() > 1) {
        milliseconds = seconds[1].leftJustified(3, QLatin1Char('0'), true).toInt();
    }
    return QTime(fields[4].toInt(), fields[5].toInt(), seconds[0].toInt(), milliseconds);
}

/// Null if the fields are not a moment of local time.
QDateTime plainMoment(const QStringList& fields)
{
    const QDate date(fields[1].toInt(), fields[2].toInt(), fields[3].toInt());
    const QTime time = plainTime(fields);
    if (!date.isValid() || !time.isValid()) {
        return QDateTime();
    }
    if (isExactYear(date.year())) {
        const std::optional<qint64> moment = firstMomentOf(date, time);
        return moment ? QDateTime::fromMSecsSinceEpoch(*moment) : QDateTime();
    }
    const QDateTime moment(date, time);
    return moment.isValid() ? moment : QDateTime();
}

} // namespace

MeasurementData plainRecord(const QStringList& fields, QStringList& warnings)
{
    MeasurementData record;
    if (fields.size() != 9) {
        QString line;
        QDebug(&line) << "字段数量不正确，预期9个，实际" << fields.size() << "个";
        warnings << line.trimmed();
        return record;
    }
    const QString reading = fields[0].trimmed();
    const int blank = reading.lastIndexOf(QLatin1Char(' '));
    if (blank <= 0 || blank == reading.size() - 1) {
        warnings << formatWarning(fields[0]);
        return record;
    }
    record.value = reading.left(blank).toDouble();
    record.unit = reading.mid(blank + 1);
    const QDateTime moment = plainMoment(fields);
    if (moment.isNull()) {
        warnings << QStringLiteral("无效的日期时间格式");
        return record;
    }
    record.time = moment;
    record.channel = fields[7].toInt();
    record.alarm = fields[8].toInt();
    record.valid = true;
    return record;
}

QList<MeasurementData> plainBatch(const QString& reply, QStringList& warnings)
{
    QString text = reply;
    static QRegExp header(QStringLiteral("^#\\d{1,10}"));
    if (header.indexIn(text) == 0) {
        text.remove(0, header.matchedLength());
    }
    const QStringList parts = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    QList<MeasurementData> batch;
    for (int group = 0; 9 * group + 8 < parts.size(); ++group) {
        const MeasurementData record = plainRecord(parts.mid(9 * group, 9), warnings);
        if (record.valid) {
            batch.append(record);
        } else {
            warnings << QStringLiteral("无效的数据记录，跳过解析");
        }
    }
    if (parts.size() % 9 != 0) {
        warnings << QStringLiteral("存在不完整的数据记录，已忽略");
    }
    return batch;
}

void checkSameRecord(const MeasurementData& decoded, const MeasurementData& plain)
{
    FUZZ_CHECK(decoded.valid == plain.valid);
    FUZZ_CHECK(std::memcmp(&decoded.value, &plain.value, sizeof plain.value) == 0);
    FUZZ_CHECK(decoded.unit == plain.unit);
    FUZZ_CHECK(decoded.channel == plain.channel);
    FUZZ_CHECK(decoded.alarm == plain.alarm);
    FUZZ_CHECK(decoded.time.isNull() == !decoded.valid);
    if (!decoded.valid) {
        return;
    }
    FUZZ_CHECK(decoded.time.isValid());
    FUZZ_CHECK(decoded.time.timeSpec() == Qt::LocalTime);
    FUZZ_CHECK(decoded.time.date() == plain.time.date());
    FUZZ_CHECK(decoded.time.time() == plain.time.time());
    if (isExactYear(plain.time.date().year())) {
        FUZZ_CHECK(decoded.time.toMSecsSinceEpoch() == plain.time.toMSecsSinceEpoch());
    }
    FUZZ_CHECK(!decoded.unit.isEmpty() && !decoded.unit.contains(QLatin1Char(' ')));
}
