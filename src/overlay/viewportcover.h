#pragma once

#include <QMargins>

class QFrame;

/// Viewport margins that make a scroll area's viewport as large as the widget, whatever frame a
/// style sheet draws around it.
QMargins viewportCoverMargins(const QFrame& area);
