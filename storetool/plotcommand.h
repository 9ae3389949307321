#pragma once

#include <QStringList>

namespace scnstore {

/// Draws a run as a chart would show it.
int runPlotCommand(const QStringList& arguments);

} // namespace scnstore
