#pragma once

#include <functional>

class QWidget;

namespace scnlauncher {

/// Asks whether to leave an instrument that scans, and says that it goes on. Returns at once; `leave` follows
/// if the user says so.
void askToLeaveScan(QWidget* parent, const std::function<void()>& leave);

} // namespace scnlauncher
