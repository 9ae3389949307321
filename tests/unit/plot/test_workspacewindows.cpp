#include "acquisition/readdata.h"
#include "plot/custommdisubwindow.h"
#include "plot/customtitlebar.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "support/hand.h"
#include "support/settle.h"
#include "support/testprogram.h"
#include "unit/storage/randomcases.h"
#include "widgets/sidebar.h"

#include <QHBoxLayout>
#include <QMdiArea>
#include <QSizeGrip>
#include <QVBoxLayout>
#include <QtTest>

namespace {

constexpr int kSteps = 500;
constexpr int kMostWindows = 5;
constexpr int kOpenBarWidth = 80;
const QSize kOpeningSize(480, 220);
const QSize kTileSize(70, 70);
constexpr int kKeptInView = 35;

/// What a step of the walk that failed is called.
const QString kStuck = QStringLiteral("Ctrl+Tab, which did nothing");

enum class Shape { Normal, Tile, Maximised };

enum BarButton { CollapseButton, MaximiseButton, CloseButton };

/// What a window must look like after all that was done to it.
struct Expected
{
    Shape shape = Shape::Normal;
    QRect shown;  ///< where it is now
    QRect stored; ///< where it is when normal
};

/// Length of the walk; SCN_WALK_STEPS asks for another.
int walkSteps()
{
    const int wanted = qEnvironmentVariableIntValue("SCN_WALK_STEPS");
    return wanted > 0 ? wanted : kSteps;
}

QPoint heldToPositive(const QPoint& corner)
{
    return {qMax(0, corner.x()), qMax(0, corner.y())};
}

/// Where a drag to `corner` leaves a window of this width.
QPoint held(const QPoint& corner, int width, const QRect& bounds)
{
    return {qMin(qMax(corner.x(), kKeptInView - width), bounds.right() - kKeptInView),
            qMin(qMax(corner.y(), bounds.top()), bounds.bottom() - kKeptInView)};
}

QString described(const QRect& rect)
{
    return QStringLiteral("(%1, %2) %3 x %4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

/// The workspace, a hand on it, and what each of its windows must look like.
class Workspace
{
public:
    Workspace()
    {
        m_page.resize(1000, 700);
        m_page.show();
        if (!QTest::qWaitForWindowActive(&m_page)) {
            qFatal("the workspace's window is not active");
        }
        m_area = m_page.findChild<QMdiArea*>();
        const auto* bar = m_page.findChild<SideBar*>();
        hand::click(bar);
        if (!QTest::qWaitFor([bar] { return bar->width() == kOpenBarWidth; })) {
            qFatal("the side bar stays shut");
        }
    }

    QList<QMdiSubWindow*> windows() const { return m_area->subWindowList(); }
    QMdiSubWindow* active() const { return m_area->activeSubWindow(); }
    const Expected& expected(QMdiSubWindow* window) const
    {
        return m_expected.find(window).value();
    }
    QRect wholeArea() const { return m_area->viewport()->rect(); }

    /// Opens a chart or a grid by its button; the placing is the library's.
    QMdiSubWindow* open(int kind)
    {
        hand::click(tool(kind));
        settle();
        QMdiSubWindow* window = windows().last();
        const QRect place(window->pos(), kOpeningSize);
        m_expected[window] = {Shape::Normal, place, place};
        return window;
    }

    /// Collapses by the first button. False if no hand could: the button is hidden or covered.
    bool collapse(QMdiSubWindow* window)
    {
        if (!click(button(window, CollapseButton))) {
            return false;
        }
        Expected& now = m_expected[window];
        now.stored = now.shape == Shape::Maximised ? now.stored : now.shown;
        now.shown = QRect(heldToPositive(now.stored.topLeft()), kTileSize);
        now.shape = Shape::Tile;
        return true;
    }

    bool clickMaximise(QMdiSubWindow* window)
    {
        if (!click(button(window, MaximiseButton))) {
            return false;
        }
        expectToggled(window);
        return true;
    }

    bool doubleClickBar(QMdiSubWindow* window)
    {
        const QPoint point = reachable(bar(window));
        if (point.isNull()) {
            return false;
        }
        QTest::mouseDClick(m_page.windowHandle(), Qt::LeftButton, Qt::NoModifier, point);
        expectToggled(window);
        return true;
    }

    bool drag(QMdiSubWindow* window, const QPoint& by)
    {
        const QPoint from = reachable(bar(window));
        if (from.isNull()) {
            return false;
        }
        const QPoint moved = dragPointer(from, by);
        QRect& shown = m_expected[window].shown;
        shown.moveTopLeft(held(shown.topLeft() + moved, shown.width(), m_area->contentsRect()));
        return true;
    }

    /// Drags a chart's size grip; the limits of the size are the library's.
    bool resize(QMdiSubWindow* window, const QPoint& by)
    {
        const auto* grip = window->findChild<QSizeGrip*>();
        const QPoint from = grip ? reachable(grip) : QPoint();
        Expected& now = m_expected[window];
        if (from.isNull() || now.shape != Shape::Normal) {
            return false;
        }
        dragPointer(from, by);
        now.shown.setSize(window->size());
        return true;
    }

    bool close(QMdiSubWindow* window)
    {
        if (!click(button(window, CloseButton))) {
            return false;
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_expected.remove(window);
        return true;
    }

    /// Clicks into the window's content, which activates it.
    bool clickInside(QMdiSubWindow* window)
    {
        const QWidget* content = static_cast<CustomMdiSubWindow*>(window)->contentWidget();
        return click(content->parentWidget());
    }

    /// Ctrl+Tab: on to another window. False if none was activated.
    bool pressCtrlTab()
    {
        const QMdiSubWindow* before = active();
        QWindow* const keys = m_page.windowHandle();
        QTest::keyPress(keys, Qt::Key_Control, Qt::ControlModifier);
        QTest::keyClick(keys, Qt::Key_Tab, Qt::ControlModifier);
        QTest::keyRelease(keys, Qt::Key_Control);
        settle();
        return active() && (active() != before || windows().size() == 1);
    }

    /// As when the user turns to another page and back.
    void leaveAndReturn()
    {
        m_page.hide();
        settle();
        m_page.show();
        if (!QTest::qWaitForWindowActive(&m_page)) {
            qFatal("the workspace's window is not active");
        }
    }

    void resizeArea(const QSize& size)
    {
        m_page.resize(size);
        settle();
        for (Expected& window : m_expected) {
            if (window.shape == Shape::Maximised) {
                window.shown.setSize(wholeArea().size());
            }
        }
    }

    /// The first difference between the windows and what they must be; empty if there is none.
    QString difference() const
    {
        if (windows().size() != m_expected.size()) {
            return QStringLiteral("%1 windows").arg(windows().size());
        }
        for (QMdiSubWindow* window : windows()) {
            const Expected& wanted = expected(window);
            const bool tile =
                !static_cast<CustomMdiSubWindow*>(window)->contentWidget()->isVisible();
            if (window->isMaximized() != (wanted.shape == Shape::Maximised) ||
                tile != (wanted.shape == Shape::Tile) || window->geometry() != wanted.shown) {
                return QStringLiteral("%1 is%2%3 at %4 and should be in state %5 at %6")
                    .arg(window->windowTitle(),
                         window->isMaximized() ? QStringLiteral(" maximised") : QString(),
                         tile ? QStringLiteral(" a tile") : QString(),
                         described(window->geometry()),
                         QString::number(static_cast<int>(wanted.shape)), described(wanted.shown));
            }
        }
        return {};
    }

private:
    QWidget* tool(int number) const
    {
        return m_page.findChild<SideBar*>()->content()->layout()->itemAt(number)->widget();
    }

    static QWidget* bar(QMdiSubWindow* window) { return window->findChild<CustomTitleBar*>(); }

    static QWidget* button(QMdiSubWindow* window, BarButton number)
    {
        return bar(window)->layout()->itemAt(3 + 2 * number)->widget();
    }

    /// A point of the page that shows the widget or a label of it; (0, 0) if no hand reaches it.
    QPoint reachable(const QWidget* widget) const
    {
        constexpr int kRaster = 4;
        for (int y = kRaster; widget->isVisible() && y < widget->height(); y += kRaster) {
            for (int x = kRaster; x < widget->width(); x += kRaster) {
                const QPoint point = widget->mapTo(&m_page, QPoint(x, y));
                const QWidget* under =
                    m_page.rect().contains(point) ? m_page.childAt(point) : nullptr;
                const bool passedOn =
                    under && under->parentWidget() == widget && under->inherits("QLabel");
                if (under == widget || passedOn) {
                    return point;
                }
            }
        }
        return {};
    }

    bool click(const QWidget* widget)
    {
        const QPoint point = reachable(widget);
        if (point.isNull()) {
            return false;
        }
        hand::click(&m_page, point);
        settle();
        return true;
    }

    /// Drags, but not out of the page, nor to (0, 0), which QTest takes for its middle. Returns how far.
    QPoint dragPointer(const QPoint& from, const QPoint& by)
    {
        QWindow* const window = m_page.windowHandle();
        const QPoint to(qBound(1, from.x() + by.x(), m_page.width() - 1),
                        qBound(1, from.y() + by.y(), m_page.height() - 1));
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, from);
        for (const QPoint& point : {(from + to) / 2, to}) {
            QTest::mouseMove(window, point);
            settle();
        }
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, to);
        settle();
        return to - from;
    }

    /// What the second button and a double click do.
    void expectToggled(QMdiSubWindow* window)
    {
        settle();
        Expected& now = m_expected[window];
        if (now.shape == Shape::Normal) {
            now = {Shape::Maximised, wholeArea(), now.shown};
            return;
        }
        const QRect open(heldToPositive(now.shown.topLeft()), now.stored.size());
        now.shown = now.shape == Shape::Tile ? open : now.stored;
        now.shape = Shape::Normal;
    }

    GraphicSettingWidget m_page;
    QMdiArea* m_area = nullptr;
    QMap<QMdiSubWindow*, Expected> m_expected;
};

/// One thing a user may do, drawn at random. Returns what it was, empty if no hand could do it.
QString randomStep(Workspace& workspace, QRandomGenerator& random)
{
    const QList<QMdiSubWindow*> windows = workspace.windows();
    const int action = random.bounded(100);
    if (windows.isEmpty() || (action < 8 && windows.size() < kMostWindows)) {
        return QStringLiteral("open ") + workspace.open(random.bounded(2))->windowTitle();
    }
    QMdiSubWindow* window = windows.at(random.bounded(windows.size()));
    const QString title = QLatin1Char(' ') + window->windowTitle();
    const QPoint by(random.bounded(-700, 700), random.bounded(-500, 500));
    const auto done = [&title](const char* what, bool could) {
        return could ? QLatin1String(what) + title : QString();
    };
    if (action < 15) {
        return done("close", workspace.close(window));
    }
    if (action < 30) {
        return done("collapse", workspace.collapse(window));
    }
    if (action < 45) {
        return done("maximise", workspace.clickMaximise(window));
    }
    if (action < 65) {
        return done("double-click", workspace.doubleClickBar(window));
    }
    if (action < 75) {
        return done("drag", workspace.drag(window, by));
    }
    if (action < 80) {
        return done("resize", workspace.resize(window, by / 4));
    }
    if (action < 85) {
        return done("click inside", workspace.clickInside(window));
    }
    if (action < 95) {
        return workspace.pressCtrlTab() ? QStringLiteral("Ctrl+Tab") : kStuck;
    }
    if (action < 98) {
        workspace.leaveAndReturn();
        return QStringLiteral("leave and return");
    }
    workspace.resizeArea(QSize(random.bounded(700, 1300), random.bounded(500, 900)));
    return QStringLiteral("resize the area");
}

} // namespace

/// The windows of the workspace beside each other, moved by hand.
class TestWorkspaceWindows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initResources();
        g_scanChannels.clear();
    }
    void cleanupTestCase() { delete ReadData::instance(); }

    void newWindowOpensInItsSizeBesideAMaximisedOne();
    void spaceDoesNotCollapseANewWindow_data();
    void spaceDoesNotCollapseANewWindow();
    void tileStaysATileWhenAMaximisedWindowCloses();
    void tileStaysATileWhenItFollowsAMaximisedWindow();
    void chartTakenBackHasItsOldSize();
    void chartCollapsedWhileMaximisedOpensInItsOldSize();
    void windowMovedWhileMaximisedReturnsToItsOldPlace();
    void windowsKeepTheirShapesOnARandomWalk();
};

