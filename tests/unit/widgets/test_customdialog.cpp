#include "support/testprogram.h"
#include "widgets/customdialog.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

class TestCustomDialog : public QObject
{
    Q_OBJECT

private slots:
    void isAModalFramelessDialogOfASmallestSize();
    void titleIsBoldAndWhite();
    void titleBarKeepsItsHeight();
    void closeButtonIsFlatAndWhite();
    void closeButtonCloses();
    void contentIsReplacedAndTheOldOneDeleted();
    void oldContentOutlivesTheSlotThatReplacesIt();
    void sameContentAgainStays();
    void draggedByTheTitleBar();
    void notDraggedByTheBody();
    void notDraggedByTheRightButton();
    void pressOnTheBodyEndsAnOlderDrag();
    void centredOnItsParent();
    void centredOnAChildAsParent();
    void withoutAParentItStaysInItsPlace();
    void draggedByARealPressOnTheTitle();
};

namespace {

QPushButton* closeButton(const CustomDialog& dialog)
{
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("×")) {
            return button;
        }
    }
    return nullptr;
}

/// A mouse event at a point in the dialog's coordinates; the screen stays fixed while the dialog
/// moves under the pointer.
void sendMouse(CustomDialog& dialog, QEvent::Type type, const QPoint& global,
               Qt::MouseButton button, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, dialog.mapFromGlobal(global), global, button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &event);
}

} // namespace

