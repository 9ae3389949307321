#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

/// Times of a candidate and its baseline, measured in turns so that both run under the same
/// conditions.
struct AlternatingResult
{
    /// Medians over the rounds, in nanoseconds per operation.
    double candidateNs = 0.0;
    double baselineNs = 0.0;
    /// Median over the rounds of candidate / baseline.
    double ratio = 0.0;
    /// The same ratio in processor time, for a machine busy with other work.
    double processorRatio = 0.0;
};

inline double medianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// Elapsed time and this thread's processor time.
struct TimeTaken
{
    double passedNs = 0.0;
    double processorNs = 0.0;
};

template <typename Work>
TimeTaken timeTaken(Work&& work)
{
    const auto now = [](clockid_t clock) {
        timespec time{};
        clock_gettime(clock, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    const double passedBefore = now(CLOCK_MONOTONIC);
    const double processorBefore = now(CLOCK_THREAD_CPUTIME_ID);
    work();
    return {now(CLOCK_MONOTONIC) - passedBefore, now(CLOCK_THREAD_CPUTIME_ID) - processorBefore};
}

/// Runs `candidate` and `baseline` in turns, `rounds` times each after a warm-up round; each call
/// does `operations` operations. The order alternates from round to round.
template <typename Candidate, typename Baseline>
AlternatingResult measureAlternating(int rounds, int operations, Candidate&& candidate,
                                     Baseline&& baseline)
{
    std::vector<double> candidateTimes;
    std::vector<double> baselineTimes;
    std::vector<double> ratios;
    std::vector<double> processorRatios;
    candidate();
    baseline();
    for (int round = 0; round < rounds; ++round) {
        TimeTaken candidateTime;
        TimeTaken baselineTime;
        if (round % 2 == 0) {
            candidateTime = timeTaken(candidate);
            baselineTime = timeTaken(baseline);
        } else {
            baselineTime = timeTaken(baseline);
            candidateTime = timeTaken(candidate);
        }
        candidateTimes.push_back(candidateTime.passedNs / operations);
        baselineTimes.push_back(baselineTime.passedNs / operations);
        ratios.push_back(candidateTime.passedNs / baselineTime.passedNs);
        processorRatios.push_back(candidateTime.processorNs / baselineTime.processorNs);
    }
    return {medianOf(candidateTimes), medianOf(baselineTimes), medianOf(ratios),
            medianOf(processorRatios)};
}

/// Adds the figures to the benchmark's output line. `limit` is the highest ratio allowed.
inline void reportRatio(benchmark::State& state, const AlternatingResult& result, double limit)
{
    state.counters["ratio"] = result.ratio;
    state.counters["cpu_ratio"] = result.processorRatio;
    state.counters["limit"] = limit;
    state.counters["program_ns"] = result.candidateNs;
    state.counters["baseline_ns"] = result.baselineNs;
}
