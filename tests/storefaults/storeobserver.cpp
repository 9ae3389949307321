#include "storeobserver.h"

#include <QFile>

#include <sqlite3.h>

namespace {

constexpr int kBusyMs = 2000;

} // namespace

StoreObserver::StoreObserver(const QString& directory)
    : m_directory(directory)
{
}

StoreObserver::~StoreObserver()
{
    close();
}

int StoreObserver::count(const QString& dateKey, const QString& table, int curveId, qint64 time,
                         double value)
{
    sqlite3* const database = open(dateKey);
    if (!database) {
        return 0;
    }
    const QString sql =
        QStringLiteral(
            "SELECT count(*) FROM \"%1\" WHERE curve_id = ? AND timestamp = ? AND value = ?")
            .arg(table);
    sqlite3_stmt* statement = nullptr;
    int rows = 0;
    if (sqlite3_prepare_v2(database, sql.toUtf8().constData(), -1, &statement, nullptr) ==
        SQLITE_OK) {
        sqlite3_bind_int(statement, 1, curveId);
        sqlite3_bind_int64(statement, 2, time);
        sqlite3_bind_double(statement, 3, value);
        if (sqlite3_step(statement) == SQLITE_ROW) {
            rows = sqlite3_column_int(statement, 0);
        }
    }
    sqlite3_finalize(statement);
    return rows;
}

void StoreObserver::close()
{
    for (sqlite3* database : qAsConst(m_files)) {
        sqlite3_close(database);
    }
    m_files.clear();
}

sqlite3* StoreObserver::open(const QString& dateKey)
{
    if (sqlite3* known = m_files.value(dateKey)) {
        return known;
    }
    const QString path = m_directory + QLatin1Char('/') + dateKey + QStringLiteral(".db");
    if (!QFile::exists(path)) {
        return nullptr;
    }
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path.toUtf8().constData(), &database, SQLITE_OPEN_READWRITE, "unix") !=
        SQLITE_OK) {
        sqlite3_close(database);
        return nullptr;
    }
    sqlite3_busy_timeout(database, kBusyMs);
    m_files.insert(dateKey, database);
    return database;
}
