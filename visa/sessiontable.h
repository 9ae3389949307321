#pragma once

#include "visa/session.h"

#include <map>
#include <memory>
#include <mutex>

namespace scn::visa {

/// The open handles and their sessions. A session is shared with the threads that use it, so
/// closing its handle never deletes it under them. A handle is reused only after all others. Any
/// thread.
class SessionTable
{
public:
    ViSession addResourceManager();

    /// A new handle for a session of that resource manager; 0 if the manager does not exist or has
    /// been closed.
    ViSession addSession(ViSession resourceManager, std::shared_ptr<Session> session);

    bool hasResourceManager(ViSession handle) const;
    bool has(ViObject handle) const;

    /// The session of a handle; null if the handle is not a session's.
    std::shared_ptr<Session> session(ViSession handle) const;

    /// Removes a session, or a resource manager with all its sessions, and interrupts their
    /// operations. False if the handle is unknown.
    bool close(ViObject handle);

private:
    struct Entry
    {
        /// Handle of the resource manager of a session; 0 for a resource manager itself.
        ViSession resourceManager = 0;
        std::shared_ptr<Session> session;
    };

    ViSession add(Entry entry);

    mutable std::mutex m_mutex;
    std::map<ViSession, Entry> m_entries;
    ViSession m_lastHandle = 0;
};

} // namespace scn::visa
