#include "storage/lockpatience.h"

#include <QSqlQuery>
#include <QSqlResult>

namespace {

/// What Qt's driver sets when it opens a file.
constexpr int kBusyTimeoutMs = 5000;

thread_local LockPatience* g_current = nullptr;

/// The caller holds the connection's lock throughout, so nobody needs to know of this query.
void setBusyTimeout(const QSqlDriver* driver, int milliseconds)
{
    QSqlQuery(driver->createResult())
        .exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(milliseconds));
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
            setBusyTimeout(connection.driver, kBusyTimeoutMs);
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
    setBusyTimeout(driver, 0);
    g_current->m_impatient.push_back({mutex, driver});
}
