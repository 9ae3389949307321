#pragma once

#include "storetool/runs/checkedrun.h"
#include "storetool/runs/storedrun.h"

namespace scnstore {

/// Reads everything in the run and compares it: SQLite's own check of every table and its index, the
/// catalogue against the tables, the readings against each other. Holds no lock for longer than one
/// table.
CheckedRun checkRun(const StoredRun& run);

} // namespace scnstore
