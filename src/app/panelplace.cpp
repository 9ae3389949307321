#include "app/panelplace.h"

#include "channels/advancedsetting.h"
#include "common/threadassert.h"

#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>

#include <algorithm>

namespace scn {

namespace {

/// Position of a panel, moved as far as needed to lie in the free part of its screen.
QPoint heldOnScreen(const QRect& panel)
{
    const QScreen* screen = QGuiApplication::screenAt(panel.topLeft());
    const QRect room = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    return {std::max(room.left(), std::min(panel.left(), room.right() + 1 - panel.width())),
            std::max(room.top(), std::min(panel.top(), room.bottom() + 1 - panel.height()))};
}

} // namespace

void openBeside(AdvancedSetting* panel, const QPushButton* button)
{
    assertGuiThread();
    const QPoint place = button->mapToGlobal(QPoint(button->width(), 0));
    panel->move(place);
    panel->show();
    // It has its size only now.
    panel->move(heldOnScreen(QRect(place, panel->size())));
    panel->setFocus(Qt::OtherFocusReason);
}

} // namespace scn
