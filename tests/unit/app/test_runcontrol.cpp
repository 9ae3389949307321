#include "acquisition/readdata.h"
#include "overlay/loadingview.h"
#include "overlay/lockabledatacollectionview.h"
#include "overlay/windowlockmanager.h"
#include "resources/resources.h"
#include "scanbench.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/custommessagedialog.h"

#include <QApplication>
#include <QDateTime>
#include <QPointer>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <initializer_list>

using namespace std::chrono_literals;

namespace {

/// What the actual start of a scan sends.
QStringList scanLines()
{
    return texts({"*IDN?", "MMEM:LOG:ENAB?", "INIT", "FORM:READ:ALAR ON", "FORM:READ:CHAN ON",
                  "FORM:READ:TIME ON", "FORM:READ:TIME:TYPE ABS", "FORM:READ:UNIT ON", "SYST:ERR?",
                  "ROUT:SCAN?", "SYST:TIME:SCAN?", "SYST:TIME:SCAN?"});
}

/// True for a start or end text of a run no older than five seconds.
bool isRecentRunTime(const QString& text)
{
    const QDateTime time = QDateTime::fromString(text, QStringLiteral("yyyy MM dd hh mm ss"));
    const qint64 age = time.secsTo(QDateTime::currentDateTime());
    return time.isValid() && age >= 0 && age <= 5;
}

/// A set time of a run that is soon over.
constexpr int kSoonMs = 37;

/// Finds the stop-after timer, which has no parent, by its first timeout.
class StopTimerFinder : public QObject
{
public:
    StopTimerFinder() { qApp->installEventFilter(this); }

    QPointer<QTimer> timer() const { return m_timer; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* timer = qobject_cast<QTimer*>(watched);
        if (event->type() == QEvent::Timer && timer && !timer->parent() &&
            timer->interval() == kSoonMs) {
            m_timer = timer;
        }
        return false;
    }

private:
    QPointer<QTimer> m_timer;
};

/// The stop-after timer behind a first run that it has ended: one and the same serves all runs.
QPointer<QTimer> stopTimerOf(ScanBench& bench)
{
    const StopTimerFinder finder;
    bench.stopAfter(0, 0, kSoonMs);
    bench.window().scanFunc();
    const auto isOver = [&finder] { return finder.timer() && !g_scanRunning; };
    return QTest::qWaitFor(isOver, 10000) ? finder.timer() : QPointer<QTimer>();
}

} // namespace

/// The actual start of a scan, and its four ends.
class TestRunControl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void scanStartSendsTheseLines();
    void scanRunsOnlyWhenAllIsSent();
    void scanStartNotesTheComputersTime();
    void scanStartEngagesTheLock();
    void lostIdentityEndsTheStart();
    void namelessChannelsAreDroppedWhenCountsDiffer_data();
    void namelessChannelsAreDroppedWhenCountsDiffer();

    void stopButtonLeavesTheFlagToTheAcquisition();
    void endOfAStoppedRunIsThatOfTheClick_data();
    void endOfAStoppedRunIsThatOfTheClick();
    void countReachedEndsWithoutAbort();
    void stopReportOfARunningScanIsIgnored();
    void elapsedTimeEndsTheScan();
    void elapsedTimeOfALostRunLeavesItToTheRecovery();
    void elapsedTimeIsInMilliseconds();
    void manualStopStartsNoTimer();
    void everyEndStopsTheTimer_data();
    void everyEndStopsTheTimer();
    void unlockingEndsTheScan();
    void unlockingBehindAStopLeavesTheDrainAlone();
    void unlockingEndsTheRunBehindAStoppedOne();
    void heldBarEndsTheScan();
    void heldBarAfterTheScanChangesNothing();

    void keysChangeNoTriggerSettingWhileLocked();
};

void TestRunControl::scanStartSendsTheseLines()
{
    ScanBench bench;
    bench.run();
    QCOMPARE(bench.takeLines(), scanLines());
    QVERIFY(g_scanRunning);
}

