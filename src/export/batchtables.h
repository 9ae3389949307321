#pragma once

#include "storage/fileidentity.h"

#include <QMap>
#include <QString>
#include <QVector>

#include <atomic>

class CurveDataDB;

/// One batch table of a curve: where it lies, and the id that the curve has in that file.
struct BatchTable
{
    QString path;
    FileIdentity file; ///< That the path led to when it was listed.
    QString name;
    int fileCurveId = -1;
};

/// The batch tables of some curves, in the order of time, by the curve's id in the store.
struct BatchTables
{
    QMap<int, QVector<BatchTable>> byCurve;

    /// A file that is there could not be opened or read: something may be missing.
    bool failed = false;
};

/// Finds the batch tables of curves that overlap a range of time (milliseconds since the epoch,
/// both included). Each file is opened once. Ids belong to a file, so a curve is looked up in each
/// of them by its name. Any thread.
///
/// Leaves with the first file that cannot be read, and when `stop` is set.
BatchTables collectTables(CurveDataDB& store, const QMap<int, QString>& curves, qint64 start,
                          qint64 end, const std::atomic<bool>& stop);
