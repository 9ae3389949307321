#include "plainstore.h"

#include "storage/shardnaming.h"
#include "support/daytables.h"

#include <QVariant>
#include <QVector>

#include <sqlite3.h>

#include <limits>

namespace {

/// Runs a statement with values; returns the first row, or nothing, and whether it succeeded.
QVector<QVariant> run(sqlite3* db, const QString& sql, const QVector<QVariant>& values,
                      bool* ok = nullptr, QVector<QVector<QVariant>>* all = nullptr)
{
    sqlite3_stmt* statement = nullptr;
    int result = sqlite3_prepare_v2(db, sql.toUtf8().constData(), -1, &statement, nullptr);
    QVector<QVariant> first;
    if (result == SQLITE_OK) {
        for (int i = 0; i < values.size(); ++i) {
            const QVariant& value = values.at(i);
            if (value.type() == QVariant::Double) {
                sqlite3_bind_double(statement, i + 1, value.toDouble());
            } else if (value.type() == QVariant::String) {
                sqlite3_bind_text(statement, i + 1, value.toString().toUtf8().constData(), -1,
                                  SQLITE_TRANSIENT);
            } else {
                sqlite3_bind_int64(statement, i + 1, value.toLongLong());
            }
        }
        while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
            QVector<QVariant> row;
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                if (sqlite3_column_type(statement, column) == SQLITE_FLOAT) {
                    row.append(sqlite3_column_double(statement, column));
                } else if (sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
                    row.append(static_cast<qint64>(sqlite3_column_int64(statement, column)));
                } else {
                    row.append(QString::fromUtf8(
                        reinterpret_cast<const char*>(sqlite3_column_text(statement, column))));
                }
            }
            if (first.isEmpty()) {
                first = row;
            }
            if (all) {
                all->append(row);
            }
        }
    }
    if (ok) {
        *ok = result == SQLITE_DONE;
    }
    sqlite3_finalize(statement);
    return first;
}

} // namespace

PlainStore::PlainStore(const QString& directory)
    : m_directory(directory)
{
    ensureCurrent();
}

PlainStore::~PlainStore()
{
    for (sqlite3* db : qAsConst(m_files)) {
        sqlite3_close(db);
    }
}

sqlite3* PlainStore::open(const QString& path)
{
    if (!m_files.contains(path)) {
        sqlite3* db = nullptr;
        sqlite3_open(path.toUtf8().constData(), &db);
        run(db, QStringLiteral("PRAGMA synchronous = OFF"), {});
        run(db, QStringLiteral("PRAGMA foreign_keys = ON"), {});
        m_files.insert(path, db);
    }
    return m_files.value(path);
}

void PlainStore::ensureCurrent()
{
    const QString today = todayKey();
    if (today == m_currentDate) {
        return;
    }
    const QMap<int, QString> names = m_names;
    m_currentDate = today;
    m_currentPath = m_directory + QLatin1Char('/') + today + QStringLiteral(".db");
    createBaseTables(open(m_currentPath));
    for (const QString& name : names) {
        registerCurve(name);
    }
    load(m_currentPath);
}

void PlainStore::createBaseTables(sqlite3* db)
{
    for (const QString& statement : daytables::baseStatements()) {
        run(db, statement, {});
    }
}

void PlainStore::load(const QString& path)
{
    m_extremes.clear();
    sqlite3* db = open(path);
    QVector<QVector<QVariant>> rows;
    run(db, QStringLiteral("SELECT curve_id, name FROM curve_info"), {}, nullptr, &rows);
    for (const auto& row : qAsConst(rows)) {
        m_names.insert(row.at(0).toInt(), row.at(1).toString());
    }
    rows.clear();
    run(db,
        QStringLiteral(
            "SELECT curve_id, min_time, max_time, min_value, max_value FROM curve_metadata"),
        {}, nullptr, &rows);
    for (const auto& row : qAsConst(rows)) {
        m_extremes.insert(row.at(0).toInt(), {row.at(1).toLongLong(), row.at(2).toLongLong(),
                                              row.at(3).toDouble(), row.at(4).toDouble()});
    }
}

int PlainStore::registerCurve(const QString& name)
{
    ensureCurrent();
    sqlite3* db = open(m_currentPath);
    const auto found =
        run(db, QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name});
    int id = found.isEmpty() ? 0 : found.first().toInt();
    if (found.isEmpty()) {
        run(db, QStringLiteral("INSERT INTO curve_info (name) VALUES (?)"), {name});
        id = static_cast<int>(sqlite3_last_insert_rowid(db));
    }
    m_names.insert(id, name);
    return id;
}

