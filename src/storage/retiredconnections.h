#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>

namespace storage {

/// How many pointers to a connection are out of the pool.
using HolderCount = std::shared_ptr<std::atomic<int>>;

/// Closed connections that somebody still holds. Their names stay known to Qt until the last holder
/// has let go, since the removal would pull the driver from under the holder. Guarded by the pool's
/// mutex.
class RetiredConnections
{
public:
    void add(const QString& name, const HolderCount& holders)
    {
        m_connections.append({name, holders});
    }

    /// Removes the names of those that nobody holds any more.
    void purge();

    QStringList names() const;

    /// Removes a connection's name from Qt.
    static void removeName(const QString& name);

private:
    struct Connection
    {
        QString name;
        HolderCount holders;
    };

    QVector<Connection> m_connections;
};

} // namespace storage
