#pragma once

#include <QMetaType>
#include <QString>

#include <limits>

/// One table of one curve: six hours of readings.
struct DBBatchInfo
{
    qint64 batchStart = 0; ///< First millisecond, since the epoch.
    qint64 batchEnd = 0;   ///< Last millisecond, since the epoch.
    QString tableName;
};

/// Extremes of one curve. The initial values mean no reading yet.
struct DBCurveMetadata
{
    qint64 minTime = std::numeric_limits<qint64>::max();
    qint64 maxTime = std::numeric_limits<qint64>::min();
    double minValue = std::numeric_limits<double>::max();
    double maxValue = std::numeric_limits<double>::lowest();
};

Q_DECLARE_METATYPE(DBBatchInfo)
Q_DECLARE_METATYPE(DBCurveMetadata)
