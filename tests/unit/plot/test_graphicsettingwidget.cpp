#include "acquisition/readdata.h"
#include "channels/commfunc.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/custommdisubwindow.h"
#include "plot/customtitlebar.h"
#include "plot/datanetwork.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "seriesstore.h"
#include "storage/storeclock.h"
#include "support/eventcounter.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/settle.h"
#include "support/testprogram.h"
#include "widgets/customsidebutton.h"
#include "widgets/sidebar.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMdiArea>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>
#include <qwt_interval.h>
#include <qwt_plot_curve.h>

#include <thread>

namespace {
/// Readings of today: the store keeps them in a file that the series are registered in.
const QDateTime kTime = QDateTime::currentDateTime();

MeasurementData reading(int channel, double value, const QDateTime& time = kTime)
{
    MeasurementData data;
    data.value = value;
    data.unit = QStringLiteral("V");
    data.time = time;
    data.channel = channel;
    data.valid = true;
    return data;
}

struct Fixture
{
    explicit Fixture(std::chrono::milliseconds registrationInterval =
                         GraphicSettingWidget::kRegistrationInterval)
        : page(nullptr, registrationInterval)
    {
        g_scanChannels = {{101, QStringLiteral("V")}, {102, QStringLiteral("mA")}};
        page.resize(1000, 700);
        page.show();
    }

    QMdiArea* area() const { return page.findChild<QMdiArea*>(); }
    QPushButton* tool(int number) const
    {
        const SideBar* bar = page.findChild<SideBar*>();
        return qobject_cast<QPushButton*>(bar->content()->layout()->itemAt(number)->widget());
    }
    CustomMdiSubWindow* openChart() { return open("recvGraphicBtnSlots"); }
    CustomMdiSubWindow* openGrid() { return open("recvDataNetworkBtnSlots"); }
    CustomMdiSubWindow* open(const char* slot)
    {
        QMetaObject::invokeMethod(&page, slot);
        return qobject_cast<CustomMdiSubWindow*>(area()->subWindowList().last());
    }
    static void close(CustomMdiSubWindow* window)
    {
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static void send(const QList<MeasurementData>& batch)
    {
        emit ReadData::instance()->sigSendMeasure(batch);
    }

    GraphicSettingWidget page;
};

QComboBox* combo(const CustomMdiSubWindow* window, int row)
{
    const auto* table = window->findChild<QTableWidget*>();
    const int column = window->findChild<BarChartWidget*>() ? 2 : 1;
    return qobject_cast<QComboBox*>(table->cellWidget(row, column));
}

QStringList items(const QComboBox* box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i) {
        texts.append(box->itemText(i));
    }
    return texts;
}

QString cell(const CustomMdiSubWindow* window, int row, int column)
{
    return window->findChild<QTableWidget*>()->item(row, column)->text();
}

int curveCount(const CustomMdiSubWindow* window)
{
    return window->findChild<CCurvePlot*>()->itemList(QwtPlotItem::Rtti_PlotCurve).size();
}

/// Left end of a chart's time axis, in ms since the epoch.
double timeStart(const CustomMdiSubWindow* window)
{
    return window->findChild<CCurvePlot*>()->axisInterval(QwtPlot::xBottom).minValue();
}

const QStringList kOffered{QStringLiteral("无"), QStringLiteral("101(V)"),
                           QStringLiteral("102(mA)")};
} // namespace

class TestGraphicSettingWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initResources();
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_graphicsettingwidget_Data"));
    }
    void cleanupTestCase()
    {
        m_store.reset();
        delete ReadData::instance();
    }
    void cleanup() { SeriesStore::reset(); }

    void pageIsLaidOutWithItsTools();
    void openSideBarShowsItsToolsWhole();
    void areaIsSetUp();
    void toolButtonsOpenTheirWindows();
    void toolsAndWindowsShowTheirPictures();
    void windowsOpenWithoutMakingPopups();
    void windowsShareOneCount();
    void numbersAreNotReused();
    void newWindowOffersTheScanList();
    void channelWithoutAUnitIsNotOffered();
    void unitIsTakenLiterally();

    void rebuildOffersTheNewList();
    void rebuildEmptiesChartsButNotGrids();
    void rebuildPassesOverForeignWindows();
    void rebuildLeavesTheSeriesToTheirMap();

    void batchFeedsTheSeries();
    void batchIsFedWithoutAnyWindow();
    void readingWithoutASeriesIsDropped();
    void nullSeriesDropsItsReadings();
    void seriesThatWereRefusedAreRegisteredWhenTheStoreIsBack();
    void emptyBatchTouchesNothing();
    void everyChartGetsTheLastTime();
    void gridsShowTheBatchAtOnce();
    void batchIsToldInTheOrderOfOpening();
    void batchOfAnotherThreadIsQueued();
    void closedWindowIsSkipped();
    void destroyedWindowIsForgotten();
    void windowOpenedLaterShowsTheSeries();
    void pageMayEndWithOpenWindows();
    void pageMayEndBeforeAClosedWindow();
    void foreignWindowIsPassedOverByABatch();
    void activationRepaintsAllBorders();
    void onlyAnActivationRepaints();

private:
    std::unique_ptr<SeriesStore> m_store;
};

void TestGraphicSettingWidget::pageIsLaidOutWithItsTools()
{
    const Fixture f;
    QCOMPARE(f.page.styleSheet(), QStringLiteral("background-color:black;"));
    const auto* layout = qobject_cast<QHBoxLayout*>(f.page.layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(0, 0, 0, 0));
    QCOMPARE(layout->spacing(), 3);
    auto* bar = qobject_cast<SideBar*>(layout->itemAt(0)->widget());
    QVERIFY(bar);
    QCOMPARE(bar->maximumWidth(), 80);
    bool titled = false;
    for (const QLabel* label : bar->findChildren<QLabel*>()) {
        titled = titled || label->text() == QStringLiteral("小工具");
    }
    QVERIFY(titled);
    // Closed, the bar points to the right, where it opens.
    bool pointsRight = false;
    const QImage arrow = QPixmap(QStringLiteral(":/dark/arrow_right.png"))
                             .scaled(15, 15, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                             .toImage();
    for (const CustomSideButton* button : bar->findChildren<CustomSideButton*>()) {
        for (const QLabel* label : button->findChildren<QLabel*>()) {
            pointsRight = pointsRight || (button->isVisible() &&
                                          label->pixmap(Qt::ReturnByValue).toImage() == arrow);
        }
    }
    QVERIFY(pointsRight);
    QCOMPARE(layout->itemAt(1)->widget(), f.area());
    QCOMPARE(layout->stretch(0), 0);
    QCOMPARE(layout->stretch(1), 1);

    const auto* tools = qobject_cast<QVBoxLayout*>(bar->content()->layout());
    QVERIFY(tools);
    QCOMPARE(tools->contentsMargins(), QMargins(10, 10, 10, 10));
    QCOMPARE(tools->count(), 3);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(f.tool(i)->iconSize(), QSize(60, 60));
        QCOMPARE(f.tool(i)->minimumSize(), QSize(60, 60));
        QCOMPARE(f.tool(i)->maximumSize(), QSize(60, 60));
        QCOMPARE(f.tool(i)->styleSheet(), CommFunc().buttonStyle());
    }
    QVERIFY(tools->itemAt(2)->spacerItem());
}

void TestGraphicSettingWidget::openSideBarShowsItsToolsWhole()
{
    const Fixture f;
    auto* bar = f.page.findChild<SideBar*>();
    bar->onHideBtnClicked();
    QTRY_COMPARE(bar->width(), 80);
    QTRY_COMPARE(f.tool(0)->visibleRegion().boundingRect(), QRect(0, 0, 60, 60));
    QTRY_COMPARE(f.tool(1)->visibleRegion().boundingRect(), QRect(0, 0, 60, 60));
}

void TestGraphicSettingWidget::areaIsSetUp()
{
    const Fixture f;
    QCOMPARE(f.area()->background(), QBrush(Qt::NoBrush));
    QCOMPARE(f.area()->viewMode(), QMdiArea::SubWindowView);
    QCOMPARE(f.area()->activationOrder(), QMdiArea::ActivationHistoryOrder);
}

