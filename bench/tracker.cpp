// The cost of one read-out under the pointer, against a bare loop that turns the same samples into
// pixels and keeps the nearest.

#include "alternatingrounds.h"
#include "plot/curvetracker.h"
#include "plotbench.h"

#include <qwt_scale_map.h>
#include <qwt_text.h>

#include <benchmark/benchmark.h>

namespace {

constexpr int kRounds = 31;
constexpr int kPositionsPerRound = 40;
constexpr double kLimit = 1.3;

/// A linear scale as two numbers.
struct Scale
{
    explicit Scale(const QwtScaleMap& map)
        : factor((map.p2() - map.p1()) / (map.s2() - map.s1()))
        , base(map.p1())
        , start(map.s1())
    {
    }
    int pixel(double value) const { return static_cast<int>(base + (value - start) * factor); }

    double factor;
    double base;
    double start;
};

class Baseline
{
public:
    explicit Baseline(PlotBench& bench)
        : m_x(bench.chart().canvasMap(QwtPlot::xBottom))
        , m_y(bench.chart().canvasMap(QwtPlot::yLeft))
    {
        for (int channel = 0; channel < PlotBench::kCurves; ++channel) {
            m_samples.push_back(bench.series(channel).visiblePoints());
        }
    }

    /// Squared distance from `pos` to the nearest sample, in pixels.
    int nearest(const QPointF& pos) const
    {
        const int x = m_x.pixel(pos.x());
        const int y = m_y.pixel(pos.y());
        int best = std::numeric_limits<int>::max();
        for (const QVector<QPointF>& samples : m_samples) {
            for (const QPointF& sample : samples) {
                const int dx = m_x.pixel(sample.x()) - x;
                const int dy = m_y.pixel(sample.y()) - y;
                best = std::min(best, dx * dx + dy * dy);
            }
        }
        return best;
    }

private:
    Scale m_x;
    Scale m_y;
    std::vector<QVector<QPointF>> m_samples;
};

/// Positions all over the canvas.
std::vector<QPointF> positions(PlotBench& bench)
{
    const QwtScaleMap xMap = bench.chart().canvasMap(QwtPlot::xBottom);
    const QwtScaleMap yMap = bench.chart().canvasMap(QwtPlot::yLeft);
    QRandomGenerator random(1);
    std::vector<QPointF> all;
    for (int i = 0; i < kPositionsPerRound; ++i) {
        all.emplace_back(xMap.invTransform(random.bounded(double(PlotBench::kCanvasWidth))),
                         yMap.invTransform(random.bounded(double(PlotBench::kCanvasHeight))));
    }
    return all;
}

void readout(benchmark::State& state, PlotBench::Signal signal)
{
    PlotBench bench(signal);
    const auto* tracker = bench.chart().canvas()->findChild<CurveTracker*>();
    const Baseline baseline(bench);
    const std::vector<QPointF> places = positions(bench);
    for (const QPointF& pos : places) {
        double distance = 0.0;
        const bool found = tracker->nearestCurve(pos, &distance);
        if (!found || std::lround(distance * distance) != baseline.nearest(pos)) {
            state.SkipWithError("the two do not look for the same");
            return;
        }
    }
    for (auto _ : state) {
        const AlternatingResult result = measureAlternating(
            kRounds, kPositionsPerRound,
            [&] {
                for (const QPointF& pos : places) {
                    benchmark::DoNotOptimize(tracker->trackerTextF(pos));
                }
            },
            [&] {
                for (const QPointF& pos : places) {
                    benchmark::DoNotOptimize(baseline.nearest(pos));
                }
            });
        reportRatio(state, result, kLimit);
    }
}

BENCHMARK_CAPTURE(readout, quiet, PlotBench::Signal::Quiet)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readout, noisy, PlotBench::Signal::Noisy)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runPlotBenchmarks(argc, argv);
}
