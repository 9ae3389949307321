#pragma once

#include <QStringList>

class CustomComboBox;

/// Set controls with their signals blocked, so that no command is sent.
namespace scn {

/// Replaces the items of a box and selects the first.
void refillQuietly(CustomComboBox* box, const QStringList& items);

void selectQuietly(CustomComboBox* box, int index);

} // namespace scn
