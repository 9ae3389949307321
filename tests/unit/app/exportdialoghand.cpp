#include "exportdialoghand.h"

#include "userhand.h"
#include "widgets/customcombobox.h"
#include "widgets/customdialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QtTest>

using userhand::click;
using userhand::enterText;
using userhand::press;

namespace {

template <typename Widget>
Widget* withText(const QWidget& parent, const QString& text)
{
    for (Widget* widget : parent.findChildren<Widget*>()) {
        if (widget->text() == text) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

QLabel* ExportDialogHand::label(const QString& text) const
{
    return withText<QLabel>(*window, text);
}

QAbstractButton* ExportDialogHand::button(const QString& text) const
{
    return withText<QAbstractButton>(*window, text);
}

QAbstractButton* ExportDialogHand::browse() const
{
    return button(QStringLiteral("  浏览...  "));
}

QAbstractButton* ExportDialogHand::toFile() const
{
    return button(QStringLiteral("  导出到文件  "));
}

QAbstractButton* ExportDialogHand::close() const
{
    return button(QStringLiteral("  关闭  "));
}

CustomComboBox* ExportDialogHand::separator() const
{
    return window->findChild<CustomComboBox*>();
}

QLineEdit* ExportDialogHand::name() const
{
    return window->findChild<QLineEdit*>();
}

QLabel* ExportDialogHand::directory() const
{
    const QLabel* const title = label(QStringLiteral("导出路径:"));
    for (QLabel* candidate : window->findChildren<QLabel*>()) {
        if (candidate != title && candidate->parent() == title->parent() &&
            candidate->geometry().center().y() == title->geometry().center().y()) {
            return candidate;
        }
    }
    return nullptr;
}

void ExportDialogHand::chooseDirectory(const QString& path) const
{
    QString title;
    QTimer::singleShot(0, window, [&path, &title] {
        auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY(chooser);
        QVERIFY(QTest::qWaitForWindowExposed(chooser));
        title = chooser->windowTitle();
        if (!path.isEmpty()) {
            enterText(chooser->findChild<QLineEdit*>(), path);
            press(chooser, Qt::Key_Return);
        }
        if (chooser->isVisible()) {
            press(chooser, Qt::Key_Escape);
        }
    });
    click(browse());
    QCOMPARE(title, QStringLiteral("Select Directory"));
}
