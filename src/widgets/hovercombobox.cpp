#include "widgets/hovercombobox.h"

#include "common/threadassert.h"

#include <QCursor>
#include <QEvent>

HoverComboBox::HoverComboBox(QWidget* parent)
    : QComboBox(parent)
{
    assertGuiThread();
    setMouseTracking(true);
}

void HoverComboBox::hidePopup()
{
    assertGuiThread();
    m_popupOpen = false;
    QComboBox::hidePopup();
}

void HoverComboBox::enterEvent(QEvent* event)
{
    assertGuiThread();
    QComboBox::enterEvent(event);
    if (!m_popupOpen) {
        m_popupOpen = true;
        showPopup();
    }
}

void HoverComboBox::leaveEvent(QEvent* event)
{
    assertGuiThread();
    QComboBox::leaveEvent(event);
    // The opening popup sends the box a leave event though the pointer is still over it.
    if (!rect().contains(mapFromGlobal(QCursor::pos()))) {
        hidePopup();
    }
}
