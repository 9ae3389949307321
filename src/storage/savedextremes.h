#pragma once

#include "storage/attachmentstate.h"
#include "storage/curverecords.h"
#include "storage/managedquery.h"

#include <QMap>
#include <QSet>
#include <QSqlDatabase>
#include <QVector>

#include <memory>

namespace scn {

/// Saves the extremes of curves in today's file. Tracks what the file's rows hold, so that only
/// differences are written.
class SavedExtremes
{
public:
    /// A failure to save is noted in the attachment.
    explicit SavedExtremes(AttachmentState& attachment)
        : m_attachment(attachment)
    {
    }

    /// Whether no change is known that has yet to be saved.
    bool isUpToDate() const { return m_changed.isEmpty(); }

    /// Drops all that is known, and the statement.
    void forget();

    /// addRow() will follow for each row of the file.
    void forgetRows();

    /// Enters a curve of the file; the extremes of others have no row.
    void addCurve(int curveId) { m_ids.insert(curveId); }

    void addRow(int curveId, const DBCurveMetadata& extremes) { m_saved.insert(curveId, extremes); }
    void forgetRow(int curveId) { m_saved.remove(curveId); }

    /// A curve's extremes in memory have changed, or reverted to the saved ones.
    void noteChange(int curveId) { m_changed.insert(curveId); }
    void forgetChange(int curveId) { m_changed.remove(curveId); }

    /// Memory holds the extremes of another file: any may differ.
    void noteForeign();

    /// Updates the rows to these extremes. Unchanged rows are skipped; several go in one
    /// transaction.
    bool save(const QSqlDatabase& db, const QMap<int, DBCurveMetadata>& extremes);

    /// The curves, ascending, whose extremes differ from the file's.
    QVector<int> unsavedCurves(const QMap<int, DBCurveMetadata>& extremes) const;

    /// Writes the rows of these curves without a transaction of its own. Whoever commits them
    /// calls noteSaved().
    bool writeRows(const QSqlDatabase& db, const QVector<int>& ids,
                   const QMap<int, DBCurveMetadata>& extremes);

    /// The rows of these curves have been committed.
    void noteSaved(const QVector<int>& ids, const QMap<int, DBCurveMetadata>& extremes);

    /// Logs that the extremes could not be saved, and why.
    void reportFailure(const ManagedQuery& query);

private:
    bool prepareWriter(const QSqlDatabase& db);

    AttachmentState& m_attachment;
    std::unique_ptr<ManagedQuery> m_writer;
    QSet<int> m_ids;
    QMap<int, DBCurveMetadata> m_saved;
    QSet<int> m_changed;       ///< Extremes changed since they were saved.
    bool m_compareAll = false; ///< Changes were not recorded one by one.
};

} // namespace scn
