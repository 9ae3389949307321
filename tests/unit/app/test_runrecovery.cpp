#include "acquisition/readdata.h"
#include "common/helperthreads.h"
#include "overlay/loadingview.h"
#include "resources/resources.h"
#include "scanbench.h"
#include "support/testprogram.h"
#include "support/texts.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QSemaphore>
#include <QtTest>

#include <atomic>

using namespace scn;
using namespace std::chrono_literals;

/// The loss of the instrument during a scan, and its recovery.
class TestRunRecovery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void lostInstrumentShowsTheRecovery();
    void recoveryEndsTheScanTheUsualWay();
    void recoveryRestartsTheAcquisition();
    void recoveryDoesNotWaitForAnAcquisitionThatGoesOn();
    void lossReportedDuringARecoveryIsLeftToIt();
    void recoveryThatFailsCanBeTriedAgain();
    void secondClickOnTheRecoveryIsIgnored();
    void keyboardStartsNothingUnderTheRecovery();
    void startWithoutTheLinkIsRefused();
    void recoveryWorksByKeyboard();
};

void TestRunRecovery::lostInstrumentShowsTheRecovery()
{
    ScanBench bench;
    bench.runWithoutReadings();
    bench.startupView()->showLoading();
    bench.takeLines();
    bench.instrument().setReply(QStringLiteral("STAT:OPER:EVEN?"), QStringLiteral("+2048"));
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView() && bench.reconnectView()->isVisible(), 10000);
    QVERIFY(!bench.startupView()->isVisible());
    QVERIFY(!g_instrumentConnected);
    QVERIFY(g_scanRunning);
    QTRY_VERIFY(!ReadData::instance()->isRunning());
    QCOMPARE(bench.takeLines(), QStringList());
    // A second report shows the same overlay again.
    const LoadingView* overlay = bench.reconnectView();
    bench.call("recvUseInstSlot");
    QCOMPARE(bench.reconnectView(), overlay);
    QVERIFY(overlay->isVisible());
}

void TestRunRecovery::recoveryEndsTheScanTheUsualWay()
{
    ScanBench bench;
    bench.runWithoutReadings();
    bench.exportButton()->setEnabled(false);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:EVEN?"), QStringLiteral("+2048"));
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView() && bench.reconnectView()->isVisible(), 10000);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:EVEN?"), QStringLiteral("+0"));
    // The read-back stops the instrument that still runs.
    bench.instrument().whenAsked(QStringLiteral("ABOR"), [&bench] {
        bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+256"));
    });
    bench.takeLines();
    g_scanEndText.clear();
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    QVERIFY(g_instrumentConnected);
    QCOMPARE(bench.takeLines().filter(QStringLiteral("ABOR")), texts({"ABOR"}));
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanEndText.isEmpty(), 10000);
    QVERIFY(!g_scanRunning);
    QVERIFY(bench.isIdle());
}

void TestRunRecovery::recoveryRestartsTheAcquisition()
{
    ScanBench bench;
    bench.open(WindowBench::AcquisitionRuns);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:EVEN?"), QStringLiteral("+2048"));
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView(), 10000);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:EVEN?"), QStringLiteral("+0"));
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView()->isHidden(), 10000);
    QVERIFY(ReadData::instance()->isRunning());
    std::atomic<int> polls{0};
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&polls] { ++polls; });
    QTRY_VERIFY_WITH_TIMEOUT(polls >= 2, 10000);
    WindowBench::endAcquisition();
}

/// A loss met by the start of a scan, which the acquisition thread has not noticed.
void TestRunRecovery::recoveryDoesNotWaitForAnAcquisitionThatGoesOn()
{
    ScanBench bench;
    bench.windowTiming.lastPass = 20s;
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    std::atomic<int> polls{0};
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&polls] { ++polls; });
    QTRY_VERIFY_WITH_TIMEOUT(polls >= 1, 10000);
    bench.call("recvUseInstSlot");
    QElapsedTimer clock;
    clock.start();
    window.stopLoadingView();
    // Less than the wait for a thread that ends.
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
    const int before = polls;
    QTRY_VERIFY_WITH_TIMEOUT(polls >= before + 2, 10000);
    WindowBench::endAcquisition();
}

