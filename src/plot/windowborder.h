#pragma once

class QWidget;

namespace scn {

/// Draws the black background and the rounded border of a workspace window; the active one's is blue.
void drawWindowBorder(QWidget* window, bool active);

} // namespace scn
