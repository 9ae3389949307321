#pragma once

#include "launcher/instrumentchild.h"

namespace scnlauncher {

/// What becomes of a scan that is on when the program ends: an instrument goes on with it, a simulated one ends too.
enum class AfterEnd { ScanGoesOn, ScanEnds };

/// How a child ended that nobody asked to end, in the user's words, with what to do.
QString endSentence(const ChildEnd& end, const QString& program, AfterEnd afterEnd);

} // namespace scnlauncher
