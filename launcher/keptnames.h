#pragma once

#include "launcher/place/keptrun.h"

#include <QString>

namespace scnlauncher {

// The names that the archive gives in the folder of a kept run.

QString pathIn(const QString& directory, const QString& name);

/// Whether both are names of one file.
bool isSameFile(const QString& one, const QString& other);

/// Writes down that a name in the run's folder is the archive's.
void record(KeptRun& run, const QString& name);

/// Whether a name is one that the archive gave.
bool isOwn(const KeptRun& run, const QString& name);

/// Takes a name away that the archive gave.
void unlink(KeptRun& run, const QString& name);

} // namespace scnlauncher
