#pragma once

#include <QColor>
#include <QList>
#include <QMap>

#include <memory>

class CCurvePlot;
class CurveOffsetController;
class CurveSeriesData;
class QDoubleSpinBox;
class QwtPlotCurve;

namespace scn {

class CurveTable;

/// The curves of one chart with their tags, by channel. A curve that is not selected any more is hidden
/// and comes back with its data and its offset.
///
/// Curves point at the shared series, which are kept alive until clear() or the object's own end. GUI
/// thread.
class ChartCurves
{
public:
    ChartCurves(CCurvePlot* plot, CurveOffsetController* tags);

    /// Deletes all curves and tags and lets go of their series.
    void clear();

    /// The curve of a channel; null when it has none yet.
    QwtPlotCurve* curveOf(int channel) const { return m_curves.value(channel); }

    /// The offset box of the row that shows a curve; null for a hidden one.
    QDoubleSpinBox* offsetBoxOf(QwtPlotCurve* curve) const { return m_offsetBoxes.value(curve); }

    void forgetOffsetBoxes() { m_offsetBoxes.clear(); }

    /// Shows the selected channels' curves and no others. A curve that has to be made takes its colour
    /// from `row`; a channel without a series is passed over.
    void showSelected(const CurveTable& table, int row);

    void setColor(int channel, const QColor& color);
    void setOffset(int channel, double offset);

private:
    void showChannel(int channel, const CurveTable& table, int row);
    void createCurve(int channel, const CurveTable& table, int row);
    void hideOthers(const QList<int>& channels);
    void assignOffsetBoxes(const CurveTable& table);

    CCurvePlot* m_plot;
    CurveOffsetController* m_tags;
    QMap<int, QwtPlotCurve*> m_curves;
    QMap<QwtPlotCurve*, QDoubleSpinBox*> m_offsetBoxes;
    QMap<int, std::shared_ptr<CurveSeriesData>> m_series;
};

} // namespace scn
