#pragma once

class AdvancedSetting;
class QPushButton;

namespace scn {

/// Opens an option panel with its corner at the right end of its button, moved in as far as the free part of
/// the screen asks, and gives it the focus. GUI thread.
void openBeside(AdvancedSetting* panel, const QPushButton* button);

} // namespace scn
