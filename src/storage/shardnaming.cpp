#include "storage/shardnaming.h"

#include "storage/storeclock.h"

#include <QDateTime>
#include <QDebug>
#include <QFileInfo>

#include <algorithm>

namespace {

QDateTime localTime(qint64 timestamp)
{
    return QDateTime::fromMSecsSinceEpoch(timestamp);
}

/// First moment of a date. Where the clock skips midnight, the date starts later; where midnight
/// occurs twice, which one Qt returns depends on what was converted before: the first is used.
qint64 startOfDate(QDate date)
{
    constexpr qint64 kStepsBack[] = {3600000, 1800000};
    const qint64 start = date.startOfDay().toMSecsSinceEpoch();
    for (const qint64 step : kStepsBack) {
        if (localTime(start - step).date() == date) {
            return start - step;
        }
    }
    return start;
}

QString isoDate(QDate date)
{
    return date.toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

QString formatHourKey(qint64 timestamp)
{
    return localTime(timestamp).toString(QStringLiteral("yyyyMMddHH"));
}

QString formatMinuteKey(qint64 timestamp)
{
    return localTime(timestamp).toString(QStringLiteral("yyyyMMddHHmm"));
}

QString formatBatchStamp(qint64 timestamp)
{
    return localTime(timestamp).toString(QStringLiteral("yyyyMMdd_HHmmss"));
}

QString todayKey()
{
    return localTime(scn::storeNow()).toString(QStringLiteral("yyyyMMdd"));
}

QString dateKeyForTime(qint64 timestamp)
{
    const qint64 now = scn::storeNow();
    return localTime(now < timestamp ? now : timestamp).toString(QStringLiteral("yyyyMMdd"));
}

qint64 alignToBatchStart(qint64 timestamp)
{
    const QDate date = localTime(timestamp).date();
    const qint64 dayStart = startOfDate(date);
    const qint64 aligned = dayStart + ((timestamp - dayStart) / kBatchLengthMs) * kBatchLengthMs;
    const QDate alignedDate = localTime(aligned).date();
    if (alignedDate == date) {
        return aligned;
    }
    qWarning() << "分片日期与数据日期不匹配！数据日期:" << isoDate(date)
               << "分片日期:" << isoDate(alignedDate) << "强制对齐到数据日期";
    return dayStart;
}

QString makeBatchName(qint64 timestamp)
{
    qint64 start = alignToBatchStart(timestamp);
    const QDate date = localTime(timestamp).date();
    const QDate startDate = localTime(start).date();
    if (startDate != date) {
        qCritical() << "严重错误：分片日期与数据日期不一致！"
                    << "数据日期:" << isoDate(date) << "分片日期:" << isoDate(startDate)
                    << "强制使用数据日期创建分片";
        start = startOfDate(date);
    }
    return QStringLiteral("batch_%1_%2")
        .arg(formatBatchStamp(start), formatBatchStamp(start + kBatchSpanMs));
}

QString makeTableName(int curveId, const QString& batchName)
{
    return QStringLiteral("curve_%1_%2").arg(QString::number(curveId), batchName);
}

QString tablePrefix(int curveId)
{
    return QStringLiteral("curve_%1_").arg(curveId);
}

QString quotedName(const QString& table)
{
    QString name = table;
    return QLatin1Char('"') + name.replace(QLatin1Char('"'), QLatin1String("\"\"")) +
           QLatin1Char('"');
}

QString sqlLiteral(const QString& text)
{
    QString doubled = text;
    doubled.replace(QLatin1Char('\''), QLatin1String("''"));
    return QLatin1Char('\'') + doubled + QLatin1Char('\'');
}

QString digitsOfBaseName(const QString& path, int length)
{
    const QString baseName = QFileInfo(path).completeBaseName();
    const bool digits = std::all_of(baseName.cbegin(), baseName.cend(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    return baseName.length() == length && digits ? baseName : QString();
}
