#pragma once

namespace scnstore {

/// From now on Ctrl+C, a closed terminal and a plain kill only set a flag. A second one ends the program
/// at once.
void catchInterrupts();

/// Whether one has come. Any thread.
bool isInterrupted();

} // namespace scnstore
