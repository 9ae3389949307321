#include "posix/filedescriptor.h"
#include "support/embeddedchild.h"
#include "support/launcherprocess.h"
#include "support/launcherscene.h"
#include "support/ordinaryrights_posix.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"

#include <QAbstractButton>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <fcntl.h>
#include <grp.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 60000;
const QString kFakeChild = QStringLiteral(SCN_FAKE_CHILD);
const QString kProgram = QStringLiteral(SCN_BIN_DIR "/scn4070a");
/// One module with one channel, so that the window appears quickly.
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};

QString xdotool(const QStringList& arguments)
{
    return DisplayApplication::display().xdotool(arguments);
}

/// The place of a list that the program has opened, from the corner of its window.
QPoint openedList(qint64 process)
{
    const XDisplay& display = DisplayApplication::display();
    const qulonglong list = display.otherWindowOf(process, childWindow());
    return list == 0 ? QPoint() : display.placeOf(list).topLeft() - childPlace().topLeft();
}

/// Chooses the simulated instrument in the list, and opens it.
void openSimulated(LauncherScene& scene)
{
    auto* list = scene.currentTab()->findChild<QTreeWidget*>();
    const QRect row = list->visualItemRect(list->topLevelItem(0)->child(0));
    const QPoint point = list->viewport()->mapToGlobal(row.center());
    DisplayApplication::display().click(point.x(), point.y());
    QTRY_VERIFY(list->topLevelItem(0)->child(0)->isSelected());
    scene.clickButton("open");
}

/// How many processes this one has as children.
int allChildren()
{
    QFile file(
        QStringLiteral("/proc/self/task/%1/children").arg(QCoreApplication::applicationPid()));
    return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ').size() : -1;
}

/// The files and folders below a folder, by their paths.
QStringList filesIn(const QString& folder)
{
    QStringList paths;
    QDirIterator entries(folder, QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        paths.append(entries.next());
    }
    paths.sort();
    return paths;
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

/// Takes a device file from this user. True if a group may open it, which only root can arrange; else
/// nobody may.
bool giveToGroup(const QString& path, const char* name)
{
    const group* const owners = ::getgrnam(name);
    constexpr uid_t kNobody = 65534;
    const QByteArray file = QFile::encodeName(path);
    const bool isGiven = owners && ::chown(file.constData(), kNobody, owners->gr_gid) == 0;
    return ::chmod(file.constData(), isGiven ? S_IRGRP | S_IWGRP : 0) == 0 && isGiven;
}

} // namespace

/// The launcher's window with real children, real clicks and a real screen.
class TestLauncherWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void startPageListsWhatCanBeOpened();
    void buttonForATabHasDarkCorners();
    void simulatedInstrumentIsAClickAway();
    void resourceTypedIsOpenedAndRemembered();
    void childFollowsMovesAndSizes();
    void innerWindowsAreDraggedAfterAMove();
    void childSurvivesMinimising();
    void keysReachTheChild();
    void startStaysDark();
    void twoChildrenAreIndependent();
    void childrenEndAndStayWhileMinimised();
    void eachSimulatorWritesItsOwnTranscript();
    void childWithoutInstrumentSaysWhy_data();
    void childWithoutInstrumentSaysWhy();
    void silentInstrumentIsTold();
    void deviceWithoutRightsNamesItsGroup();
    void busyPortIsTold();
    void otherInstrumentIsNamed();
    void serialRateReachesTheChild();
    void cancellingAStartEndsIt();
    void crashShowsTheLastWordsAndStartsAgain();
    void windowOfAnotherProcessIsRefused();
    void endlessLineLeavesTheLauncherUsable();
    void closingWhileItScansAsksFirst();
    void endNeverFreezesTheWindow();
    void startsAndEndsLeaveNothingBehind();
};

void TestLauncherWindow::initTestCase()
{
    QVERIFY2(!DisplayApplication::display().name().isEmpty(), "Xvfb did not start");
}

void TestLauncherWindow::startPageListsWhatCanBeOpened()
{
    LauncherScene scene(kFakeChild);
    const auto* list = scene.window().findChild<QTreeWidget*>();
    QVERIFY(list->isVisible());
    QStringList names;
    for (int section = 0; section < list->topLevelItemCount(); ++section) {
        names.append(list->topLevelItem(section)->text(0));
    }
    QCOMPARE(names, (QStringList{QStringLiteral("模拟仪器"), QStringLiteral("串口"),
                                 QStringLiteral("USB"), QStringLiteral("网络")}));
    // A port without rights says so; without service discovery the page says that.
    QCOMPARE(list->topLevelItem(1)->child(0)->text(1), QStringLiteral("a group is missing"));
    QTRY_VERIFY(
        list->topLevelItem(3)->child(0)->text(0).contains(QStringLiteral("服务发现没有运行")));
}

