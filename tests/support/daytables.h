#pragma once

#include <QString>
#include <QStringList>

/// The tables of a day file, as its format has them: for tests that make such files themselves.
namespace daytables {

/// The statements that make the three tables of every day file.
inline QStringList baseStatements()
{
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS curve_info (curve_id INTEGER PRIMARY KEY "
                       "AUTOINCREMENT, name TEXT NOT NULL UNIQUE)"),
        QStringLiteral(
            "CREATE TABLE IF NOT EXISTS batch_metadata (id INTEGER PRIMARY KEY AUTOINCREMENT, "
            "curve_id INTEGER NOT NULL, batch_start INTEGER NOT NULL, batch_end INTEGER NOT NULL, "
            "table_name TEXT NOT NULL, FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id), "
            "UNIQUE(curve_id, table_name))"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS curve_metadata (curve_id INTEGER PRIMARY KEY, "
                       "min_time INTEGER, max_time INTEGER, min_value REAL, max_value REAL, "
                       "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id))")};
}

/// The statement that makes the table of a curve's batch. A quotation mark in the name is doubled.
inline QString batchStatement(const QString& table)
{
    return QStringLiteral(
               "CREATE TABLE IF NOT EXISTS \"%1\" (id INTEGER PRIMARY KEY AUTOINCREMENT, "
               "curve_id INTEGER NOT NULL, timestamp INTEGER NOT NULL, "
               "value REAL NOT NULL, UNIQUE(curve_id, timestamp), "
               "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id))")
        .arg(QString(table).replace(QLatin1Char('"'), QLatin1String("\"\"")));
}

} // namespace daytables
