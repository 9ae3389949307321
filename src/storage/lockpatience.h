#pragma once

#include "storage/connectionlock.h"

#include <QPointer>
#include <QSqlDriver>

#include <memory>
#include <vector>

namespace scn {

/// Limits how long an operation of many statements waits for files locked by other processes:
/// during its lifetime, the first query of this thread that waits in vain on a connection is the
/// last to wait there; the connection's further ones fail at once. When it is destroyed, the
/// connections wait as before. Nested ones do nothing.
class LockPatience
{
public:
    LockPatience();
    ~LockPatience();
    Q_DISABLE_COPY_MOVE(LockPatience)

    /// Reports that a query waited in vain. The caller holds the connection's lock.
    static void waitedInVain(const std::shared_ptr<ConnectionMutex>& mutex,
                             const QSqlDriver* driver);

private:
    struct Connection
    {
        std::shared_ptr<ConnectionMutex> mutex;
        QPointer<const QSqlDriver> driver;
    };

    std::vector<Connection> m_impatient;
    bool m_outermost;
};

} // namespace scn
