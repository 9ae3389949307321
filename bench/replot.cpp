// The cost of one reload and replot of a chart, against a bare painter that draws the same thinned
// polylines, already in pixels, into an image of the canvas's size.

#include "alternatingrounds.h"
#include "plotbench.h"

#include <QImage>
#include <QPainter>
#include <qwt_scale_map.h>

#include <benchmark/benchmark.h>

namespace {

constexpr int kQuietRounds = 301;
constexpr int kNoisyRounds = 41; // each takes ten times as long
constexpr double kQuietLimit = 1.15;
constexpr double kNoisyLimit = 1.0;

/// The polylines that the plot shows, in pixels, and their pens.
class Baseline
{
public:
    explicit Baseline(PlotBench& bench)
        : m_image(bench.chart().canvas()->size(), QImage::Format_ARGB32_Premultiplied)
    {
        const QwtScaleMap xMap = bench.chart().canvasMap(QwtPlot::xBottom);
        const QwtScaleMap yMap = bench.chart().canvasMap(QwtPlot::yLeft);
        for (int channel = 0; channel < PlotBench::kCurves; ++channel) {
            QPolygonF line;
            for (const QPointF& point : bench.series(channel).visiblePoints()) {
                line.append(QwtScaleMap::transform(xMap, yMap, point).toPoint());
            }
            m_lines.push_back(line);
            m_pens.push_back(bench.curves()[static_cast<size_t>(channel)]->pen());
        }
    }

    void draw()
    {
        m_image.fill(Qt::white);
        QPainter painter(&m_image);
        // As on a widget: without a clip the painter takes a much slower path.
        painter.setClipRect(m_image.rect());
        for (size_t i = 0; i < m_lines.size(); ++i) {
            painter.setPen(m_pens[i]);
            painter.drawPolyline(m_lines[i]);
        }
    }

private:
    QImage m_image;
    std::vector<QPolygonF> m_lines;
    std::vector<QPen> m_pens;
};

void reloadAndReplot(benchmark::State& state, PlotBench::Signal signal)
{
    PlotBench bench(signal);
    if (bench.chart().canvas()->size() !=
            QSize(PlotBench::kCanvasWidth, PlotBench::kCanvasHeight) ||
        bench.series(0).size() != PlotBench::kPoints) {
        state.SkipWithError("the chart is not the one to be measured");
        return;
    }
    Baseline baseline(bench);
    const bool isQuiet = signal == PlotBench::Signal::Quiet;
    for (auto _ : state) {
        const AlternatingResult result = measureAlternating(
            isQuiet ? kQuietRounds : kNoisyRounds, 1, [&bench] { bench.reload(); },
            [&baseline] { baseline.draw(); });
        reportRatio(state, result, isQuiet ? kQuietLimit : kNoisyLimit);
    }
}

BENCHMARK_CAPTURE(reloadAndReplot, quiet, PlotBench::Signal::Quiet)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(reloadAndReplot, noisy, PlotBench::Signal::Noisy)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runPlotBenchmarks(argc, argv);
}
