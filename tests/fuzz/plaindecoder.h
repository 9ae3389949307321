#pragma once

#include "acquisition/measurementdata.h"

#include <QStringList>

/// The decoding of readings told plainly, with Qt's text operations and without a thought of speed, to
/// compare the decoder with. What has to be logged is appended to `warnings`.
MeasurementData plainRecord(const QStringList& fields, QStringList& warnings);
QList<MeasurementData> plainBatch(const QString& reply, QStringList& warnings);

/// Ends the process where a decoded record is not what the plain decoding gives.
void checkSameRecord(const MeasurementData& decoded, const MeasurementData& plain);