void TestGraphicSettingWidget::toolButtonsOpenTheirWindows()
{
    const Fixture f;
    f.tool(0)->click();
    f.tool(1)->click();
    const QList<QMdiSubWindow*> windows = f.area()->subWindowList();
    QCOMPARE(windows.size(), 2);
    const auto* chart = qobject_cast<CustomMdiSubWindow*>(windows.at(0));
    const auto* grid = qobject_cast<CustomMdiSubWindow*>(windows.at(1));
    QVERIFY(chart && grid);
    QVERIFY(qobject_cast<BarChartWidget*>(chart->contentWidget()));
    QVERIFY(qobject_cast<DataNetwork*>(grid->contentWidget()));
    for (const CustomMdiSubWindow* window : {chart, grid}) {
        QVERIFY(window->isVisible());
        QVERIFY(window->contentWidget()->isVisible());
        QCOMPARE(window->size(), QSize(480, 220));
    }
}

void TestGraphicSettingWidget::toolsAndWindowsShowTheirPictures()
{
    Fixture f;
    const QString paths[] = {QStringLiteral(":/image/graphicsetting.png"),
                             QStringLiteral(":/image/DataNetwork.png")};
    const CustomMdiSubWindow* windows[] = {f.openChart(), f.openGrid()};
    for (int i = 0; i < 2; ++i) {
        const QImage onTool = f.tool(i)->icon().pixmap(60).toImage();
        QVERIFY(!onTool.isNull());
        QCOMPARE(onTool, QIcon(paths[i]).pixmap(60).toImage());
        const auto* bar = windows[i]->findChild<CustomTitleBar*>();
        const auto* tile = qobject_cast<QLabel*>(bar->layout()->itemAt(1)->widget());
        QCOMPARE(tile->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap(paths[i]).scaled(50, 50, Qt::KeepAspectRatio).toImage());
    }
}

// The popups of the 80 boxes would be most of a chart's widgets; a plain box creates its popup when a font
// reaches it.
void TestGraphicSettingWidget::windowsOpenWithoutMakingPopups()
{
    qApp->setStyleSheet(QStringLiteral("QComboBox { font-size: 13px; }"));
    const auto plainStyle = qScopeGuard([] { qApp->setStyleSheet(QString()); });
    Fixture f;
    for (const CustomMdiSubWindow* window : {f.openChart(), f.openGrid()}) {
        QCOMPARE(window->findChild<QTableWidget*>()->findChildren<QComboBox*>().size(),
                 window->findChild<BarChartWidget*>() ? 80 : 20);
        for (const QComboBox* box : window->findChildren<QComboBox*>()) {
            QVERIFY(!box->findChild<QAbstractItemView*>());
        }
    }
}

void TestGraphicSettingWidget::windowsShareOneCount()
{
    Fixture f;
    QCOMPARE(f.openChart()->windowTitle(), QStringLiteral("图形设置1"));
    QCOMPARE(f.openGrid()->windowTitle(), QStringLiteral("数据网格2"));
    QCOMPARE(f.openChart()->windowTitle(), QStringLiteral("图形设置3"));
}

void TestGraphicSettingWidget::numbersAreNotReused()
{
    Fixture f;
    f.openChart();
    CustomMdiSubWindow* second = f.openGrid();
    Fixture::close(second);
    QCOMPARE(f.openGrid()->windowTitle(), QStringLiteral("数据网格3"));
}

void TestGraphicSettingWidget::newWindowOffersTheScanList()
{
    Fixture f;
    for (const CustomMdiSubWindow* window : {f.openChart(), f.openGrid()}) {
        QCOMPARE(items(combo(window, 0)), kOffered);
        QCOMPARE(items(combo(window, 19)), kOffered);
        QCOMPARE(combo(window, 0)->currentIndex(), 0);
    }
}

void TestGraphicSettingWidget::channelWithoutAUnitIsNotOffered()
{
    Fixture f;
    g_scanChannels[100] = QString();
    g_scanChannels[201] = QStringLiteral("Ohm");
    QCOMPARE(items(combo(f.openGrid(), 0)), kOffered + QStringList{QStringLiteral("201(Ohm)")});
}