void TestRunControl::scanRunsOnlyWhenAllIsSent()
{
    ScanBench bench;
    std::atomic<bool> ranEarly{false};
    MainWidget& window = bench.open();
    bench.instrument().whenAsked(QStringLiteral("SYST:TIME:SCAN?"),
                                 [&ranEarly] { ranEarly = ranEarly || g_scanRunning; });
    window.show();
    QVERIFY(bench.startupView()->isVisible());
    window.scanFunc();
    QVERIFY(!ranEarly);
    QVERIFY(g_scanRunning);
    QVERIFY(!bench.startupView()->isVisible());
}

void TestRunControl::scanStartNotesTheComputersTime()
{
    ScanBench bench;
    bench.run();
    // The instrument's own scan time is of 2024.
    QVERIFY2(isRecentRunTime(g_scanStartText), qPrintable(g_scanStartText));
}

void TestRunControl::scanStartEngagesTheLock()
{
    ScanBench bench;
    MainWidget& window = bench.open();
    QWidget* table = bench.tree();
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(table, &enter);
    QVERIFY(!table->findChild<LockableDataCollectionView*>());
    window.scanFunc();
    QCoreApplication::sendEvent(table, &enter);
    const auto* veil = table->findChild<LockableDataCollectionView*>();
    QVERIFY(veil);
    QVERIFY(veil->isLocked() && !veil->isHidden());
}

void TestRunControl::lostIdentityEndsTheStart()
{
    ScanBench bench;
    MainWidget& window = bench.open();
    window.show();
    bench.instrument().setSilent(true);
    window.scanFunc();
    QCOMPARE(bench.takeLines(), texts({"*IDN?"}));
    QVERIFY(!g_scanRunning);
    QCOMPARE(bench.message(), QStringLiteral("机器已断开"));
    QCOMPARE(bench.messageDialog()->windowTitle(), QStringLiteral("错误"));
    QCOMPARE(bench.messageDialog()->findChild<QTimer*>()->interval(), 3000);
    // The overlay of a lost instrument takes the busy one's place.
    QVERIFY(!bench.startupView()->isVisible());
    QVERIFY(bench.reconnectView() && bench.reconnectView()->isVisible());
    QVERIFY(!g_instrumentConnected);
}

void TestRunControl::namelessChannelsAreDroppedWhenCountsDiffer_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QList<int>>("kept");
    QTest::newRow("same count") << QStringLiteral("#210(@201,202)") << QList<int>{201, 202};
    QTest::newRow("fewer") << QStringLiteral("#16(@201)") << QList<int>{201};
    QTest::newRow("more") << QStringLiteral("#214(@201,202,203)") << QList<int>{201};
    QTest::newRow("range counts as one") << QStringLiteral("#210(@201:202)") << QList<int>{201};
}

void TestRunControl::namelessChannelsAreDroppedWhenCountsDiffer()
{
    QFETCH(QString, reply);
    QFETCH(QList<int>, kept);
    ScanBench bench;
    MainWidget& window = bench.open();
    g_scanChannels = {{201, QStringLiteral("Vdc")}, {202, QString()}};
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), reply);
    window.scanFunc();
    QCOMPARE(g_scanChannels.keys(), kept);
}

void TestRunControl::stopButtonLeavesTheFlagToTheAcquisition()
{
    ScanBench bench;
    bench.runWithoutReadings();
    bench.takeLines();
    bench.startButton()->click();
    QCOMPARE(bench.takeLines(), texts({"ABOR"}));
    QVERIFY(g_scanRunning);
    QVERIFY(bench.isIdle());
    QVERIFY(isRecentRunTime(g_scanEndText));
    // Until the instrument has ended it, each further click is another ABOR.
    bench.startButton()->click();
    QCOMPARE(bench.takeLines(), texts({"ABOR"}));
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+256"));
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 10000);
    QVERIFY(bench.isIdle());
}

void TestRunControl::endOfAStoppedRunIsThatOfTheClick_data()
{
    QTest::addColumn<QString>("meanwhile");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("nothing") << QString() << QStringList();
    QTest::newRow("bar held") << QStringLiteral("bar") << QStringList();
    QTest::newRow("second click") << QStringLiteral("click") << texts({"ABOR"});
}

