#include "visa/sessiontable.h"

#include <utility>
#include <vector>

namespace scn::visa {

ViSession SessionTable::addResourceManager()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return add(Entry());
}

ViSession SessionTable::addSession(ViSession resourceManager, std::shared_ptr<Session> session)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_entries.find(resourceManager);
    if (found == m_entries.end() || found->second.session) {
        return 0;
    }
    return add(Entry{resourceManager, std::move(session)});
}

bool SessionTable::hasResourceManager(ViSession handle) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_entries.find(handle);
    return found != m_entries.end() && !found->second.session;
}

bool SessionTable::has(ViObject handle) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries.find(handle) != m_entries.end();
}

std::shared_ptr<Session> SessionTable::session(ViSession handle) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_entries.find(handle);
    return found == m_entries.end() ? nullptr : found->second.session;
}

bool SessionTable::close(ViObject handle)
{
    std::vector<std::shared_ptr<Session>> closed;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_entries.find(handle) == m_entries.end()) {
            return false;
        }
        for (auto it = m_entries.begin(); it != m_entries.end();) {
            if (it->first != handle && it->second.resourceManager != handle) {
                ++it;
                continue;
            }
            if (it->second.session) {
                closed.push_back(std::move(it->second.session));
            }
            it = m_entries.erase(it);
        }
    }
    for (const std::shared_ptr<Session>& session : closed) {
        session->close();
    }
    return true;
}

ViSession SessionTable::add(Entry entry)
{
    do {
        ++m_lastHandle;
    } while (m_lastHandle == 0 || m_entries.find(m_lastHandle) != m_entries.end());
    m_entries.emplace(m_lastHandle, std::move(entry));
    return m_lastHandle;
}

} // namespace scn::visa
