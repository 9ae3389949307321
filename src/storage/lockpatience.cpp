#include "storage/lockpatience.h"

#include "storage/storewaits.h"

#include <QSqlQuery>
#include <QSqlResult>

namespace scn {

namespace {

thread_local LockPatience* g_current = nullptr;

/// The caller holds the connection's lock throughout, so nobody else needs to know this query.
void setBusyTimeout(const QSqlDriver* driver, std::chrono::milliseconds patience)
{
    QSqlQuery(driver->createResult())
        .exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(patience.count()));
}

} // namespace

LockPatience::LockPatience()
    : m_outermost(!g_current)
{
    if (m_outermost) {
        g_current = this;
    }
}

LockPatience::~LockPatience()
{
    if (!m_outermost) {
        return;
    }
    g_current = nullptr;
    for (const Connection& connection : m_impatient) {
        const ConnectionLocker locker(connection.mutex);
        if (connection.driver && connection.driver->isOpen()) {
            setBusyTimeout(connection.driver, storewaits::kLockPatience);
        }
    }
}

void LockPatience::waitedInVain(const std::shared_ptr<ConnectionMutex>& mutex,
                                const QSqlDriver* driver)
{
    if (!g_current) {
        return;
    }
    for (const Connection& known : g_current->m_impatient) {
        if (known.driver == driver) {
            return;
        }
    }
    setBusyTimeout(driver, std::chrono::milliseconds::zero());
    g_current->m_impatient.push_back({mutex, driver});
}

} // namespace scn
