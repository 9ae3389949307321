#pragma once

#include <QString>
#include <QStringList>

class PostgresServer;

/// Readings as texts, "instrument curve time value" each, sorted, for comparisons.
namespace readingsets {

/// What the sqlite3 program finds in a day file.
QStringList inFile(const QString& path, const QString& instrument);

/// What psql finds in the database.
QStringList inDatabase(const PostgresServer& server);

/// The first of those that are in one set only, for a message; empty if the sets are equal.
QString difference(const QStringList& expected, const QStringList& found);

} // namespace readingsets