void TestLauncherWindow::buttonForATabHasDarkCorners()
{
    LauncherScene scene(kFakeChild);
    const auto* button = scene.window().findChild<QWidget*>(QStringLiteral("newTab"));
    const QRect place = placeOf(button);
    const QImage picture = QApplication::primaryScreen()
                               ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
                               .toImage();
    constexpr int kCorner = 4;
    for (int x = 0; x < kCorner; ++x) {
        for (int y = 0; y < kCorner; ++y) {
            for (const int column : {x, picture.width() - 1 - x}) {
                const QColor color = picture.pixelColor(column, y);
                QVERIFY2(color.lightness() < 100, qPrintable(color.name()));
            }
        }
    }
}

void TestLauncherWindow::simulatedInstrumentIsAClickAway()
{
    LauncherScene scene(kProgram);
    scene.clickButton("open");
    QVERIFY(scene.waitForEmbedding());
    QTRY_COMPARE_WITH_TIMEOUT(childPlace(), placeOf(scene.embedded()), kWaitMs);
    QTRY_VERIFY(scene.label("identity").contains(QLatin1String("SCN4070A")));
    QCOMPARE(scene.label("state"), QStringLiteral("空闲"));
    QVERIFY(scene.window().windowTitle().contains(scene.label("identity")));
    QTRY_VERIFY(scene.label("silence").contains(QStringLiteral("秒前")));
    scene.clickButton("chooseOther");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    QVERIFY(scene.window().findChild<QTreeWidget*>()->isVisible());
    QCOMPARE(LauncherScene::children(QStringLiteral("scn4070a-sim")).size(), 0);
}

void TestLauncherWindow::resourceTypedIsOpenedAndRemembered()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(LauncherScene::own("good"));
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("resourceLabel"), LauncherScene::own("good"), kWaitMs);
    QTRY_VERIFY(!scene.label("identity").isEmpty());
    scene.clickButton("cancel");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    const auto* list = scene.currentTab()->findChild<QTreeWidget*>();
    QCOMPARE(list->topLevelItem(1)->text(0), QStringLiteral("最近使用"));
    QCOMPARE(list->topLevelItem(1)->child(0)->text(0), LauncherScene::own("good"));
}

void TestLauncherWindow::childFollowsMovesAndSizes()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    scene.window().open({instrument.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    QTRY_COMPARE_WITH_TIMEOUT(childPlace(), placeOf(scene.embedded()), kWaitMs);
    const qint64 program = LauncherScene::children(QStringLiteral("scn4070a")).value(0);
    // The busy overlay covers it for two seconds. Then the list of the channel's functions opens.
    constexpr QPoint kFunction(701, 126);
    const auto openList = [&] {
        const QPoint point = childPlace().topLeft() + kFunction;
        DisplayApplication::display().click(point.x(), point.y());
        QTest::qWait(200);
        return openedList(program);
    };
    QPoint before;
    QTRY_VERIFY_WITH_TIMEOUT(!(before = openList()).isNull(), kWaitMs);
    xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
    const QString window = QString::number(scene.window().winId());
    for (const QPoint& place : {QPoint(80, 5), QPoint(0, 0)}) {
        xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"), window,
                 QString::number(place.x()), QString::number(place.y())});
        QTRY_COMPARE(scene.window().pos(), place);
        QTRY_COMPARE(childPlace(), placeOf(scene.embedded()));
        QPoint after;
        QTRY_VERIFY_WITH_TIMEOUT(!(after = openList()).isNull(), kWaitMs);
        QCOMPARE(after, before);
        xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
    }
    xdotool({QStringLiteral("windowsize"), QStringLiteral("--sync"), window, QStringLiteral("1200"),
             QStringLiteral("700")});
    QTRY_COMPARE(scene.window().size(), QSize(1200, 700));
    QTRY_COMPARE(childPlace(), placeOf(scene.embedded()));
}