void TestWorkspaceWindows::newWindowOpensInItsSizeBesideAMaximisedOne()
{
    Workspace workspace;
    QVERIFY(workspace.clickMaximise(workspace.open(0)));
    QMdiSubWindow* grid = workspace.open(1);
    QCOMPARE(workspace.difference(), QString());
    QCOMPARE(grid->size(), kOpeningSize);
    QCOMPARE(workspace.active(), grid);
}

void TestWorkspaceWindows::spaceDoesNotCollapseANewWindow_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("chart") << 0;
    QTest::newRow("grid") << 1;
}

void TestWorkspaceWindows::spaceDoesNotCollapseANewWindow()
{
    QFETCH(int, kind);
    Workspace workspace;
    const QMdiSubWindow* window = workspace.open(kind);
    const QWidget* focused = QApplication::focusWidget();
    QVERIFY(window == focused || window->isAncestorOf(focused));
    hand::press(Qt::Key_Space);
    if (QWidget* list = QApplication::activePopupWidget()) {
        list->close();
    }
    settle();
    QCOMPARE(workspace.difference(), QString());
}

void TestWorkspaceWindows::tileStaysATileWhenAMaximisedWindowCloses()
{
    Workspace workspace;
    QVERIFY(workspace.collapse(workspace.open(1)));
    QMdiSubWindow* maximised = workspace.open(1);
    QVERIFY(workspace.clickMaximise(maximised));
    QVERIFY(workspace.close(maximised));
    QCOMPARE(workspace.difference(), QString());
}

