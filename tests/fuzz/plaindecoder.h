#pragma once

#include "acquisition/measurementdata.h"

#include <QStringList>

/// A plain decoder of readings, using Qt's text operations without regard to speed, as the
/// reference for the real one. Appends expected warnings to `warnings`.
MeasurementData plainRecord(const QStringList& fields, QStringList& warnings);
QList<MeasurementData> plainBatch(const QString& reply, QStringList& warnings);

/// Ends the process if a decoded record differs from the plain decoder's.
void checkSameRecord(const MeasurementData& decoded, const MeasurementData& plain);
