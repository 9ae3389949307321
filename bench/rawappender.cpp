#include "rawappender.h"

#include <algorithm>

RawAppender::RawAppender(const QString& path, int curves, qint64 batchStart)
    : m_store(path)
    , m_readings(curves, batchStart)
    , m_bounds(static_cast<size_t>(curves))
{
    m_store.execute("PRAGMA journal_mode = WAL");
    m_store.execute("PRAGMA synchronous = NORMAL");
    m_store.execute("PRAGMA foreign_keys = ON");
    m_store.createDay(curves);
    m_begin = m_store.prepare("BEGIN");
    m_commit = m_store.prepare("COMMIT");
    m_forget = m_store.prepare("DELETE FROM curve_metadata WHERE curve_id = ?");
    m_note = m_store.prepare("INSERT INTO curve_metadata (curve_id, min_time, max_time, "
                             "min_value, max_value) VALUES (?, ?, ?, ?, ?)");
    for (int curveId = 1; curveId <= curves; ++curveId) {
        const QString table = rawTableName(curveId, batchStart);
        m_store.createBatchTable(curveId, batchStart, table);
        m_inserts.push_back(m_store.prepare("INSERT OR IGNORE INTO " + table.toStdString() +
                                            " (curve_id, timestamp, value) VALUES (?, ?, ?)"));
    }
}

RawAppender::~RawAppender()
{
    for (sqlite3_stmt* statement : m_inserts) {
        sqlite3_finalize(statement);
    }
    for (sqlite3_stmt* statement : {m_begin, m_commit, m_forget, m_note}) {
        sqlite3_finalize(statement);
    }
}

void RawAppender::appendPoints(int count)
{
    for (int i = 0; i < count; ++i) {
        appendPoint();
    }
}

void RawAppender::appendPoint()
{
    m_readings.next();
    const auto index = static_cast<size_t>(m_readings.curveId() - 1);
    sqlite3_stmt* const insert = m_inserts[index];
    sqlite3_bind_int(insert, 1, m_readings.curveId());
    sqlite3_bind_int64(insert, 2, m_readings.time());
    sqlite3_bind_double(insert, 3, m_readings.value());
    stepDone(insert);

    DBCurveMetadata& bounds = m_bounds[index];
    bounds.minTime = std::min(bounds.minTime, m_readings.time());
    bounds.maxTime = std::max(bounds.maxTime, m_readings.time());
    bounds.minValue = std::min(bounds.minValue, m_readings.value());
    bounds.maxValue = std::max(bounds.maxValue, m_readings.value());
    stepDone(m_begin);
    sqlite3_bind_int(m_forget, 1, m_readings.curveId());
    stepDone(m_forget);
    sqlite3_bind_int(m_note, 1, m_readings.curveId());
    sqlite3_bind_int64(m_note, 2, bounds.minTime);
    sqlite3_bind_int64(m_note, 3, bounds.maxTime);
    sqlite3_bind_double(m_note, 4, bounds.minValue);
    sqlite3_bind_double(m_note, 5, bounds.maxValue);
    stepDone(m_note);
    stepDone(m_commit);
}
