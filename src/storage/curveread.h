#pragma once

#include "storage/curverecords.h"
#include "storage/heldfiles.h"
#include "storage/readslice.h"
#include "storage/windowread.h"

#include <QPointF>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QStringList>
#include <QVector>

#include <functional>

namespace scn {

class DayFiles;
class StoredChanges;

/// A read of one curve over the day files, which can go on in slices: see CurveDataDB::proceed(). What is
/// stored between the slices may be missing, and shows in CurveDataDB::storedState().
class CurveRead
{
public:
    /// What is opened is kept open in `files`, for the reads of other curves.
    explicit CurveRead(const ReadRange& range, HeldFiles* files = nullptr);

    const ReadRange& range() const { return m_window.range(); }

    /// The tables of a file that hold readings of the range. Sets the flag if not all could be asked for.
    using BatchesOf = std::function<QVector<DBBatchInfo>(
        const ReadRange& range, const QSharedPointer<QSqlDatabase>& db, bool* failed)>;

    /// The parts of the store that a read uses.
    struct Store
    {
        const DayFiles& files;
        RowOrders& orders;
        StoredChanges& changes;
        BatchesOf batchesOf;
    };

    /// Goes on. True once all is there. Under the store's mutex.
    bool proceed(const Store& store, ReadSlice& slice);

    /// The points in order of time, at most the limit, once all is there.
    const QVector<QPointF>& points() const { return m_window.points(); }

private:
    bool readFile(const Store& store, const QString& path, ReadSlice& slice);
    bool openFile(const Store& store, const QString& path);

    WindowRead m_window;
    HeldFiles* m_heldFiles;
    bool m_hasBegun = false;
    QStringList m_paths; ///< Of the days, oldest first.
    int m_nextPath = 0;
    QSharedPointer<QSqlDatabase> m_db; ///< The day's file, while it is being read.
    QVector<DBBatchInfo> m_batches;
    int m_nextBatch = 0;
    bool m_hasFailed = false; ///< Not everything in the file could be read.
};

} // namespace scn
