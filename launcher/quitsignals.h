#pragma once

namespace scnlauncher {

/// Makes SIGINT and SIGTERM end the event loop, so that the child is ended properly. Call once,
/// after the application object exists.
void quitOnSignals();

} // namespace scnlauncher
