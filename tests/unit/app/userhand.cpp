#include "userhand.h"

#include <QInputMethodEvent>
#include <QLineEdit>
#include <QWindow>
#include <QtTest>

void userhand::click(const QWidget* widget)
{
    QTest::mouseClick(widget->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(widget->window(), widget->rect().center()));
}

void userhand::press(const QWidget* window, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window->windowHandle(), key, modifiers);
}

void userhand::enterText(QLineEdit* edit, const QString& text)
{
    click(edit);
    press(edit->window(), Qt::Key_A, Qt::ControlModifier);
    press(edit->window(), Qt::Key_Delete);
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(edit, &event);
}