void TestRunRecovery::lossReportedDuringARecoveryIsLeftToIt()
{
    ScanBench bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    QSemaphore asked;
    QSemaphore answered;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:COND?"), [&asked, &answered] {
        asked.release();
        answered.acquire();
    });
    bench.clickRecovery();
    QTRY_COMPARE(asked.available(), 1);
    emit ReadData::instance()->sigUseInst();
    QCoreApplication::processEvents();
    // A click on the button would be lost now, so it stays hidden.
    QVERIFY(!bench.reconnectView()->findChild<QPushButton*>()->isVisible());
    answered.release();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    QVERIFY(g_instrumentConnected);
    WindowBench::endAcquisition();
}

void TestRunRecovery::recoveryThatFailsCanBeTriedAgain()
{
    ScanBench bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    const auto* recovery = bench.reconnectView()->findChild<QPushButton*>();
    bench.instrument().visa().fail(FakeVisa::Operation::Open, scn::visa::VI_ERROR_RSRC_NFOUND, 0,
                                   2);
    for (int round = 0; round < 2; ++round) {
        bench.clickRecovery();
        QVERIFY(!recovery->isVisible());
        QTRY_VERIFY(recovery->isVisible());
        QVERIFY(!g_instrumentConnected);
    }
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    QVERIFY(g_instrumentConnected);
    WindowBench::endAcquisition();
}

void TestRunRecovery::secondClickOnTheRecoveryIsIgnored()
{
    ScanBench bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    bench.instrument().visa().clearCalls();
    bench.clickRecovery();
    bench.call("recvLoadBtnSlot");
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    QVERIFY(scn::helperthreads::waitForAll(std::chrono::seconds(10)));
    QCOMPARE(bench.instrument().visa().calls().filter(QStringLiteral("viOpen(")).size(), 1);
    WindowBench::endAcquisition();
}

void TestRunRecovery::keyboardStartsNothingUnderTheRecovery()
{
    ScanBench bench;
    MainWidget& window = bench.open();
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.startupView()->stopLoading();
    bench.startButton()->setFocus();
    bench.call("recvUseInstSlot");
    bench.takeLines();
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return}) {
        QTest::keyClick(window.windowHandle(), key);
    }
    bench.startButton()->setFocus();
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    QVERIFY(scn::helperthreads::waitForAll(10s));
    QCoreApplication::processEvents();
    QVERIFY(bench.startButton()->text() == QStringLiteral("开始"));
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestRunRecovery::startWithoutTheLinkIsRefused()
{
    ScanBench bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    bench.takeLines();
    bench.call("recvStartButtonSlot");
    QCOMPARE(bench.startButton()->text(), QStringLiteral("开始"));
    QVERIFY(bench.startupView()->isHidden());

    // The instrument is found, and is still being read back.
    bool refused = false;
    bench.instrument().whenAsked(QStringLiteral("TRIG:COUN?"), [&] {
        QMetaObject::invokeMethod(
            &bench.window(),
            [&] {
                bench.call("recvStartButtonSlot");
                refused = bench.startButton()->text() == QStringLiteral("开始");
            },
            Qt::BlockingQueuedConnection);
    });
    bench.loseAndRecover();
    QVERIFY(refused);
}

void TestRunRecovery::recoveryWorksByKeyboard()
{
    ScanBench bench;
    MainWidget& window = bench.open();
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.call("recvUseInstSlot");
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView()->isHidden(), 10000);
    QVERIFY(g_instrumentConnected);
    bench.endAcquisition();
}

SCN_TEST(TestRunRecovery, QApplication)
#include "test_runrecovery.moc"
