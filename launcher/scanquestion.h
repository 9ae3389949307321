#pragma once

#include "launcher/endsentence.h"

#include <functional>

class QWidget;

namespace scnlauncher {

/// Asks whether to leave an instrument that scans, and says what becomes of the scan. Returns at once; `leave`
/// follows if the user says so.
void askToLeaveScan(QWidget* parent, AfterEnd afterEnd, const std::function<void()>& leave);

} // namespace scnlauncher
