#include "storage/roworders.h"

#include "storage/managedquery.h"
#include "storage/rowcursor.h"

#include <QSqlDatabase>

#include <algorithm>

namespace scn {

namespace {

/// Calls of update() for what is shown: forty curves of ten tables.
constexpr quint64 kCallsOfAView = 400;

qint64 keptOf(const RowOrder& order)
{
    return order.kept() ? order.kept()->count() : 0;
}

} // namespace

const RowOrder* RowOrders::update(const QString& path, const QSqlDatabase& database,
                                  const QString& table, int curveId, ReadSlice& slice)
{
    Table& entry = fileFor(path, database).tables[table];
    entry.asked = ++m_calls;
    return extend(entry, database, table, curveId, slice);
}

bool RowOrders::lookThrough(const QString& path, const QSqlDatabase& database, const QString& table,
                            int curveId, ReadSlice& slice)
{
    Table& entry = fileFor(path, database).tables[table];
    entry.asked = std::max(entry.asked, m_calls - std::min(m_calls, kCallsOfAView));
    return extend(entry, database, table, curveId, slice) != nullptr;
}

/// Null if that takes another slice.
const RowOrder* RowOrders::extend(Table& entry, const QSqlDatabase& database, const QString& table,
                                  int curveId, ReadSlice& slice)
{
    RowOrder& order = entry.order;
    if (!order.isKnown()) {
        return &order;
    }
    const qint64 keptBefore = keptOf(order);
    const ReadStep step = RowCursor(database, table).extend(order, curveId, slice);
    if (step == ReadStep::Failed) {
        order.giveUp();
    }
    m_kept += keptOf(order) - keptBefore;
    while (m_kept > m_mostKept) {
        dropLongestNotAsked();
    }
    return step == ReadStep::Unfinished ? nullptr : &order;
}

/// The order of the table stays known: its rows are picked in the file from then on.
void RowOrders::dropLongestNotAsked()
{
    Table* found = nullptr;
    for (File& file : m_files) {
        for (Table& table : file.tables) {
            if (keptOf(table.order) > 0 && (!found || table.asked < found->asked)) {
                found = &table;
            }
        }
    }
    m_kept -= keptOf(found->order);
    found->order.dropKept();
}

void RowOrders::clear()
{
    m_files.clear();
    m_kept = 0;
}

RowOrders::File& RowOrders::fileFor(const QString& path, const QSqlDatabase& database)
{
    ManagedQuery query(database);
    const bool hasVersion = query.exec(QStringLiteral("PRAGMA data_version")) && query.next();
    const qint64 version = hasVersion ? query.value(0).toLongLong() : -1;
    File& file = m_files[path];
    const QString connection = database.connectionName();
    if (file.connection != connection || file.version != version || version < 0) {
        for (const Table& table : qAsConst(file.tables)) {
            m_kept -= keptOf(table.order);
        }
        file = {connection, version, {}};
    }
    return file;
}

} // namespace scn
