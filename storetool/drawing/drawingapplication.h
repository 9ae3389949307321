#pragma once

#include <QCoreApplication>

#include <memory>

namespace scnstore {

/// The application of a command that draws. It needs no display and looks alike everywhere.
std::unique_ptr<QCoreApplication> makeDrawingApplication(int& argc, char* argv[]);

enum class PictureStyle { Dark, Light };

/// Dark as on the screen, or light for paper, for all widgets. Before the first of them.
void applyPictureStyle(PictureStyle style);

} // namespace scnstore
