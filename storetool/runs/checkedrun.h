#pragma once

#include "storetool/runs/intervalmeter.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

namespace scnstore {

/// What was found in one batch table.
struct CheckedTable
{
    QString name;
    QString curve;
    qint64 readings = 0;
    qint64 doubles = 0; ///< Readings of the same millisecond as another.
};

struct CheckedFile
{
    QString name;
    qint64 bytes = 0;
    QVector<CheckedTable> tables; ///< In order of time.
};

struct CheckedCurve
{
    qint64 readings = 0;
    qint64 lastTime = 0; ///< Of the readings so far.
    IntervalMeter intervals;
};

/// What a check found. The run is sound if there is no damage.
struct CheckedRun
{
    QVector<CheckedFile> files;
    QMap<QString, CheckedCurve> curves;
    QStringList damage;   ///< Sentences.
    bool metLock = false; ///< Another program's lock may be what looks like damage.
    QStringList notes;    ///< What may be damage and may be not, as sentences.
};

} // namespace scnstore
