#include "pictures.h"

#include "app/mainwidget.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "plot/custommdisubwindow.h"
#include "plot/customtitlebar.h"
#include "programscene.h"
#include "screen.h"
#include "widgets/customcombobox.h"
#include "widgets/sidebar.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QMdiArea>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QToolTip>
#include <QtTest>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>

namespace {

constexpr int kChartChannelColumn = 2;
constexpr int kGridChannelColumn = 1;
constexpr int kGridTimeColumn = 3;
constexpr int kUndock = 1;
constexpr int kLiveMs = 12000;
constexpr int kListWaitMs = 1000;

CustomTitleBar* barOf(const CustomMdiSubWindow* view)
{
    return view->findChild<CustomTitleBar*>();
}

QPushButton* titleButton(const CustomMdiSubWindow* view, int index)
{
    return barOf(view)->findChildren<QPushButton*>().at(index);
}

QTableWidget* tableOf(const CustomMdiSubWindow* view)
{
    return view->findChild<QTableWidget*>();
}

/// Chooses the channel after `steps` entries in a row's list.
void chooseChannel(const CustomMdiSubWindow* view, int row, int column, int steps)
{
    auto* const box = qobject_cast<QComboBox*>(tableOf(view)->cellWidget(row, column));
    // The table may still be scrolling to the row.
    const auto opens = [box] {
        screen::click(box);
        return QTest::qWaitFor([box] { return box->view()->isVisible(); }, kListWaitMs);
    };
    QTRY_VERIFY_WITH_TIMEOUT(opens(), 10 * kListWaitMs);
    QStringList keys;
    for (int step = 0; step < steps; ++step) {
        keys.append(QStringLiteral("Down"));
    }
    screen::press(keys + QStringList{QStringLiteral("Return")});
    QTRY_COMPARE(box->currentIndex(), steps);
}

/// Drags a window by its title bar.
void drag(const CustomMdiSubWindow* view, const QPoint& by)
{
    const QPoint grip(60, 15);
    screen::movePointer(barOf(view), grip);
    screen::pressButton();
    screen::movePointer(barOf(view), grip + by / 2);
    screen::movePointer(barOf(view), grip + by - by / 2);
    screen::releaseButton();
    screen::movePointerAway();
}

/// The point of the canvas where the curve has its middle sample.
QPoint onCurve(const CustomMdiSubWindow* view)
{
    const auto* plot = view->findChild<CCurvePlot*>();
    const auto* curve =
        static_cast<const QwtPlotCurve*>(plot->itemList(QwtPlotItem::Rtti_PlotCurve).constFirst());
    const QPointF sample = curve->sample(static_cast<int>(curve->dataSize()) * 2 / 3);
    return QPoint(qRound(plot->transform(QwtPlot::xBottom, sample.x())),
                  qRound(plot->transform(QwtPlot::yLeft, sample.y())));
}

} // namespace

void Pictures::workspace()
{
    ProgramScene scene;
    scene.showReady();
    scene.choosePage(1);
    screen::take(QStringLiteral("workspace"));
    scene.openWorkspace();
    screen::take(QStringLiteral("workspace-side-bar"));
    screen::movePointer(scene.sideBar()->content()->findChildren<QPushButton*>().at(1));
    QTRY_VERIFY(QToolTip::isVisible());
    screen::take(QStringLiteral("workspace-tool-hover"));
}

void Pictures::emptyViews()
{
    ProgramScene scene;
    scene.showReady();
    scene.openWorkspace();
    CustomMdiSubWindow* const chart = scene.openChart();
    screen::take(QStringLiteral("chart-as-opened"));
    screen::movePointer(titleButton(chart, kUndock));
    QTRY_VERIFY(QToolTip::isVisible());
    screen::take(QStringLiteral("title-bar-hover"));
    CustomMdiSubWindow* const grid = scene.openGrid();
    drag(grid, QPoint(120, 240));
    screen::take(QStringLiteral("grid-as-opened"));
    screen::click(titleButton(chart, 0));
    screen::take(QStringLiteral("tile"));
    screen::click(titleButton(grid, 0));
    screen::movePointerAway();
    screen::take(QStringLiteral("tiles"));
    screen::doubleClick(barOf(chart), QPoint(20, 20));
    screen::movePointerAway();
    screen::take(QStringLiteral("tile-opened-again"));
    screen::click(titleButton(chart, kUndock));
    screen::movePointerAway();
    screen::take(QStringLiteral("chart-maximised"));
}

