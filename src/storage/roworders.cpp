#include "storage/roworders.h"

#include "storage/managedquery.h"
#include "storage/rowcursor.h"

#include <QSqlDatabase>

namespace scn {

const RowOrder* RowOrders::update(const QString& path, const QSqlDatabase& database,
                                  const QString& table, int curveId, ReadSlice& slice)
{
    RowOrder& order = fileFor(path, database).tables[table];
    if (order.isKnown()) {
        const ReadStep step = RowCursor(database, table).extend(order, curveId, slice);
        if (step == ReadStep::Unfinished) {
            return nullptr;
        }
        if (step == ReadStep::Failed) {
            order.giveUp();
        }
    }
    return &order;
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
