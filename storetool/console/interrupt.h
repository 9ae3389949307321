#pragma once

namespace scnstore {

/// From now on Ctrl+C, a closed terminal and a plain kill only set a flag. A second one ends the program
/// at once.
void catchInterrupts();

/// Whether one has come. Any thread.
bool isInterrupted();

/// From now on a write to a pipe that nobody reads fails; it does not end the program, which would leave
/// files behind.
void outliveClosedPipes();

/// Whether the standard output is a pipe that nobody reads any more, which is no fault.
bool isOutputUnwanted();

} // namespace scnstore
