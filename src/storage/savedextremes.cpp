#include "storage/savedextremes.h"

#include "storage/statements.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace scn {

namespace {

bool sameExtremes(const DBCurveMetadata& left, const DBCurveMetadata& right)
{
    return left.minTime == right.minTime && left.maxTime == right.maxTime &&
           left.minValue == right.minValue && left.maxValue == right.maxValue;
}

/// SQLite has no NaN; it is kept as null and read back as zero.
bool holdsNan(const DBCurveMetadata& extremes)
{
    return std::isnan(extremes.minValue) || std::isnan(extremes.maxValue);
}

} // namespace

void SavedExtremes::forget()
{
    m_writer.reset();
    m_ids.clear();
    forgetRows();
}

void SavedExtremes::forgetRows()
{
    m_saved.clear();
    m_changed.clear();
    m_compareAll = false;
}

void SavedExtremes::noteForeign()
{
    m_compareAll = true;
    m_attachment.doubt();
}

/// Ids unknown to the file have no row: readings of a series that outlived a clear carry them.
QVector<int> SavedExtremes::unsavedCurves(const QMap<int, DBCurveMetadata>& extremes) const
{
    const QList<int> candidates = m_compareAll ? extremes.keys() : m_changed.values();
    QVector<int> ids;
    for (const int id : candidates) {
        const auto present = extremes.constFind(id);
        if (present == extremes.constEnd() || !m_ids.contains(id)) {
            continue;
        }
        const auto saved = m_saved.constFind(id);
        if (saved == m_saved.constEnd() || !sameExtremes(*saved, *present)) {
            ids.append(id);
        }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

bool SavedExtremes::save(const QSqlDatabase& db, const QMap<int, DBCurveMetadata>& extremes)
{
    const QVector<int> ids = unsavedCurves(extremes);
    const bool several = ids.size() > 1;
    if (several) {
        ManagedQuery(db).exec(kBegin);
    }
    bool isSaved = writeRows(db, ids, extremes);
    if (several && isSaved) {
        ManagedQuery commit(db);
        isSaved = commit.exec(kCommit);
        if (!isSaved) {
            reportFailure(commit);
        }
    }
    if (isSaved) {
        noteSaved(ids, extremes);
    } else if (several) {
        ManagedQuery(db).exec(kRollback);
    }
    return isSaved;
}

bool SavedExtremes::writeRows(const QSqlDatabase& db, const QVector<int>& ids,
                              const QMap<int, DBCurveMetadata>& extremes)
{
    for (const int id : ids) {
        const DBCurveMetadata row = extremes.value(id);
        if (!prepareWriter(db) ||
            !m_writer->runKept({id, row.minTime, row.maxTime, row.minValue, row.maxValue})) {
            reportFailure(*m_writer);
            m_writer.reset();
            return false;
        }
    }
    return true;
}

/// Prepares the statement unless it is kept. False on failure, which it then has.
bool SavedExtremes::prepareWriter(const QSqlDatabase& db)
{
    if (m_writer && m_writer->isUsable()) {
        return true;
    }
    m_writer = std::make_unique<ManagedQuery>(db);
    m_writer->setForwardOnly(true);
    return m_writer->prepare(QStringLiteral(
        "INSERT OR REPLACE INTO curve_metadata "
        "(curve_id, min_time, max_time, min_value, max_value) VALUES (?, ?, ?, ?, ?)"));
}

void SavedExtremes::noteSaved(const QVector<int>& ids, const QMap<int, DBCurveMetadata>& extremes)
{
    for (const int id : ids) {
        const DBCurveMetadata saved = extremes.value(id);
        m_saved.insert(id, saved);
        m_changed.remove(id);
        if (holdsNan(saved)) {
            m_attachment.doubt();
        }
    }
    m_compareAll = false;
}

void SavedExtremes::reportFailure(const ManagedQuery& query)
{
    m_attachment.noteFailure(query);
    qWarning() << "保存曲线元数据失败:" << query.errorText();
}

} // namespace scn
