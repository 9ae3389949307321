#pragma once

#include "storage/connectionlock.h"

#include <QPointer>
#include <QSqlDriver>

#include <memory>
#include <vector>

/// Bounds the time that an operation of many statements waits for files that another process has
/// locked: while one lives, the first query of this thread that waits in vain on a connection is
/// the last that waits there; the connection's further ones fail at once. When it goes, the
/// connections wait as before. Those inside another one do nothing.
class LockPatience
{
public:
    LockPatience();
    ~LockPatience();
    Q_DISABLE_COPY_MOVE(LockPatience)

    /// Tells that a query has waited in vain. The caller holds the connection's lock.
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
