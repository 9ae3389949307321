// What the charts and grids of a run cost the GUI thread: the whole window beside the simulated instrument
// at full rate, with a day of readings in the store.
//
//     bench_liveload

#include "acquisition/measurementdata.h"
#include "acquisition/readdata.h"
#include "alternatingrounds.h"
#include "app/mainwidget.h"
#include "app/startup.h"
#include "plot/barchartwidget.h"
#include "plot/datanetwork.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "support/guiload.h"
#include "support/simulatedinstrument.h"
#include "support/windowsession.h"
#include "widgets/imagebutton.h"

#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QMdiArea>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <qwt_plot_canvas.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds kOpeningLimit{40};
constexpr double kBusyLimit = 0.08;
constexpr milliseconds kGapLimit{60};

constexpr int kChannels = 60;
constexpr int kCharts = 8;
constexpr int kCurvesPerChart = 8;
constexpr int kGrids = 4;
constexpr int kRowsPerGrid = 20;
constexpr int kGridChannelColumn = 1;
constexpr seconds kWatched{60};
constexpr seconds kSettling{5};
constexpr milliseconds kBatchWork{400};

// A day of each curve: sparse at first, and as dense as the scan for as long as memory reaches back.
constexpr milliseconds kDay{24 * 3600 * 1000};
constexpr milliseconds kSparseStep{10000};
constexpr milliseconds kDenseStep{100};

/// Ends the benchmark; the simulated instrument ends with it.
[[noreturn]] void fail(const char* what)
{
    throw std::runtime_error(what);
}

/// Runs the event loop as the program does, so that waiting can be told from working.
void runEventLoop(milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

QVector<QPointF> dayOfReadings(int channel)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 dense = now - CurveSeriesData::kMaxRecentPoints * kDenseStep.count();
    QVector<QPointF> points;
    for (qint64 time = now - kDay.count(); time < now;
         time += (time < dense ? kSparseStep : kDenseStep).count()) {
        const auto x = static_cast<double>(time);
        points.append(QPointF(x, channel % 10 + std::sin(x * 1e-4)));
    }
    return points;
}

/// Whether a canvas that did not exist before has been painted.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(const QWidget* workspace)
        : m_known(workspace->findChildren<QwtPlotCanvas*>())
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool isPainted() const { return m_isPainted; }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            auto* const canvas = qobject_cast<QwtPlotCanvas*>(object);
            m_isPainted = m_isPainted || (canvas && !m_known.contains(canvas));
        }
        return false;
    }

private:
    QList<QwtPlotCanvas*> m_known;
    bool m_isPainted = false;
};

/// The program's window with a scan running.
class LiveWindow
{
public:
    explicit LiveWindow(MainWidget& window)
        : m_session(window)
        , m_workspace(window.findChild<GraphicSettingWidget*>())
    {
        m_session.checkAllModules();
        QTest::mouseClick(m_session.startButton(), Qt::LeftButton);
        // Each new curve takes 200 ms.
        if (!QTest::qWaitFor([] { return g_scanRunning.load(); }, 60000) ||
            g_curveSeries.size() != kChannels) {
            fail("the scan does not start");
        }
        for (auto series = g_curveSeries.cbegin(); series != g_curveSeries.cend(); ++series) {
            series.value()->addPoints(dayOfReadings(series.key()));
        }
    }

    /// Opens a chart by a click; how long it takes until its canvas is painted.
    TimeTaken openChart()
    {
        QPushButton* const button = m_session.chartButton();
        awaitBatch();
        const PaintWatch watch(m_workspace);
        return timeTaken([button, &watch] {
            QTest::mouseClick(button, Qt::LeftButton);
            while (!watch.isPainted()) {
                QCoreApplication::processEvents();
            }
        });
    }

    /// Gives each chart and each grid its channels, and all of them a place of their own.
    void fillViews()
    {
        const auto charts = m_workspace->findChildren<BarChartWidget*>();
        for (int chart = 0; chart < charts.size(); ++chart) {
            WindowSession::assignChannels(
                charts.at(chart), chart * kCurvesPerChart % (kChannels - kCurvesPerChart + 1),
                kCurvesPerChart);
        }
        for (int grid = 0; grid < kGrids; ++grid) {
            QMetaObject::invokeMethod(m_workspace, "recvDataNetworkBtnSlots");
            assignRows(m_workspace->findChildren<DataNetwork*>().constLast(),
                       grid * kRowsPerGrid % kChannels);
        }
        m_workspace->findChild<QMdiArea*>()->tileSubWindows();
    }

