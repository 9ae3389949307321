#pragma once

#include "plot/workspaceview.h"

#include <QColor>
#include <QStringList>
#include <QWidget>

#include <memory>

class CCurvePlot;
class CurveOffsetController;
class QPushButton;
class QSplitter;
class QwtPlotCurve;

namespace scn {
class ChartCurves;
class CurveTable;
} // namespace scn

/// The content of a chart window: a plot with its strip of tags, a live button and a zoom selector;
/// below them the table of curves. Despite its name it shows no bars. GUI thread.
///
/// The chart keeps every series that it shows alive until clearChart() or its destruction, so a rebuilt
/// g_curveSeries never leaves a curve without data.
class BarChartWidget : public QWidget, public scn::WorkspaceView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BarChartWidget)

public:
    explicit BarChartWidget(QWidget* parent = nullptr);
    ~BarChartWidget() override;

    /// Deletes all curves and tags and releases their series.
    void clearChart();

    /// Offers these channels in every row and selects the first, "none"; the curves stay. An empty list is
    /// ignored.
    void setChannelList(const QStringList& items) override;

    /// Empties the chart and offers these channels.
    void rebuildChannelList(const QStringList& items) override;

    void onNewSample(qint64 timeMs) override;

public slots:
    void onChannelTypeChange(int index);
    void onColorChanged(QColor newColor);
    void onOffsetChanged(double value);
    void hideTableWidget();
    /// Resumes following the readings.
    void onCurrDisPlot();
    void onPlotZoomTypeChanged(int index);
    /// Applies the offset of a dragged tag, in y units.
    void setOffset(QwtPlotCurve* curve, double offset);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void giveTableItsRoom();
    void buildLayout();
    void buildPlotArea();
    void buildTableArea();
    void connectRow(int row);

    CurveOffsetController* m_offsetController = nullptr;
    CCurvePlot* m_plot = nullptr;
    QSplitter* m_splitter = nullptr;
    QWidget* m_tableContainer = nullptr;
    QPushButton* m_toggleButton = nullptr;
    std::unique_ptr<scn::CurveTable> m_table;
    std::unique_ptr<scn::ChartCurves> m_curves;
};
