#pragma once

#include <QString>

class QWidget;

namespace scnlauncher {

/// Opens a file or a folder with the desktop's program for it. Where that cannot be done, tells the user the path.
/// Returns at once.
void openOnDesktop(QWidget* parent, const QString& path);

} // namespace scnlauncher