void TestWorkspaceWindows::tileStaysATileWhenItFollowsAMaximisedWindow()
{
    Workspace workspace;
    QMdiSubWindow* tile = workspace.open(1);
    QVERIFY(workspace.collapse(tile));
    QMdiSubWindow* maximised = workspace.open(1);
    QVERIFY(workspace.clickMaximise(maximised));
    QVERIFY(workspace.pressCtrlTab());
    QCOMPARE(workspace.active(), tile);
    QCOMPARE(workspace.difference(), QString());
    QVERIFY(workspace.pressCtrlTab());
    QCOMPARE(workspace.active(), maximised);
    QCOMPARE(workspace.difference(), QString());
}

void TestWorkspaceWindows::chartTakenBackHasItsOldSize()
{
    Workspace workspace;
    QMdiSubWindow* chart = workspace.open(0);
    QVERIFY(workspace.doubleClickBar(chart));
    QVERIFY(workspace.doubleClickBar(chart));
    QCOMPARE(workspace.difference(), QString());
    QCOMPARE(chart->size(), kOpeningSize);
}

void TestWorkspaceWindows::chartCollapsedWhileMaximisedOpensInItsOldSize()
{
    Workspace workspace;
    QMdiSubWindow* chart = workspace.open(0);
    QVERIFY(workspace.clickMaximise(chart));
    QVERIFY(workspace.collapse(chart));
    QCOMPARE(workspace.difference(), QString());
    QVERIFY(workspace.doubleClickBar(chart));
    QCOMPARE(workspace.difference(), QString());
}

