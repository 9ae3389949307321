#pragma once

#include <QStringList>

class CustomComboBox;

/// Controls set by the program: their signals stay silent, so that no command follows.
namespace scn {

/// Replaces the items of a box; the first becomes the current one.
void refillQuietly(CustomComboBox* box, const QStringList& items);

void selectQuietly(CustomComboBox* box, int index);

} // namespace scn
