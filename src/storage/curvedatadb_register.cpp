#include "storage/curvedatadb.h"

#include "storage/lockpatience.h"
#include "storage/statements.h"
#include "storage/storeclock.h"
#include "storage/storewaits.h"

#include <QDebug>

using namespace scn;

int CurveDataDB::registerCurve(const QString& name)
{
    return enlistCurve(name, NewCurve::Pause);
}

int CurveDataDB::registerCurveAtOnce(const QString& name)
{
    return enlistCurve(name, NewCurve::AtOnce);
}

int CurveDataDB::enlistCurve(const QString& name, NewCurve newCurve)
{
    const QMutexLocker locker(&m_mutex);
    const LockPatience patience;
    ensureCurrentDb();
    const bool isOpen = isCurrentOpen() || reopenCurrentDb();
    const int curveId = isOpen ? curveIdInCurrentFile(name, newCurve) : -1;
    m_refusing = m_refusing || curveId < 0;
    return curveId;
}

/// Assigns a curve's id in today's file. Before a new name it makes the pauses of two further
/// look-ups, which give a newly cleared store time to settle.
int CurveDataDB::curveIdInCurrentFile(const QString& name, NewCurve newCurve)
{
    int curveId = findCurve(name);
    for (int pause = 0; curveId < 0 && newCurve == NewCurve::Pause &&
                        pause < storewaits::kRegisterPauses && !m_closedForExit;
         ++pause) {
        storeSleep(storewaits::kRegisterPause);
    }
    if (curveId < 0) {
        curveId = insertCurve(name);
    }
    if (curveId < 0) {
        return -1;
    }
    m_curveNameMap.insert(curveId, name);
    m_today.addCurve(curveId);
    m_loadedPath.clear(); // the names of a file loaded before may be others
    return curveId;
}

/// Looks a curve up in today's file; -1 if it is not there.
int CurveDataDB::findCurve(const QString& name)
{
    ManagedQuery query(*m_currentDb);
    if (!query.run(QStringLiteral("SELECT curve_id FROM curve_info WHERE name = ?"), {name})) {
        if (saysMissingTable(query.errorText())) {
            createBaseTables(*m_currentDb);
        }
    } else if (query.next()) {
        return query.value(0).toInt();
    }
    return -1;
}

int CurveDataDB::insertCurve(const QString& name)
{
    const QString sql = QStringLiteral("INSERT INTO curve_info (name) VALUES (?)");
    ManagedQuery query(*m_currentDb);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    const QString error = query.errorText();
    if (!saysMissingTable(error) && !error.contains(QLatin1String("SQL logic error"))) {
        return -1;
    }
    createBaseTables(*m_currentDb);
    if (query.run(sql, {name})) {
        return query.lastInsertId().toInt();
    }
    qCritical() << "重新初始化后仍无法注册曲线:" << query.errorText();
    return -1;
}