void TestWorkspaceWindows::windowMovedWhileMaximisedReturnsToItsOldPlace()
{
    Workspace workspace;
    QMdiSubWindow* grid = workspace.open(1);
    QVERIFY(workspace.drag(grid, QPoint(200, 100)));
    QVERIFY(workspace.clickMaximise(grid));
    QVERIFY(workspace.drag(grid, QPoint(30, 20)));
    workspace.leaveAndReturn();
    QVERIFY(workspace.clickMaximise(grid));
    QCOMPARE(workspace.difference(), QString());
}

// SCN_RANDOM_SEED repeats a walk.
void TestWorkspaceWindows::windowsKeepTheirShapesOnARandomWalk()
{
    QRandomGenerator random(randomSeed());
    Workspace workspace;
    QStringList last;
    QMap<Shape, int> seen;
    const int steps = walkSteps();
    for (int step = 0; step < steps;) {
        const QString done = randomStep(workspace, random);
        if (done.isEmpty()) {
            continue;
        }
        ++step;
        last.append(done);
        const QString difference = workspace.difference();
        QVERIFY2(difference.isEmpty(),
                 qPrintable(QStringLiteral("step %1: %2, after: %3")
                                .arg(QString::number(step), difference,
                                     last.mid(last.size() - 8).join(QLatin1String(", ")))));
        for (QMdiSubWindow* window : workspace.windows()) {
            ++seen[workspace.expected(window).shape];
        }
    }
    for (const Shape shape : {Shape::Normal, Shape::Tile, Shape::Maximised}) {
        QVERIFY(seen.value(shape) > steps / 10);
    }
}

SCN_TEST(TestWorkspaceWindows, QApplication)
#include "test_workspacewindows.moc"
