#pragma once

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>

/// One decoded reading of the instrument. A value type: copies are cheap, and it may cross threads.
struct MeasurementData
{
    /// The reading, in the unit that the instrument wrote.
    double value = 0.0;

    /// Unit text as the instrument wrote it; empty in a default record.
    QString unit;

    /// Time stamp of the instrument, local time; null in a default record.
    QDateTime time;

    /// Channel number, 100 * slot + position.
    int channel = 0;

    /// Alarm field of the record; what its values mean is the instrument's own.
    int alarm = 0;

    /// True only when all fields above were decoded.
    bool valid = false;
};

Q_DECLARE_TYPEINFO(MeasurementData, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(MeasurementData)
Q_DECLARE_METATYPE(QList<MeasurementData>)
