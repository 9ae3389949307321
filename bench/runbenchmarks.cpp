#include "runbenchmarks.h"

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

/// One line per benchmark: its ratio, the limit, and whether it is kept.
class RatioReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !report(run)) {
                m_allKept = false;
            }
        }
        std::fflush(stdout);
    }

    bool allKept() const { return m_allKept; }

private:
    static double counter(const Run& run, const char* name)
    {
        const auto found = run.counters.find(name);
        return found == run.counters.end() ? 0.0 : found->second.value;
    }

    static bool report(const Run& run)
    {
        benchmark::BenchmarkName name = run.run_name;
        name.iterations.clear();
        const double limit = counter(run, "limit");
        const double kilobytes = counter(run, "kilobytes");
        if (kilobytes > 0.0 && !run.error_occurred) {
            const bool isWithin = kilobytes <= limit;
            std::printf("%-44s %.2f KB, limit %.1f: %s\n", name.str().c_str(), kilobytes, limit,
                        isWithin ? "kept" : "ABOVE");
            return isWithin;
        }
        const double ratio = counter(run, "ratio");
        if (run.error_occurred || !(ratio > 0.0)) {
            std::printf("%-44s not measured. %s\n", name.str().c_str(), run.error_message.c_str());
            return false;
        }
        const bool kept = ratio <= limit;
        std::printf("%-44s ratio %.3f, limit %.2f: %s (processor %.3f; %.0f ns against %.0f ns)\n",
                    name.str().c_str(), ratio, limit, kept ? "kept" : "ABOVE",
                    counter(run, "cpu_ratio"), counter(run, "program_ns"),
                    counter(run, "baseline_ns"));
        return kept;
    }

    bool m_allKept = true;
};

} // namespace

void reportKilobytes(benchmark::State& state, double kilobytes, double limit)
{
    state.counters["kilobytes"] = kilobytes;
    state.counters["limit"] = limit;
}

int runBenchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    const bool ran = benchmark::RunSpecifiedBenchmarks(&reporter) > 0;
    return ran && reporter.allKept() ? 0 : 1;
}
