#pragma once

#include <functional>

namespace scnlauncher {

/// Calls `action` from the event loop at SIGINT and SIGTERM, so that the children are ended properly. The
/// terminal that the launcher was started from may close without ending it. Once, after the application
/// object exists.
void onQuitSignal(const std::function<void()>& action);

} // namespace scnlauncher
