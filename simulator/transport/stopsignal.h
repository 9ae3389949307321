#pragma once

namespace scnsim {

/// Turns SIGTERM and SIGINT into a readable descriptor and ignores SIGPIPE. One for a process.
namespace stopsignal {

/// @return false if the signals cannot be caught
bool install();

/// Becomes readable once a signal has come.
int descriptor();

} // namespace stopsignal

} // namespace scnsim
