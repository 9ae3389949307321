#include "plot/plotsetup.h"

#include "plot/curvetracker.h"
#include "plot/loadedcurvedata.h"
#include "plot/seriescurve.h"

#include <QPen>
#include <qwt_date_scale_draw.h>
#include <qwt_painter.h>
#include <qwt_picker_machine.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

namespace scn {

namespace {

constexpr int kTimePointSize = 6;

} // namespace

void setUpCanvas(QwtPlot* plot)
{
    auto* canvas = new QwtPlotCanvas(plot);
    canvas->setFrameStyle(QFrame::Box | QFrame::Plain);
    canvas->setLineWidth(1);
    canvas->setPalette(QPalette(Qt::white));
    canvas->setPaintAttribute(QwtPlotCanvas::BackingStore, true);
    canvas->setPaintAttribute(QwtPlotCanvas::ImmediatePaint, false);
    canvas->setAttribute(Qt::WA_PaintOnScreen, false);
    plot->setCanvas(canvas);
    QwtPainter::setPolylineSplitting(true);
}

void hideScales(QwtPlot* plot)
{
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        plot->axisWidget(axis)->setMargin(0);
        QwtScaleDraw* draw = plot->axisScaleDraw(axis);
        draw->enableComponent(QwtAbstractScaleDraw::Backbone, false);
        draw->enableComponent(QwtAbstractScaleDraw::Ticks, false);
        draw->enableComponent(QwtAbstractScaleDraw::Labels, false);
    }
    plot->plotLayout()->setAlignCanvasToScales(true);
}

QwtPlotGrid* addGrid(QwtPlot* plot)
{
    auto* grid = new QwtPlotGrid;
    grid->enableX(true);
    grid->enableY(true);
    grid->setMajorPen(QColor(100, 100, 100), 1.0, Qt::SolidLine);
    grid->show();
    grid->attach(plot);
    return grid;
}

QwtDateScaleDraw* addTimeScale(QwtPlot* plot)
{
    auto* draw = new QwtDateScaleDraw(Qt::LocalTime);
    const QString format = QStringLiteral("yyyy/MM/dd\nhh:mm:ss");
    for (const auto type :
         {QwtDate::Millisecond, QwtDate::Second, QwtDate::Minute, QwtDate::Hour}) {
        draw->setDateFormat(type, format);
    }
    plot->setAxisScaleDraw(QwtPlot::xBottom, draw);
    plot->setAxisLabelAlignment(QwtPlot::xBottom, Qt::AlignHCenter | Qt::AlignBottom);

    auto* engine = new QwtLinearScaleEngine(10);
    engine->setAttribute(QwtScaleEngine::Floating, true);
    plot->setAxisScaleEngine(QwtPlot::xBottom, engine);

    QFont font = plot->axisFont(QwtPlot::xBottom);
    font.setPointSize(kTimePointSize);
    plot->setAxisFont(QwtPlot::xBottom, font);
    return draw;
}

CurveTracker* makeTracker(QWidget* canvas)
{
    auto* tracker = new CurveTracker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::CrossRubberBand,
                                     QwtPicker::ActiveOnly, canvas);
    tracker->setStateMachine(new QwtPickerTrackerMachine);
    tracker->setRubberBandPen(
        QPen(QBrush(Qt::gray), 0.0, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin));
    tracker->setTrackerPen(QPen(Qt::black));
    tracker->setTrackerMode(QwtPicker::AlwaysOn);
    return tracker;
}

QPen curvePen(const QColor& color)
{
    return {color, 0.0, Qt::SolidLine};
}

QwtPlotCurve* makeCurve(CurveSeriesData* series, const QColor& color, const QString& title)
{
    auto* curve = new SeriesCurve(title);
    curve->setPen(color, 1.0, Qt::SolidLine);
    curve->setSamples(new LoadedCurveData(series));
    curve->setPaintAttribute(QwtPlotCurve::ClipPolygons, true);
    curve->setPaintAttribute(QwtPlotCurve::FilterPoints, true);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, false);
    return curve;
}

} // namespace scn
