#include "rawstore.h"

#include "support/daytables.h"

#include <QDateTime>

#include <cstdio>
#include <cstdlib>

RawStore::RawStore(const QString& path, int pageBytes)
{
    if (sqlite3_open(path.toUtf8().constData(), &m_db) != SQLITE_OK) {
        fail("open");
    }
    execute("PRAGMA page_size = " + std::to_string(pageBytes));
}

RawStore::~RawStore()
{
    sqlite3_close(m_db);
}

void RawStore::fail(const std::string& what)
{
    std::fprintf(stderr, "baseline failed: %s: %s\n", what.c_str(), sqlite3_errmsg(m_db));
    std::exit(1);
}

void RawStore::execute(const std::string& sql)
{
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(sql);
    }
}

qint64 RawStore::number(const std::string& sql)
{
    sqlite3_stmt* const statement = prepare(sql);
    if (sqlite3_step(statement) != SQLITE_ROW) {
        fail(sql);
    }
    const qint64 result = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return result;
}

sqlite3_stmt* RawStore::prepare(const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        fail(sql);
    }
    return statement;
}

void RawStore::createDay(int curves)
{
    for (const QString& statement : daytables::baseStatements()) {
        execute(statement.toStdString());
    }
    execute("BEGIN");
    for (int curveId = 1; curveId <= curves; ++curveId) {
        execute("INSERT INTO curve_info (curve_id, name) VALUES (" + std::to_string(curveId) +
                ", '" + rawCurveName(curveId).toStdString() + "')");
    }
    execute("COMMIT");
}

void RawStore::createBatchTable(int curveId, qint64 batchStart, const QString& tableName)
{
    const std::string table = tableName.toStdString();
    const std::string id = std::to_string(curveId);
    execute(daytables::batchStatement(tableName).toStdString());
    execute("CREATE INDEX IF NOT EXISTS idx_" + table + "_curve_time ON \"" + table +
            "\" (curve_id, timestamp)");
    execute("INSERT OR IGNORE INTO batch_metadata (curve_id, batch_start, batch_end, table_name) "
            "VALUES (" +
            id + ", " + std::to_string(batchStart) + ", " +
            std::to_string(batchStart + kRawBatchLengthMs - 1) + ", '" + table + "')");
}

void stepDone(sqlite3_stmt* statement)
{
    const int result = sqlite3_step(statement);
    if (result != SQLITE_DONE) {
        std::fprintf(stderr, "baseline failed: %s\n", sqlite3_errmsg(sqlite3_db_handle(statement)));
        std::exit(1);
    }
    sqlite3_reset(statement);
}

QString rawCurveName(int curveId)
{
    return QStringLiteral("%1(V)").arg(100 + curveId);
}

QString rawTableName(int curveId, qint64 batchStart)
{
    const QString format = QStringLiteral("yyyyMMdd_HHmmss");
    return QStringLiteral("curve_%1_batch_%2_%3")
        .arg(QString::number(curveId), QDateTime::fromMSecsSinceEpoch(batchStart).toString(format),
             QDateTime::fromMSecsSinceEpoch(batchStart + kRawBatchLengthMs - 1).toString(format));
}
