#pragma once

#include "rawstore.h"
#include "readings.h"
#include "storage/curvedatadb.h"

#include <vector>

/// The baseline for storing a reading: two commits through SQLite's C interface, the row and its
/// curve's extremes, with statements prepared once.
class RawAppender
{
public:
    /// Creates the file at `path` with one table per curve.
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
