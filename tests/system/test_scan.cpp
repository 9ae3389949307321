#include "acquisition/measurementdata.h"
#include "app/globals.h"
#include "app/mainwidget.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/datadirectory.h"
#include "storage/nonowningcurvedata.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "widgets/customsidebutton.h"
#include "widgets/imagebutton.h"
#include "widgets/sidebar.h"

#include <qwt_plot_curve.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

namespace {

constexpr int kChannels = 60;
constexpr int kChannelsPerChart = 30;
constexpr int kChannelColumn = 2;

/// The readings in memory of the series behind the curves of some charts.
Readings readingsBehind(const QList<BarChartWidget*>& charts)
{
    Readings readings;
    for (const BarChartWidget* chart : charts) {
        const auto items = chart->findChild<CCurvePlot*>()->itemList(QwtPlotItem::Rtti_PlotCurve);
        for (const QwtPlotItem* item : items) {
            const auto* curve = static_cast<const QwtPlotCurve*>(item);
            const auto* data = dynamic_cast<const NonOwningCurveData*>(curve->data());
            const QVector<QPointF> points = data->series()->recentPoints();
            auto& list = readings[curve->title().text().toInt()];
            for (const QPointF& point : points)
                list.append({static_cast<qint64>(point.x()), point.y()});
        }
    }
    return readings;
}

} // namespace

/// Sixty channels from the click to the day file and the charts, over both transports.
class TestScan : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void transcriptDayFileAndChartsAgree_data();
    void transcriptDayFileAndChartsAgree();

private:
    BarChartWidget* openChart(MainWidget& window);
    void assignChannels(BarChartWidget* chart, int first) const;
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

/// Opens a chart with the side bar's button.
BarChartWidget* TestScan::openChart(MainWidget& window)
{
    auto* workspace = window.findChild<GraphicSettingWidget*>();
    auto* bar = workspace->findChild<SideBar*>();
    const int before = workspace->findChildren<BarChartWidget*>().size();
    if (!bar->content()->isVisible()) {
        for (auto* strip : bar->findChildren<CustomSideButton*>()) {
            if (strip->isVisible())
                QTest::mouseClick(strip, Qt::LeftButton);
        }
    }
    auto* button = bar->content()->findChildren<QPushButton*>().constFirst();
    if (!QTest::qWaitFor([button] { return button->isVisible() && button->width() == 60; }))
        return nullptr;
    QTest::qWait(400);
    QTest::mouseClick(button, Qt::LeftButton);
    const auto charts = workspace->findChildren<BarChartWidget*>();
    return charts.size() == before + 1 ? charts.constLast() : nullptr;
}

/// Gives the chart's rows the channels from the `first` of the scan list on.
void TestScan::assignChannels(BarChartWidget* chart, int first) const
{
    auto* table = chart->findChild<QTableWidget*>();
    for (int row = 0; row < kChannelsPerChart; ++row) {
        auto* box = qobject_cast<QComboBox*>(table->cellWidget(row, kChannelColumn));
        box->setCurrentIndex(1 + first + row);
    }
}

void TestScan::transcriptDayFileAndChartsAgree_data()
{
    QTest::addColumn<int>("transport");
    QTest::addColumn<QString>("rate");
    QTest::newRow("TCP") << static_cast<int>(SimulatedInstrument::Transport::Tcp)
                         << QStringLiteral("300");
    // A serial line at 57600 baud carries some 90 readings a second.
    QTest::newRow("pseudo-terminal")
        << static_cast<int>(SimulatedInstrument::Transport::PseudoTerminal) << QStringLiteral("90");
}

void TestScan::transcriptDayFileAndChartsAgree()
{
    QFETCH(int, transport);
    QFETCH(QString, rate);
    // A serial number of its own gives each transport its own data directory.
    const QString identity = QStringLiteral("SCN,SCN4070A,SCAN%1,1").arg(transport);
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

    auto* tree = window.findChild<QTreeWidget*>();
    for (int module = 0; module < 3; ++module)
        tree->topLevelItem(module)->setCheckState(0, Qt::Checked);
    QCOMPARE(g_scanChannels.size(), kChannels);

    auto* startButton = window.findChildren<ImageButton*>().constFirst();
    QTest::mouseClick(startButton, Qt::LeftButton);
    // Each new curve takes 200 ms.
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 60000);
    QCOMPARE(g_curveSeries.size(), kChannels);

    // The second tab is the workspace.
    for (auto* tabs : window.findChildren<QTabWidget*>(QStringLiteral("myTabWidget1")))
        tabs->setCurrentIndex(1);
    QList<BarChartWidget*> charts;
    for (int chart = 0; chart < 2; ++chart) {
        charts.append(openChart(window));
        QVERIFY(charts.constLast());
        assignChannels(charts.constLast(), chart * kChannelsPerChart);
    }

    QTest::qWait(6000);
    QTest::mouseClick(startButton, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 20000);
    QTest::qWait(500);

    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(sent.size(), kChannels);
    for (const auto& channel : sent)
        QVERIFY(channel.size() >= 3);
    const Readings inCharts = readingsBehind(charts);
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

QTEST_MAIN(TestScan)
#include "test_scan.moc"
