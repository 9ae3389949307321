#include "storage/retiredconnections.h"

#include "storage/connectionlock.h"
#include "storage/connectionsetup.h"

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

void RetiredConnections::removeNamesExcept(const QStringList& stillOpen) const
{
    QStringList kept = stillOpen;
    for (const Retired& connection : m_connections) {
        kept.append(connection.name);
    }
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString& name : names) {
        if (name.startsWith(kConnectionNamePrefix) && !kept.contains(name)) {
            QSqlDatabase::removeDatabase(name);
        }
    }
}

void RetiredConnections::removeName(const QString& name)
{
    const ConnectionLocker locker(connectionMutex(name));
    QSqlDatabase::removeDatabase(name);
}

} // namespace scn
