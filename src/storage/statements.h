#pragma once

#include <QString>

/// Statements that several parts of the store run.
namespace scn {

inline const QString kBegin = QStringLiteral("BEGIN");
inline const QString kCommit = QStringLiteral("COMMIT");
inline const QString kRollback = QStringLiteral("ROLLBACK");

/// Inserts a reading: curve, time, value.
inline QString insertPointSql(const QString& table)
{
    return QStringLiteral("INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) VALUES (?, ?, ?)")
        .arg(table);
}

/// Whether a failure means that the file lacks a table.
inline bool saysMissingTable(const QString& errorText)
{
    return errorText.contains(QLatin1String("no such table"));
}

} // namespace scn
