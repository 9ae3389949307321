#pragma once

#include "storetool/runs/storedrun.h"

#include <QString>

#include <optional>

namespace scnstore {

/// Why a command on the run must not write to that path, as a sentence; nothing if it may. What it writes
/// replaces what was there, so a file of this run or of another would be lost.
std::optional<QString> outputRefusalOf(const StoredRun& run, const QString& path);

} // namespace scnstore