void TestGraphicSettingWidget::unitIsTakenLiterally()
{
    Fixture f;
    g_scanChannels = {{101, QStringLiteral("%1%2")}};
    QCOMPARE(items(combo(f.openGrid(), 0)).at(1), QStringLiteral("101(%1%2)"));
}

void TestGraphicSettingWidget::rebuildOffersTheNewList()
{
    Fixture f;
    const CustomMdiSubWindow* chart = f.openChart();
    const CustomMdiSubWindow* grid = f.openGrid();
    g_scanChannels = {{301, QStringLiteral("Hz")}};
    f.page.rebuildChannelLists();
    const QStringList expected{QStringLiteral("无"), QStringLiteral("301(Hz)")};
    QCOMPARE(items(combo(chart, 39)), expected);
    QCOMPARE(items(combo(grid, 19)), expected);
}

void TestGraphicSettingWidget::rebuildEmptiesChartsButNotGrids()
{
    Fixture f;
    const CustomMdiSubWindow* chart = f.openChart();
    const CustomMdiSubWindow* grid = f.openGrid();
    m_store->add(101);
    Fixture::send({reading(101, 2.0)});
    combo(chart, 0)->setCurrentIndex(1);
    combo(grid, 0)->setCurrentIndex(1);
    QCOMPARE(curveCount(chart), 1);
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("2.00000"));
    f.page.rebuildChannelLists();
    QCOMPARE(curveCount(chart), 0);
    QCOMPARE(combo(chart, 0)->currentIndex(), 0);
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("2.00000"));
    QCOMPARE(combo(grid, 0)->currentIndex(), 0);
    // The grid's row is no longer selected, so batches ignore it.
    Fixture::send({reading(101, 3.0)});
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("2.00000"));
}

void TestGraphicSettingWidget::rebuildPassesOverForeignWindows()
{
    Fixture f;
    f.area()->addSubWindow(new QLabel)->show();
    auto* unknown = new CustomMdiSubWindow(QString(), nullptr);
    f.area()->addSubWindow(unknown);
    unknown->setContentWidget(new DataNetwork);
    unknown->show();
    const CustomMdiSubWindow* grid = f.openGrid();
    g_scanChannels[103] = QStringLiteral("V");
    f.page.rebuildChannelLists();
    QCOMPARE(combo(unknown, 0)->count(), 1);
    QCOMPARE(combo(grid, 0)->count(), 4);
}

void TestGraphicSettingWidget::rebuildLeavesTheSeriesToTheirMap()
{
    Fixture f;
    const CustomMdiSubWindow* chart = f.openChart();
    g_curveSeries[102] = m_store->makeUnshared(102);
    const std::weak_ptr<CurveSeriesData> series = g_curveSeries.value(102);
    combo(chart, 0)->setCurrentIndex(2);
    QCOMPARE(curveCount(chart), 1);
    f.page.rebuildChannelLists();
    g_curveSeries.clear();
    QVERIFY(series.expired());
}

void TestGraphicSettingWidget::batchFeedsTheSeries()
{
    const Fixture f;
    const auto first = m_store->add(101);
    const auto second = m_store->add(102);
    Fixture::send({reading(101, 1.0), reading(102, -2.0), reading(101, 3.0, kTime.addSecs(1))});
    const auto ms = static_cast<double>(kTime.toMSecsSinceEpoch());
    COMPARE_EXACTLY(first->recentPoints(), (QVector<QPointF>{{ms, 1.0}, {ms + 1000.0, 3.0}}));
    COMPARE_EXACTLY(second->recentPoints(), (QVector<QPointF>{{ms, -2.0}}));
}

void TestGraphicSettingWidget::batchIsFedWithoutAnyWindow()
{
    const Fixture f;
    const auto series = m_store->add(107); // no other test stores points of this curve
    QVERIFY(f.area()->subWindowList().isEmpty());
    Fixture::send({reading(107, 1.0)});
    QCOMPARE(series->count(), 1);
    const QPointF point(static_cast<double>(kTime.toMSecsSinceEpoch()), 1.0);
    COMPARE_EXACTLY(series->allData(), QVector<QPointF>{point});
}

