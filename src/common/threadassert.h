#pragma once

#include <QCoreApplication>
#include <QThread>

/// Asserts that the caller runs on the GUI thread. It stands at each entry that touches a widget;
/// builds without assertions drop it.
inline void assertGuiThread()
{
    Q_ASSERT_X(!QCoreApplication::instance() ||
                   QThread::currentThread() == QCoreApplication::instance()->thread(),
               "assertGuiThread", "a widget is touched off the GUI thread");
}
