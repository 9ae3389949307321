#include "storetool/runs/runcheck.h"

#include "storetool/runs/filecheck.h"

namespace scnstore {

CheckedRun checkRun(const StoredRun& run)
{
    CheckedRun result;
    for (const QString& path : run.dayFiles()) {
        FileCheck(path, run.knowsFileToBeWhole(path), result).run();
    }
    return result;
}

} // namespace scnstore
