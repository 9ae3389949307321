#pragma once

#include "rawstore.h"
#include "readings.h"
#include "storage/curvedatadb.h"

#include <vector>

/// The yardstick of storing a reading: two commits through the C interface of SQLite, the row and
/// the extremes of its curve, with statements that are prepared once.
class RawAppender
{
public:
    /// Makes the file at `path` with one table for each curve.
    RawAppender(const QString& path, int curves, qint64 batchStart);
    ~RawAppender();
    RawAppender(const RawAppender&) = delete;
    RawAppender& operator=(const RawAppender&) = delete;

    void appendPoints(int count);

private:
    void appendPoint();

    RawStore m_store;
    Readings m_readings;
    std::vector<DBCurveMetadata> m_bounds;
    std::vector<sqlite3_stmt*> m_inserts;
    sqlite3_stmt* m_begin = nullptr;
    sqlite3_stmt* m_commit = nullptr;
    sqlite3_stmt* m_forget = nullptr;
    sqlite3_stmt* m_note = nullptr;
};
