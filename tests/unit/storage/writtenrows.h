#pragma once

#include <QString>
#include <QStringList>

/// What the tests of writing look at: times of 12 January 2026, and the rows of a day file as text.
namespace writtenrows {

constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";

QString one(const char* row);

/// A time of that day, "09:30:00".
qint64 at(const char* timeOfDay);

/// "timestamp|value" of a table's rows, in the order in which they were stored.
QStringList points(const QString& path, const QString& table);
QString point(qint64 timestamp, const char* value);

/// "curve|first time|last time|minimum|maximum" of a file's curves.
QStringList extremes(const QString& path);
QString extremesRow(int id, qint64 minTime, qint64 maxTime, const char* values);

} // namespace writtenrows
