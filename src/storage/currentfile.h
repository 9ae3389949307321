#pragma once

#include "storage/curverecords.h"
#include "storage/fileidentity.h"
#include "storage/keptinserts.h"
#include "storage/managedquery.h"

#include <QMap>
#include <QSet>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <memory>

namespace scn {

/// How well the store knows today's file, from the best to the worst.
enum class Attachment {
    Trusted,    ///< Memory agrees with the file, and nothing has failed since.
    Doubted,    ///< Memory may differ: the file is read at the next attachment.
    Incomplete, ///< The file lacks base tables, or curves that it must have.
    ReadOnly,   ///< The connection cannot write.
    Attaching,  ///< The file is being opened and read; nested calls start nothing.
};

/// Writes today's file: tracks what the file holds, so that only differences are written, and keeps
/// the statements prepared on its connection.
///
///     any state --beginAttaching()--> Attaching --endAttaching()--> Trusted, or what was found
///     Trusted --doubt(), noteIncomplete(), noteReadOnly(), noteFailure()--> a worse one
///     any state --forget()--> Doubted
///
/// Only another attachment improves a state. It survives a detachment: while Trusted, the file is
/// attached again without a statement.
class CurrentFile
{
public:
    bool isAttaching() const { return m_state == Attachment::Attaching; }

    /// Whether the file must be reopened before it can accept readings.
    bool isUnfit() const { return known() > Attachment::Doubted; }
    bool isReadOnly() const { return known() == Attachment::ReadOnly; }
    bool isIncomplete() const { return known() == Attachment::Incomplete; }

    /// Whether all of this still holds for a connection, so that nothing has to be read or written.
    bool isUpToDateOn(const QString& path, const QString& connectionName) const;

    void beginAttaching();
    void endAttaching();

    /// Starts afresh on a connection, and trusts it until something fails.
    void startOn(const QString& path, const QString& connectionName);

    /// Drops all that is known, and the statements.
    void forget();

    void doubt() { worsen(Attachment::Doubted); }
    void noteIncomplete() { worsen(Attachment::Incomplete); }
    void noteReadOnly() { worsen(Attachment::ReadOnly); }

    /// Examines a query's failure; one on this file shows what must be repaired.
    void noteFailure(const ManagedQuery& query);

    /// What the connection was opened on.
    const FileIdentity& identity() const { return m_identity; }
    void setIdentity(const FileIdentity& identity) { m_identity = identity; }

    /// Whether the file was deleted, moved or replaced since it was opened, so that further writes
    /// would be lost.
    bool isGoneFrom(const QString& path) const;

    KeptInserts& inserts() { return m_inserts; }

    /// Ids in its curve_info.
    void addCurve(int curveId) { m_ids.insert(curveId); }

    /// The rows of its curve_metadata are about to be told.
    void forgetExtremes();
    void addSavedExtremes(int curveId, const DBCurveMetadata& extremes);
    void forgetSavedExtremes(int curveId) { m_saved.remove(curveId); }

    /// A curve's extremes in memory have changed, or reverted to the saved ones.
    void noteChange(int curveId) { m_changed.insert(curveId); }
    void forgetChange(int curveId) { m_changed.remove(curveId); }

    /// Memory holds the extremes of another file: any may differ.
    void noteForeignExtremes();

    /// Updates curve_metadata to these extremes. Unchanged rows are skipped; several go in one
    /// transaction.
    bool saveExtremes(const QSqlDatabase& db, const QMap<int, DBCurveMetadata>& extremes);

private:
    /// What is known or, while attaching, has been found so far.
    Attachment known() const { return isAttaching() ? m_found : m_state; }
    void setKnown(Attachment state) { (isAttaching() ? m_found : m_state) = state; }
    void worsen(Attachment state);

    QVector<int> unsavedCurves(const QMap<int, DBCurveMetadata>& extremes) const;
    bool writeRows(const QSqlDatabase& db, const QVector<int>& ids,
                   const QMap<int, DBCurveMetadata>& extremes);
    bool failedToSave(const ManagedQuery& query);

    Attachment m_state = Attachment::Doubted;
    Attachment m_found = Attachment::Doubted; ///< The state after the current attachment.
    FileIdentity m_identity;

    /// The connection that the rest belongs to.
    QString m_path;
    QString m_connection;

    KeptInserts m_inserts;
    std::unique_ptr<ManagedQuery> m_metadataWriter;
    QSet<int> m_ids;
    QMap<int, DBCurveMetadata> m_saved; ///< Rows of its curve_metadata.
    QSet<int> m_changed;                ///< Extremes changed since they were saved.
    bool m_compareAll = false;          ///< Changes were not recorded one by one.
};

} // namespace scn
