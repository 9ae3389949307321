#pragma once

class AdvancedSetting;
class QPushButton;

namespace scn {

/// Opens an option panel to the right of its button, moved as far as needed to stay on the screen, and focuses
/// it. GUI thread.
void openBeside(AdvancedSetting* panel, const QPushButton* button);

} // namespace scn