/// Whatever happens during the drain and at its end.
void TestRunControl::endOfAStoppedRunIsThatOfTheClick()
{
    QFETCH(QString, meanwhile);
    QFETCH(QStringList, lines);
    ScanBench bench;
    bench.runWithoutReadings();
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(bench.tree(), &enter);
    auto* veil = bench.tree()->findChild<LockableDataCollectionView*>();
    QVERIFY(veil);
    bench.takeLines();
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    QCOMPARE(bench.takeLines(), texts({"ABOR"}));
    QVERIFY(isRecentRunTime(g_scanEndText));
    const QString end = QStringLiteral("2024 01 02 03 04 05");
    g_scanEndText = end;
    if (meanwhile == QLatin1String("bar")) {
        veil->globalUnlock();
        QTRY_VERIFY(!veil->isVisible());
    } else if (meanwhile == QLatin1String("click")) {
        QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    }
    QCoreApplication::processEvents();
    QCOMPARE(bench.takeLines(), lines);
    QCOMPARE(g_scanEndText, end);
    QVERIFY(g_scanRunning);
    // The drain ends by itself and reports it.
    const QSignalSpy stops(ReadData::instance(), &ReadData::sigStopScan);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+256"));
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!stops.isEmpty(), 10000);
    QCoreApplication::processEvents();
    QCOMPARE(g_scanEndText, end);
    QVERIFY(bench.isIdle());
    QCOMPARE(bench.takeLines(), QStringList());
    WindowBench::endAcquisition();
}

void TestRunControl::countReachedEndsWithoutAbort()
{
    ScanBench bench;
    bench.run(WindowBench::AcquisitionRuns);
    g_scanEndText.clear();
    bench.takeLines();
    bench.exportButton()->setEnabled(false);
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanEndText.isEmpty(), 10000);
    QVERIFY(!g_scanRunning);
    QVERIFY(isRecentRunTime(g_scanEndText));
    QVERIFY(bench.isIdle());
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestRunControl::stopReportOfARunningScanIsIgnored()
{
    ScanBench bench;
    bench.run();
    g_scanEndText.clear();
    bench.exportButton()->setEnabled(false);
    emit ReadData::instance()->sigStopScan();
    QCoreApplication::processEvents();
    QVERIFY(g_scanEndText.isEmpty());
    QVERIFY(!bench.exportButton()->isEnabled());
    g_scanRunning = false;
    emit ReadData::instance()->sigStopScan();
    QTRY_VERIFY(bench.exportButton()->isEnabled());
    QVERIFY(isRecentRunTime(g_scanEndText));
}

void TestRunControl::elapsedTimeEndsTheScan()
{
    ScanBench bench;
    bench.open();
    const StopTimerFinder finder;
    bench.stopAfter(0, 0, kSoonMs);
    bench.takeLines();
    bool ranAtAbort = false;
    bench.instrument().whenAsked(QStringLiteral("ABOR"),
                                 [&ranAtAbort] { ranAtAbort = g_scanRunning; });
    bench.exportButton()->setEnabled(false);
    bench.window().scanFunc();
    QVERIFY(g_scanRunning);
    QTRY_VERIFY(!g_scanRunning);
    QVERIFY(ranAtAbort);
    QVERIFY(bench.isIdle());
    QVERIFY(isRecentRunTime(g_scanEndText));
    // The timer is stopped by its slot.
    QVERIFY(finder.timer() && !finder.timer()->isActive());
    QCOMPARE(bench.takeLines(), scanLines() + texts({"ABOR"}));
}

