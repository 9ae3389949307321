#include "support/windowsession.h"

#include "app/mainwidget.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/graphicsettingwidget.h"
#include "storage/curveseriesdata.h"
#include "storage/nonowningcurvedata.h"
#include "widgets/customsidebutton.h"
#include "widgets/imagebutton.h"
#include "widgets/sidebar.h"

#include <QComboBox>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>
#include <qwt_plot_curve.h>

#include <algorithm>

namespace {

constexpr int kChannelColumn = 2;
constexpr int kWorkspaceTab = 1;
constexpr int kPatienceMs = 10000;

bool slides(const SideBar* bar)
{
    const auto animations = bar->findChildren<QPropertyAnimation*>();
    return std::any_of(animations.cbegin(), animations.cend(), [](const QPropertyAnimation* slide) {
        return slide->state() == QAbstractAnimation::Running;
    });
}

} // namespace

WindowSession::WindowSession(MainWidget& window)
    : m_window(window)
{
}

void WindowSession::checkAllModules()
{
    auto* tree = m_window.findChild<QTreeWidget*>();
    for (int module = 0; module < tree->topLevelItemCount(); ++module) {
        tree->topLevelItem(module)->setCheckState(0, Qt::Checked);
    }
}

ImageButton* WindowSession::startButton() const
{
    return m_window.findChildren<ImageButton*>().constFirst();
}

QPushButton* WindowSession::chartButton() const
{
    m_window.findChild<QTabWidget*>(QStringLiteral("myTabWidget1"))->setCurrentIndex(kWorkspaceTab);
    auto* bar = m_window.findChild<GraphicSettingWidget*>()->findChild<SideBar*>();
    if (!bar->content()->isVisible()) {
        for (auto* strip : bar->findChildren<CustomSideButton*>()) {
            if (strip->isVisible()) {
                QTest::mouseClick(strip, Qt::LeftButton);
            }
        }
        if (!QTest::qWaitFor([bar] { return !slides(bar); }, kPatienceMs)) {
            return nullptr;
        }
    }
    return bar->content()->findChildren<QPushButton*>().constFirst();
}

BarChartWidget* WindowSession::openChart() const
{
    QPushButton* const button = chartButton();
    if (!button) {
        return nullptr;
    }
    const auto* workspace = m_window.findChild<GraphicSettingWidget*>();
    const int before = workspace->findChildren<BarChartWidget*>().size();
    QTest::mouseClick(button, Qt::LeftButton);
    const auto charts = workspace->findChildren<BarChartWidget*>();
    return charts.size() == before + 1 ? charts.constLast() : nullptr;
}

void WindowSession::assignChannels(BarChartWidget* chart, int first, int count)
{
    auto* table = chart->findChild<QTableWidget*>();
    for (int row = 0; row < count; ++row) {
        qobject_cast<QComboBox*>(table->cellWidget(row, kChannelColumn))
            ->setCurrentIndex(1 + first + row);
    }
}

Readings WindowSession::readingsBehind(const QList<BarChartWidget*>& charts)
{
    Readings readings;
    for (const BarChartWidget* chart : charts) {
        const auto items = chart->findChild<CCurvePlot*>()->itemList(QwtPlotItem::Rtti_PlotCurve);
        for (const QwtPlotItem* item : items) {
            const auto* curve = static_cast<const QwtPlotCurve*>(item);
            const auto* data = dynamic_cast<const NonOwningCurveData*>(curve->data());
            const QVector<QPointF> points = data->series()->recentPoints();
            auto& list = readings[curve->title().text().toInt()];
            for (const QPointF& point : points) {
                list.append({static_cast<qint64>(point.x()), point.y()});
            }
        }
    }
    return readings;
}
