#pragma once

#include "storage/curvedatadb.h"
#include "storetool/runs/storedrun.h"

#include <QString>

namespace scnstore {

/// The run as a store that only reads, as charts and exports use it.
class RunStore
{
public:
    explicit RunStore(const StoredRun& run);
    ~RunStore();
    RunStore(const RunStore&) = delete;
    RunStore& operator=(const RunStore&) = delete;

    CurveDataDB& store() { return m_store; }

private:
    CurveDataDB m_store;
};

} // namespace scnstore
