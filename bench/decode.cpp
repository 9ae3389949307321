// Decoding a full reply from the instrument, against a plain C loop over the same bytes.
#include "acquisition/recorddecoder.h"
#include "alternatingrounds.h"
#include "runbenchmarks.h"

#include <QString>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

/// As many records as the reading buffer of the instrument link holds.
constexpr int kRecords = 818;
constexpr int kRounds = 201;
constexpr double kLimit = 6.0;

std::string fullReply()
{
    std::string reply = "#540900";
    for (int i = 0; i < kRecords; ++i) {
        char record[96];
        const int length =
            std::snprintf(record, sizeof record, "%s%+.8E Vdc,2024,06,15,%02d,%02d,%02d.%03d,%d,0",
                          i ? "," : "", 1.5 * std::sin(0.01 * i), 10 + i / 400, i / 60 % 60, i % 60,
                          i * 7 % 1000, 101 + i % 20);
        reply.append(record, static_cast<std::size_t>(length));
    }
    return reply;
}

/// What a C programmer who trusts the instrument would write: no checks, nothing kept but sums.
double plainDecode(const char* text)
{
    constexpr std::size_t kHeaderLength = 7;
    double sum = 0.0;
    char* cursor = const_cast<char*>(text) + kHeaderLength;
    while (*cursor != '\0') {
        sum += std::strtod(cursor, &cursor);
        cursor = std::strchr(cursor, ',');
        std::tm moment{};
        moment.tm_year = static_cast<int>(std::strtol(cursor + 1, &cursor, 10)) - 1900;
        moment.tm_mon = static_cast<int>(std::strtol(cursor + 1, &cursor, 10)) - 1;
        moment.tm_mday = static_cast<int>(std::strtol(cursor + 1, &cursor, 10));
        moment.tm_hour = static_cast<int>(std::strtol(cursor + 1, &cursor, 10));
        moment.tm_min = static_cast<int>(std::strtol(cursor + 1, &cursor, 10));
        moment.tm_sec = static_cast<int>(std::strtol(cursor + 1, &cursor, 10));
        moment.tm_isdst = -1;
        const long milliseconds = std::strtol(cursor + 1, &cursor, 10);
        const long channel = std::strtol(cursor + 1, &cursor, 10);
        const long alarm = std::strtol(cursor + 1, &cursor, 10);
        sum += static_cast<double>(std::mktime(&moment)) + static_cast<double>(milliseconds) +
               static_cast<double>(channel) + static_cast<double>(alarm);
        if (*cursor == ',') {
            ++cursor;
        }
    }
    return sum;
}

void decodeFullReply(benchmark::State& state, const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
    const std::string bytes = fullReply();
    const QString reply = QString::fromStdString(bytes);
    AlternatingResult result;
    for (auto _ : state) {
        result = measureAlternating(
            kRounds, kRecords,
            [&reply] {
                const auto batch = decodeResponse(reply);
                if (batch.size() != kRecords) {
                    std::abort();
                }
                benchmark::DoNotOptimize(batch);
            },
            [&bytes] {
                const double sum = plainDecode(bytes.c_str());
                benchmark::DoNotOptimize(sum);
            });
    }
    reportRatio(state, result, kLimit);
}

} // namespace

BENCHMARK_CAPTURE(decodeFullReply, zoneWithoutSummerTime, "CST-8")->Iterations(1);
BENCHMARK_CAPTURE(decodeFullReply, zoneWithSummerTime, "CET-1CEST,M3.5.0,M10.5.0/3")->Iterations(1);

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv);
}
