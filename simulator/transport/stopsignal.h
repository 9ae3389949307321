#pragma once

namespace scnsim {

/// Turns SIGTERM and SIGINT into a readable descriptor and ignores SIGPIPE. One per process.
namespace stopsignal {

/// @return false if the signals cannot be caught
bool install();

/// Readable once a signal has arrived.
int descriptor();

} // namespace stopsignal

} // namespace scnsim
