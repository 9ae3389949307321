#pragma once

#include "storage/curverecords.h"
#include "storage/keptinserts.h"

#include <QMap>
#include <QSet>
#include <QString>

namespace storage {

/// What is kept of the file of an earlier day that late readings go to, one file at a time.
struct LateFile
{
    QString connection; ///< The connection that all of it belongs to.
    KeptInserts inserts;
    bool isFit = false;                  ///< It has the tables that it needs.
    QMap<int, DBCurveMetadata> extremes; ///< As they stand in the file.
    QSet<int> changed;                   ///< Curves whose extremes in memory differ from those.
};

} // namespace storage
