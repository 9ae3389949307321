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

class CurveDataDB;

namespace scn {

class StoredChanges;

/// A read of one curve over the day files, which can go on in slices: see CurveDataDB::proceed(). What is
/// stored between the slices may be missing, and shows in CurveDataDB::storedState().
class CurveRead
{
public:
    /// What is opened is kept open in `files`, for the reads of other curves.
    explicit CurveRead(const ReadRange& range, HeldFiles* files = nullptr);

    const ReadRange& range() const { return m_window.range(); }

    /// Goes on. True once all is there. Under the store's mutex, with the store's own parts.
    bool proceed(CurveDataDB& store, RowOrders& orders, StoredChanges& changes, ReadSlice& slice);

    /// The points in order of time, at most the limit, once all is there.
    const QVector<QPointF>& points() const { return m_window.points(); }

private:
    bool readFile(CurveDataDB& store, const QString& path, ReadSlice& slice);
    bool openFile(CurveDataDB& store, const QString& path);

    WindowRead m_window;
    HeldFiles* m_heldFiles;
    bool m_hasBegun = false;
    QStringList m_keys; ///< Of the days, oldest first.
    int m_nextKey = 0;
    QSharedPointer<QSqlDatabase> m_db; ///< The day's file, while it is being read.
    QVector<DBBatchInfo> m_batches;
    int m_nextBatch = 0;
    bool m_hasFailed = false; ///< Not everything in the file could be read.
};

} // namespace scn
