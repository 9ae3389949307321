#pragma once

#include <QString>

#include <sqlite3.h>

#include <string>

/// A file of the store through the C interface of SQLite, as the yardsticks use it. Everything here
/// ends the program with a message when SQLite reports an error: a yardstick that does not do its
/// work measures nothing.
class RawStore
{
public:
    explicit RawStore(const QString& path);
    ~RawStore();
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;

    /// Runs statements that give no rows of interest.
    void execute(const std::string& sql);

    /// The number in the first row of a query.
    qint64 number(const std::string& sql);

    /// A prepared statement; the caller finalizes it before this object goes.
    sqlite3_stmt* prepare(const std::string& sql);

    /// The three tables that every day file has, and so many curves under the numbers from 1 and
    /// rawCurveName().
    void createDay(int curves);

    /// The table, the index and the catalogue row of one six-hour batch of a curve.
    void createBatchTable(int curveId, qint64 batchStart, const QString& tableName);

private:
    [[noreturn]] void fail(const std::string& what);

    sqlite3* m_db = nullptr;
};

/// Steps a statement that gives no row, and makes it ready for the next run.
void stepDone(sqlite3_stmt* statement);

/// "101(V)" for the curve 1.
QString rawCurveName(int curveId);

/// "curve_1_batch_20260112_060000_20260112_115959".
QString rawTableName(int curveId, qint64 batchStart);

constexpr qint64 kRawBatchLengthMs = 21600000;