    void endRun()
    {
        QTest::mouseClick(m_session.startButton(), Qt::LeftButton);
        if (!QTest::qWaitFor([] { return !g_scanRunning.load(); }, 20000)) {
            fail("the scan does not end");
        }
    }

private:
    static void assignRows(DataNetwork* grid, int firstChannel)
    {
        auto* table = grid->findChild<QTableWidget*>();
        for (int row = 0; row < kRowsPerGrid; ++row) {
            qobject_cast<QComboBox*>(table->cellWidget(row, kGridChannelColumn))
                ->setCurrentIndex(1 + (firstChannel + row) % kChannels);
        }
    }

    /// Returns between two batches, when all of the first is stored and drawn.
    static void awaitBatch()
    {
        QEventLoop loop;
        QObject::connect(ReadData::instance(), &ReadData::sigSendMeasure, &loop, &QEventLoop::quit);
        loop.exec();
        runEventLoop(kBatchWork);
    }

    WindowSession m_session;
    GraphicSettingWidget* m_workspace;
};

bool openingIsKept(LiveWindow& window)
{
    constexpr double kMsPerNs = 1e-6;
    std::vector<double> passed;
    std::vector<double> processor;
    for (int chart = 0; chart < kCharts; ++chart) {
        const TimeTaken taken = window.openChart();
        passed.push_back(taken.passedNs * kMsPerNs);
        processor.push_back(taken.processorNs * kMsPerNs);
    }
    const double worst = *std::max_element(passed.begin(), passed.end());
    const bool isKept = worst <= static_cast<double>(kOpeningLimit.count());
    std::printf("opening a chart, click to pixels: median %.1f ms, worst of %d %.1f ms, limit %lld "
                "ms: %s (processor %.1f and %.1f ms)\n",
                medianOf(passed), kCharts, worst, static_cast<long long>(kOpeningLimit.count()),
                isKept ? "kept" : "ABOVE", medianOf(processor),
                *std::max_element(processor.begin(), processor.end()));
    return isKept;
}

bool loadIsKept()
{
    runEventLoop(kSettling);
    double busy = 0.0;
    milliseconds gap{};
    const TimeTaken taken = timeTaken([&busy, &gap] {
        const GuiLoad load;
        runEventLoop(kWatched);
        busy = load.busyShare();
        gap = load.largestGap();
    });
    const bool isKept = busy <= kBusyLimit && gap <= kGapLimit;
    std::printf("%d charts of %d curves, %d grids, 600 readings/s: GUI thread busy %.1f %%, limit "
                "%.0f %% (processor %.1f %%); largest heartbeat gap %lld ms, limit %lld ms: %s\n",
                kCharts, kCurvesPerChart, kGrids, busy * 100.0, kBusyLimit * 100.0,
                taken.processorNs / taken.passedNs * 100.0, static_cast<long long>(gap.count()),
                static_cast<long long>(kGapLimit.count()), isKept ? "kept" : "ABOVE");
    return isKept;
}

int runWindow()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:0,2:0,3:0"),
                                          QStringLiteral("--rate"), QStringLiteral("600"),
                                          QStringLiteral("--idn"),
                                          QStringLiteral("SCN,SCN4070A,LIVELOAD,1")});
    g_resourceName = instrument.resource();
    MainWidget window(nullptr);
    if (!g_instrumentConnected) {
        fail("no instrument");
    }
    window.resize(1920, 1080);
    window.show();
    LiveWindow live(window);
    const bool openingKept = openingIsKept(live);
    live.fillViews();
    const bool loadKept = loadIsKept();
    live.endRun();
    return openingKept && loadKept ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const MeteredApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    scn::startup::substituteFonts();
    scn::startup::registerMetaTypes();
    initResources();
    QFile styleFile(QStringLiteral(":/qss/styles.qss"));
    scn::startup::applyStyleSheet(styleFile);
    int status = 1;
    try {
        status = runWindow();
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "benchmark is wrong: %s\n", error.what());
    }
    CurveDataDB::shutdown();
    QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/LIVELOAD_Data"))
        .removeRecursively();
    return status;
}