void TestLauncherWindow::innerWindowsAreDraggedAfterAMove()
{
    // In the program's window: its second page, the strip that opens the tools, a grid's button there,
    // and points of the page, of the tools, and of the grid's title bar and header.
    constexpr QPoint kPage(466, 14);
    constexpr QPoint kStrip(332, 63);
    constexpr QPoint kGridButton(363, 154);
    constexpr QPoint kEmptyPage(900, 500);
    constexpr QPoint kTools(398, 293);
    constexpr QPoint kTitleBar(570, 51);
    constexpr QPoint kHeader(545, 90);
    const QColor black(Qt::black);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    const QString window = QString::number(scene.window().winId());
    // Small enough to be moved far.
    xdotool({QStringLiteral("windowsize"), QStringLiteral("--sync"), window, QStringLiteral("1000"),
             QStringLiteral("700")});
    xdotool({QStringLiteral("windowmove"), window, QStringLiteral("0"), QStringLiteral("0")});
    QTRY_COMPARE(scene.window().geometry(), QRect(0, 0, 1000, 700));
    scene.window().open({instrument.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    // The busy overlay covers it for two seconds.
    QTRY_VERIFY_WITH_TIMEOUT((clickInChild(kPage), colorInChild(kEmptyPage) == black), kWaitMs);
    clickInChild(kStrip);
    // The tools slide in from the left.
    QTRY_VERIFY(colorInChild(kTools) != black);
    clickInChild(kGridButton);
    QTRY_VERIFY(colorInChild(kHeader).lightness() > 60);
    const QColor header = colorInChild(kHeader);

    xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"), window, QStringLiteral("580"),
             QStringLiteral("290")});
    QTRY_COMPARE(scene.window().pos(), QPoint(580, 290));
    QPoint grid;
    for (const QPoint& by : {QPoint(80, 250), QPoint(-40, -100)}) {
        dragInChild(kTitleBar + grid, by);
        grid += by;
        QTRY_COMPARE(colorInChild(kHeader + grid), header);
        QTRY_COMPARE(colorInChild(kHeader), black);
    }
}

void TestLauncherWindow::childSurvivesMinimising()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    scene.window().open({instrument.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    const QString window = QString::number(scene.window().winId());
    // What a window manager does.
    xdotool({QStringLiteral("windowunmap"), QStringLiteral("--sync"), window});
    QTRY_COMPARE(childWindow(), 0ULL);
    const int polls = instrument.received().size();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().size() > polls + 3, kWaitMs);
    xdotool({QStringLiteral("windowmap"), QStringLiteral("--sync"), window});
    QTRY_COMPARE_WITH_TIMEOUT(childPlace(), placeOf(scene.embedded()), kWaitMs);
}

void TestLauncherWindow::keysReachTheChild()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    scene.window().open({instrument.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    // The focus goes with the window: the child's, without a click into it.
    QTRY_COMPARE_WITH_TIMEOUT(
        xdotool({QStringLiteral("getwindowfocus"), QStringLiteral("-f")}).toULongLong(),
        childWindow(), kWaitMs);
    // A window manager gives it back to the window that it knows.
    xdotool({QStringLiteral("windowfocus"), QString::number(scene.window().winId())});
    QTRY_COMPARE(xdotool({QStringLiteral("getwindowfocus"), QStringLiteral("-f")}).toULongLong(),
                 childWindow());
    // The launcher's own buttons leave it there.
    scene.click(scene.window().findChild<QTabBar*>());
    QTRY_COMPARE(xdotool({QStringLiteral("getwindowfocus"), QStringLiteral("-f")}).toULongLong(),
                 childWindow());
}

void TestLauncherWindow::startStaysDark()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    const QPoint middle = scene.window().mapToGlobal(scene.window().rect().center());
    scene.window().open({instrument.resource(), false, 0});
    int brightest = 0;
    const auto isEmbedded = [&] {
        // Two points of a page without text or controls.
        for (const QPoint& point : {middle + QPoint(-500, 100), middle + QPoint(500, 100)}) {
            const QColor color = DisplayApplication::display().colorAt(point.x(), point.y());
            brightest = std::max(brightest, color.lightness());
        }
        return scene.embedded() && !childPlace().isNull();
    };
    QTRY_VERIFY_WITH_TIMEOUT(isEmbedded(), kWaitMs);
    for (int look = 0; look < 100; ++look) {
        QTest::qWait(10);
        QVERIFY(isEmbedded());
    }
    // Light grey lines and pictures; a light page has 230 and more.
    QVERIFY2(brightest < 200, qPrintable(QString::number(brightest)));
}

