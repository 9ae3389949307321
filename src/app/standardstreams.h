#pragma once

/// The descriptors of the process's standard streams.
namespace StandardStreams {

/// Opens those that the launcher has left closed on the null device. Otherwise the next connection,
/// the display's for example, would get such a number, and lines for the launcher would go there.
/// The first thing in main().
void openMissing();

} // namespace StandardStreams
