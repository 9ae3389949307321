#pragma once

#include "storage/curvedatadb.h"
#include "storetool/runs/selection.h"

#include <QList>
#include <QMap>
#include <QString>

namespace scnstore {

/// What is exported.
struct ExportJob
{
    CurveDataDB& store;
    QList<int> curves; ///< Ids in the store.
    TimeSelection times;
    QString separator;
    QMap<QString, QString> header; ///< As the program's exports have it.
};

} // namespace scnstore