void TestLauncherWindow::twoChildrenAreIndependent()
{
    const SimulatedInstrument first(SimulatedInstrument::Transport::Tcp, kSmallest);
    const SimulatedInstrument second(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    scene.window().open({first.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    InstrumentTab* const firstTab = scene.currentTab();
    const qint64 firstProgram = LauncherScene::children(QStringLiteral("scn4070a")).value(0);
    scene.clickButton("newTab");
    QTRY_VERIFY(scene.currentTab() != firstTab);
    scene.window().open({second.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    ::kill(static_cast<pid_t>(firstProgram), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(!firstTab->isBusy(), kWaitMs);
    QVERIFY(scene.embedded());
    const int polls = second.received().size();
    QTRY_VERIFY_WITH_TIMEOUT(second.received().size() > polls + 3, kWaitMs);
    // The dead one has left word, and comes back.
    scene.clickTab(0);
    QTRY_COMPARE(scene.currentTab(), firstTab);
    QVERIFY(scene.label("pageTitle").contains(QStringLiteral("意外终止")));
    scene.clickButton("startAgain");
    QVERIFY(scene.waitForEmbedding());
    QCOMPARE(LauncherScene::children(QStringLiteral("scn4070a")).size(), 2);
}

void TestLauncherWindow::childrenEndAndStayWhileMinimised()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherScene scene(kProgram);
    scene.window().open({instrument.resource(), false, 0});
    QVERIFY(scene.waitForEmbedding());
    InstrumentTab* const firstTab = scene.currentTab();
    const qint64 firstProgram = LauncherScene::children(QStringLiteral("scn4070a")).value(0);
    scene.clickButton("newTab");
    QTRY_VERIFY(scene.currentTab() != firstTab);
    // Nobody listens there.
    scene.openByHand(QStringLiteral("TCPIP0::127.0.0.1::7::SOCKET"));
    QVERIFY(scene.waitForEmbedding());
    const QList<qint64> programs = LauncherScene::children(QStringLiteral("scn4070a"));
    QCOMPARE(programs.size(), 2);
    const qint64 secondProgram = programs.at(0) == firstProgram ? programs.at(1) : programs.at(0);
    // It has no title yet.
    const XDisplay& display = DisplayApplication::display();
    const auto secondPlace = [&display, secondProgram] {
        const qulonglong shown = display.otherWindowOf(secondProgram, 0);
        return shown == 0 ? QRect() : display.placeOf(shown);
    };
    QTRY_COMPARE_WITH_TIMEOUT(secondPlace(), placeOf(scene.embedded()), kWaitMs);

    const QString window = QString::number(scene.window().winId());
    xdotool({QStringLiteral("windowunmap"), QStringLiteral("--sync"), window});
    QTRY_COMPARE(secondPlace(), QRect());
    ::kill(static_cast<pid_t>(firstProgram), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(!firstTab->isBusy(), kWaitMs);
    xdotool({QStringLiteral("windowmap"), QStringLiteral("--sync"), window});
    // The tab in front is the one without an instrument, still with its window.
    QTRY_COMPARE_WITH_TIMEOUT(secondPlace(), placeOf(scene.embedded()), kWaitMs);
    QVERIFY(scene.label("state").contains(QStringLiteral("连接被拒绝")));
    scene.clickTab(0);
    QTRY_COMPARE(scene.currentTab(), firstTab);
    QVERIFY(scene.label("pageTitle").contains(QStringLiteral("意外终止")));
    scene.clickButton("startAgain");
    QVERIFY(scene.waitForEmbedding());
    QTRY_COMPARE_WITH_TIMEOUT(childPlace(), placeOf(scene.embedded()), kWaitMs);
    QVERIFY(display.closeWindow(scene.window().winId()));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.window().isVisible(), kWaitMs);
    QCOMPARE(LauncherScene::children(QStringLiteral("scn4070a")).size(), 0);
}

void TestLauncherWindow::eachSimulatorWritesItsOwnTranscript()
{
    const QTemporaryDir folder;
    const auto dialogue = [&folder](const char* name) {
        QFile file(folder.filePath(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    LauncherScene scene(kProgram, {QStringLiteral("--transcript"),
                                   folder.filePath(QStringLiteral("dialogue.txt"))});
    scene.clickButton("open");
    QVERIFY(scene.waitForEmbedding());
    QTRY_VERIFY_WITH_TIMEOUT(dialogue("dialogue.txt").contains("STAT:OPER:EVEN?"), kWaitMs);
    InstrumentTab* const firstTab = scene.currentTab();
    scene.clickButton("newTab");
    QTRY_VERIFY(scene.currentTab() != firstTab);
    scene.clickButton("open");
    QVERIFY(scene.waitForEmbedding());
    QTRY_VERIFY_WITH_TIMEOUT(dialogue("dialogue-2.txt").contains("STAT:OPER:EVEN?"), kWaitMs);
    QCOMPARE(dialogue("dialogue.txt").count("*IDN?"), 1);
    QCOMPARE(dialogue("dialogue-2.txt").count("*IDN?"), 1);
    // A name that has become free is taken again.
    scene.clickTab(0);
    QTRY_COMPARE(scene.currentTab(), firstTab);
    scene.clickButton("chooseOther");
    QTRY_VERIFY_WITH_TIMEOUT(!firstTab->isBusy(), kWaitMs);
    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("dialogue.txt"))));
    scene.clickButton("open");
    QVERIFY(scene.waitForEmbedding());
    QTRY_COMPARE_WITH_TIMEOUT(dialogue("dialogue.txt").count("*IDN?"), 1, kWaitMs);
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("dialogue-3.txt"))));
}

void TestLauncherWindow::childWithoutInstrumentSaysWhy_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<QString>("text");
    QTest::newRow("no such device")
        << QStringLiteral("ASRL/dev/no-such-port::INSTR") << QStringLiteral("没有这个仪器");
    // Ports of the loopback where nobody listens. No other test opens them: an instrument has one owner.
    QTest::newRow("refused") << QStringLiteral("TCPIP0::127.0.0.1::9::SOCKET")
                             << QStringLiteral("连接被拒绝");
    QTest::newRow("refused by an IPv6 host")
        << QStringLiteral("TCPIP0::[::1]::13::SOCKET") << QStringLiteral("连接被拒绝");
    QTest::newRow("kind that the provider does not open")
        << QStringLiteral("GPIB0::9::INSTR") << QStringLiteral("VISA 库不能打开");
    QTest::newRow("malformed") << QStringLiteral("TCPIP0::::SOCKET")
                               << QStringLiteral("资源名写法不正确");
}

void TestLauncherWindow::childWithoutInstrumentSaysWhy()
{
    QFETCH(QString, resource);
    QFETCH(QString, text);
    LauncherScene scene(kProgram);
    scene.openByHand(resource);
    QVERIFY(scene.waitForEmbedding());
    QTRY_VERIFY2(scene.label("state").contains(text), qPrintable(scene.label("state")));
    const auto* state = scene.currentTab()->findChild<QLabel*>(QStringLiteral("state"));
    QCOMPARE(state->palette().color(QPalette::WindowText), QColor(0xE0, 0xA0, 0x30));
    scene.clickButton("chooseOther");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    QVERIFY(scene.window().findChild<QTreeWidget*>()->isVisible());
    QCOMPARE(LauncherScene::children(QStringLiteral("scn4070a")).size(), 0);
}

void TestLauncherWindow::silentInstrumentIsTold()
{
    SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    // The system takes the connection.
    instrument.freeze();
    LauncherScene scene(kProgram);
    scene.openByHand(instrument.resource());
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("state").contains(QStringLiteral("仪器没有应答")),
                             kWaitMs);
    instrument.thaw();
}

