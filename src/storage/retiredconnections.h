#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>

namespace scn {

/// Number of pointers handed out for a connection.
using HolderCount = std::shared_ptr<std::atomic<int>>;

/// Closed connections that someone still holds. Qt keeps their names until the last holder has
/// released them, since removing a name would pull the driver from under the holder. Guarded by the
/// pool's mutex.
class RetiredConnections
{
public:
    void add(const QString& name, const HolderCount& holders)
    {
        m_connections.append({name, holders});
    }

    /// Removes the names of those no longer held.
    void purge();

    /// Removes the names left behind by expiries. Those of open connections and of these stay.
    void removeNamesExcept(const QStringList& stillOpen) const;

    /// Removes a connection's name from Qt.
    static void removeName(const QString& name);

private:
    struct Retired
    {
        QString name;
        HolderCount holders;
    };

    QVector<Retired> m_connections;
};

} // namespace scn
