#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "common/helperthreads.h"
#include "overlay/loadingview.h"
#include "overlay/windowlockmanager.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/datadirectory.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"
#include "windowbench.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <initializer_list>

namespace {

/// What the actual start of a scan sends.
QStringList scanLines()
{
    return texts({"*IDN?", "MMEM:LOG:ENAB?", "INIT", "FORM:READ:ALAR ON", "FORM:READ:CHAN ON",
                  "FORM:READ:TIME ON", "FORM:READ:TIME:TYPE ABS", "FORM:READ:UNIT ON", "SYST:ERR?",
                  "ROUT:SCAN?", "SYST:TIME:SCAN?", "SYST:TIME:SCAN?"});
}

/// A window with two channels, the first in the scan list. Each test has its own serial number, so
/// that tests running in parallel have separate stores.
struct Start : WindowBench
{
    Start()
    {
        instrument().putModule(2, QStringLiteral("SCN4005A"));
        instrument().setReply(QStringLiteral("*IDN?"),
                              QStringLiteral("MAKER,SCN4070A,%1,1.00")
                                  .arg(QLatin1String(QTest::currentTestFunction())));
        instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#16(@201)"));
        open().show();
    }
    ~Start() { g_scanRunning = false; }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    QHBoxLayout* bar() const
    {
        return qobject_cast<QHBoxLayout*>(startButton()->parentWidget()->layout());
    }
    QStringList takeLines() { return instrument().takeLines(); }
};

QDir dataDirectory()
{
    return QDir(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                QLatin1String(QTest::currentTestFunction()) + QLatin1String("_Data"));
}

} // namespace

/// From the click on start to the running scan. Each test runs in a process of its own, since each
/// needs its own store, and the end of the process closes it for good.
class TestScanStart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }
    void cleanup();

    void emptyScanListShowsAMessage();
    void startRunsTheScan();
    void startShowsWhatItDoes();
    void startRemovesTheLastScansData();
    void startHandsTheSeriesOver();
    void clicksWhileStartingAreIgnored();
    void secondScanStartsFromAnEmptyStore();
    void startOnAnotherInstrumentEmptiesTheStoreInUse();
    void startWithoutAnIdentityLeadsToTheRecovery();
    void lossWhileStartingEndsTheStart();
    void recoveryWhileStartingEndsTheStart();
    void startGoesOnUnderItsOverlayAfterARecovery();
    void windowsEndWhileStartingSendsNothing();
    void labelSaysWhenNothingCanBeStored();
};

void TestScanStart::cleanup()
{
    QVERIFY(scn::helperthreads::waitForAll(std::chrono::seconds(10)));
    CurveDataDB::shutdown();
    dataDirectory().removeRecursively();
}

void TestScanStart::emptyScanListShowsAMessage()
{
    Start bench;
    bench.tick(201, false);
    bench.takeLines();
    bench.startButton()->click();
    QCOMPARE(bench.message(), QStringLiteral("未选择扫描通道"));
    QCOMPARE(bench.messageDialog()->windowTitle(), QStringLiteral("警告"));
    QCOMPARE(bench.messageDialog()->findChild<QTimer*>()->interval(), 3000);
    QCOMPARE(bench.startButton()->text(), QStringLiteral("开始"));
    QVERIFY(bench.exportButton()->isEnabled());
    WindowBench::settle();
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(!dataDirectory().exists());
}

void TestScanStart::startRunsTheScan()
{
    Start bench;
    bench.takeLines();
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QCOMPARE(bench.takeLines(), scanLines());
    QVERIFY(dataDirectory().exists());
    QVERIFY(!bench.startupView()->isVisible());
    QCOMPARE(bench.startButton()->text(), QStringLiteral("停止"));
    QVERIFY(!bench.exportButton()->isEnabled());
}

void TestScanStart::startShowsWhatItDoes()
{
    Start bench;
    bench.startupView()->stopLoading();
    bench.startButton()->click();
    const QSize size(32, 32);
    QCOMPARE(bench.startButton()->leftIcon().pixmap(size).toImage(),
             QIcon(QStringLiteral(":/image/stop.png")).pixmap(size).toImage());
    QCOMPARE(bench.startButton()->text(), QStringLiteral("停止"));
    QVERIFY(!bench.exportButton()->isEnabled());
    QCOMPARE(bench.bar()->indexOf(bench.runningLabel()), 1);
    QCOMPARE(bench.bar()->count(), 4);
    QVERIFY(bench.runningLabel()->isVisible());
    QVERIFY(bench.startupView()->isVisible());
    QVERIFY(!g_scanRunning);
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
}

void TestScanStart::startRemovesTheLastScansData()
{
    QVERIFY(dataDirectory().mkpath(QStringLiteral("below")));
    QFile old(dataDirectory().filePath(QStringLiteral("below/20240101.db")));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.close();
    Start bench;
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QVERIFY(!old.exists());
    QVERIFY(!dataDirectory().exists(QStringLiteral("below")));
}

