#pragma once

#include <QMap>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>

namespace scn {

/// Connections to day files by path. While they are held the pool does not close them to make room.
using HeldFiles = QMap<QString, QSharedPointer<QSqlDatabase>>;

} // namespace scn