void TestRunControl::elapsedTimeOfALostRunLeavesItToTheRecovery()
{
    ScanBench bench;
    bench.open().show();
    ReadData::instance()->setTiming(bench.acquisitionTiming);
    bench.stopAfter(0, 0, kSoonMs);
    StopTimerFinder finder;
    bench.window().scanFunc();
    bench.exportButton()->setEnabled(false);
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+16"));
    emit ReadData::instance()->sigUseInst();
    bench.takeLines();
    QTRY_VERIFY_WITH_TIMEOUT(finder.timer(), 10000);
    QTRY_VERIFY(!finder.timer()->isActive());
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(g_scanRunning);

    bench.instrument().whenAsked(QStringLiteral("ABOR"), [&bench] {
        bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+256"));
    });
    g_scanEndText.clear();
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanEndText.isEmpty(), 10000);
    QCOMPARE(bench.takeLines().filter(QStringLiteral("ABOR")), texts({"ABOR"}));
    QVERIFY(!g_scanRunning);
    QVERIFY(bench.isIdle());
    WindowBench::endAcquisition();
}

void TestRunControl::elapsedTimeIsInMilliseconds()
{
    ScanBench bench;
    bench.open();
    const QPointer<QTimer> timer = stopTimerOf(bench);
    QVERIFY(timer);
    QVERIFY(!timer->isActive());
    QCOMPARE(bench.picker()->value(), kSoonMs / 1000.0);
    QCOMPARE(timer->interval(), kSoonMs);
    // The same timer serves all scans.
    bench.stopAfter(0, 1);
    bench.window().scanFunc();
    QCOMPARE(timer->interval(), 1000);
    QVERIFY(timer->isActive());
    bench.call("recvElapsedTimeSlot");
    bench.stopAfter(1, 0);
    bench.window().scanFunc();
    QCOMPARE(bench.picker()->value(), 3600.0);
    QCOMPARE(timer->interval(), 3600000);
    QVERIFY(timer->isActive());
    QVERIFY(!timer->isSingleShot());
    QVERIFY(!timer->parent());
    // 23 days in milliseconds still fit a timer. The picker's ranges tighten before its maximum is
    // reached, so it needs a larger one to show them.
    bench.call("recvElapsedTimeSlot");
    bench.picker()->setMaximum(3 * 1987200.0);
    bench.picker()->setTime(23, 0, 0, 0, 0);
    QCOMPARE(bench.picker()->value(), 1987200.0);
    bench.window().scanFunc();
    QCOMPARE(timer->interval(), 1987200000);
    QVERIFY(timer->isActive());
    bench.close();
    QVERIFY(!timer);
}

void TestRunControl::manualStopStartsNoTimer()
{
    ScanBench bench;
    bench.open();
    const QPointer<QTimer> timer = stopTimerOf(bench);
    QVERIFY(timer);
    bench.button(QStringLiteral("使用“停止”按钮立即停止"))->setChecked(true);
    bench.takeLines();
    bench.window().scanFunc();
    QVERIFY(!timer->isActive());
    QVERIFY(g_scanRunning);
    QCOMPARE(bench.takeLines(), scanLines());
}

void TestRunControl::everyEndStopsTheTimer_data()
{
    QTest::addColumn<QString>("end");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("stop button") << QStringLiteral("stop") << texts({"ABOR"});
    QTest::newRow("count") << QStringLiteral("count") << QStringList();
    QTest::newRow("unlocking") << QStringLiteral("unlock") << texts({"ABOR"});
}

void TestRunControl::everyEndStopsTheTimer()
{
    QFETCH(QString, end);
    QFETCH(QStringList, lines);
    ScanBench bench;
    bench.open();
    const QPointer<QTimer> timer = stopTimerOf(bench);
    QVERIFY(timer);
    bench.stopAfter(0, 1);
    bench.window().scanFunc();
    QVERIFY(timer->isActive());
    bench.takeLines();
    if (end == QLatin1String("stop")) {
        bench.startButton()->click();
    } else if (end == QLatin1String("count")) {
        g_scanRunning = false;
        bench.call("recvStopScan");
    } else {
        emit bench.window().findChild<WindowLockManager*>()->unlocked();
    }
    QVERIFY(!timer->isActive());
    QCOMPARE(bench.takeLines(), lines);
}

