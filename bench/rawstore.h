#pragma once

#include <QString>

#include <sqlite3.h>

#include <string>

/// A store file through SQLite's C interface, for the baselines. Any SQLite error ends the program
/// with a message: a baseline that does not do its work measures nothing.
class RawStore
{
public:
    /// Opens a file; a new one has pages of SQLite's own size, 4096 bytes, or of the size given.
    explicit RawStore(const QString& path, int pageBytes = 4096);
    ~RawStore();
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;

    /// Runs statements whose rows do not matter.
    void execute(const std::string& sql);

    /// The number in the first row of a query.
    qint64 number(const std::string& sql);

    /// A prepared statement; the caller finalizes it before this object is destroyed.
    sqlite3_stmt* prepare(const std::string& sql);

    /// The three tables of every day file, and this many curves, numbered from 1 and named by
    /// rawCurveName().
    void createDay(int curves);

    /// The table, index and catalogue row of one six-hour batch of a curve.
    void createBatchTable(int curveId, qint64 batchStart, const QString& tableName);

private:
    [[noreturn]] void fail(const std::string& what);

    sqlite3* m_db = nullptr;
};

/// Steps a statement that returns no row and resets it.
void stepDone(sqlite3_stmt* statement);

/// "101(V)" for curve 1.
QString rawCurveName(int curveId);

/// "curve_1_batch_20260112_060000_20260112_115959".
QString rawTableName(int curveId, qint64 batchStart);

constexpr qint64 kRawBatchLengthMs = 21600000;
