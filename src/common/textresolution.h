#pragma once

namespace scn {

/// Makes texts and their margins as large as on a screen of 96 dots per inch: the forms and the columns of
/// the table have widths in pixels, and what is in them must fit. Before the application is created.
void assumeResolution();

} // namespace scn
