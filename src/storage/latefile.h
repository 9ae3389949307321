#pragma once

#include "storage/curverecords.h"
#include "storage/keptinserts.h"

#include <QMap>
#include <QSet>
#include <QString>

namespace scn {

/// What the store keeps about an earlier day's file while late readings go to it, one file at a
/// time.
struct LateFile
{
    QString connection; ///< The connection this belongs to.
    KeptInserts inserts;
    bool isFit = false;                  ///< It has the tables it needs.
    QMap<int, DBCurveMetadata> extremes; ///< As in the file.
    QSet<int> changed;                   ///< Curves whose extremes in memory differ from those.
};

} // namespace scn
