#include "mouseevents.h"
#include "plot/custommdisubwindow.h"
#include "plot/customtitlebar.h"
#include "support/eventcounter.h"
#include "support/picturedifference.h"
#include "support/testprogram.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMdiArea>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QtTest>

namespace {
const QRect kPlace(100, 80, 480, 220);
constexpr int kTileSide = 70;

/// Content that counts the presses that reach it.
class Content : public QWidget
{
public:
    Content()
    {
        setMinimumSize(50, 30);
        auto* layout = new QVBoxLayout(this);
        spinBox = new QDoubleSpinBox(this);
        layout->addWidget(spinBox);
    }

    QDoubleSpinBox* spinBox;
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        ++presses;
        event->accept();
    }
};

/// Notes whose presses pass its filter.
class FilterProbe : public CustomMdiSubWindow
{
public:
    FilterProbe()
        : CustomMdiSubWindow(QString(), nullptr)
    {
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonPress) {
            seen.append(watched);
        }
        return CustomMdiSubWindow::eventFilter(watched, event);
    }

    QVector<QObject*> seen;
};

struct Fixture
{
    Fixture()
    {
        area.resize(1000, 700);
        area.show();
        if (!QTest::qWaitForWindowActive(&area)) {
            qFatal("the area's window is not active");
        }
        window = open();
    }

    CustomMdiSubWindow* open()
    {
        auto* opened = new CustomMdiSubWindow(QString(), nullptr);
        opened->setTitle(QStringLiteral("title"));
        area.addSubWindow(opened);
        content = new Content;
        opened->setContentWidget(content);
        opened->show();
        opened->setGeometry(kPlace);
        return opened;
    }

    CustomTitleBar* bar() const { return window->findChild<CustomTitleBar*>(); }
    QWidget* contentArea() const { return content->parentWidget(); }
    QPushButton* button(int number) const
    {
        return qobject_cast<QPushButton*>(bar()->layout()->itemAt(3 + 2 * number)->widget());
    }
    void clickCollapse() const { QTest::mouseClick(button(0), Qt::LeftButton); }
    void clickMaximize() const { QTest::mouseClick(button(1), Qt::LeftButton); }
    void doubleClickBar() const
    {
        QTest::mouseDClick(bar(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    }
    bool hasFocusInside() const
    {
        const QWidget* focused = QApplication::focusWidget();
        return focused == window || window->isAncestorOf(focused);
    }
    void drag(const QPoint& by) const
    {
        const QPoint start = bar()->mapToGlobal(QPoint(10, 10));
        pressAt(bar(), start);
        dragTo(bar(), start + by);
        releaseAt(bar(), start + by);
    }

    QMdiArea area;
    CustomMdiSubWindow* window = nullptr;
    Content* content = nullptr;
};

QColor borderColor(CustomMdiSubWindow* window)
{
    return window->grab().toImage().pixelColor(window->width() / 2, 0);
}

/// A window's frame as it is to look.
QImage framePicture(const QSize& size, const QColor& color)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(1, 1, size.width() - 2, size.height() - 2), 4, 4);
    return image;
}
} // namespace

class TestCustomMdiSubWindow : public QObject
{
    Q_OBJECT

private slots:
    void shellIsFramelessAndDeletedOnClose();
    void titleStartsEmptyAndNamesWindowAndBar();
    void contentStandsBelowTheBar();
    void nullContentIsIgnored();
    void contentMayBeSetTwice();

    void firstButtonCollapsesToATile();
    void tileOfAWindowLeftOfTheAreaStandsInside();
    void collapsedWindowDoesNotCollapseAgain();
    void collapseOfAMaximisedWindowRemembersItsNormalPlace();
    void doubleClickOpensTheTileWhereItStands();
    void draggedTileOpensAtItsNewPlace();
    void tileIsDraggedByItsLowerHalf();
    void tileShownAgainOpensInItsOldSize();
    void tileLeftOfTheAreaOpensInside();
    void openedTileTakesTheFocus();
    void secondButtonMaximisesAndTakesBack();
    void doubleClickMaximises();
    void windowMaximisedByOthersIsTakenBack();
    void maximisedWindowShownAgainReturnsToItsPlace();
    void thirdButtonClosesAndDeletes();

