#include "pictures.h"

#include "launcher/ownership.h"
#include "launcher/place/resourceidentity.h"
#include "openlauncher.h"
#include "screen.h"
#include "support/simulatedinstrument.h"
#include "support/streamclient_posix.h"

#include <QApplication>
#include <QImage>
#include <QScreen>
#include <QtTest>

#include <csignal>

namespace {

constexpr int kWaitMs = 60000;
/// The busy overlay covers the program for two seconds after its first poll.
constexpr int kPollsUntilReady = 5;
/// The bar that parts the chart from its table.
constexpr QRgb kSplitter = qRgb(0x45, 0x53, 0x64);
constexpr int kSplitterThickness = 5;
/// How far it is drawn up for two more rows of the table.
constexpr int kDrag = 60;
constexpr int kCurves = 4;
/// Half of what fills most of the chart. A tag gets the height of the mean that its curve has by then.
constexpr int kHalfRunMs = 50000;

// Points of the program's window.
constexpr QPoint kStart(46, -20);
constexpr QPoint kWorkspacePage(471, 14);
constexpr QPoint kSideBar(330, 300);
constexpr QPoint kNewChart(350, 90);
constexpr QPoint kTitleBar(600, 52);
constexpr int kChannelColumn = 680;
/// From the bar above the chart's table to its first row, and from row to row.
constexpr int kFirstRow = 70;
constexpr int kTableRowHeight = 30;

/// How far the lower edge of the bar above the chart's table is from the program's upper edge; -1 if there is
/// no chart.
int splitterAt(const QWidget* program)
{
    const QPoint corner = program->mapToGlobal(QPoint(kChannelColumn, 0));
    const QImage column = QApplication::primaryScreen()
                              ->grabWindow(0, corner.x(), corner.y(), 1, program->height())
                              .toImage();
    // Frames have the same colour, but are thinner.
    int thickness = 0;
    for (int y = 0; y < column.height(); ++y) {
        if (column.pixel(0, y) == kSplitter) {
            ++thickness;
        } else if (thickness >= kSplitterThickness) {
            return y;
        } else {
            thickness = 0;
        }
    }
    return -1;
}

/// Four thermocouples on the simulator's heater, which warms from its start.
void heatThermocouples(const SimulatedInstrument& instrument)
{
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    QVERIFY(client.send("FUNC \"TEMP:TC\",(@101,103,105,107)\n"
                        "ROUT:SCAN (@101,103,105,107)\n"));
}

/// Waits until the instrument has received lines that begin so.
void waitFor(const SimulatedInstrument& instrument, const QString& line, int times)
{
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().filter(line).size() >= times, kWaitMs);
}

void openChart(const OpenLauncher& launcher)
{
    launcher.click(kWorkspacePage);
    launcher.click(kSideBar);
    QTest::qWait(1000);
    launcher.click(kNewChart);
    screen::doubleClick(launcher.program(), kTitleBar);
    QTRY_VERIFY(splitterAt(launcher.program()) > 0);
    const QPoint bar(kChannelColumn, splitterAt(launcher.program()) - 3);
    screen::movePointer(launcher.program(), bar);
    screen::pressButton();
    screen::movePointer(launcher.program(), bar - QPoint(0, kDrag / 2));
    screen::movePointer(launcher.program(), bar - QPoint(0, kDrag));
    screen::releaseButton();
    screen::movePointerAway();
    QTRY_COMPARE(splitterAt(launcher.program()), bar.y() + 3 - kDrag);
}

} // namespace

void Pictures::launcher()
{
    const OpenLauncher launcher;
    QTest::qWait(1000);
    screen::take(QStringLiteral("launcher-start-page"));
    launcher.choose(QStringLiteral("/dev/ttyS0"));
    screen::take(QStringLiteral("launcher-port-without-rights"));
    launcher.choose(QStringLiteral("模拟的 SCN4070A"));
    launcher.clickOpen();
    QTRY_VERIFY(!launcher.label("resourceLabel").isEmpty());
    screen::takeAtOnce(QStringLiteral("launcher-opening"));
    QTRY_COMPARE_WITH_TIMEOUT(launcher.label("state"), QStringLiteral("空闲"), kWaitMs);
}

