#pragma once

#include "storage/currentfile.h"
#include "storage/curverecords.h"
#include "storage/dayfiles.h"
#include "storage/keptinserts.h"
#include "storage/storememory.h"

#include <QMap>
#include <QSet>
#include <QSqlDatabase>
#include <QString>

namespace scn {

/// Stores late readings, of another day than today, in one file at a time. While they keep coming
/// for the same file and nothing else is loaded, its catalogue stays in memory. Guarded by the
/// store's mutex.
class LateFile
{
public:
    /// Works on the store's members, and keeps today's file informed of what it changes in them.
    /// All outlive it.
    LateFile(StoreMemory& memory, const DayFiles& files, CurrentFile& today);

    /// Drops what is kept for the file.
    void forget();

    /// Stores a reading in a file, and puts that file's extremes in memory. False if the reading
    /// could not be stored.
    bool store(const QString& path, const QSqlDatabase& db, const Reading& reading,
               const TimeSlice& slice, const KeptInserts::OpenTable& openTable);

    /// A curve's id in a file, which is loaded if necessary and in which the curve is registered if
    /// it is new there; -1 on failure.
    int curveIdIn(const QString& path, const QSqlDatabase& db, int curveId);

    /// Reads a file's catalogue into memory, replacing the last loaded file's.
    void load(const QString& path);

    /// A curve's extremes in memory have changed.
    void noteChange(int curveId) { m_changed.insert(curveId); }

private:
    bool isLoaded(const QString& path, const QSqlDatabase& db) const;
    void attach(const QSqlDatabase& db);
    void setUpAndLoad(const QString& path, const QSqlDatabase& db);
    bool setUp(const QSqlDatabase& db);
    void restoreExtremes();

    StoreMemory& m_memory;
    const DayFiles& m_files;
    CurrentFile& m_today;
    QString m_connection; ///< The connection that the rest belongs to.
    KeptInserts m_inserts;
    bool m_isFit = false;                  ///< The file has the tables it needs.
    QMap<int, DBCurveMetadata> m_extremes; ///< As in the file.
    QSet<int> m_changed;                   ///< Curves whose extremes in memory differ from those.
};

} // namespace scn
