#pragma once

#include "storage/managedquery.h"

#include <QString>

namespace scn {

/// How well the store knows today's file, from the best to the worst.
enum class Attachment {
    Trusted,    ///< Memory agrees with the file, and nothing has failed since.
    Doubted,    ///< Memory may differ: the file is read at the next attachment.
    Incomplete, ///< The file lacks base tables, or curves that it must have.
    ReadOnly,   ///< The connection cannot write.
    Attaching,  ///< The file is being opened and read; nested calls start nothing.
};

/// The attachment of today's file to one of its connections.
///
///     any state --begin()--> Attaching --end()--> Trusted, or what was found
///     Trusted --doubt(), noteIncomplete(), noteReadOnly(), noteFailure()--> a worse one
///     any state --forget()--> Doubted
///
/// Only another attachment improves a state. It survives a detachment: while Trusted, the file is
/// attached again without a statement.
class AttachmentState
{
public:
    bool isAttaching() const { return m_state == Attachment::Attaching; }

    /// Whether the file must be reopened before it can accept readings.
    bool isUnfit() const { return known() > Attachment::Doubted; }
    bool isReadOnly() const { return known() == Attachment::ReadOnly; }

    /// Whether memory agrees with the file as this connection shows it.
    bool isTrustedOn(const QString& path, const QString& connectionName) const;

    void begin();
    void end();

    /// Trusts a connection until something fails.
    void trust(const QString& path, const QString& connectionName);

    /// Drops the connection and what is known.
    void forget();

    void doubt() { worsen(Attachment::Doubted); }
    void noteIncomplete() { worsen(Attachment::Incomplete); }
    void noteReadOnly() { worsen(Attachment::ReadOnly); }

    /// Examines a query's failure; one on this connection shows what must be repaired.
    void noteFailure(const ManagedQuery& query);

private:
    /// What is known or, while attaching, has been found so far.
    Attachment known() const { return isAttaching() ? m_found : m_state; }
    void setKnown(Attachment state) { (isAttaching() ? m_found : m_state) = state; }
    void worsen(Attachment state);

    Attachment m_state = Attachment::Doubted;
    Attachment m_found = Attachment::Doubted; ///< The state after the current attachment.
    QString m_path;
    QString m_connection;
};

} // namespace scn