    void barDragMovesTheWindow();
    void dragIsHeldInTheArea_data();
    void dragIsHeldInTheArea();
    void thirtyFivePixelsStayInViewAtTheLeft_data();
    void thirtyFivePixelsStayInViewAtTheLeft();
    void dragWithoutAnAreaIsHeldOnTheScreen();
    void dragEndsWithTheRelease();
    void rightReleaseLeavesTheDrag();
    void pressOnTheBarTakesTheFocus();
    void pressBelowTheBarStartsNoDrag();
    void rightPressOnTheBarStartsNoDrag();
    void rightPressGoesNoFurther();

    void pressInsideActivatesAndGoesOn();
    void pressOnTheBarActivates();
    void pressInLaterContentActivates();
    void pressesInsideAreSeen();
    void seenPressTakesTheFocusAndActivates();
    void clickedSpinBoxOfAnInactiveWindowTakesKeys();
    void borderTellsTheActiveWindow();
    void borderHasTheseMeasures();
    void windowCoversThoseBelow();
    void shellLetsItsWidgetsGoAtItsEnd();
    void endIsStillReported();
};

void TestCustomMdiSubWindow::shellIsFramelessAndDeletedOnClose()
{
    const Fixture f;
    QVERIFY(f.window->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(f.window->testAttribute(Qt::WA_DeleteOnClose));
    QCOMPARE(f.window->styleSheet(), QStringLiteral("background: transparent;"));
    QCOMPARE(f.bar()->minimumHeight(), 35);
    QCOMPARE(f.contentArea()->layout()->contentsMargins(), QMargins(5, 5, 5, 5));
    QCOMPARE(f.contentArea()->layout()->spacing(), 5);
    const QWidget* holder = f.window->widget();
    QCOMPARE(f.bar()->parentWidget(), holder);
    QCOMPARE(f.contentArea()->parentWidget(), holder);
    QCOMPARE(holder->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
    QCOMPARE(holder->layout()->spacing(), 0);
}

void TestCustomMdiSubWindow::titleStartsEmptyAndNamesWindowAndBar()
{
    CustomMdiSubWindow window(QString(), nullptr);
    const auto* label =
        qobject_cast<QLabel*>(window.findChild<CustomTitleBar*>()->layout()->itemAt(0)->widget());
    QCOMPARE(label->text(), QString());
    QCOMPARE(window.windowTitle(), QString());
    window.setTitle(QStringLiteral("数据网格2"));
    QCOMPARE(label->text(), QStringLiteral("数据网格2"));
    QCOMPARE(window.windowTitle(), QStringLiteral("数据网格2"));
}

void TestCustomMdiSubWindow::contentStandsBelowTheBar()
{
    const Fixture f;
    QCOMPARE(f.window->contentWidget(), f.content);
    QVERIFY(f.content->isVisible());
    QVERIFY(f.contentArea()->y() > f.bar()->geometry().bottom());
    QCOMPARE(f.window->widget()->geometry(), f.window->rect());
}

void TestCustomMdiSubWindow::nullContentIsIgnored()
{
    const Fixture f;
    f.window->setContentWidget(nullptr);
    QCOMPARE(f.window->contentWidget(), f.content);
}

void TestCustomMdiSubWindow::contentMayBeSetTwice()
{
    const Fixture f;
    f.window->setContentWidget(f.content);
    QCOMPARE(f.contentArea()->layout()->count(), 1);
    QCOMPARE(f.window->contentWidget(), f.content);
}

void TestCustomMdiSubWindow::firstButtonCollapsesToATile()
{
    const Fixture f;
    f.clickCollapse();
    QCOMPARE(f.window->geometry(), QRect(kPlace.topLeft(), QSize(kTileSide, kTileSide)));
    QVERIFY(!f.contentArea()->isVisible());
    QVERIFY(!f.button(0)->isVisible());
    QVERIFY(f.bar()->layout()->itemAt(1)->widget()->isVisible());
    QVERIFY(!f.window->isMaximized());
}

void TestCustomMdiSubWindow::tileOfAWindowLeftOfTheAreaStandsInside()
{
    const Fixture f;
    f.window->move(-200, -30);
    f.clickCollapse();
    QCOMPARE(f.window->geometry(), QRect(0, 0, kTileSide, kTileSide));
}

void TestCustomMdiSubWindow::collapsedWindowDoesNotCollapseAgain()
{
    const Fixture f;
    f.clickCollapse();
    QVERIFY(QMetaObject::invokeMethod(f.window, "onMaximizeClicked"));
    f.doubleClickBar();
    // A second collapse would mistake the tile's size for the window's.
    QCOMPARE(f.window->size(), kPlace.size());
}

void TestCustomMdiSubWindow::collapseOfAMaximisedWindowRemembersItsNormalPlace()
{
    const Fixture f;
    f.clickMaximize();
    QVERIFY(f.window->isMaximized());
    f.clickCollapse();
    QVERIFY(!f.window->isMaximized());
    QCOMPARE(f.window->geometry(), QRect(kPlace.topLeft(), QSize(kTileSide, kTileSide)));
    f.doubleClickBar();
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::doubleClickOpensTheTileWhereItStands()
{
    const Fixture f;
    f.clickCollapse();
    f.bar()->setMinimumHeight(10);
    f.doubleClickBar();
    QCOMPARE(f.window->geometry(), kPlace);
    QVERIFY(f.contentArea()->isVisible());
    QVERIFY(f.button(0)->isVisible());
    QVERIFY(!f.bar()->layout()->itemAt(1)->widget()->isVisible());
    QCOMPARE(f.bar()->minimumHeight(), 35);
    QVERIFY(!f.window->isMaximized());
    QVERIFY(f.hasFocusInside());
}

void TestCustomMdiSubWindow::draggedTileOpensAtItsNewPlace()
{
    const Fixture f;
    f.clickCollapse();
    f.drag(QPoint(60, 200));
    QCOMPARE(f.window->pos(), kPlace.topLeft() + QPoint(60, 200));
    QCOMPARE(f.window->size(), QSize(kTileSide, kTileSide));
    f.doubleClickBar();
    QCOMPARE(f.window->geometry(), QRect(kPlace.topLeft() + QPoint(60, 200), kPlace.size()));
}

void TestCustomMdiSubWindow::tileIsDraggedByItsLowerHalf()
{
    const Fixture f;
    f.clickCollapse();
    QCoreApplication::processEvents();
    const QPoint start = f.window->mapToGlobal(QPoint(35, 60));
    pressAt(f.bar(), start);
    dragTo(f.bar(), start + QPoint(60, 200));
    releaseAt(f.bar(), start + QPoint(60, 200));
    QCOMPARE(f.window->pos(), kPlace.topLeft() + QPoint(60, 200));
}

void TestCustomMdiSubWindow::tileShownAgainOpensInItsOldSize()
{
    Fixture f;
    f.clickCollapse();
    // As when the user leaves the workspace page and returns.
    f.area.hide();
    f.area.show();
    f.doubleClickBar();
    QCOMPARE(f.window->size(), kPlace.size());
}

void TestCustomMdiSubWindow::tileLeftOfTheAreaOpensInside()
{
    const Fixture f;
    f.clickCollapse();
    f.drag(QPoint(-5000, 0));
    QCOMPARE(f.window->x(), 35 - kTileSide);
    f.doubleClickBar();
    QCOMPARE(f.window->geometry(), QRect(QPoint(0, kPlace.y()), kPlace.size()));
}

void TestCustomMdiSubWindow::openedTileTakesTheFocus()
{
    Fixture f;
    f.clickCollapse();
    f.area.setFocus();
    QVERIFY(!f.hasFocusInside());
    QVERIFY(QMetaObject::invokeMethod(f.window, "onMinimizeToTitleBar"));
    QVERIFY(f.hasFocusInside());
}

void TestCustomMdiSubWindow::secondButtonMaximisesAndTakesBack()
{
    const Fixture f;
    f.clickMaximize();
    QVERIFY(f.window->isMaximized());
    QCOMPARE(f.window->size(), f.area.viewport()->size());
    f.clickMaximize();
    QVERIFY(!f.window->isMaximized());
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::doubleClickMaximises()
{
    const Fixture f;
    f.doubleClickBar();
    QVERIFY(f.window->isMaximized());
    f.doubleClickBar();
    QVERIFY(!f.window->isMaximized());
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::windowMaximisedByOthersIsTakenBack()
{
    const Fixture f;
    f.window->showMaximized();
    f.clickMaximize();
    QVERIFY(!f.window->isMaximized());
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::maximisedWindowShownAgainReturnsToItsPlace()
{
    Fixture f;
    f.clickMaximize();
    f.area.hide();
    f.area.show();
    QVERIFY(f.window->isMaximized());
    f.clickMaximize();
    QVERIFY(!f.window->isMaximized());
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::thirdButtonClosesAndDeletes()
{
    const Fixture f;
    const QPointer<CustomMdiSubWindow> window = f.window;
    const QPointer<Content> content = f.content;
    QTest::mouseClick(f.button(2), Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!window);
    QVERIFY(!content);
    QVERIFY(f.area.subWindowList().isEmpty());
}

void TestCustomMdiSubWindow::barDragMovesTheWindow()
{
    const Fixture f;
    f.drag(QPoint(25, -10));
    QCOMPARE(f.window->geometry(), kPlace.translated(25, -10));
}

void TestCustomMdiSubWindow::dragIsHeldInTheArea_data()
{
    QTest::addColumn<QPoint>("by");
    QTest::addColumn<bool>("atLeft");
    QTest::addColumn<bool>("atRight");
    QTest::addColumn<bool>("atTop");
    QTest::addColumn<bool>("atBottom");
    QTest::newRow("left") << QPoint(-5000, 0) << true << false << false << false;
    QTest::newRow("right") << QPoint(5000, 0) << false << true << false << false;
    QTest::newRow("top") << QPoint(0, -5000) << false << false << true << false;
    QTest::newRow("bottom") << QPoint(0, 5000) << false << false << false << true;
    QTest::newRow("corner") << QPoint(5000, 5000) << false << true << false << true;
}

void TestCustomMdiSubWindow::dragIsHeldInTheArea()
{
    QFETCH(QPoint, by);
    QFETCH(bool, atLeft);
    QFETCH(bool, atRight);
    QFETCH(bool, atTop);
    QFETCH(bool, atBottom);
    const Fixture f;
    const QRect bounds = f.area.contentsRect();
    f.drag(by);
    int x = kPlace.x();
    if (atLeft) {
        x = 35 - kPlace.width();
    } else if (atRight) {
        x = bounds.right() - 35;
    }
    int y = kPlace.y();
    if (atTop) {
        y = bounds.top();
    } else if (atBottom) {
        y = bounds.bottom() - 35;
    }
    QCOMPARE(f.window->pos(), QPoint(x, y));
}

void TestCustomMdiSubWindow::thirtyFivePixelsStayInViewAtTheLeft_data()
{
    QTest::addColumn<int>("inView");
    QTest::addColumn<int>("kept");
    QTest::newRow("36") << 36 << 36;
    QTest::newRow("35") << 35 << 35;
    QTest::newRow("34") << 34 << 35;
    QTest::newRow("1") << 1 << 35;
}

void TestCustomMdiSubWindow::thirtyFivePixelsStayInViewAtTheLeft()
{
    QFETCH(int, inView);
    QFETCH(int, kept);
    const Fixture f;
    f.drag(QPoint(inView - kPlace.x() - kPlace.width(), 0));
    QCOMPARE(f.window->x() + f.window->width(), kept);
}

void TestCustomMdiSubWindow::dragWithoutAnAreaIsHeldOnTheScreen()
{
    CustomMdiSubWindow window(QString(), nullptr);
    window.setGeometry(kPlace);
    window.show();
    auto* bar = window.findChild<CustomTitleBar*>();
    const QRect bounds = QGuiApplication::primaryScreen()->availableGeometry();
    const QPoint start = bar->mapToGlobal(QPoint(10, 10));
    pressAt(bar, start);
    dragTo(bar, start + QPoint(9000, -9000));
    releaseAt(bar, start);
    QCOMPARE(window.pos(), QPoint(bounds.right() - 35, bounds.top()));
}

void TestCustomMdiSubWindow::dragEndsWithTheRelease()
{
    const Fixture f;
    f.drag(QPoint(25, 0));
    // The window itself tracks the mouse; its bar would not see a move without a button.
    dragTo(f.window, f.bar()->mapToGlobal(QPoint(300, 10)), Qt::NoButton);
    QCOMPARE(f.window->pos(), kPlace.topLeft() + QPoint(25, 0));
}

void TestCustomMdiSubWindow::rightReleaseLeavesTheDrag()
{
    const Fixture f;
    const QPoint start = f.bar()->mapToGlobal(QPoint(10, 10));
    pressAt(f.bar(), start);
    dragTo(f.bar(), start + QPoint(10, 0));
    const QPoint on = start + QPoint(10, 0);
    sendMouseAt(f.bar(), QEvent::MouseButtonPress, on, Qt::RightButton,
                Qt::LeftButton | Qt::RightButton);
    sendMouseAt(f.bar(), QEvent::MouseButtonRelease, on, Qt::RightButton, Qt::LeftButton);
    dragTo(f.bar(), start + QPoint(30, 20));
    releaseAt(f.bar(), start + QPoint(30, 20));
    QCOMPARE(f.window->pos(), kPlace.topLeft() + QPoint(30, 20));
}

void TestCustomMdiSubWindow::pressOnTheBarTakesTheFocus()
{
    Fixture f;
    f.area.setFocus();
    QVERIFY(!f.hasFocusInside());
    const QPoint start = f.bar()->mapToGlobal(QPoint(10, 10));
    pressAt(f.window, start);
    releaseAt(f.window, start);
    QVERIFY(f.hasFocusInside());
}

void TestCustomMdiSubWindow::pressBelowTheBarStartsNoDrag()
{
    const Fixture f;
    const QPoint start = f.window->mapToGlobal(QPoint(100, f.bar()->height() + 3));
    pressAt(f.window, start);
    dragTo(f.window, start + QPoint(50, 50));
    releaseAt(f.window, start + QPoint(50, 50));
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::rightPressOnTheBarStartsNoDrag()
{
    const Fixture f;
    const QPoint start = f.bar()->mapToGlobal(QPoint(10, 10));
    pressAt(f.bar(), start, Qt::RightButton);
    dragTo(f.bar(), start + QPoint(50, 50), Qt::RightButton);
    releaseAt(f.bar(), start + QPoint(50, 50), Qt::RightButton);
    QCOMPARE(f.window->geometry(), kPlace);
}

void TestCustomMdiSubWindow::rightPressGoesNoFurther()
{
    const Fixture f;
    const EventCounter behind(f.area.viewport(), QEvent::MouseButtonPress);
    pressAt(f.window, f.bar()->mapToGlobal(QPoint(10, 10)), Qt::RightButton);
    QCOMPARE(behind.count(), 0);
}

/// Here and in the next two, the area would also activate the window by itself.
void TestCustomMdiSubWindow::pressInsideActivatesAndGoesOn()
{
    Fixture f;
    CustomMdiSubWindow* first = f.window;
    Content* firstContent = f.content;
    CustomMdiSubWindow* second = f.open();
    f.area.setActiveSubWindow(second);
    QCOMPARE(f.area.activeSubWindow(), second);
    QTest::mouseClick(firstContent, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
    QCOMPARE(f.area.activeSubWindow(), first);
    QCOMPARE(firstContent->presses, 1);
}

void TestCustomMdiSubWindow::pressOnTheBarActivates()
{
    Fixture f;
    CustomMdiSubWindow* first = f.window;
    CustomTitleBar* firstBar = f.bar();
    f.open();
    QVERIFY(f.area.activeSubWindow() != first);
    QTest::mouseClick(firstBar, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    QCOMPARE(f.area.activeSubWindow(), first);
    // So does a right press, which does nothing else.
    f.area.setActiveSubWindow(f.area.subWindowList().last());
    pressAt(firstBar, firstBar->mapToGlobal(QPoint(10, 10)), Qt::RightButton);
    releaseAt(firstBar, firstBar->mapToGlobal(QPoint(10, 10)), Qt::RightButton);
    QCOMPARE(f.area.activeSubWindow(), first);
}

void TestCustomMdiSubWindow::pressInLaterContentActivates()
{
    Fixture f;
    CustomMdiSubWindow* first = f.window;
    auto* later = new Content;
    first->setContentWidget(later);
    QCOMPARE(first->contentWidget(), later);
    f.open();
    QTest::mouseClick(later->spinBox, Qt::LeftButton);
    QCOMPARE(f.area.activeSubWindow(), first);
}

void TestCustomMdiSubWindow::pressesInsideAreSeen()
{
    QMdiArea area;
    area.resize(1000, 700);
    auto* window = new FilterProbe;
    area.addSubWindow(window);
    auto* content = new Content;
    window->setContentWidget(content);
    auto* later = new Content;
    window->setContentWidget(later);
    area.show();
    QVERIFY(QTest::qWaitForWindowActive(&area));
    auto* bar = window->findChild<CustomTitleBar*>();
    QWidget* const contentArea = content->parentWidget();
    const QVector<QWidget*> all{bar, contentArea, content, content->spinBox, later, later->spinBox};
    for (QWidget* widget : all) {
        window->seen.clear();
        pressAt(widget, widget->mapToGlobal(QPoint(1, 1)));
        releaseAt(widget, widget->mapToGlobal(QPoint(1, 1)));
        QVERIFY(window->seen.contains(widget));
    }
}

void TestCustomMdiSubWindow::seenPressTakesTheFocusAndActivates()
{
    Fixture f;
    auto* probe = new FilterProbe;
    f.area.addSubWindow(probe);
    auto* content = new Content;
    probe->setContentWidget(content);
    probe->show();
    f.window->activate();
    QCOMPARE(f.area.activeSubWindow(), f.window);
    QVERIFY(f.hasFocusInside());
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QVERIFY(!probe->eventFilter(content, &press));
    QCOMPARE(f.area.activeSubWindow(), probe);
    QVERIFY(probe->hasFocus() || probe->isAncestorOf(QApplication::focusWidget()));
}

void TestCustomMdiSubWindow::clickedSpinBoxOfAnInactiveWindowTakesKeys()
{
    Fixture f;
    QDoubleSpinBox* spinBox = f.content->spinBox;
    f.open()->move(500, 400);
    const QPoint pos = spinBox->mapTo(&f.area, spinBox->rect().center() - QPoint(20, 0));
    QTest::mouseClick(f.area.windowHandle(), Qt::LeftButton, Qt::NoModifier, pos);
    QVERIFY(spinBox->hasFocus());
    spinBox->selectAll();
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("42"));
    QCOMPARE(spinBox->value(), 42.0);
}

void TestCustomMdiSubWindow::borderTellsTheActiveWindow()
{
    Fixture f;
    CustomMdiSubWindow* first = f.window;
    CustomMdiSubWindow* second = f.open();
    second->activate();
    QCOMPARE(borderColor(second), QColor(0x2B, 0xA1, 0xD5));
    QCOMPARE(borderColor(first), QColor(Qt::white));
    first->activate();
    QCOMPARE(borderColor(first), QColor(0x2B, 0xA1, 0xD5));
    QCOMPARE(borderColor(second), QColor(Qt::white));
}

void TestCustomMdiSubWindow::borderHasTheseMeasures()
{
    Fixture f;
    CustomMdiSubWindow* first = f.window;
    CustomMdiSubWindow* second = f.open();
    second->activate();
    for (CustomMdiSubWindow* window : {first, second}) {
        window->widget()->hide(); // only the frame is left
        const QColor color = window == second ? QColor(0x2B, 0xA1, 0xD5) : QColor(Qt::white);
        QVERIFY(largestDifference(window->grab().toImage(), framePicture(kPlace.size(), color)) <=
                3);
    }
}

void TestCustomMdiSubWindow::windowCoversThoseBelow()
{
    Fixture f;
    f.content->setStyleSheet(QStringLiteral("background:red;"));
    f.content->setAttribute(Qt::WA_StyledBackground);
    const QPoint point(kPlace.center().x(), kPlace.bottom() - 10);
    QCOMPARE(f.area.grab().toImage().pixelColor(point), QColor(Qt::red));
    f.open()->activate();
    QCOMPARE(f.area.grab().toImage().pixelColor(point), QColor(Qt::black));
    // Also when it is not the active one.
    CustomMdiSubWindow* other = f.open();
    other->move(kPlace.bottomRight());
    other->activate();
    QCOMPARE(f.area.grab().toImage().pixelColor(point), QColor(Qt::black));
}

void TestCustomMdiSubWindow::shellLetsItsWidgetsGoAtItsEnd()
{
    // Children get events while being destroyed; none may reach the half-destroyed window.
    Fixture f;
    f.content->spinBox->setFocus();
    delete f.window;
    QVERIFY(f.area.subWindowList().isEmpty());
}

void TestCustomMdiSubWindow::endIsStillReported()
{
    const Fixture f;
    QSignalSpy destroyed(f.window, &QObject::destroyed);
    int stateChanges = 0;
    connect(f.window, &QMdiSubWindow::windowStateChanged, &f.area, [&] { ++stateChanges; });
    delete f.window;
    QCOMPARE(destroyed.size(), 1);
    QCOMPARE(stateChanges, 0);
}

SCN_TEST(TestCustomMdiSubWindow, QApplication)
#include "test_custommdisubwindow.moc"