void TestLauncherWindow::deviceWithoutRightsNamesItsGroup()
{
    const QString obstacle = keepOrdinaryRights();
    if (!obstacle.isEmpty()) {
        SCN_SKIP(QStringLiteral("root keeps all rights: ") + obstacle);
    }
    const QTemporaryDir devices;
    const QString device = devices.filePath(QStringLiteral("ttyUSB7"));
    QVERIFY(QFile(device).open(QIODevice::WriteOnly));
    const QString way = giveToGroup(device, "dialout")
                            ? QStringLiteral("：请加入用户组 dialout（sudo usermod -aG dialout")
                            : QStringLiteral("，请询问系统管理员");
    LauncherScene scene(kProgram);
    scene.openByHand(QStringLiteral("ASRL%1::INSTR").arg(device));
    const QString text = QStringLiteral("没有打开 %1 的权限%2").arg(device, way);
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("state").contains(text), kWaitMs);
}

void TestLauncherWindow::busyPortIsTold()
{
    const QString obstacle = keepOrdinaryRights();
    if (!obstacle.isEmpty()) {
        SCN_SKIP(QStringLiteral("root keeps all rights: ") + obstacle);
    }
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::PseudoTerminal, kSmallest);
    const QString port = instrument.resource().section(QStringLiteral("::"), 0, 0).mid(4);
    const scn::FileDescriptor other(
        ::open(QFile::encodeName(port).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    QVERIFY(other.isOpen());
    QCOMPARE(::ioctl(other.get(), TIOCEXCL), 0);
    LauncherScene scene(kProgram);
    scene.openByHand(instrument.resource());
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("state").contains(QStringLiteral("仪器正被其他程序使用")),
                             kWaitMs);
}

