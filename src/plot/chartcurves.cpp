#include "plot/chartcurves.h"

#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "plot/curveoffsetcontroller.h"
#include "plot/curvetable.h"
#include "plot/plotsetup.h"
#include "state/globals.h"
#include "storage/curveseriesdata.h"

#include <QDoubleSpinBox>
#include <QPen>
#include <qwt_plot_curve.h>

namespace scn {

namespace {

constexpr QRgb kNewCurveColor = 0xffB793E6;

} // namespace

ChartCurves::ChartCurves(CCurvePlot* plot, CurveOffsetController* tags)
    : m_plot(plot)
    , m_tags(tags)
{
}

void ChartCurves::clear()
{
    m_tags->clearLabels();
    m_curves.clear();
    m_offsetBoxes.clear();
    m_plot->clearCurves();
    m_series.clear();
}

void ChartCurves::showSelected(const CurveTable& table, int row)
{
    const QList<int> channels = table.selectedChannels();
    for (const int channel : channels) {
        showChannel(channel, table, row);
    }
    hideOthers(channels);
    assignOffsetBoxes(table);
    m_plot->showCurrentView();
    addTags(channels);
}

void ChartCurves::setColor(int channel, const QColor& color)
{
    QwtPlotCurve* curve = curveOf(channel);
    if (curve) {
        curve->setPen(curvePen(color));
    }
    m_plot->showCurrentView();
    m_tags->setLabelColor(curve, color);
}

void ChartCurves::setOffset(int channel, double offset)
{
    QwtPlotCurve* curve = curveOf(channel);
    m_plot->setCurveOffset(curve, offset);
    m_tags->setLabelValue(curve, offset);
}

void ChartCurves::showChannel(int channel, const CurveTable& table, int row)
{
    QwtPlotCurve* curve = curveOf(channel);
    if (!curve) {
        createCurve(channel, table, row);
    } else if (!curve->isVisible()) {
        curve->show();
        m_tags->showCurveLabel(curve);
    }
}

void ChartCurves::createCurve(int channel, const CurveTable& table, int row)
{
    const std::shared_ptr<CurveSeriesData> series = g_curveSeries.value(channel);
    if (!series) {
        return;
    }
    QwtPlotCurve* curve =
        m_plot->addCurve(series.get(), QColor(kNewCurveColor), QString::number(channel));
    m_series[channel] = series;
    m_curves[channel] = curve;
    if (const ColorSelectButton* button = table.colorButton(row)) {
        curve->setPen(curvePen(button->color()));
    }
    curve->show();
}

void ChartCurves::hideOthers(const QList<int>& channels)
{
    for (auto it = m_curves.cbegin(); it != m_curves.cend(); ++it) {
        if (!channels.contains(it.key())) {
            it.value()->hide();
            m_tags->hideCurveLabel(it.value());
        }
    }
}

/// Adds the tags of new curves. They stand on the y axis of the first load, or move there when it is through.
void ChartCurves::addTags(const QList<int>& channels)
{
    for (const int channel : channels) {
        if (QwtPlotCurve* curve = curveOf(channel)) {
            m_tags->addCurveLabel(QString::number(channel), curve, curve->pen().color(),
                                  m_series.value(channel)->average());
        }
    }
}

/// Starts afresh: a box that kept an earlier curve would follow two tags.
void ChartCurves::assignOffsetBoxes(const CurveTable& table)
{
    m_offsetBoxes.clear();
    for (int row = 0; row < table.rowCount(); ++row) {
        if (QwtPlotCurve* curve = curveOf(table.selectedChannel(row))) {
            m_offsetBoxes[curve] = table.offsetBox(row);
        }
    }
}

} // namespace scn
