#pragma once

namespace scn {

/// Opens standard streams that the launcher left closed on the null device. Otherwise another connection,
/// such as the display's, would get such a number and receive the lines for the launcher. Called first
/// in main().
void openMissingStreams();

} // namespace scn