void TestLauncherWindow::otherInstrumentIsNamed()
{
    const SimulatedInstrument instrument(
        SimulatedInstrument::Transport::Tcp,
        kSmallest + QStringList{QStringLiteral("--idn"), QStringLiteral("MAKER,METER,1,2")});
    LauncherScene scene(kProgram);
    scene.window().open({instrument.resource(), false, 0});
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("state"),
                              QStringLiteral("这不是 SCN4070A，请选择其他仪器"), kWaitMs);
    QCOMPARE(scene.label("identity"), QStringLiteral("MAKER METER 1 2"));
}

void TestLauncherWindow::serialRateReachesTheChild()
{
    LauncherScene scene(kFakeChild);
    scene.window().open({QStringLiteral("environment=SCN4070A_SERIAL_RATE"), false, 9600});
    const auto* words = scene.currentTab()->findChild<QPlainTextEdit*>();
    QTRY_VERIFY_WITH_TIMEOUT(words->isVisible(), kWaitMs);
    QCOMPARE(words->toPlainText(), QStringLiteral("SCN4070A_SERIAL_RATE is 9600"));
}

void TestLauncherWindow::cancellingAStartEndsIt()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(LauncherScene::own("deaf"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("pageTitle").contains(QLatin1String("deaf")), kWaitMs);
    scene.clickButton("cancel");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    QVERIFY(scene.window().findChild<QTreeWidget*>()->isVisible());
    QCOMPARE(LauncherScene::children(QStringLiteral("scn_fake_child")).size(), 0);
}

void TestLauncherWindow::crashShowsTheLastWordsAndStartsAgain()
{
    LauncherScene scene(kFakeChild);
    // The page of an end may be seen while the next start has yet to leave it.
    const QSignalSpy ends(scene.currentTab(), &InstrumentTab::idle);
    scene.openByHand(LauncherScene::own("crash"));
    const auto* words = scene.currentTab()->findChild<QPlainTextEdit*>();
    for (int start = 0; start < 2; ++start) {
        QTRY_COMPARE_WITH_TIMEOUT(ends.size(), start + 1, kWaitMs);
        QTRY_VERIFY_WITH_TIMEOUT(words->isVisible(), kWaitMs);
        QCOMPARE(words->toPlainText(), QStringLiteral("the last words\nwithout an end"));
        scene.clickButton("startAgain");
    }
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 3, kWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(words->isVisible(), kWaitMs);
    scene.clickButton("chooseOther");
    QTRY_VERIFY(scene.window().findChild<QTreeWidget*>()->isVisible());
}

void TestLauncherWindow::windowOfAnotherProcessIsRefused()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(QStringLiteral("window=%1").arg(scene.window().winId()));
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("problem").contains(QStringLiteral("而不是所启动的程序")),
                             kWaitMs);
    QVERIFY(!scene.embedded());
    scene.clickButton("cancel");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    scene.openByHand(QStringLiteral("window=1"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("problem").contains(QStringLiteral("不存在")), kWaitMs);
}