void TestRunControl::unlockingEndsTheScan()
{
    ScanBench bench;
    bench.runWithoutReadings();
    std::atomic<bool> drained{false};
    bench.takeLines();
    bool ranAtAbort = true;
    bench.instrument().whenAsked(QStringLiteral("ABOR"), [&] {
        ranAtAbort = g_scanRunning;
        bench.instrument().whenAsked(QStringLiteral("DATA:POIN?"), [&drained] { drained = true; });
    });
    bench.exportButton()->setEnabled(false);
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    QVERIFY(!ranAtAbort);
    QVERIFY(!g_scanRunning);
    QCOMPARE(bench.takeLines(), texts({"ABOR"}));
    QVERIFY(bench.isIdle());
    QVERIFY(isRecentRunTime(g_scanEndText));
    // The remaining readings stay in the instrument.
    std::atomic<int> polls{0};
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&polls] { ++polls; });
    QTRY_VERIFY_WITH_TIMEOUT(polls >= 2, 10000);
    QVERIFY(!drained);
    WindowBench::endAcquisition();
}

void TestRunControl::unlockingBehindAStopLeavesTheDrainAlone()
{
    ScanBench bench;
    bench.open(WindowBench::AcquisitionRuns);
    const QString fetch = QStringLiteral("R? 1");
    bench.instrument().setReply(QStringLiteral("DATA:POIN?"), QStringLiteral("+1"));
    bench.instrument().setReply(fetch, QStringLiteral("#10+1 V,2024,1,2,3,4,5.6,101,0"));
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+256"));
    std::atomic<int> fetches{0};
    bench.instrument().whenAsked(fetch, [&fetches] { ++fetches; });
    bench.begin();
    QTRY_VERIFY_WITH_TIMEOUT(fetches > 0, 10000);
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    const int before = fetches;
    QTRY_VERIFY_WITH_TIMEOUT(fetches >= before + 2, 10000);
    QVERIFY(g_scanRunning);
    QVERIFY(bench.isIdle());
    bench.instrument().setReply(QStringLiteral("DATA:POIN?"), QStringLiteral("+0"));
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 10000);
    QVERIFY(bench.isIdle());
    WindowBench::endAcquisition();
}

void TestRunControl::unlockingEndsTheRunBehindAStoppedOne()
{
    ScanBench bench;
    bench.run();
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    g_scanRunning = false; // the acquisition thread has drained the instrument
    bench.window().scanFunc();
    QVERIFY(g_scanRunning);
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    QVERIFY(!g_scanRunning);
}

void TestRunControl::heldBarEndsTheScan()
{
    ScanBench bench;
    bench.run();
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(bench.tree(), &enter);
    auto* veil = bench.tree()->findChild<LockableDataCollectionView*>();
    QVERIFY(veil);
    bench.takeLines();
    veil->globalUnlock();
    QTRY_VERIFY(!g_scanRunning);
    QCOMPARE(bench.takeLines(), texts({"ABOR"}));
    QVERIFY(veil->isHidden());
}

void TestRunControl::heldBarAfterTheScanChangesNothing()
{
    ScanBench bench;
    bench.run();
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(bench.tree(), &enter);
    auto* veil = bench.tree()->findChild<LockableDataCollectionView*>();
    QVERIFY(veil && veil->isVisible());
    // When the instrument ends the run, the lock stays on.
    g_scanRunning = false;
    bench.call("recvStopScan");
    const QString end = QStringLiteral("2024 01 02 03 04 05");
    g_scanEndText = end;
    bench.takeLines();
    veil->globalUnlock();
    QTRY_VERIFY(!veil->isVisible());
    QVERIFY(!veil->isLocked());
    QCOMPARE(bench.takeLines(), QStringList());
    QCOMPARE(g_scanEndText, end);
    QVERIFY(bench.isIdle());
}

void TestRunControl::keysChangeNoTriggerSettingWhileLocked()
{
    ScanBench bench;
    MainWidget& window = bench.run();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QAbstractButton* radio = bench.button(QStringLiteral("N次扫描后:"));
    QVERIFY(radio);
    bench.takeLines();
    radio->setFocus();
    QVERIFY(radio->hasFocus());
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Up, Qt::Key_Down}) {
        QTest::keyClick(window.windowHandle(), key);
    }
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(!radio->isChecked());
}

SCN_TEST(TestRunControl, QApplication)
#include "test_runcontrol.moc"
