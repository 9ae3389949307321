#include "acquisition/measurementdata.h"
#include "app/mainwidget.h"
#include "plot/barchartwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/datadirectory.h"
#include "support/guiload.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/windowsession.h"
#include "widgets/imagebutton.h"

#include <QDir>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

namespace {

constexpr int kChannels = 60;
constexpr int kChannelsPerChart = 30;

/// Runs the event loop as the program does, so that waiting can be told from working.
void runEventLoop(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The bound is generous: what the window costs is the benchmarks' to say. Here it must not choke.
#ifdef __SANITIZE_ADDRESS__
constexpr double kMostBusy = 0.9;
#else
constexpr double kMostBusy = 0.5;
#endif

/// Charts and day file hold what the instrument sent.
void checkAgreement(const Readings& sent, const Readings& inCharts)
{
    QCOMPARE(inCharts.keys(), sent.keys());
    const QString directory =
        QDir(QCoreApplication::applicationDirPath()).filePath(dataDirectoryName(g_instrumentId));
    const Readings stored = readingsInStore(directory);
    for (auto channel = sent.cbegin(); channel != sent.cend(); ++channel) {
        QCOMPARE(stored.value(channel.key()).size(), channel->size());
        QCOMPARE(inCharts.value(channel.key()).size(), channel->size());
        QCOMPARE(stored.value(channel.key()), channel.value());
        QCOMPARE(inCharts.value(channel.key()), channel.value());
    }
}

} // namespace

/// Sixty channels from the click to the day file and the charts. One row per process, since a
/// process creates its store once.
class TestScan : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void transcriptDayFileAndChartsAgree_data();
    void transcriptDayFileAndChartsAgree();
};

void TestScan::initTestCase()
{
    initResources();
    qRegisterMetaType<QList<MeasurementData>>("QList<MeasurementData>");
}

void TestScan::cleanupTestCase()
{
    CurveDataDB::shutdown();
}

void TestScan::transcriptDayFileAndChartsAgree_data()
{
    using Transport = SimulatedInstrument::Transport;
    QTest::addColumn<int>("transport");
    QTest::addColumn<QString>("rate");
    QTest::addColumn<int>("seconds");
    // More than one pass a second would carry.
    QTest::newRow("TCP") << static_cast<int>(Transport::Tcp) << QStringLiteral("1000") << 6;
    // A serial line at 57600 baud carries some 90 readings a second.
    QTest::newRow("pseudo-terminal")
        << static_cast<int>(Transport::PseudoTerminal) << QStringLiteral("90") << 6;
    QTest::newRow("stream") << static_cast<int>(Transport::Tcp) << QStringLiteral("600") << 10;
    QTest::newRow("minute-stream")
        << static_cast<int>(Transport::Tcp) << QStringLiteral("600") << 60;
    QTest::newRow("long-stream") << static_cast<int>(Transport::Tcp) << QStringLiteral("600")
                                 << 600;
}

void TestScan::transcriptDayFileAndChartsAgree()
{
    QFETCH(int, transport);
    QFETCH(QString, rate);
    QFETCH(int, seconds);
    // A separate serial number gives each row its own data directory.
    const QString identity =
        QStringLiteral("SCN,SCN4070A,SCAN-%1,1").arg(QLatin1String(QTest::currentDataTag()));
    const SimulatedInstrument instrument(static_cast<SimulatedInstrument::Transport>(transport),
                                         {QStringLiteral("--slots"), QStringLiteral("1:0,2:0,3:0"),
                                          QStringLiteral("--rate"), rate, QStringLiteral("--idn"),
                                          identity});
    g_resourceName = instrument.resource();
    MainWidget window(nullptr);
    QVERIFY(g_instrumentConnected);
    window.resize(1500, 950);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    WindowSession session(window);
    session.checkAllModules();
    QCOMPARE(g_scanChannels.size(), kChannels);
    QTest::mouseClick(session.startButton(), Qt::LeftButton);
    // Each new curve takes 200 ms.
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 60000);
    QCOMPARE(g_curveSeries.size(), kChannels);

    QList<BarChartWidget*> charts;
    for (int chart = 0; chart < 2; ++chart) {
        charts.append(session.openChart());
        QVERIFY(charts.constLast());
        WindowSession::assignChannels(charts.constLast(), chart * kChannelsPerChart,
                                      kChannelsPerChart);
    }

    GuiLoad load;
    runEventLoop(seconds * 1000);
    qInfo().noquote() << load.report();
    QVERIFY2(load.busyShare() < kMostBusy, qPrintable(load.report()));

    QTest::mouseClick(session.startButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 20000);
    QTest::qWait(500);

    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(sent.size(), kChannels);
    QCOMPARE(gapIn(sent, 1000.0 * kChannels / rate.toInt()), QString());
    // The rate is the instrument's; the last pass may lag by a second.
    const int expected = rate.toInt() * (seconds - 2) / kChannels;
    for (const auto& channel : sent) {
        QVERIFY2(channel.size() >= expected, qPrintable(QString::number(channel.size())));
    }
    checkAgreement(sent, WindowSession::readingsBehind(charts));
}

SCN_TEST(TestScan, MeteredApplication)
#include "test_scan.moc"
