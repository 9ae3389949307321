#include "storage/connectionlock.h"

#include <QHash>
#include <QSqlDatabase>
#include <QThread>

#include <chrono>
#include <iterator>
#include <utility>

namespace scn {

namespace {

constexpr qint64 kNotDoneNs = 500000;
constexpr qint64 kLongestYieldNs = 10000000;
constexpr unsigned long kYieldUs = 100;

qint64 monotonicNs()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

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
    for (auto it = locks.begin(); it != locks.end();) {
        it = it.value().expired() ? locks.erase(it) : std::next(it);
    }
}

} // namespace

void ConnectionMutex::lock()
{
    if (m_mutex.tryLock()) {
        return;
    }
    m_waiting.fetch_add(1, std::memory_order_relaxed);
    m_mutex.lock();
    m_waiting.fetch_sub(1, std::memory_order_relaxed);
    m_lastWaitNs.store(monotonicNs(), std::memory_order_relaxed);
}

void ConnectionMutex::letOthersIn() const
{
    const qint64 begin = monotonicNs();
    for (qint64 now = begin; now - begin < kLongestYieldNs; now = monotonicNs()) {
        if (m_waiting.load(std::memory_order_relaxed) == 0 &&
            now - m_lastWaitNs.load(std::memory_order_relaxed) >= kNotDoneNs) {
            return;
        }
        QThread::usleep(kYieldUs);
    }
}

std::shared_ptr<ConnectionMutex> connectionMutex(const QString& connectionName)
{
    LockRegistry& registry = lockRegistry();
    const QMutexLocker locker(&registry.mutex);
    if (auto known = registry.locks.value(connectionName).lock()) {
        return known;
    }
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

} // namespace scn