void TestGraphicSettingWidget::readingWithoutASeriesIsDropped()
{
    const Fixture f;
    const auto series = m_store->add(101);
    const LogCapture log;
    Fixture::send({reading(999, 1.0), reading(101, 2.0)});
    QCOMPARE(series->count(), 1);
    QVERIFY(!g_curveSeries.contains(999));
    QCOMPARE(log.lines(), QStringList());
}

void TestGraphicSettingWidget::nullSeriesDropsItsReadings()
{
    const Fixture f;
    const auto series = m_store->add(101);
    g_curveSeries[102] = nullptr;
    const LogCapture log;
    Fixture::send({reading(102, 1.0), reading(101, 2.0)});
    QCOMPARE(series->count(), 1);
    QCOMPARE(log.lines(), QStringList());
}

void TestGraphicSettingWidget::seriesThatWereRefusedAreRegisteredWhenTheStoreIsBack()
{
    const std::chrono::milliseconds interval(60);
    const Fixture f(interval);
    QTemporaryDir parent;
    const QString directory = parent.filePath(QStringLiteral("SN_Data"));
    QFile inTheWay(directory);
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    CurveDataDB store(directory);
    for (const int channel : {101, 102}) {
        g_curveSeries[channel] =
            std::make_shared<CurveSeriesData>(QStringLiteral("%1(V)").arg(channel), &store);
    }
    const auto series = g_curveSeries;
    const auto ids = [&series] {
        return QVector<int>{series[101]->curveId(), series[102]->curveId()};
    };
    QElapsedTimer sinceFirstTry;
    sinceFirstTry.start();
    Fixture::send({reading(101, 1.0), reading(102, 1.0)});
    QCOMPARE(ids(), (QVector<int>{-1, -1}));
    QCOMPARE(series[101]->count(), 0);
    QVERIFY(store.refusesReadings());
    QVERIFY(inTheWay.remove());
    // The store, too, looks again after a while only.
    scn::setStoreClock([] { return QDateTime::currentMSecsSinceEpoch() + 10000; });
    const auto resetClock = qScopeGuard([] { scn::setStoreClock(nullptr); });

    // It is asked from time to time, not with each batch.
    const auto isBack = [&ids] {
        if (ids().first() == -1) {
            Fixture::send({reading(102, 2.0)});
        }
        return ids().first() != -1;
    };
    QVERIFY(QTest::qWaitFor(isBack, 30000));
    QVERIFY(sinceFirstTry.elapsed() >= interval.count());
    QCOMPARE(ids(), (QVector<int>{1, 2}));
    QCOMPARE(series[102]->recentPoints().size(), 1);
    Fixture::send({reading(101, 3.0, kTime.addSecs(1))});
    QVERIFY(!store.refusesReadings());
    const auto ms = static_cast<double>(kTime.toMSecsSinceEpoch());
    COMPARE_EXACTLY(series[101]->allData(), (QVector<QPointF>{{ms + 1000.0, 3.0}}));
    COMPARE_EXACTLY(series[102]->allData(), (QVector<QPointF>{{ms, 2.0}}));
    SeriesStore::reset();
    store.closeForExit(QDeadlineTimer(2000));
}

void TestGraphicSettingWidget::emptyBatchTouchesNothing()
{
    Fixture f;
    const CustomMdiSubWindow* chart = f.openChart();
    const CustomMdiSubWindow* grid = f.openGrid();
    const auto series = m_store->add(101);
    combo(grid, 0)->setCurrentIndex(1);
    grid->findChild<QTableWidget*>()->item(0, 2)->setText(QStringLiteral("untouched"));
    const double before = timeStart(chart);
    Fixture::send({});
    QCOMPARE(series->count(), 0);
    QCOMPARE(timeStart(chart), before);
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("untouched"));
}

void TestGraphicSettingWidget::everyChartGetsTheLastTime()
{
    Fixture f;
    const CustomMdiSubWindow* first = f.openChart();
    const CustomMdiSubWindow* second = f.openChart();
    f.page.rebuildChannelLists(); // a cleared chart starts its window at the next time
    // The last reading counts, whichever channel it has and whatever came before it.
    Fixture::send({reading(101, 1.0, kTime.addSecs(90)), reading(999, 2.0, kTime)});
    const auto ms = static_cast<double>(kTime.toMSecsSinceEpoch());
    QCOMPARE(timeStart(first), ms);
    QCOMPARE(timeStart(second), ms);
}

