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

/// The curves of a chart with their tags, by channel. A curve that is no longer selected is hidden and
/// comes back with its data and its offset.
///
/// Keeps the shared series that its curves point at alive until clear() or destruction. GUI thread.
class ChartCurves
{
public:
    ChartCurves(CCurvePlot* plot, CurveOffsetController* tags);

    /// Deletes all curves and tags and releases their series.
    void clear();

    /// The curve of a channel; null if it has none yet.
    QwtPlotCurve* curveOf(int channel) const { return m_curves.value(channel); }

    /// The offset box of the row that shows a curve; null for a hidden one.
    QDoubleSpinBox* offsetBoxOf(QwtPlotCurve* curve) const { return m_offsetBoxes.value(curve); }

    void forgetOffsetBoxes() { m_offsetBoxes.clear(); }

    /// Shows the curves of the selected channels and hides all others. A new curve takes its colour from
    /// `row`; a channel without a series is skipped.
    void showSelected(const CurveTable& table, int row);

    void setColor(int channel, const QColor& color);
    void setOffset(int channel, double offset);

private:
    void showChannel(int channel, const CurveTable& table, int row);
    void createCurve(int channel, const CurveTable& table, int row);
    void hideOthers(const QList<int>& channels);
    void addTags(const QList<int>& channels);
    void assignOffsetBoxes(const CurveTable& table);

    CCurvePlot* m_plot;
    CurveOffsetController* m_tags;
    QMap<int, QwtPlotCurve*> m_curves;
    QMap<QwtPlotCurve*, QDoubleSpinBox*> m_offsetBoxes;
    QMap<int, std::shared_ptr<CurveSeriesData>> m_series;
};

} // namespace scn
