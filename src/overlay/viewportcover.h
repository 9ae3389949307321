#pragma once

#include <QMargins>

class QFrame;

/// The viewport margins that make the viewport of a scroll area as large as the whole widget,
/// whatever frame a style sheet draws around it.
QMargins viewportCoverMargins(const QFrame& area);