void TestCustomDialog::isAModalFramelessDialogOfASmallestSize()
{
    const CustomDialog dialog;
    QVERIFY(dialog.isModal());
    QVERIFY(dialog.windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(dialog.windowFlags() & Qt::WindowSystemMenuHint);
    QCOMPARE(dialog.windowType(), Qt::Dialog);
    QCOMPARE(dialog.minimumSize(), QSize(300, 200));
}

void TestCustomDialog::titleIsBoldAndWhite()
{
    CustomDialog dialog;
    dialog.setTitle(QStringLiteral("导出"));
    dialog.show();
    QLabel* title = nullptr;
    for (QLabel* label : dialog.findChildren<QLabel*>()) {
        title = label->text() == QStringLiteral("导出") ? label : title;
    }
    QVERIFY(title);
    QVERIFY(title->font().bold());
    QCOMPARE(title->palette().color(QPalette::WindowText), QColor(Qt::white));
}

void TestCustomDialog::titleBarKeepsItsHeight()
{
    CustomDialog dialog;
    dialog.show();
    QVERIFY(closeButton(dialog)->mapTo(&dialog, QPoint(0, 0)).y() < 10);
    const int height = closeButton(dialog)->parentWidget()->height();
    QCOMPARE(closeButton(dialog)->parentWidget()->minimumHeight(), height);
    QCOMPARE(closeButton(dialog)->parentWidget()->maximumHeight(), height);
    dialog.resize(600, 500);
    QCOMPARE(closeButton(dialog)->parentWidget()->height(), height);
}

void TestCustomDialog::closeButtonIsFlatAndWhite()
{
    CustomDialog dialog;
    dialog.resize(400, 300);
    dialog.show();
    const QPushButton* button = closeButton(dialog);
    QVERIFY(button);
    QCOMPARE(button->minimumSize(), button->maximumSize());
    QCOMPARE(button->palette().color(QPalette::ButtonText), QColor(Qt::white));
    // No face and no border: the title bar's background reaches the button's corners.
    const QImage image = dialog.grab().toImage();
    const QPoint corner = button->mapTo(&dialog, QPoint(0, 0));
    const QColor ground = image.pixelColor(corner - QPoint(3, 0));
    QCOMPARE(image.pixelColor(corner), ground);
    QCOMPARE(image.pixelColor(corner + QPoint(2, 2)), ground);
}

void TestCustomDialog::closeButtonCloses()
{
    CustomDialog dialog;
    dialog.show();
    QVERIFY(closeButton(dialog));
    QTest::mouseClick(closeButton(dialog), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
}

void TestCustomDialog::contentIsReplacedAndTheOldOneDeleted()
{
    CustomDialog dialog;
    dialog.show();
    const QPointer<QLabel> first = new QLabel(QStringLiteral("first"));
    dialog.setContent(first);
    QCOMPARE(first->styleSheet(), QStringLiteral("color: white;"));
    QCOMPARE(first->window(), &dialog);
    QVERIFY(first->isVisible());

    auto* second = new QLabel(QStringLiteral("second"));
    dialog.setContent(second);
    QVERIFY(!first || !first->isVisible());
    QTRY_VERIFY(!first);
    QVERIFY(second->isVisible());

    dialog.setContent(nullptr);
    QTRY_COMPARE(dialog.findChildren<QLabel*>().size(), 1);
}

void TestCustomDialog::oldContentOutlivesTheSlotThatReplacesIt()
{
    CustomDialog dialog;
    dialog.show();
    const QPointer<QPushButton> button = new QPushButton(QStringLiteral("next"));
    bool alive = false;
    connect(button, &QPushButton::clicked, &dialog, [&] {
        dialog.setContent(new QLabel(QStringLiteral("second")));
        alive = !button.isNull();
    });
    dialog.setContent(button);
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(alive);
    QTRY_VERIFY(!button);
}

void TestCustomDialog::sameContentAgainStays()
{
    CustomDialog dialog;
    dialog.show();
    const QPointer<QLabel> content = new QLabel(QStringLiteral("content"));
    dialog.setContent(content);
    dialog.setContent(content);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(content);
    QVERIFY(content->isVisible());
}

void TestCustomDialog::draggedByTheTitleBar()
{
    CustomDialog dialog;
    dialog.move(100, 100);
    dialog.show();
    const QPoint start = dialog.pos();
    const QPoint grip = dialog.mapToGlobal(QPoint(40, 10));
    sendMouse(dialog, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    sendMouse(dialog, QEvent::MouseMove, grip + QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(dialog.pos(), start + QPoint(30, 20));
    sendMouse(dialog, QEvent::MouseMove, grip + QPoint(-10, 5), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(dialog.pos(), start + QPoint(-10, 5));
    sendMouse(dialog, QEvent::MouseMove, grip + QPoint(50, 50), Qt::NoButton, Qt::NoButton);
    QCOMPARE(dialog.pos(), start + QPoint(-10, 5));
}

void TestCustomDialog::notDraggedByTheBody()
{
    CustomDialog dialog;
    dialog.show();
    const QPoint start = dialog.pos();
    const QPoint body = dialog.mapToGlobal(QPoint(40, 120));
    sendMouse(dialog, QEvent::MouseButtonPress, body, Qt::LeftButton, Qt::LeftButton);
    sendMouse(dialog, QEvent::MouseMove, body + QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(dialog.pos(), start);
}

void TestCustomDialog::notDraggedByTheRightButton()
{
    CustomDialog dialog;
    dialog.show();
    const QPoint start = dialog.pos();
    const QPoint grip = dialog.mapToGlobal(QPoint(40, 10));
    sendMouse(dialog, QEvent::MouseButtonPress, grip, Qt::RightButton, Qt::RightButton);
    sendMouse(dialog, QEvent::MouseMove, grip + QPoint(30, 20), Qt::NoButton, Qt::RightButton);
    QCOMPARE(dialog.pos(), start);
}

void TestCustomDialog::pressOnTheBodyEndsAnOlderDrag()
{
    CustomDialog dialog;
    dialog.show();
    const QPoint start = dialog.pos();
    const QPoint grip = dialog.mapToGlobal(QPoint(40, 10));
    const QPoint body = dialog.mapToGlobal(QPoint(40, 120));
    sendMouse(dialog, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    sendMouse(dialog, QEvent::MouseButtonRelease, grip, Qt::LeftButton, Qt::NoButton);
    sendMouse(dialog, QEvent::MouseButtonPress, body, Qt::LeftButton, Qt::LeftButton);
    sendMouse(dialog, QEvent::MouseMove, body + QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(dialog.pos(), start);
}

void TestCustomDialog::centredOnItsParent()
{
    QWidget parent;
    parent.setGeometry(50, 60, 600, 400);
    parent.show();
    CustomDialog dialog(&parent);
    dialog.show();
    QCOMPARE(dialog.frameGeometry().center(), parent.frameGeometry().center());
}

void TestCustomDialog::centredOnAChildAsParent()
{
    QWidget window;
    window.setGeometry(50, 60, 600, 400);
    QWidget child(&window);
    child.setGeometry(200, 100, 400, 300);
    window.show();
    CustomDialog dialog(&child);
    dialog.show();
    QCOMPARE(dialog.frameGeometry().center(),
             QRect(child.mapToGlobal(QPoint(0, 0)), child.size()).center());
}

void TestCustomDialog::withoutAParentItStaysInItsPlace()
{
    QWidget window;
    window.setGeometry(50, 60, 600, 400);
    window.show();
    CustomDialog dialog;
    dialog.move(120, 130);
    dialog.show();
    QCOMPARE(dialog.pos(), QPoint(120, 130));
}

void TestCustomDialog::draggedByARealPressOnTheTitle()
{
    CustomDialog dialog;
    dialog.setTitle(QStringLiteral("导出"));
    dialog.move(100, 100);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    // The label under the pointer passes the press on.
    const QPoint grip(40, 16);
    QVERIFY(qobject_cast<QLabel*>(dialog.childAt(grip)));
    QTest::mousePress(dialog.windowHandle(), Qt::LeftButton, Qt::NoModifier, grip);
    QTest::mouseMove(dialog.windowHandle(), grip + QPoint(25, 15));
    QTest::mouseRelease(dialog.windowHandle(), Qt::LeftButton, Qt::NoModifier, grip);
    QCOMPARE(dialog.pos(), QPoint(125, 115));
}

SCN_TEST(TestCustomDialog, QApplication)
#include "test_customdialog.moc"