void Pictures::liveViews()
{
    ProgramScene scene;
    scene.showReady();
    scene.run();
    scene.openWorkspace();
    CustomMdiSubWindow* const chart = scene.openChart();
    screen::click(titleButton(chart, kUndock));
    chooseChannel(chart, 0, kChartChannelColumn, 1);
    QTest::qWait(kLiveMs);
    screen::movePointerAway();
    screen::take(QStringLiteral("chart-live-maximised"));
    for (auto* button : chart->findChildren<QPushButton*>()) {
        if (button->text().contains(QStringLiteral("选择通道"))) {
            screen::click(button);
            break;
        }
    }
    screen::movePointerAway();
    screen::take(QStringLiteral("chart-live-table-hidden"));
    screen::click(titleButton(chart, kUndock));
    screen::movePointerAway();
    screen::take(QStringLiteral("chart-live-normal"));
    CustomMdiSubWindow* const grid = scene.openGrid();
    drag(grid, QPoint(120, 240));
    chooseChannel(grid, 0, kGridChannelColumn, 1);
    screen::movePointerAway();
    QTest::qWait(3000);
    screen::take(QStringLiteral("grid-live-normal"));
    screen::click(titleButton(grid, kUndock));
    for (int row = 1; row < 4; ++row) {
        chooseChannel(grid, row, kGridChannelColumn, row + 1);
    }
    screen::movePointerAway();
    QTest::qWait(3000);
    screen::take(QStringLiteral("grid-live-maximised"));
    const QModelIndex cell = tableOf(grid)->model()->index(1, kGridTimeColumn);
    screen::click(tableOf(grid)->viewport(), tableOf(grid)->visualRect(cell).center());
    screen::take(QStringLiteral("grid-selected-cell"));
    scene.stop();
    screen::take(QStringLiteral("run-ended"));
}

void Pictures::chartControls()
{
    ProgramScene scene;
    scene.showReady();
    for (int channel = 101; channel <= 104; ++channel) {
        scene.tick(channel);
    }
    scene.openWorkspace();
    CustomMdiSubWindow* const chart = scene.openChart();
    screen::click(titleButton(chart, kUndock));
    screen::click(chart->findChild<CustomComboBox*>());
    screen::take(QStringLiteral("chart-zoom-list"));
    screen::press({QStringLiteral("Escape")});
    screen::click(tableOf(chart)->cellWidget(0, kChartChannelColumn));
    screen::take(QStringLiteral("chart-channel-list"));
    screen::press({QStringLiteral("Down"), QStringLiteral("Return")});
    auto* const color = tableOf(chart)->findChild<ColorSelectButton*>();
    screen::inLoopOf([color] { screen::click(color); },
                     [] {
                         screen::take(QStringLiteral("chart-colours"));
                         screen::press({QStringLiteral("Escape")});
                     });
    auto* const offset = tableOf(chart)->findChild<QDoubleSpinBox*>();
    QTRY_VERIFY(offset->isEnabled());
    screen::click(offset, QPoint(30, offset->height() / 2));
    screen::press({QStringLiteral("ctrl+a")});
    screen::take(QStringLiteral("chart-offset"));
    screen::inLoopOf([offset] { screen::rightClick(offset); },
                     [] {
                         screen::take(QStringLiteral("chart-offset-menu"));
                         screen::press({QStringLiteral("Escape")});
                     });
}

void Pictures::chartReadOut()
{
    ProgramScene scene;
    scene.showReady();
    scene.run();
    scene.openWorkspace();
    CustomMdiSubWindow* const chart = scene.openChart();
    screen::click(titleButton(chart, kUndock));
    chooseChannel(chart, 0, kChartChannelColumn, 1);
    QTest::qWait(kLiveMs);
    auto* const canvas = chart->findChild<QwtPlotCanvas*>();
    screen::movePointer(canvas, onCurve(chart));
    screen::take(QStringLiteral("chart-read-out"));
    screen::movePointer(canvas, QPoint(canvas->width() / 2, canvas->height() / 4));
    screen::take(QStringLiteral("chart-cross"));
    screen::movePointerAway();
    scene.stop();
}

void Pictures::manyCurves()
{
    ProgramScene scene;
    scene.showReady();
    scene.run(8);
    scene.openWorkspace();
    CustomMdiSubWindow* const chart = scene.openChart();
    screen::click(titleButton(chart, kUndock));
    // Room for four rows of the table.
    const QWidget* const handle = chart->findChild<QSplitter*>()->handle(1);
    screen::movePointer(handle);
    screen::pressButton();
    screen::movePointer(handle, handle->rect().center() - QPoint(0, 40));
    screen::movePointer(handle, handle->rect().center() - QPoint(0, 40));
    screen::releaseButton();
    for (int row = 0; row < 4; ++row) {
        chooseChannel(chart, row, kChartChannelColumn, row + 4);
    }
    QTest::qWait(kLiveMs);
    screen::movePointerAway();
    screen::take(QStringLiteral("chart-with-four-curves"));
    screen::click(titleButton(chart, kUndock));
    drag(chart, QPoint(60, 60));
    drag(scene.openChart(), QPoint(240, 300));
    drag(scene.openGrid(), QPoint(380, 180));
    screen::take(QStringLiteral("workspace-with-views"));
    scene.stop();
}
