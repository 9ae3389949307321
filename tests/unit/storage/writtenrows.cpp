#include "writtenrows.h"

#include "dayfilereader.h"
#include "dayfilewriter.h"

namespace writtenrows {

QString one(const char* row)
{
    return QString::fromLatin1(row);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

QStringList points(const QString& path, const QString& table)
{
    return dayfile::rows(path,
                         QStringLiteral("SELECT timestamp, value FROM %1 ORDER BY id").arg(table));
}

QString point(qint64 timestamp, const char* value)
{
    return QStringLiteral("%1|%2").arg(timestamp).arg(one(value));
}

QStringList extremes(const QString& path)
{
    return dayfile::rows(path,
                         QStringLiteral("SELECT curve_id, min_time, max_time, min_value, max_value "
                                        "FROM curve_metadata ORDER BY 1"));
}

QString extremesRow(int id, qint64 minTime, qint64 maxTime, const char* values)
{
    return QStringLiteral("%1|%2|%3|%4").arg(id).arg(minTime).arg(maxTime).arg(one(values));
}

} // namespace writtenrows
