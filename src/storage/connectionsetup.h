#pragma once

#include <QSqlDatabase>
#include <QString>

#include <chrono>

/// Operations on one connection to a day file: opening it for its role, checking it, closing it.
namespace scn {

/// Common prefix of the names of the pool's connections.
inline const QString kConnectionNamePrefix = QStringLiteral("curve_db_");

/// The page size of new files. A commit writes whole pages, so a reading on pages of 4096 bytes
/// costs the disk four times as much; smaller pages than these make reading back slower.
inline constexpr int kDayFilePageBytes = 1024;

/// Opens a file, creating its directory: today's for writing, any other for reading. Returns an
/// invalid database on failure.
QSqlDatabase createConnection(const QString& path);

/// Opens a file to read it as it is, whoever writes it; invalid on failure. A file of a folder that
/// cannot be written is read without locks, unless it has a WAL: SQLite could create no index of one.
QSqlDatabase createReadOnlyConnection(const QString& path);

/// Whether createReadOnlyConnection() opened it.
bool isReadOnly(const QSqlDatabase& database);

/// Whether a connection is open and answers.
bool validateConnection(const QSqlDatabase& database);

/// Runs a PRAGMA and compares its answer, if any, with the expected one, if any.
bool execPragmaChecked(const QSqlDatabase& database, const QString& sql, const QString& expected);

/// How long the connection's statements wait for a file locked by another process.
void setBusyTimeout(const QSqlDatabase& database, std::chrono::milliseconds patience);

/// Whether the connection writes a WAL.
bool usesWal(const QSqlDatabase& database);

/// Checkpoints the WAL, unless the connection only reads.
void truncateWal(const QSqlDatabase& database);

/// Checkpoints the WAL, removes the side files and closes. One that only reads is closed alone.
void foldAndClose(QSqlDatabase& database);

} // namespace scn