void Pictures::launcherWithoutInstrument()
{
    const OpenLauncher launcher;
    launcher.openByHand(QStringLiteral("TCPIP0::127.0.0.1::1::SOCKET"));
    QTRY_VERIFY_WITH_TIMEOUT(launcher.label("state").startsWith(QStringLiteral("连接被拒绝")),
                             kWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(launcher.program(), kWaitMs);
    QTest::qWait(1000);
    screen::take(QStringLiteral("launcher-without-instrument"));
}

void Pictures::launcherRefusal()
{
    const QString resource = QStringLiteral("TCPIP0::192.168.1.5::5025::SOCKET");
    scnlauncher::Ownership held;
    const QDateTime since(QDate(2026, 11, 20), QTime(9, 30));
    QCOMPARE(held.take(scnlauncher::resourceIdentity(resource),
                       {4711, 0, QStringLiteral("li"), QStringLiteral("scn4070a-launcher"),
                        QStringLiteral("/home/li/scn4070a"), since}),
             scnlauncher::Ownership::Result::Taken);
    const OpenLauncher launcher;
    launcher.choose(resource);
    launcher.clickOpen();
    QTRY_VERIFY(launcher.label("pageTitle").contains(QStringLiteral("正被")));
    screen::take(QStringLiteral("launcher-refusal"));
}

void Pictures::launcherTabs()
{
    const OpenLauncher launcher;
    launcher.clickOpen();
    QTRY_COMPARE_WITH_TIMEOUT(launcher.label("state"), QStringLiteral("空闲"), kWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(launcher.program(), kWaitMs);
    launcher.clickButton("newTab");
    QTRY_VERIFY(launcher.label("pageTitle").contains(QStringLiteral("选择")));
    screen::take(QStringLiteral("launcher-two-tabs"));
    ::kill(static_cast<pid_t>(OpenLauncher::programProcess()), SIGKILL);
    QTRY_COMPARE_WITH_TIMEOUT(OpenLauncher::programProcess(), qint64(0), kWaitMs);
    QTest::qWait(1000);
    screen::take(QStringLiteral("launcher-dead-tab"));
    launcher.clickTab(0);
    QTRY_VERIFY(launcher.label("pageTitle").contains(QStringLiteral("意外终止")));
    screen::take(QStringLiteral("launcher-ended"));
}

void Pictures::launcherScanQuestion()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:1")});
    heatThermocouples(instrument);
    const OpenLauncher launcher;
    launcher.openByHand(instrument.resource());
    waitFor(instrument, QStringLiteral("STAT:OPER:EVEN?"), kPollsUntilReady);
    launcher.click(kStart);
    QTRY_COMPARE_WITH_TIMEOUT(launcher.label("state"), QStringLiteral("正在扫描"), kWaitMs);
    launcher.clickCloseOfTab(0);
    QTest::qWait(1000);
    screen::take(QStringLiteral("launcher-scan-question"));
}

void Pictures::liveRun()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:1,2:0"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    heatThermocouples(instrument);
    const OpenLauncher launcher;
    launcher.openByHand(instrument.resource());
    waitFor(instrument, QStringLiteral("STAT:OPER:EVEN?"), kPollsUntilReady);
    launcher.click(kStart);
    waitFor(instrument, QStringLiteral("R? "), 1);
    openChart(launcher);
    QTest::qWait(kHalfRunMs);
    const int table = splitterAt(launcher.program()) + kFirstRow;
    QStringList keys{QStringLiteral("Return")};
    for (int row = 0; row < kCurves; ++row) {
        launcher.click(QPoint(kChannelColumn, table + row * kTableRowHeight));
        keys.prepend(QStringLiteral("Down"));
        screen::press(keys);
    }
    screen::movePointerAway();
    QTest::qWait(kHalfRunMs);
    screen::take(QStringLiteral("live-run"));
}
