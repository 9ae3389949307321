#pragma once

class QHeaderView;

namespace scn {

/// Gives a header the look of all headers in the views of the workspace.
void dressHeader(QHeaderView* header);

} // namespace scn
