#include "storage/roworder.h"

#include "storage/managedquery.h"
#include "storage/rowcursor.h"

#include <QSqlDatabase>

#include <algorithm>

namespace scn {

namespace {

/// More gaps than this are a table of another kind, which is read row by row.
constexpr size_t kMostRuns = 1000;

} // namespace

qint64 RowOrder::rowAt(qint64 place) const
{
    const auto later =
        std::upper_bound(m_runs.cbegin(), m_runs.cend(), place,
                         [](qint64 wanted, const RowRun& run) { return wanted < run.before; });
    const RowRun& run = *std::prev(later);
    return run.firstRow + (place - run.before);
}

void RowOrder::add(qint64 row, qint64 time)
{
    if (!m_isKnown) {
        return;
    }
    if (!m_runs.empty() && time <= lastTime()) {
        giveUp();
        return;
    }
    if (!m_runs.empty() && row == lastRow() + 1) {
        m_runs.back().lastRow = row;
        m_runs.back().lastTime = time;
    } else if (m_runs.size() < kMostRuns) {
        m_runs.push_back({row, row, time, count()});
    } else {
        giveUp();
    }
}

void RowOrder::giveUp()
{
    m_isKnown = false;
    m_runs.clear();
}

const RowOrder& RowOrders::update(const QString& path, const QSqlDatabase& database,
                                  const QString& table, int curveId)
{
    RowOrder& order = fileFor(path, database).tables[table];
    if (order.isKnown()) {
        const qint64 before = order.count();
        RowCursor rows(database, table);
        if (!rows.extend(order, curveId)) {
            order.giveUp();
        }
        m_rowsLookedAt += std::max<qint64>(order.count() - before, 0);
    }
    return order;
}

RowOrders::File& RowOrders::fileFor(const QString& path, const QSqlDatabase& database)
{
    ManagedQuery query(database);
    const bool hasVersion = query.exec(QStringLiteral("PRAGMA data_version")) && query.next();
    const qint64 version = hasVersion ? query.value(0).toLongLong() : -1;
    File& file = m_files[path];
    const QString connection = database.connectionName();
    if (file.connection != connection || file.version != version || version < 0) {
        file = {connection, version, {}};
    }
    return file;
}

} // namespace scn
