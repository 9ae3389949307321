#pragma once

#include "storage/fileidentity.h"

#include <QMap>
#include <QString>
#include <QVector>

#include <atomic>

class CurveDataDB;

namespace scn {

/// One batch table of a curve: its file, and the curve's id there.
struct BatchTable
{
    QString path;
    FileIdentity file; ///< That the path led to when it was listed.
    QString name;
    int fileCurveId = -1;
};

/// Batch tables of several curves, in order of time, by the curve's id in the store.
struct BatchTables
{
    QMap<int, QVector<BatchTable>> byCurve;

    /// An existing file could not be opened or read: something may be missing.
    bool failed = false;
};

/// Finds the curves' batch tables that overlap a time range (ms since the epoch, both included).
/// Each file is opened once. Ids belong to a file, so curves are looked up by name in each. Any
/// thread.
///
/// Returns at the first unreadable file, and when `stop` is set.
BatchTables collectTables(CurveDataDB& store, const QMap<int, QString>& curves, qint64 start,
                          qint64 end, const std::atomic<bool>& stop);

} // namespace scn