/// Today's curves under today's ids, where there are none.
void PlainStore::setUp(sqlite3* db)
{
    if (!run(db, QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'curve_info'"), {})
             .isEmpty()) {
        return;
    }
    createBaseTables(db);
    QVector<QVector<QVariant>> rows;
    run(open(m_currentPath), QStringLiteral("SELECT curve_id, name FROM curve_info"), {}, nullptr,
        &rows);
    for (const auto& row : qAsConst(rows)) {
        run(db, QStringLiteral("INSERT INTO curve_info VALUES (?, ?)"), row);
    }
}

void PlainStore::openForWrite(int curveId, qint64 timestamp)
{
    const qint64 start = alignToBatchStart(timestamp);
    const QString path =
        m_directory + QLatin1Char('/') + dateKeyForTime(start) + QStringLiteral(".db");
    sqlite3* db = open(path);
    if (path != m_currentPath) {
        setUp(db);
        load(path);
        if (!m_names.contains(curveId)) {
            return;
        }
        const QString name = m_names.value(curveId);
        const auto found =
            run(db, QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name});
        if (found.isEmpty()) {
            bool ok = false;
            run(db, QStringLiteral("INSERT INTO curve_info (name) VALUES (?)"), {name}, &ok);
            if (!ok) {
                return;
            }
            curveId = static_cast<int>(sqlite3_last_insert_rowid(db));
            m_names.insert(curveId, name);
        } else {
            curveId = found.first().toInt();
        }
    }
    const QString table = makeTableName(curveId, makeBatchName(timestamp));
    if (!run(db,
             QStringLiteral("SELECT 1 FROM batch_metadata WHERE curve_id = ? AND table_name = ?"),
             {curveId, table})
             .isEmpty()) {
        return;
    }
    run(db, QStringLiteral("BEGIN"), {});
    run(db, daytables::batchStatement(table), {});
    bool ok = false;
    run(db,
        QStringLiteral("INSERT OR IGNORE INTO batch_metadata "
                       "(curve_id, batch_start, batch_end, table_name) VALUES (?, ?, ?, ?)"),
        {curveId, start, start + 21599999, table}, &ok);
    run(db, ok ? QStringLiteral("COMMIT") : QStringLiteral("ROLLBACK"), {});
}

void PlainStore::appendPoint(int curveId, qint64 timestamp, double value)
{
    const QString path =
        m_directory + QLatin1Char('/') + dateKeyForTime(timestamp) + QStringLiteral(".db");
    const bool same = path == m_currentPath;
    if (!same) {
        ensureCurrent();
    }
    sqlite3* db = open(path);
    openForWrite(curveId, timestamp);
    run(db,
        QStringLiteral("INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) VALUES (?, ?, ?)")
            .arg(makeTableName(curveId, makeBatchName(timestamp))),
        {curveId, timestamp, value});
    if (!same) {
        load(path);
    }
    update(curveId, timestamp, value);
    saveMetadata();
}

void PlainStore::update(int curveId, qint64 timestamp, double value)
{
    if (!m_extremes.contains(curveId)) {
        m_extremes.insert(
            curveId, {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
                      std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()});
    }
    Extremes& extremes = m_extremes[curveId];
    if (timestamp < extremes.minTime || extremes.minTime == 0) {
        extremes.minTime = timestamp;
    }
    if (timestamp > extremes.maxTime) {
        extremes.maxTime = timestamp;
    }
    if (value < extremes.minValue || extremes.minValue == 0.0) {
        extremes.minValue = value;
    }
    if (value > extremes.maxValue) {
        extremes.maxValue = value;
    }
}

void PlainStore::saveMetadata()
{
    ensureCurrent();
    sqlite3* db = open(m_currentPath);
    run(db, QStringLiteral("BEGIN"), {});
    for (auto it = m_extremes.constBegin(); it != m_extremes.constEnd(); ++it) {
        // Ids unknown to the file have no row there.
        if (run(db, QStringLiteral("SELECT 1 FROM curve_info WHERE curve_id = ?"), {it.key()})
                .isEmpty()) {
            continue;
        }
        run(db, QStringLiteral("DELETE FROM curve_metadata WHERE curve_id = ?"), {it.key()});
        run(db,
            QStringLiteral("INSERT INTO curve_metadata (curve_id, min_time, max_time, min_value, "
                           "max_value) VALUES (?, ?, ?, ?, ?)"),
            {it.key(), it->minTime, it->maxTime, it->minValue, it->maxValue});
    }
    run(db, QStringLiteral("COMMIT"), {});
}

void PlainStore::flushAndDetach()
{
    if (m_currentPath.isEmpty()) {
        return;
    }
    saveMetadata();
    m_currentPath.clear();
    m_currentDate.clear();
}
