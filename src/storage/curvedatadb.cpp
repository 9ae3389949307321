#include "storage/curvedatadb.h"

#include "storage/shardnaming.h"

using namespace scn;

QString CurveDataDB::dbPathForDate(const QString& dateKey) const
{
    return m_files.path(dateKey);
}

QString CurveDataDB::dbPathForTime(qint64 timestamp) const
{
    return dbPathForDate(dateKeyForTime(timestamp));
}

QString CurveDataDB::todayDbPath() const
{
    return dbPathForDate(todayKey());
}

QSharedPointer<QSqlDatabase> CurveDataDB::openDb(const QString& path)
{
    return m_files.open(path);
}

void CurveDataDB::ensureCurrentDb()
{
    m_today.attach();
}

DBCurveMetadata CurveDataDB::curveMetadata(int curveId) const
{
    const QMutexLocker locker(&m_mutex);
    return m_metadataMap.value(curveId);
}

QMap<int, QString> CurveDataDB::curveNames() const
{
    const QMutexLocker locker(&m_mutex);
    return m_curveNameMap;
}

QMap<int, QString> CurveDataDB::namesForIds(const QList<int>& ids) const
{
    const QMutexLocker locker(&m_mutex);
    QMap<int, QString> names;
    for (const int id : ids) {
        const auto known = m_curveNameMap.constFind(id);
        if (known != m_curveNameMap.constEnd()) {
            names.insert(id, *known);
        }
    }
    return names;
}

int CurveDataDB::knownTableCount() const
{
    const QMutexLocker locker(&m_mutex);
    return m_knownTables.size();
}
