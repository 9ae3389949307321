#include "storage/connectionlock.h"

#include <QHash>
#include <QSqlDatabase>

#include <iterator>
#include <utility>

namespace {

struct LockRegistry
{
    QMutex mutex;
    QHash<QString, std::weak_ptr<ConnectionMutex>> locks;
};

/// Never destroyed: threads may still end their queries while the process exits.
LockRegistry& lockRegistry()
{
    static auto* const registry = new LockRegistry;
    return *registry;
}

void dropUnused(QHash<QString, std::weak_ptr<ConnectionMutex>>& locks)
{
    for (auto it = locks.begin(); it != locks.end();)
        it = it.value().expired() ? locks.erase(it) : std::next(it);
}

} // namespace

std::shared_ptr<ConnectionMutex> connectionMutex(const QString& connectionName)
{
    LockRegistry& registry = lockRegistry();
    const QMutexLocker locker(&registry.mutex);
    if (auto known = registry.locks.value(connectionName).lock())
        return known;
    dropUnused(registry.locks);
    auto created = std::make_shared<ConnectionMutex>();
    registry.locks.insert(connectionName, created);
    return created;
}

ConnectionLocker::ConnectionLocker(const QSqlDatabase& database)
    : ConnectionLocker(connectionMutex(database.connectionName()))
{
}

ConnectionLocker::ConnectionLocker(std::shared_ptr<ConnectionMutex> mutex)
    : m_mutex(std::move(mutex))
{
    m_mutex->lock();
}

ConnectionLocker::~ConnectionLocker()
{
    m_mutex->unlock();
}
