#pragma once

#include "acquisition/measurementdata.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Number of fields of a record: value and unit, year, month, day, hour, minute, seconds, channel,
/// alarm.
constexpr int kRecordFieldCount = 9;

/// Decodes a reply of comma-separated nine-field records behind an optional block header, `#` and
/// up to ten digits. The length in the header is ignored: the data ends with the reply. Invalid
/// records and an incomplete last one are dropped, each with a warning. Returns the valid records
/// in the order of the reply. Stateless, any thread.
QList<MeasurementData> decodeResponse(const QString& reply);

/// Decodes the nine fields of one record. Logs a warning and leaves `valid` false if there are not
/// nine fields, if field 0 is not a number, a blank and a unit, or if the time does not exist in
/// local time. A time that occurs twice means the first of the two. Numbers that do not parse read
/// as 0. Stateless, any thread.
MeasurementData decodeRecord(const QStringList& fields);
