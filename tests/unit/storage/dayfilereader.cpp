#include "dayfilereader.h"

#include <sqlite3.h>

namespace {

constexpr int kBusyMs = 2000;

sqlite3* openFile(const QString& path)
{
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &database, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_busy_timeout(database, kBusyMs);
    return database;
}

QString columnText(sqlite3_stmt* statement, int column)
{
    if (sqlite3_column_type(statement, column) == SQLITE_NULL) {
        return QStringLiteral("NULL");
    }
    return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
}

} // namespace

QStringList dayfile::rows(const QString& path, const QString& sql)
{
    sqlite3* database = openFile(path);
    sqlite3_stmt* statement = nullptr;
    int result = sqlite3_prepare_v2(database, sql.toUtf8().constData(), -1, &statement, nullptr);
    QStringList found;
    if (result == SQLITE_OK) {
        while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
            QStringList columns;
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                columns.append(columnText(statement, column));
            }
            found.append(columns.join(QLatin1Char('|')));
        }
    }
    if (result != SQLITE_DONE) {
        found =
            QStringList(QStringLiteral("error: ") + QString::fromUtf8(sqlite3_errmsg(database)));
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return found;
}

QString dayfile::execute(const QString& path, const QString& sql)
{
    sqlite3* database = openFile(path);
    QString error;
    if (sqlite3_exec(database, sql.toUtf8().constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        error = QString::fromUtf8(sqlite3_errmsg(database));
    }
    sqlite3_close(database);
    return error;
}

QStringList dayfile::dump(const QString& path)
{
    QStringList all;
    const QStringList tables =
        rows(path, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                  "AND name NOT LIKE 'sqlite_%' ORDER BY name"));
    for (const QString& table : tables) {
        const QStringList tableRows =
            rows(path, QStringLiteral("SELECT * FROM \"%1\" ORDER BY 1").arg(table));
        for (const QString& row : tableRows) {
            all.append(table + QStringLiteral(": ") + row);
        }
        if (tableRows.isEmpty()) {
            all.append(table + QStringLiteral(": "));
        }
    }
    return all;
}

DayFileLock::DayFileLock(const QString& path, Kind kind)
{
    sqlite3* database = openFile(path);
    m_database = database;
    const char* sql = "BEGIN; SELECT count(*) FROM sqlite_master";
    if (kind != Read) {
        sql = kind == Write ? "BEGIN IMMEDIATE" : "BEGIN EXCLUSIVE";
    }
    m_held = sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

DayFileLock::~DayFileLock()
{
    auto* database = static_cast<sqlite3*>(m_database);
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(database);
}
