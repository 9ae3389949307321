#pragma once

#include <QSqlDatabase>
#include <QString>

#include <chrono>

/// What is done with one connection to a day file: opening it for its role, asking it, closing it.
namespace storage {

/// What the names of all connections of the pool start with.
inline const QString kConnectionNamePrefix = QStringLiteral("curve_db_");

/// Opens a file and its directory; today's for writing, any other for reading. An invalid database
/// if that fails.
QSqlDatabase createConnection(const QString& path);

/// Whether a connection is open and answers.
bool validateConnection(const QSqlDatabase& database);

/// Runs a PRAGMA and compares what it answers, if it does, with what is expected, if anything is.
bool execPragmaChecked(const QSqlDatabase& database, const QString& sql, const QString& expected);

/// How long a statement of the connection waits for a file that another process has locked.
void setBusyTimeout(const QSqlDatabase& database, std::chrono::milliseconds patience);

/// Whether the connection writes a log beside the file.
bool usesWal(const QSqlDatabase& database);

/// Folds the log into the file.
void truncateLog(const QSqlDatabase& database);

/// Folds the log in, leaves no side files behind and closes.
void foldAndClose(QSqlDatabase& database);

} // namespace storage
