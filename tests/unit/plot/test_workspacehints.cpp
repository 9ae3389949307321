#include "plot/custommdisubwindow.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "support/hand.h"
#include "support/testprogram.h"
#include "widgets/sidebar.h"

#include <QApplication>
#include <QMdiArea>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QToolTip>

namespace {

const QColor kHint(0x8a, 0x8f, 0x96);
constexpr int kOpenSideBar = 80;

} // namespace

/// What the workspace tells a user who knows nothing of it.
class TestWorkspaceHints : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void emptyWorkspaceSaysHowToOpenAWindow();
    void hintIsNotInTheWayOfAWindow();
    void pictureButtonsTellWhatTheyDo();
    void titleBarButtonsTellWhatTheyDo();

private:
    /// The tip that comes when the pointer rests on a button; empty if none comes.
    static QString tipOf(const QWidget* button);
    static int hintPixels(const QWidget& page);
    static void openSideBar(const QWidget& page);
    static QList<QPushButton*> pictureButtons(const QWidget& page);
};

void TestWorkspaceHints::initTestCase()
{
    initResources();
}

void TestWorkspaceHints::cleanup()
{
    QToolTip::hideText();
}

QString TestWorkspaceHints::tipOf(const QWidget* button)
{
    QToolTip::hideText();
    [[maybe_unused]] const bool isGone =
        QTest::qWaitFor([] { return !QToolTip::isVisible(); }, 5000);
    hand::movePointer(button->window(), QPoint(1, 1));
    hand::movePointer(button, button->rect().center());
    [[maybe_unused]] const bool hasCome =
        QTest::qWaitFor([] { return QToolTip::isVisible(); }, 5000);
    return QToolTip::text();
}

int TestWorkspaceHints::hintPixels(const QWidget& page)
{
    // As the screen has it: grab() would paint anew.
    const QImage picture = page.screen()->grabWindow(page.winId()).toImage();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += picture.pixelColor(x, y) == kHint ? 1 : 0;
        }
    }
    return count;
}

void TestWorkspaceHints::openSideBar(const QWidget& page)
{
    const SideBar* const bar = page.findChild<SideBar*>();
    hand::click(bar);
    QTRY_COMPARE(bar->width(), kOpenSideBar);
}

QList<QPushButton*> TestWorkspaceHints::pictureButtons(const QWidget& page)
{
    return page.findChild<SideBar*>()->content()->findChildren<QPushButton*>();
}

void TestWorkspaceHints::emptyWorkspaceSaysHowToOpenAWindow()
{
    GraphicSettingWidget page;
    page.resize(900, 500);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    QTRY_VERIFY(hintPixels(page) > 50);

    openSideBar(page);
    hand::click(pictureButtons(page).constLast());
    QMdiArea* const area = page.findChild<QMdiArea*>();
    QTRY_COMPARE(area->subWindowList().size(), 1);
    QTRY_COMPARE(hintPixels(page), 0);

    area->subWindowList().constFirst()->close();
    QVERIFY(area->subWindowList().isEmpty());
    QTRY_VERIFY(hintPixels(page) > 50);
}

void TestWorkspaceHints::hintIsNotInTheWayOfAWindow()
{
    GraphicSettingWidget page;
    page.resize(900, 500);
    page.show();
    // It is painted, not laid over the area: the wheel and the pointer meet the area itself.
    const QWidget* const area = page.findChild<QMdiArea*>()->viewport();
    QCOMPARE(page.childAt(area->mapTo(&page, area->rect().center())), area);
}

void TestWorkspaceHints::pictureButtonsTellWhatTheyDo()
{
    GraphicSettingWidget page;
    page.resize(900, 500);
    page.show();
    page.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&page));
    openSideBar(page);
    QStringList tips;
    const QList<QPushButton*> buttons = pictureButtons(page);
    for (const QPushButton* button : buttons) {
        tips.append(tipOf(button));
    }
    QCOMPARE(tips, QStringList({QStringLiteral("新建图形窗口"), QStringLiteral("新建数据网格")}));
}

void TestWorkspaceHints::titleBarButtonsTellWhatTheyDo()
{
    CustomMdiSubWindow window(QStringLiteral(":/image/DataNetwork.png"), nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.resize(480, 220);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QStringList tips;
    const QList<QPushButton*> buttons = window.findChildren<QPushButton*>();
    for (const QPushButton* button : buttons) {
        tips.append(tipOf(button));
    }
    QCOMPARE(tips, QStringList({QStringLiteral("收起为图标"), QStringLiteral("最大化或还原"),
                                QStringLiteral("关闭")}));
}

SCN_TEST(TestWorkspaceHints, QApplication)
#include "test_workspacehints.moc"
