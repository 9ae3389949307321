#pragma once

#include "plot/ccurveplot.h"
#include "runbenchmarks.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QRandomGenerator>
#include <qwt_plot_curve.h>

#include <cmath>
#include <memory>
#include <vector>

/// The chart that the plot benchmarks measure: 16 curves, each with 15000 readings over one minute
/// in memory, thinned to 10000 at each reload, on a canvas of 900 x 500 pixels.
class PlotBench
{
public:
    static constexpr int kCurves = 16;
    static constexpr int kPoints = 10000;
    static constexpr int kCanvasWidth = 900;
    static constexpr int kCanvasHeight = 500;

    enum class Signal {
        Quiet, ///< A slow wave with noise of a few pixels.
        Noisy, ///< Noise over the full height.
    };

    explicit PlotBench(Signal signal)
    {
        m_plot.clearCurves();
        for (int channel = 0; channel < kCurves; ++channel) {
            m_series.push_back(std::make_unique<CurveSeriesData>(
                QStringLiteral("%1(VDC)").arg(firstChannel(signal) + channel), directoryName()));
            m_series.back()->addPoints(readings(signal, channel));
            QwtPlotCurve* curve = m_plot.addCurve(m_series.back().get(), color(channel),
                                                  QString::number(101 + channel));
            curve->setPen(color(channel), 0.0, Qt::SolidLine);
            m_curves.push_back(curve);
        }
        m_plot.show();
        sizeCanvas();
        m_plot.onMagnifierZoomed(1.0); // holds the view: it does not follow the clock
        m_plot.setAxisScale(QwtPlot::xBottom, static_cast<double>(m_start),
                            static_cast<double>(m_start + kSpanMs));
        m_plot.setAxisScale(QwtPlot::yLeft, -12.0, 12.0);
        reload();
        sizeCanvas();
        reload();
    }

    /// Removes the store left by an earlier run or by this one.
    static void removeStore()
    {
        QDir(QCoreApplication::applicationDirPath() + QLatin1Char('/') + directoryName())
            .removeRecursively();
    }

    /// One reload and replot, down to the pixels of the window.
    void reload()
    {
        m_plot.updateVisibleData();
        QCoreApplication::processEvents();
    }

    CCurvePlot& chart() { return m_plot; }
    const std::vector<QwtPlotCurve*>& curves() const { return m_curves; }
    const CurveSeriesData& series(int channel) const
    {
        return *m_series[static_cast<size_t>(channel)];
    }

private:
    static constexpr int kReadings = 15000;
    static constexpr int kSpanMs = 60000;

    static QString directoryName() { return QStringLiteral("bench_plot_Data"); }
    static int firstChannel(Signal signal) { return signal == Signal::Quiet ? 101 : 201; }
    static QColor color(int channel) { return QColor::fromHsv(channel * 22, 200, 220); }

    QVector<QPointF> readings(Signal signal, int channel) const
    {
        QRandomGenerator random(static_cast<quint32>(channel));
        QVector<QPointF> points;
        points.reserve(kReadings);
        for (int i = 0; i < kReadings; ++i) {
            const double noise = random.generateDouble() - 0.5;
            const double wave = 9.0 * std::sin(i * 0.001 + channel * 0.4) + 0.2 * noise;
            const double y = signal == Signal::Quiet ? wave : 20.0 * noise;
            points.append(
                QPointF(static_cast<double>(m_start + i * qint64(kSpanMs) / kReadings), y));
        }
        return points;
    }

    /// Resizes the plot so that its canvas gets the size wanted.
    void sizeCanvas()
    {
        for (int i = 0; i < 5; ++i) {
            QCoreApplication::processEvents();
            const QSize missing = QSize(kCanvasWidth, kCanvasHeight) - m_plot.canvas()->size();
            m_plot.resize(m_plot.size() + missing);
        }
        QCoreApplication::processEvents();
    }

    const qint64 m_start = QDateTime::currentMSecsSinceEpoch() - kSpanMs;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
    std::vector<QwtPlotCurve*> m_curves;
    CCurvePlot m_plot;
};

/// main() of a plot benchmark.
inline int runPlotBenchmarks(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    PlotBench::removeStore();
    const int result = runBenchmarks(argc, argv);
    CurveDataDB::shutdown();
    PlotBench::removeStore();
    return result;
}
