#pragma once

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>

/// One decoded reading: a value that is cheap to copy and may cross threads.
struct MeasurementData
{
    /// The reading, in the unit below.
    double value = 0.0;

    /// The unit as the instrument sent it; empty in a default record.
    QString unit;

    /// The instrument's time stamp, local time; null in a default record.
    QDateTime time;

    /// Channel number, 100 * slot + position.
    int channel = 0;

    /// The alarm field; the instrument defines its values.
    int alarm = 0;

    /// True only if all fields above were decoded.
    bool valid = false;
};

Q_DECLARE_TYPEINFO(MeasurementData, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(MeasurementData)
Q_DECLARE_METATYPE(QList<MeasurementData>)