void TestGraphicSettingWidget::gridsShowTheBatchAtOnce()
{
    Fixture f;
    const CustomMdiSubWindow* first = f.openGrid();
    const CustomMdiSubWindow* second = f.openGrid();
    m_store->add(101);
    combo(first, 2)->setCurrentIndex(1);
    combo(second, 5)->setCurrentIndex(1);
    Fixture::send({reading(101, 1.5), reading(101, 2.5)});
    QCOMPARE(cell(first, 2, 2), QStringLiteral("2.50000"));
    QCOMPARE(cell(first, 2, 3), kTime.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    QCOMPARE(cell(second, 5, 6), QStringLiteral("2.00000"));
}

void TestGraphicSettingWidget::batchIsToldInTheOrderOfOpening()
{
    Fixture f;
    m_store->add(101);
    QVector<int> told;
    for (int number = 1; number <= 3; ++number) {
        const CustomMdiSubWindow* grid = f.openGrid();
        combo(grid, 0)->setCurrentIndex(1);
        connect(grid->findChild<QTableWidget*>(), &QTableWidget::cellChanged, this,
                [&told, number](int, int column) {
                    if (column == 2) {
                        told.append(number);
                    }
                });
    }
    Fixture::send({reading(101, 4.0)});
    QCOMPARE(told, (QVector<int>{1, 2, 3}));
}

void TestGraphicSettingWidget::batchOfAnotherThreadIsQueued()
{
    const Fixture f;
    const auto series = m_store->add(101);
    std::thread sender([] { Fixture::send({reading(101, 1.0), reading(101, 2.0)}); });
    sender.join();
    QCOMPARE(series->count(), 0);
    QTRY_COMPARE(series->count(), 2);
    QCOMPARE(series->lastValue(), 2.0);
}

void TestGraphicSettingWidget::closedWindowIsSkipped()
{
    Fixture f;
    CustomMdiSubWindow* chart = f.openChart();
    const CustomMdiSubWindow* grid = f.openGrid();
    const auto series = m_store->add(101);
    combo(chart, 0)->setCurrentIndex(1);
    combo(grid, 0)->setCurrentIndex(1);
    QTest::ignoreMessage(QtDebugMsg, "子窗口已销毁，已从map中移除");
    Fixture::close(chart);
    Fixture::send({reading(101, 4.0)});
    f.page.rebuildChannelLists();
    QCOMPARE(series->count(), 1);
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("4.00000"));
}

/// A later window may get the address of an earlier one.
void TestGraphicSettingWidget::destroyedWindowIsForgotten()
{
    Fixture f;
    CustomMdiSubWindow* grid = f.openGrid();
    m_store->add(101);
    combo(grid, 0)->setCurrentIndex(1);
    const LogCapture log;
    QVERIFY(QMetaObject::invokeMethod(grid, "destroyed", Q_ARG(QObject*, grid)));
    Fixture::send({reading(101, 4.0)});
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("0.00000"));
    Fixture::close(grid);
    QCOMPARE(log.lines(QtDebugMsg), QStringList{QStringLiteral("子窗口已销毁，已从map中移除")});
}

void TestGraphicSettingWidget::windowOpenedLaterShowsTheSeries()
{
    Fixture f;
    m_store->add(101);
    Fixture::send({reading(101, 4.0), reading(101, 8.0, kTime.addSecs(1))});
    const CustomMdiSubWindow* grid = f.openGrid();
    combo(grid, 0)->setCurrentIndex(1);
    QCOMPARE(cell(grid, 0, 6), QStringLiteral("6.00000"));
    const CustomMdiSubWindow* chart = f.openChart();
    combo(chart, 0)->setCurrentIndex(1);
    f.page.rebuildChannelLists();
    combo(chart, 0)->setCurrentIndex(1);
    Fixture::send({reading(101, 6.0, kTime.addSecs(2))});
    const QwtPlotItemList curves =
        chart->findChild<CCurvePlot*>()->itemList(QwtPlotItem::Rtti_PlotCurve);
    QCOMPARE(curves.size(), 1);
    QTRY_COMPARE(static_cast<QwtPlotCurve*>(curves.first())->dataSize(), size_t(3));
}

