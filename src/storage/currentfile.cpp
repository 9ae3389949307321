#include "storage/currentfile.h"

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

bool CurrentFile::isUpToDateOn(const QString& path, const QString& connectionName) const
{
    return known() == Attachment::Trusted && m_changed.isEmpty() && m_path == path &&
           m_connection == connectionName;
}

void CurrentFile::beginAttaching()
{
    m_found = m_state;
    m_state = Attachment::Attaching;
}

void CurrentFile::endAttaching()
{
    m_state = m_found;
}

void CurrentFile::startOn(const QString& path, const QString& connectionName)
{
    forget();
    m_path = path;
    m_connection = connectionName;
    setKnown(Attachment::Trusted);
}

void CurrentFile::forget()
{
    setKnown(Attachment::Doubted);
    m_path.clear();
    m_connection.clear();
    m_inserts.clear();
    m_metadataWriter.reset();
    m_ids.clear();
    forgetExtremes();
}

void CurrentFile::worsen(Attachment state)
{
    setKnown(std::max(known(), state));
}

void CurrentFile::noteFailure(const ManagedQuery& query)
{
    if (query.connectionName() != m_connection) {
        return;
    }
    doubt();
    if (saysMissingTable(query.errorText())) {
        noteIncomplete();
    }
    if (query.metReadOnly()) {
        noteReadOnly();
    }
}

bool CurrentFile::isGoneFrom(const QString& path) const
{
    const FileIdentity found = fileIdentity(path);
    return !found.exists() || found != m_identity;
}

void CurrentFile::forgetExtremes()
{
    m_saved.clear();
    m_changed.clear();
    m_compareAll = false;
}

void CurrentFile::addSavedExtremes(int curveId, const DBCurveMetadata& extremes)
{
    m_saved.insert(curveId, extremes);
}

void CurrentFile::noteForeignExtremes()
{
    m_compareAll = true;
    doubt();
}

/// Ids, ascending, whose extremes differ from the file's. Ids unknown to the file have no row:
/// readings of a series that outlived a clear carry them.
QVector<int> CurrentFile::unsavedCurves(const QMap<int, DBCurveMetadata>& extremes) const
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

bool CurrentFile::saveExtremes(const QSqlDatabase& db, const QMap<int, DBCurveMetadata>& extremes)
{
    const QVector<int> ids = unsavedCurves(extremes);
    if (!ids.isEmpty() && !writeRows(db, ids, extremes)) {
        m_metadataWriter.reset();
        if (ids.size() > 1) {
            ManagedQuery(db).exec(kRollback);
        }
        return false;
    }
    for (const int id : ids) {
        const DBCurveMetadata saved = extremes.value(id);
        m_saved.insert(id, saved);
        m_changed.remove(id);
        if (holdsNan(saved)) {
            doubt();
        }
    }
    m_compareAll = false;
    return true;
}

bool CurrentFile::writeRows(const QSqlDatabase& db, const QVector<int>& ids,
                            const QMap<int, DBCurveMetadata>& extremes)
{
    if (!m_metadataWriter || !m_metadataWriter->isUsable()) {
        m_metadataWriter = std::make_unique<ManagedQuery>(db);
        m_metadataWriter->setForwardOnly(true);
        if (!m_metadataWriter->prepare(QStringLiteral(
                "INSERT OR REPLACE INTO curve_metadata "
                "(curve_id, min_time, max_time, min_value, max_value) VALUES (?, ?, ?, ?, ?)"))) {
            return failedToSave(*m_metadataWriter);
        }
    }
    const bool several = ids.size() > 1;
    if (several) {
        ManagedQuery(db).exec(kBegin);
    }
    for (const int id : ids) {
        const DBCurveMetadata row = extremes.value(id);
        if (!m_metadataWriter->execWith(
                {id, row.minTime, row.maxTime, row.minValue, row.maxValue})) {
            return failedToSave(*m_metadataWriter);
        }
    }
    if (!several) {
        return true;
    }
    ManagedQuery commit(db);
    return commit.exec(kCommit) || failedToSave(commit);
}

bool CurrentFile::failedToSave(const ManagedQuery& query)
{
    noteFailure(query);
    qWarning() << "保存曲线元数据失败:" << query.errorText();
    return false;
}

} // namespace scn
