#include "storetool/forward/batchtablereader.h"

#include <sqlite3.h>

#include <cstring>
#include <limits>

namespace scnstore {

namespace {

enum Column { kId, kCurveId, kTime, kValue };

quint64 bitsOf(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

/// SQLite keeps a NaN as NULL.
double valueOf(sqlite3_stmt* row, int column)
{
    const int type = sqlite3_column_type(row, column);
    return type == SQLITE_FLOAT || type == SQLITE_INTEGER
               ? sqlite3_column_double(row, column)
               : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

bool BatchTableReader::verify(const DayFileConnection& file, const QVector<TablePlace>& known)
{
    const Statement first =
        file.prepare("SELECT timestamp FROM \"" + m_table + "\" ORDER BY id LIMIT 1");
    if (!first) {
        return false;
    }
    const int code = sqlite3_step(first.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        return false;
    }
    const qint64 firstTime = code == SQLITE_ROW ? sqlite3_column_int64(first.get(), 0) : 0;
    TablePlace found = m_place;
    for (const TablePlace& place : known) {
        if (place.firstTime == firstTime && place.lastId > found.lastId) {
            found = place;
        }
    }
    if (found.firstTime != firstTime || !stillHas(file, found)) {
        found = {};
    }
    if (found.lastId != m_place.lastId || found.lastId == 0) {
        m_lastNumber = 0;
        m_lastNumberRead = 0;
    }
    m_place = found;
    m_place.firstTime = firstTime;
    m_placeRead = m_place;
    m_isVerified = true;
    return true;
}

bool BatchTableReader::stillHas(const DayFileConnection& file, const TablePlace& place) const
{
    const Statement last =
        file.prepare("SELECT timestamp, value FROM \"" + m_table + "\" WHERE id = ?");
    if (!last) {
        return false;
    }
    sqlite3_bind_int64(last.get(), 1, place.lastId);
    return sqlite3_step(last.get()) == SQLITE_ROW &&
           sqlite3_column_int64(last.get(), 0) == place.lastTime &&
           bitsOf(valueOf(last.get(), 1)) == place.lastValueBits;
}

BatchTableReader::Outcome BatchTableReader::read(const DayFileConnection& file,
                                                 const QByteArray& instrument,
                                                 const CurveNames& names, qint64 lastNumber,
                                                 int limit, ReadingBatch& batch)
{
    if (!m_newRows) {
        m_newRows = file.prepare("SELECT id, curve_id, timestamp, value FROM \"" + m_table +
                                 "\" WHERE id > ? ORDER BY id LIMIT ?");
        if (!m_newRows) {
            return Outcome::Failed;
        }
    }
    sqlite3_stmt* const rows = m_newRows.get();
    sqlite3_bind_int64(rows, 1, m_place.lastId);
    sqlite3_bind_int(rows, 2, limit);
    qint64 curveId = -1;
    QByteArray curve;
    int count = 0;
    int code = sqlite3_step(rows);
    for (; code == SQLITE_ROW; code = sqlite3_step(rows), ++count) {
        if (sqlite3_column_int64(rows, kCurveId) != curveId || curve.isEmpty()) {
            curveId = sqlite3_column_int64(rows, kCurveId);
            curve = curveName(names, curveId);
        }
        const double value = valueOf(rows, kValue);
        m_placeRead.lastId = sqlite3_column_int64(rows, kId);
        m_placeRead.lastTime = sqlite3_column_int64(rows, kTime);
        m_placeRead.lastValueBits = bitsOf(value);
        if (sqlite3_column_type(rows, kTime) != SQLITE_INTEGER ||
            !batch.addReading(instrument, curve, m_placeRead.lastTime, value)) {
            ++m_unusableRows;
        }
    }
    sqlite3_reset(rows);
    if (count > 0) {
        batch.addPlace(instrument, m_table, m_placeRead);
    }
    if (code != SQLITE_DONE) {
        return Outcome::Failed;
    }
    if (count == limit) {
        m_lastNumberRead = m_placeRead.lastId;
        return Outcome::More;
    }
    m_lastNumberRead = lastNumber;
    return Outcome::Complete;
}

QByteArray BatchTableReader::curveName(const CurveNames& names, qint64 curveId) const
{
    const QByteArray name = names.value(curveId);
    return name.isEmpty() ? "curve_" + QByteArray::number(curveId) : name;
}

void BatchTableReader::keep()
{
    m_place = m_placeRead;
    m_lastNumber = m_lastNumberRead;
}

void BatchTableReader::drop()
{
    m_placeRead = m_place;
    m_lastNumberRead = m_lastNumber;
}

} // namespace scnstore
