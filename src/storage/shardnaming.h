#pragma once

#include <QString>

/// How a time maps to a day file and to a table in it. Times are milliseconds since the epoch;
/// dates and names are in local time. Nothing here fails, and every function may be called on any
/// thread.

/// Length of a batch: six hours, counted from local midnight.
constexpr qint64 kBatchLengthMs = 21600000;

/// Distance from a batch's first to its last millisecond.
constexpr qint64 kBatchSpanMs = kBatchLengthMs - 1;

/// Length of a day without a change of the clock.
constexpr qint64 kDayLengthMs = 86400000;

/// "yyyyMMddHH" of the local time.
QString formatHourKey(qint64 timestamp);

/// "yyyyMMddHHmm" of the local time.
QString formatMinuteKey(qint64 timestamp);

/// "yyyyMMdd_HHmmss" of the local time.
QString formatBatchStamp(qint64 timestamp);

/// The base name of a path if it is so many digits, else an empty text.
QString digitsOfBaseName(const QString& path, int length);

/// "yyyyMMdd" of the present day.
QString todayKey();

/// "yyyyMMdd" of the local time; of the present time if the timestamp lies in the future.
QString dateKeyForTime(qint64 timestamp);

/// First millisecond of the batch that holds the timestamp. Where counting six-hour steps from
/// midnight leads out of the timestamp's own date, warns and gives that date's midnight.
qint64 alignToBatchStart(qint64 timestamp);

/// "batch_<first>_<last>" with the stamps of the batch's bounds.
QString makeBatchName(qint64 timestamp);

/// "curve_<id>_<batch name>": the name of a curve's table for one batch.
QString makeTableName(int curveId, const QString& batchName);

/// "curve_<id>_": what the names of all tables of a curve start with.
QString tablePrefix(int curveId);

/// The text as an SQL string literal: in single quotes, each quote inside doubled.
QString sqlLiteral(const QString& text);
