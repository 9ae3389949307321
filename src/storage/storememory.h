#pragma once

#include "storage/curverecords.h"
#include "storage/filecatalogue.h"
#include "storage/storedchanges.h"

#include <QMap>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

namespace scn {

/// What the store holds in memory of its files. Its parts work on these members of CurveDataDB,
/// which the store's mutex guards.
struct StoreMemory
{
    QString& currentDbPath;
    QString& currentDate;
    QSharedPointer<QSqlDatabase>& currentDb;
    QMap<int, QString>& curveNameMap;
    QMap<int, DBCurveMetadata>& metadataMap;
    QVector<DBBatchInfo>& batchList;
    QString loadedPath = {};    ///< The file loaded last, if that came to its end.
    StoredChanges changes = {}; ///< What was written since the store was opened.

    bool isCurrentOpen() const { return currentDb && currentDb->isOpen(); }

    /// Replaces the records of the file loaded last. The names are added to the known ones.
    void take(const QString& path, const FileCatalogue& catalogue)
    {
        for (auto it = catalogue.names.cbegin(); it != catalogue.names.cend(); ++it) {
            curveNameMap.insert(it.key(), *it);
        }
        batchList = catalogue.batches;
        metadataMap = catalogue.extremes;
        loadedPath = path;
    }

    /// Drops the records of the file loaded last.
    void dropRecords()
    {
        batchList.clear();
        metadataMap.clear();
    }
};

} // namespace scn
