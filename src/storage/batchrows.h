#pragma once

#include "storage/readrange.h"
#include "storage/readslice.h"

#include <QPointF>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <optional>

namespace scn {

/// Appends the points of one batch table, row by row. When the slice is over, `from` is where to go on;
/// at first and at the end it has no value. It fails if the table could not be read to its end.
ReadStep readBatchRows(const QSqlDatabase& database, const QString& table, const ReadRange& range,
                       std::optional<qint64>& from, QVector<QPointF>& points, ReadSlice& slice);

} // namespace scn