void TestLauncherWindow::endlessLineLeavesTheLauncherUsable()
{
    LauncherScene scene(kFakeChild);
    // 1 GB on each stream.
    scene.openByHand(QStringLiteral("flood=1024"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("problem").contains(QStringLiteral("没有结尾")), kWaitMs);
    QVERIFY(scene.label("critical").contains(QStringLiteral("没有结尾")));
    scene.clickButton("newTab");
    auto* const tabs = scene.window().findChild<QTabWidget*>();
    QTRY_COMPARE(tabs->count(), 2);
    scene.openByHand(LauncherScene::own("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
}

void TestLauncherWindow::closingWhileItScansAsksFirst()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(LauncherScene::own("scanning"));
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("state"), QStringLiteral("正在扫描"), kWaitMs);
    const auto question = [&scene] {
        return scene.window().findChild<QMessageBox*>(QStringLiteral("scanQuestion"));
    };
    QVERIFY(DisplayApplication::display().closeWindow(scene.window().winId()));
    QTRY_VERIFY(question() && question()->isVisible());
    QVERIFY(question()->text().contains(QStringLiteral("仪器会继续扫描")));
    scene.click(question()->buttons().at(1));
    QTRY_VERIFY(!question());
    QVERIFY(scene.window().isVisible());
    QVERIFY(scene.currentTab()->isScanning());
    QVERIFY(DisplayApplication::display().closeWindow(scene.window().winId()));
    QTRY_VERIFY(question() && question()->isVisible());
    scene.click(question()->buttons().at(0));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.window().isVisible(), kWaitMs);
    QCOMPARE(LauncherScene::children(QStringLiteral("scn_fake_child")).size(), 0);
}

void TestLauncherWindow::endNeverFreezesTheWindow()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(LauncherScene::own("stubborn"));
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("silence").contains(QStringLiteral("秒前")), kWaitMs);
    QVERIFY(DisplayApplication::display().closeWindow(scene.window().winId()));
    // It ignores what ends others, and takes three seconds. The event loop goes round meanwhile.
    QTRY_COMPARE(scene.label("pageTitle"), QStringLiteral("正在结束..."));
    QElapsedTimer round;
    qint64 longest = 0;
    while (scene.window().isVisible()) {
        round.start();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 100);
        QTest::qWait(1);
        longest = std::max(longest, round.elapsed());
    }
    QVERIFY2(longest < 1000, qPrintable(QString::number(longest)));
    QCOMPARE(LauncherScene::children(QStringLiteral("scn_fake_child")).size(), 0);
}

void TestLauncherWindow::startsAndEndsLeaveNothingBehind()
{
    constexpr int kEverySimulated = 5;
    bool isSet = false;
    const int wanted = qEnvironmentVariableIntValue("SCN_STARTS", &isSet);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    // A program of its own, so that its data is beside it: another test may run that of the build folder.
    const QTemporaryDir bin;
    const QString program = bin.filePath(QStringLiteral("scn4070a"));
    QVERIFY(QFile::copy(kProgram, program));
    LauncherScene scene(program);
    const auto startAndEnd = [&scene, &instrument](bool isSimulated) {
        const int polls = instrument.received().count(QStringLiteral("STAT:OPER:EVEN?"));
        if (isSimulated) {
            openSimulated(scene);
            QVERIFY(scene.waitForEmbedding());
            QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
        } else {
            scene.openByHand(instrument.resource());
            QVERIFY(scene.waitForEmbedding());
            // The read-back asks once. An end before the acquisition has begun takes five seconds more.
            QTRY_VERIFY_WITH_TIMEOUT(
                instrument.received().count(QStringLiteral("STAT:OPER:EVEN?")) >= polls + 2,
                kWaitMs);
        }
        scene.clickButton("chooseOther");
        QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    };
    // The first starts open what stays open.
    startAndEnd(true);
    startAndEnd(false);
    const int descriptors = openDescriptors();
    const QStringList files = filesIn(scene.home()) + filesIn(bin.path());
    for (int start = 2; start < (isSet ? wanted : 20); ++start) {
        startAndEnd(start % kEverySimulated == 0);
        if (QTest::currentTestFailed()) {
            return;
        }
    }
    // Of the first starts some may have been closed only after they were counted.
    QTRY_VERIFY2(openDescriptors() <= descriptors, qPrintable(QString::number(openDescriptors())));
    // The display and the instrument.
    QTRY_COMPARE(allChildren(), 2);
    QCOMPARE(filesIn(scene.home()) + filesIn(bin.path()), files);
    QCOMPARE(LauncherProcess::locksOf(QCoreApplication::applicationPid()), QStringList());
    qInfo("%d descriptors, %d processes, %d files", openDescriptors(), allChildren(), files.size());
}

SCN_TEST(TestLauncherWindow, DisplayApplication)
#include "test_launcherwindow.moc"
