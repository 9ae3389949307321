#include "support/hand.h"

#include <QApplication>
#include <QSpontaneKeyEvent>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>
#include <QtTest>

namespace {

constexpr int kNotch = 120;

/// The window that gets the keys.
QWindow* windowWithKeys()
{
    if (const QWidget* popup = QApplication::activePopupWidget()) {
        return popup->windowHandle();
    }
    return QGuiApplication::focusWindow();
}

} // namespace

void hand::movePointer(const QWidget* widget, const QPoint& point)
{
    const QWidget* const window = widget->window();
    QTest::mouseMove(window->windowHandle(), widget->mapTo(window, point));
    // The event loop delivers the move.
    QCoreApplication::processEvents();
}

void hand::click(const QWidget* widget)
{
    click(widget, widget->rect().center());
}

void hand::click(const QWidget* widget, const QPoint& point)
{
    const QWidget* const window = widget->window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(window, point));
}

void hand::turnWheel(const QWidget* widget, int notches)
{
    QWidget* const window = widget->window();
    const QPoint inWindow = widget->mapTo(window, widget->rect().center());
    QWidget* const under = window->childAt(inWindow);
    QWidget* const receiver = under ? under : window;
    const QPoint global = window->mapToGlobal(inWindow);
    const int step = notches < 0 ? -kNotch : kNotch;
    for (int turned = 0; turned < qAbs(notches); ++turned) {
        QWheelEvent event(receiver->mapFromGlobal(global), global, QPoint(), QPoint(0, step),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        // As from the window system: only such a wheel event can give the focus.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(receiver, &event);
    }
}

void hand::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(windowWithKeys(), key, modifiers);
}

void hand::type(const QString& text)
{
    for (const QChar character : text) {
        QTest::keyClick(windowWithKeys(), character.toLatin1());
    }
}
