#pragma once

#include "storage/curverecords.h"
#include "storage/managedquery.h"

#include <QMap>
#include <QSet>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <functional>

namespace scn {

/// What the base tables of one day file say.
struct FileCatalogue
{
    QMap<int, QString> names;
    QVector<DBBatchInfo> batches;
    QMap<int, DBCurveMetadata> extremes;
    QSet<int> nullExtremes; ///< Curves whose row has nulls, which read as zeros.
};

/// Gets a query that has failed.
using FailureHandler = std::function<void(const ManagedQuery&)>;

/// Creates the base tables that a file lacks. Tries them all; false if any could not be created.
bool createBaseTables(const QSqlDatabase& db);

/// Reads a file's base tables. What cannot be read stays empty.
FileCatalogue readCatalogue(const QSqlDatabase& db, const FailureHandler& onFailure);

} // namespace scn
