#pragma once

#include "visa/session.h"

#include <map>
#include <memory>
#include <mutex>

namespace scn::visa {

/// The handles that have been given out, and what stands behind them. A session is shared with
/// the threads that are using it, so that closing a handle never takes it away under them. Handles
/// are not given out twice before all others have been. Any thread.
class SessionTable
{
public:
    ViSession addResourceManager();

    /// A new handle for a session of that resource manager; 0 where there is no such one (any
    /// more).
    ViSession addSession(ViSession resourceManager, std::shared_ptr<Session> session);

    bool hasResourceManager(ViSession handle) const;
    bool has(ViObject handle) const;

    /// The session of a handle; null where the handle is not that of a session.
    std::shared_ptr<Session> session(ViSession handle) const;

    /// Takes a session out, or a resource manager with all its sessions, and ends what is going on
    /// on them. False where there is no such handle.
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
