#include "storage/filecatalogue.h"

#include <QDebug>

namespace scn {

namespace {

struct BaseTable
{
    const char* sql;
    const char* failure;
};

constexpr BaseTable kBaseTables[] = {
    {"CREATE TABLE IF NOT EXISTS curve_info ("
     "curve_id INTEGER PRIMARY KEY AUTOINCREMENT, "
     "name TEXT NOT NULL UNIQUE)",
     "创建curve_info表失败:"},
    {"CREATE TABLE IF NOT EXISTS batch_metadata ("
     "id INTEGER PRIMARY KEY AUTOINCREMENT, "
     "curve_id INTEGER NOT NULL, "
     "batch_start INTEGER NOT NULL, "
     "batch_end INTEGER NOT NULL, "
     "table_name TEXT NOT NULL, "
     "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id), "
     "UNIQUE(curve_id, table_name))",
     "创建batch_metadata表失败:"},
    {"CREATE TABLE IF NOT EXISTS curve_metadata ("
     "curve_id INTEGER PRIMARY KEY, "
     "min_time INTEGER, "
     "max_time INTEGER, "
     "min_value REAL, "
     "max_value REAL, "
     "FOREIGN KEY(curve_id) REFERENCES curve_info(curve_id))",
     "创建curve_metadata表失败:"},
};

void readNames(const QSqlDatabase& db, FileCatalogue& catalogue, const FailureHandler& onFailure)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT curve_id, name FROM curve_info"))) {
        onFailure(query);
        return;
    }
    while (query.next()) {
        catalogue.names.insert(query.value(0).toInt(), query.value(1).toString());
    }
}

void readBatches(const QSqlDatabase& db, FileCatalogue& catalogue, const FailureHandler& onFailure)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral(
            "SELECT curve_id, batch_start, batch_end, table_name FROM batch_metadata"))) {
        onFailure(query);
        return;
    }
    while (query.next()) {
        catalogue.batches.append(
            {query.value(1).toLongLong(), query.value(2).toLongLong(), query.value(3).toString()});
    }
}

void readExtremes(const QSqlDatabase& db, FileCatalogue& catalogue, const FailureHandler& onFailure)
{
    ManagedQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT curve_id, min_time, max_time, min_value, max_value "
                                   "FROM curve_metadata"))) {
        onFailure(query);
        return;
    }
    while (query.next()) {
        const int curveId = query.value(0).toInt();
        DBCurveMetadata extremes;
        extremes.minTime = query.value(1).toLongLong();
        extremes.maxTime = query.value(2).toLongLong();
        extremes.minValue = query.value(3).toDouble();
        extremes.maxValue = query.value(4).toDouble();
        catalogue.extremes.insert(curveId, extremes);
        if (query.value(1).isNull() || query.value(2).isNull() || query.value(3).isNull() ||
            query.value(4).isNull()) {
            catalogue.nullExtremes.insert(curveId);
        }
    }
}

} // namespace

bool createBaseTables(const QSqlDatabase& db)
{
    if (!db.isOpen()) {
        return false;
    }
    bool created = true;
    ManagedQuery query(db);
    for (const BaseTable& table : kBaseTables) {
        if (!query.exec(QString::fromLatin1(table.sql))) {
            qCritical() << table.failure << query.errorText();
            created = false;
        }
    }
    return created;
}

FileCatalogue readCatalogue(const QSqlDatabase& db, const FailureHandler& onFailure)
{
    FileCatalogue catalogue;
    readNames(db, catalogue, onFailure);
    readBatches(db, catalogue, onFailure);
    readExtremes(db, catalogue, onFailure);
    return catalogue;
}

} // namespace scn
