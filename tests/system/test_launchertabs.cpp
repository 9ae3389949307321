#include "support/embeddedchild.h"
#include "support/launcherscene.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"

#include <QTest>

#include <csignal>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 60000;
const QString kProgram = QStringLiteral(SCN_BIN_DIR "/scn4070a");
/// One module with one channel, so that the window appears quickly.
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};

void xdotool(const QStringList& arguments)
{
    DisplayApplication::display().xdotool(arguments);
}

void moveTo(const LauncherScene& scene, const QPoint& place, const QSize& size)
{
    const QString window = QString::number(scene.currentTab()->window()->winId());
    xdotool({QStringLiteral("windowsize"), window, QString::number(size.width()),
             QString::number(size.height())});
    xdotool({QStringLiteral("windowmove"), window, QString::number(place.x()),
             QString::number(place.y())});
    QTRY_COMPARE(scene.currentTab()->window()->geometry(), QRect(place, size));
}

/// Where the visible window of a process is; null if there is none.
QRect placeOfProcess(qint64 process)
{
    const XDisplay& display = DisplayApplication::display();
    const qulonglong window = display.otherWindowOf(process, 0);
    return window == 0 ? QRect() : display.placeOf(window);
}

/// Whether an inner window has the blue frame of the one that is used. Its lower edge is below that point.
bool isInFront(const QPoint& aboveEdge)
{
    constexpr int kNear = 20;
    for (int down = 0; down < kNear; ++down) {
        const QColor color = colorInChild(aboveEdge + QPoint(0, down));
        if (color.blue() - color.red() > 100) {
            return true;
        }
    }
    return false;
}

} // namespace

/// Several programs in the launcher's window, and the keys for those within one.
class TestLauncherTabs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void bothChildrenFollowTheWindow();
    void innerWindowsChangeByKeys();
};

void TestLauncherTabs::initTestCase()
{
    QVERIFY2(!DisplayApplication::display().name().isEmpty(), "Xvfb did not start");
}

/// One with an instrument and one without; the former dies.
void TestLauncherTabs::bothChildrenFollowTheWindow()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    moveTo(scene, {0, 0}, {1000, 700});
    scene.openByHand(instrument.resource());
    QVERIFY(scene.waitForEmbedding());
    InstrumentTab* const firstTab = scene.currentTab();
    const qint64 first = LauncherScene::children(QStringLiteral("scn4070a")).value(0);
    scene.clickButton("newTab");
    QTRY_VERIFY(scene.currentTab() != firstTab);
    InstrumentTab* const secondTab = scene.currentTab();
    // Nobody listens there.
    scene.openByHand(QStringLiteral("TCPIP0::127.0.0.1::17::SOCKET"));
    QVERIFY(scene.waitForEmbedding());
    QList<qint64> programs = LauncherScene::children(QStringLiteral("scn4070a"));
    programs.removeAll(first);
    const qint64 second = programs.value(0);
    const auto show = [&scene](int tab) {
        const InstrumentTab* const before = scene.currentTab();
        scene.clickTab(tab);
        QTRY_VERIFY(scene.currentTab() != before);
    };
    const auto fills = [&scene](qint64 process) {
        return scene.embedded() && placeOfProcess(process) == placeOf(scene.embedded());
    };
    QTRY_VERIFY_WITH_TIMEOUT(fills(second), kWaitMs);

    // Moved with the second in front, the first comes to the new place too.
    moveTo(scene, {120, 60}, {1200, 750});
    QTRY_VERIFY(fills(second));
    show(0);
    QTRY_VERIFY(fills(first));
    QCOMPARE(placeOfProcess(second), QRect());
    moveTo(scene, {300, 150}, {1100, 720});
    QTRY_VERIFY(fills(first));
    const QString window = QString::number(scene.window().winId());
    xdotool({QStringLiteral("windowunmap"), QStringLiteral("--sync"), window});
    QTRY_COMPARE(placeOfProcess(first), QRect());
    xdotool({QStringLiteral("windowmap"), QStringLiteral("--sync"), window});
    QTRY_VERIFY_WITH_TIMEOUT(fills(first), kWaitMs);
    show(1);
    QTRY_VERIFY(fills(second));

    ::kill(static_cast<pid_t>(first), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(!firstTab->isBusy(), kWaitMs);
    moveTo(scene, {10, 20}, {1300, 800});
    QTRY_VERIFY(fills(second));
    QVERIFY(secondTab->isBusy());
    QVERIFY(scene.label("state").contains(QStringLiteral("连接被拒绝")));
}

void TestLauncherTabs::innerWindowsChangeByKeys()
{
    constexpr QPoint kPage(466, 14);
    constexpr QPoint kStrip(332, 63);
    constexpr QPoint kGridButton(363, 154);
    constexpr QPoint kEmptyPage(900, 500);
    constexpr QPoint kTools(398, 293);
    constexpr QPoint kHeader(545, 90);
    // Above the lower edges of the two grids that the button opens side by side.
    constexpr QPoint kFirstFrame(645, 240);
    constexpr QPoint kSecondFrame(1130, 240);
    const QColor black(Qt::black);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    moveTo(scene, {0, 0}, {1400, 900});
    scene.openByHand(instrument.resource());
    QVERIFY(scene.waitForEmbedding());
    // The busy overlay covers it for two seconds.
    QTRY_VERIFY_WITH_TIMEOUT((clickInChild(kPage), colorInChild(kEmptyPage) == black), kWaitMs);
    clickInChild(kStrip);
    // The tools slide in from the left.
    QTRY_VERIFY(colorInChild(kTools) != black);
    clickInChild(kGridButton);
    QTRY_VERIFY(colorInChild(kHeader).lightness() > 60);
    clickInChild(kGridButton);
    QTRY_VERIFY(isInFront(kSecondFrame));
    QVERIFY(!isInFront(kFirstFrame));
    for (const char* keys : {"ctrl+Tab", "ctrl+shift+Tab"}) {
        const bool wasFirst = isInFront(kFirstFrame);
        xdotool({QStringLiteral("key"), QString::fromLatin1(keys)});
        QTRY_COMPARE(isInFront(kFirstFrame), !wasFirst);
        QTRY_COMPARE(isInFront(kSecondFrame), wasFirst);
    }
}

SCN_TEST(TestLauncherTabs, DisplayApplication)
#include "test_launchertabs.moc"
