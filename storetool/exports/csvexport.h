#pragma once

#include "export/exportresult.h"
#include "storetool/exports/exportjob.h"

#include <QString>

class QFileDevice;

namespace scnstore {

/// Writes what the program would export to an open device, in one piece. Shows progress; an interrupt
/// ends it.
ExportResult exportToDevice(const ExportJob& job, QFileDevice& device);

/// Writes the files that the program would, with this path as the base of their names.
ExportResult exportToParts(const ExportJob& job, const QString& path);

} // namespace scnstore