void TestScanStart::startHandsTheSeriesOver()
{
    Start bench;
    bench.tick(202);
    g_scanChannels[202].clear();
    g_curveSeries.insert(999, nullptr);
    bool hadSeries = false;
    bench.instrument().whenAsked(QStringLiteral("INIT"),
                                 [&hadSeries] { hadSeries = g_curveSeries.value(201) != nullptr; });
    bench.startButton()->click();
    // The old ones go at once, the new ones are there when the scan starts.
    QVERIFY(g_curveSeries.isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QVERIFY(hadSeries);
    // The channel without a unit text has none.
    QCOMPARE(g_curveSeries.keys(), QList<int>{201});
    QCOMPARE(CurveDataDB::instance(QString())->curveNames().values(), texts({"201(Vdc)"}));
    QCOMPARE(g_scanChannels.keys(), QList<int>{201});
}

void TestScanStart::clicksWhileStartingAreIgnored()
{
    Start bench;
    bench.takeLines();
    bench.startButton()->click();
    bench.startButton()->click();
    QTest::keyClick(bench.startButton(), Qt::Key_Space);
    bench.call("recvStartButtonSlot");
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    WindowBench::settle();
    QCOMPARE(bench.takeLines(), scanLines());
}

void TestScanStart::secondScanStartsFromAnEmptyStore()
{
    Start bench;
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    const auto first = g_curveSeries.value(201);
    QVERIFY(first);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    auto* store = CurveDataDB::instance(QString());
    store->appendPoint(1, now, 1.5);
    QCOMPARE(store->readCurveData(1, now - 1000, now + 1000, 0).size(), 1);
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    QVERIFY(!g_scanRunning);

    bench.takeLines();
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QCOMPARE(bench.takeLines(), scanLines());
    QCOMPARE(store->readCurveData(1, now - 1000, now + 1000, 0).size(), 0);
    QCOMPARE(store->curveNames().values(), texts({"201(Vdc)"}));
    QVERIFY(g_curveSeries.value(201) && g_curveSeries.value(201) != first);
    // The label has its fixed place in the bar.
    QCOMPARE(bench.bar()->count(), 4);
    QCOMPARE(bench.bar()->indexOf(bench.runningLabel()), 1);
}

void TestScanStart::startOnAnotherInstrumentEmptiesTheStoreInUse()
{
    const auto isMade = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly);
    };
    Start bench;
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    QTRY_VERIFY(!g_scanRunning);

    const QTemporaryDir inUse(dataDirectory().filePath(QStringLiteral("XXXXXX")));
    QDir other(QCoreApplication::applicationDirPath() + QStringLiteral("/otherSerial_Data"));
    QVERIFY(inUse.isValid() && other.mkpath(QStringLiteral(".")));
    QVERIFY(isMade(other.filePath(QStringLiteral("20240101.db"))));
    QVERIFY(isMade(dataDirectory().filePath(QStringLiteral("20240101.db"))));
    bench.instrument().setReply(QStringLiteral("*IDN?"),
                                QStringLiteral("MAKER,SCN4070A,otherSerial,1.00"));
    bench.loseAndRecover();
    QCOMPARE(dataDirectoryName(g_instrumentId), other.dirName());
    bench.tick(201);
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    const bool isKept = other.exists(QStringLiteral("20240101.db"));
    QVERIFY(other.removeRecursively());
    QVERIFY(isKept);
    // Everything there comes from this start.
    const QString today = QDate::currentDate().toString(QStringLiteral("yyyyMMdd.'db'"));
    QCOMPARE(dataDirectory().entryList({QStringLiteral("*.db")}), QStringList{today});
    QVERIFY(!QFileInfo::exists(inUse.path()));
}

void TestScanStart::startWithoutAnIdentityLeadsToTheRecovery()
{
    Start bench;
    bench.startButton()->click();
    bench.instrument().setSilent(true);
    QTRY_COMPARE_WITH_TIMEOUT(bench.message(), QStringLiteral("机器已断开"), 10000);
    QVERIFY(!g_scanRunning);
    QVERIFY(!g_instrumentConnected);
    // The button stays as it is; the overlay of a lost instrument takes the busy one's place.
    QCOMPARE(bench.startButton()->text(), QStringLiteral("停止"));
    QVERIFY(!bench.startupView()->isVisible());
    QVERIFY(bench.reconnectView() && bench.reconnectView()->isVisible());

    bench.instrument().setSilent(false);
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    WindowBench::endAcquisition();
    QVERIFY(g_instrumentConnected);
    QCOMPARE(bench.startButton()->text(), QStringLiteral("开始"));
    QVERIFY(bench.exportButton()->isEnabled());
    QVERIFY(!bench.runningLabel()->isVisible());
    bench.takeLines();
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QCOMPARE(bench.takeLines(), scanLines());
}

