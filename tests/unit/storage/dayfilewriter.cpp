#include "dayfilewriter.h"

#include "support/daytables.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

namespace {

void check(bool succeeded, const QSqlError& error, const QString& what)
{
    if (!succeeded) {
        qFatal("%s: %s", qPrintable(what), qPrintable(error.text()));
    }
}

} // namespace

DayFileWriter::DayFileWriter(const QString& path)
    : m_connectionName(QUuid::createUuid().toString())
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    db.setDatabaseName(path);
    check(db.open(), db.lastError(), path);
    for (const QString& statement : daytables::baseStatements()) {
        execute(statement);
    }
}

DayFileWriter::~DayFileWriter()
{
    QSqlDatabase::database(m_connectionName).close();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void DayFileWriter::execute(const QString& sql)
{
    QSqlQuery query(QSqlDatabase::database(m_connectionName));
    check(query.exec(sql), query.lastError(), sql);
}

void DayFileWriter::addCurve(int curveId, const QString& name)
{
    QSqlQuery query(QSqlDatabase::database(m_connectionName));
    query.prepare(QStringLiteral("INSERT INTO curve_info (curve_id, name) VALUES (?, ?)"));
    query.addBindValue(curveId);
    query.addBindValue(name);
    check(query.exec(), query.lastError(), name);
}

void DayFileWriter::addBatchRow(int curveId, qint64 batchStart, const QString& tableName)
{
    QSqlQuery query(QSqlDatabase::database(m_connectionName));
    query.prepare(QStringLiteral("INSERT INTO batch_metadata (curve_id, batch_start, batch_end, "
                                 "table_name) VALUES (?, ?, ?, ?)"));
    query.addBindValue(curveId);
    query.addBindValue(batchStart);
    query.addBindValue(batchStart + kBatchMs - 1);
    query.addBindValue(tableName);
    check(query.exec(), query.lastError(), tableName);
}

void DayFileWriter::addBatch(int curveId, qint64 batchStart, const QString& tableName,
                             const QVector<QPointF>& points)
{
    addBatchRow(curveId, batchStart, tableName);
    QString quoted = tableName;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    execute(daytables::batchStatement(tableName));
    execute(QStringLiteral("BEGIN"));
    QSqlQuery query(QSqlDatabase::database(m_connectionName));
    query.prepare(QStringLiteral("INSERT INTO \"%1\" (curve_id, timestamp, value) VALUES (?, ?, ?)")
                      .arg(quoted));
    for (const QPointF& point : points) {
        query.addBindValue(curveId);
        query.addBindValue(static_cast<qint64>(point.x()));
        query.addBindValue(point.y());
        check(query.exec(), query.lastError(), tableName);
    }
    query.finish();
    execute(QStringLiteral("COMMIT"));
}

QString DayFileWriter::tableName(int curveId, qint64 batchStart)
{
    const QString format = QStringLiteral("yyyyMMdd_HHmmss");
    return QStringLiteral("curve_%1_batch_%2_%3")
        .arg(QString::number(curveId), QDateTime::fromMSecsSinceEpoch(batchStart).toString(format),
             QDateTime::fromMSecsSinceEpoch(batchStart + kBatchMs - 1).toString(format));
}

qint64 localTime(const char* text)
{
    const QDateTime time =
        QDateTime::fromString(QLatin1String(text), QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
    if (!time.isValid()) {
        qFatal("not a local time: %s", text);
    }
    return time.toMSecsSinceEpoch();
}
