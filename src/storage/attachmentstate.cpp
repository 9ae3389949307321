#include "storage/attachmentstate.h"

#include "storage/statements.h"

#include <algorithm>

namespace scn {

bool AttachmentState::isTrustedOn(const QString& path, const QString& connectionName) const
{
    return known() == Attachment::Trusted && m_path == path && m_connection == connectionName;
}

void AttachmentState::begin()
{
    m_found = m_state;
    m_state = Attachment::Attaching;
}

void AttachmentState::end()
{
    m_state = m_found;
}

void AttachmentState::trust(const QString& path, const QString& connectionName)
{
    m_path = path;
    m_connection = connectionName;
    setKnown(Attachment::Trusted);
}

void AttachmentState::forget()
{
    setKnown(Attachment::Doubted);
    m_path.clear();
    m_connection.clear();
}

void AttachmentState::worsen(Attachment state)
{
    setKnown(std::max(known(), state));
}

void AttachmentState::noteFailure(const ManagedQuery& query)
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

} // namespace scn