void TestGraphicSettingWidget::pageMayEndWithOpenWindows()
{
    auto f = std::make_unique<Fixture>();
    const QPointer<CustomMdiSubWindow> chart = f->openChart();
    const QPointer<CustomMdiSubWindow> grid = f->openGrid();
    const auto series = m_store->add(101);
    combo(chart, 0)->setCurrentIndex(1);
    QTest::ignoreMessage(QtDebugMsg, "子窗口已销毁，已从map中移除");
    QTest::ignoreMessage(QtDebugMsg, "子窗口已销毁，已从map中移除");
    f.reset();
    QVERIFY(!chart);
    QVERIFY(!grid);
    // Batches from a thread that is still running are dropped.
    Fixture::send({reading(101, 1.0)});
    QCOMPARE(series->count(), 0);
}

/// A closed window is deleted by the event loop, which may come too late.
void TestGraphicSettingWidget::pageMayEndBeforeAClosedWindow()
{
    auto f = std::make_unique<Fixture>();
    const QPointer<CustomMdiSubWindow> chart = f->openChart();
    const QPointer<CustomMdiSubWindow> grid = f->openGrid();
    const auto series = m_store->add(101);
    combo(grid, 0)->setCurrentIndex(1);
    QVERIFY(grid->close());
    Fixture::send({reading(101, 1.0)});
    QCOMPARE(series->count(), 1);
    QVERIFY(grid);
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("0.00000"));
    f.reset();
    QVERIFY(!grid);
    QVERIFY(!chart);
}

void TestGraphicSettingWidget::foreignWindowIsPassedOverByABatch()
{
    Fixture f;
    f.area()->addSubWindow(new QLabel)->show();
    const CustomMdiSubWindow* grid = f.openGrid();
    m_store->add(101);
    combo(grid, 0)->setCurrentIndex(1);
    Fixture::send({reading(101, 1.0)});
    QCOMPARE(cell(grid, 0, 2), QStringLiteral("1.00000"));
}

void TestGraphicSettingWidget::activationRepaintsAllBorders()
{
    Fixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.page));
    CustomMdiSubWindow* first = f.openGrid();
    CustomMdiSubWindow* second = f.openGrid();
    second->move(500, 300);
    const auto borderOnScreen = [&](const CustomMdiSubWindow* window) {
        // What the last paint left, not a new picture.
        return f.page.screen()
            ->grabWindow(f.page.winId())
            .toImage()
            .pixelColor(window->mapTo(&f.page, QPoint(window->width() / 2, 0)));
    };
    const QColor active(0x2B, 0xA1, 0xD5);
    first->activate();
    QTRY_COMPARE(borderOnScreen(first), active);
    QTRY_COMPARE(borderOnScreen(second), QColor(Qt::white));
    second->activate();
    QTRY_COMPARE(borderOnScreen(second), active);
    QTRY_COMPARE(borderOnScreen(first), QColor(Qt::white));
}

void TestGraphicSettingWidget::onlyAnActivationRepaints()
{
    Fixture f;
    CustomMdiSubWindow* windows[] = {f.openGrid(), f.openGrid()};
    windows[1]->move(500, 300);
    QVERIFY(QTest::qWaitForWindowExposed(&f.page));
    settle();
    const EventCounter first(windows[0], QEvent::Paint);
    const EventCounter second(windows[1], QEvent::Paint);
    const auto activated = [&](QMdiSubWindow* window) {
        QMetaObject::invokeMethod(&f.page, "onSubWindowActivated", Q_ARG(QMdiSubWindow*, window));
        settle();
    };
    activated(nullptr);
    QCOMPARE(first.count() + second.count(), 0);
    activated(windows[0]);
    QTRY_COMPARE(first.count(), 1);
    QTRY_COMPARE(second.count(), 1);
}

SCN_TEST(TestGraphicSettingWidget, QApplication)
#include "test_graphicsettingwidget.moc"
