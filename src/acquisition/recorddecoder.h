#pragma once

#include "acquisition/measurementdata.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Number of fields of a record: value and unit, year, month, day, hour, minute, seconds, channel,
/// alarm.
constexpr int kRecordFieldCount = 9;

/// Decodes a reply of comma-separated nine-field records, with an optional block header `#` and up to
/// ten digits in front. The header's length is not read: the reply's end is the end of the data.
/// Invalid records are skipped and a tail of less than nine fields is dropped, each with a warning.
/// Returns the valid records in the reply's order. Without state, any thread.
QList<MeasurementData> decodeResponse(const QString& reply);

/// Decodes the nine fields of one record. The result's `valid` is false, and a warning logged, when
/// the count is not nine, field 0 is not a number, a blank and a unit, or the time stamp names no
/// moment of local time. A time that the zone shows twice is the first of the two. Numbers that do not
/// parse read as 0. Without state, any thread.
MeasurementData decodeRecord(const QStringList& fields);
