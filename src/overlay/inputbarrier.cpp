#include "overlay/inputbarrier.h"

#include "common/threadassert.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <utility>

namespace scn {
namespace {

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        return true;
    default:
        return false;
    }
}

bool isTabPress(const QEvent& event)
{
    if (event.type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_Tab || key == Qt::Key_Backtab;
}

} // namespace

InputBarrier::InputBarrier(std::function<bool(const QWidget&)> covers)
    : m_covers(std::move(covers))
{
}

void InputBarrier::raise()
{
    assertGuiThread();
    qApp->installEventFilter(this);
}

void InputBarrier::lower()
{
    assertGuiThread();
    qApp->removeEventFilter(this);
}

bool InputBarrier::isWithin(const QWidget& widget, const QWidget* area)
{
    for (const QWidget* place = &widget; place; place = place->parentWidget()) {
        if (place == area) {
            return true;
        }
        // A dialog is outside its parent; a popup is part of it.
        if (place->isWindow() && place->windowType() != Qt::Popup) {
            return false;
        }
    }
    return false;
}

void InputBarrier::closePopups()
{
    QWidget* popup = QApplication::activePopupWidget();
    while (popup && m_covers(*popup) && popup->close()) {
        popup = QApplication::activePopupWidget();
    }
}

bool InputBarrier::eventFilter(QObject* watched, QEvent* event)
{
    if (!isInput(event->type()) || !watched->isWidgetType()) {
        return false;
    }
    const auto& widget = *static_cast<QWidget*>(watched);
    if (!m_covers(widget)) {
        return false;
    }
    if (isTabPress(*event)) {
        leaveBy(widget, static_cast<QKeyEvent*>(event)->key() == Qt::Key_Backtab);
    }
    // An ignored wheel event goes on to the parents.
    event->setAccepted(event->type() != QEvent::Wheel);
    return true;
}

/// Moves the focus to the next uncovered widget of the window.
void InputBarrier::leaveBy(const QWidget& widget, bool backwards) const
{
    const auto next = [backwards](const QWidget* from) {
        return backwards ? from->previousInFocusChain() : from->nextInFocusChain();
    };
    for (QWidget* candidate = next(&widget); candidate != &widget; candidate = next(candidate)) {
        if ((candidate->focusPolicy() & Qt::TabFocus) && candidate->isVisible() &&
            candidate->isEnabled() && candidate->window() == widget.window() &&
            !m_covers(*candidate)) {
            candidate->setFocus(backwards ? Qt::BacktabFocusReason : Qt::TabFocusReason);
            return;
        }
    }
}

} // namespace scn
