#pragma once

#include "storage/lockedquery.h"

/// A query registered with QueryManager, so that whoever closes the connection can end it.
class ManagedQuery : public scn::LockedQuery
{
public:
    explicit ManagedQuery(const QSqlDatabase& database);
    ~ManagedQuery();
    Q_DISABLE_COPY_MOVE(ManagedQuery)
};
