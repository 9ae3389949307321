#include "storage/retiredconnections.h"

#include "storage/connectionlock.h"

#include <QSqlDatabase>

#include <algorithm>

namespace scn {

void RetiredConnections::purge()
{
    const auto gone =
        std::stable_partition(m_connections.begin(), m_connections.end(),
                              [](const Retired& connection) { return *connection.holders > 0; });
    for (auto it = gone; it != m_connections.end(); ++it) {
        removeName(it->name);
    }
    m_connections.erase(gone, m_connections.end());
}

QStringList RetiredConnections::names() const
{
    QStringList names;
    for (const Retired& connection : m_connections) {
        names.append(connection.name);
    }
    return names;
}

void RetiredConnections::removeName(const QString& name)
{
    const ConnectionLocker locker(connectionMutex(name));
    QSqlDatabase::removeDatabase(name);
}

} // namespace scn