void TestScanStart::lossWhileStartingEndsTheStart()
{
    Start bench;
    bench.takeLines();
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    emit ReadData::instance()->sigUseInst();
    WindowBench::settle();
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(!g_scanRunning);
    QCOMPARE(bench.startButton()->text(), QStringLiteral("停止"));
    QVERIFY(!bench.startupView()->isVisible());
    QVERIFY(bench.reconnectView() && bench.reconnectView()->isVisible());

    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    WindowBench::endAcquisition();
    QCOMPARE(bench.startButton()->text(), QStringLiteral("开始"));
    QVERIFY(bench.exportButton()->isEnabled());
    QVERIFY(!bench.runningLabel()->isVisible());
    bench.takeLines();
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QCOMPARE(bench.takeLines(), scanLines());
}

/// The link is back, but the recovery is still reading the instrument's state.
void TestScanStart::recoveryWhileStartingEndsTheStart()
{
    Start bench;
    QSemaphore asked;
    QSemaphore answered;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:COND?"), [&asked, &answered] {
        asked.release();
        answered.tryAcquire(1, 20000);
    });
    bench.takeLines();
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    emit ReadData::instance()->sigUseInst();
    bench.clickRecovery();
    QTRY_COMPARE_WITH_TIMEOUT(asked.available(), 1, 10000);
    QVERIFY(g_instrumentConnected);
    // The start's last step is posted with the series.
    QTRY_VERIFY_WITH_TIMEOUT(g_curveSeries.value(201), 10000);
    QCoreApplication::processEvents();
    answered.release();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    WindowBench::endAcquisition();
    QVERIFY(!bench.takeLines().contains(QStringLiteral("INIT")));
    QVERIFY(!g_scanRunning);
    QCOMPARE(bench.startButton()->text(), QStringLiteral("开始"));
}

/// The link is lost and found again while the series are still being made.
void TestScanStart::startGoesOnUnderItsOverlayAfterARecovery()
{
    QSemaphore asked;
    QSemaphore answered;
    Start bench;
    bench.storeWaits().setRule([&asked, &answered](std::chrono::milliseconds) {
        asked.release();
        answered.tryAcquire(1, 20000);
        return std::chrono::milliseconds(0);
    });
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(asked.available() > 0, 10000);
    emit ReadData::instance()->sigUseInst();
    QVERIFY(!bench.startupView()->isVisible());
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(!bench.reconnectView()->isVisible(), 10000);
    WindowBench::endAcquisition();

    QCOMPARE(bench.startButton()->text(), QStringLiteral("停止"));
    QVERIFY(bench.startupView()->isVisible());
    QVERIFY(bench.startupView()->findChild<QTimer*>()->isActive());
    // A tick would change the list of the scan that is about to start.
    const QRect place = bench.tree()->visualItemRect(bench.item(202));
    const QPoint centre =
        bench.tree()->viewport()->mapTo(&bench.window(), QPoint(10, place.center().y()));
    QVERIFY(bench.startupView()->isAncestorOf(bench.window().childAt(centre)));

    bench.takeLines();
    answered.release(100);
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QCOMPARE(bench.takeLines(), scanLines());
    QVERIFY(g_curveSeries.value(201));
    QVERIFY(!bench.startupView()->isVisible());
}

void TestScanStart::windowsEndWhileStartingSendsNothing()
{
    Start bench;
    bench.takeLines();
    bench.startButton()->click();
    bench.close();
    WindowBench::settle();
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(!g_scanRunning);
}

void TestScanStart::labelSaysWhenNothingCanBeStored()
{
    const QString running = QStringLiteral("数据记录正在运行..");
    const QColor warning(0xFF, 0xA5, 0x00);
    QFile inTheWay(dataDirectory().path());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    Start bench;
    const QLabel* const label = bench.runningLabel();
    const auto textColour = [label] { return label->palette().color(label->foregroundRole()); };
    bench.startButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QTRY_COMPARE(label->text(), running + QStringLiteral("（数据无法保存）"));
    QCOMPARE(textColour(), warning);
    QVERIFY(label->isVisible());

    // The next run has not refused anything yet.
    emit bench.window().findChild<WindowLockManager*>()->unlocked();
    QVERIFY(!g_scanRunning && !label->isVisible());
    QTest::mouseClick(bench.startButton(), Qt::LeftButton);
    QVERIFY(label->isVisible());
    QCOMPARE(label->text(), running);
    QVERIFY(textColour() != warning);
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 10000);
    QTRY_COMPARE(label->text(), running + QStringLiteral("（数据无法保存）"));

    QVERIFY(inTheWay.remove());
    auto* const store = CurveDataDB::instance(QString());
    const int id = store->registerCurve(QStringLiteral("201(Vdc)"));
    QVERIFY(id > 0);
    store->appendPoint(id, QDateTime::currentMSecsSinceEpoch(), 1.5);
    QTRY_COMPARE(label->text(), running);
    QVERIFY(textColour() != warning);
}

SCN_TEST(TestScanStart, QApplication)
#include "test_scanstart.moc"
