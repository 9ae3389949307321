#include "app/quietcontrols.h"

#include "widgets/customcombobox.h"

#include <QSignalBlocker>

namespace scn {

void refillQuietly(CustomComboBox* box, const QStringList& items)
{
    const QSignalBlocker blocker(box);
    box->clear();
    box->addFunctionItems(items);
}

void selectQuietly(CustomComboBox* box, int index)
{
    const QSignalBlocker blocker(box);
    box->setCurrentIndex(index);
}

} // namespace scn
