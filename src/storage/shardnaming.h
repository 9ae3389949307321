#pragma once

#include <QString>

/// Maps times to day files and tables. Times are milliseconds since the epoch; dates and names are
/// local time. Nothing here fails; any thread may call.

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

/// "yyyyMMdd" of today.
QString todayKey();

/// "yyyyMMdd" of the local time; of now if the timestamp is in the future.
QString dateKeyForTime(qint64 timestamp);

/// First millisecond of the batch that contains the timestamp. If six-hour steps from midnight lead
/// out of the timestamp's own date, warns and returns that date's midnight.
qint64 alignToBatchStart(qint64 timestamp);

/// "batch_<first>_<last>" with the stamps of the batch's bounds.
QString makeBatchName(qint64 timestamp);

/// "curve_<id>_<batch name>": the name of a curve's table for one batch.
QString makeTableName(int curveId, const QString& batchName);

/// "curve_<id>_": the common prefix of a curve's table names.
QString tablePrefix(int curveId);

/// The name of a table as SQL has it: in double quotes, each inside doubled.
QString quotedName(const QString& table);

/// The text as an SQL string literal: in single quotes, each quote inside doubled.
QString sqlLiteral(const QString& text);
