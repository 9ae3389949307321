// What looking back at stored readings costs: the time from a turn of the wheel or a drag to the pixels
// of the new view, and the longest time that the GUI thread is away from its events.
//
//     bench_pastview
//
// A day of 60 curves at 10 readings a second (51.8 million rows, 3.3 GB) is viewed at several places and
// widths; a week at 1 a second (36.3 million rows, 2.3 GB) is viewed for the first time, with a scan
// running. The files are generated once, which takes some minutes, and kept beside the program.

#include "pastviews.h"
#include "rawday.h"
#include "storage/connectionpool.h"
#include "storage/storeclock.h"

#include <QApplication>
#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>

#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace {

constexpr int kCurves = 60;
constexpr int kMostCurvesOfAChart = 40; // the rows of its table
constexpr qint64 kDayMs = 86400000;
constexpr qint64 kHourMs = 3600000;
constexpr double kPixelsLimitMs = 200.0;
constexpr double kGapLimitMs = 50.0;

constexpr int kDragPixels = 180;

const QDate kToday(2026, 3, 9);

qint64 midnightOf(const QDate& day)
{
    return day.startOfDay().toMSecsSinceEpoch();
}

qint64 presentTime()
{
    return midnightOf(kToday) + kDayMs / 2;
}

/// A directory with the last `days` days before today and a file of today with the curves alone.
QString directoryOf(const char* name, int days, qint64 stepMs)
{
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/pastview-") +
                         QString::fromLatin1(name);
    QDir().mkpath(path);
    const auto fileOf = [&path](const QDate& day) -> QString {
        return path + day.toString(QStringLiteral("/yyyyMMdd")) + QStringLiteral(".db");
    };
    for (int day = 1; day <= days; ++day) {
        const QString file = fileOf(kToday.addDays(-day));
        if (QFile::exists(file)) {
            continue;
        }
        std::printf("generating %s\n", qPrintable(file));
        const QString unfinished = path + QStringLiteral("/unfinished");
        QFile::remove(unfinished);
        fillRawDay(unfinished, midnightOf(kToday.addDays(-day)), kCurves, stepMs);
        QFile::rename(unfinished, file);
    }
    QFile::remove(fileOf(kToday));
    RawStore(fileOf(kToday)).createDay(kCurves);
    return path;
}

bool report(const QByteArray& what, const TimeTaken& time, double limit)
{
    const bool isKept = time.ms <= limit;
    std::printf("%-56s %6.1f ms, limit %.0f: %s (processor %.1f)\n", what.constData(), time.ms,
                limit, isKept ? "kept" : "ABOVE", time.processorMs);
    return isKept;
}

/// Of this process so far.
double largestMemoryMb()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0; // the system counts in KB
}

double longestOf(const std::vector<TimeTaken>& times, double TimeTaken::*part)
{
    const auto byPart = [part](const TimeTaken& one, const TimeTaken& other) {
        return one.*part < other.*part;
    };
    return (*std::max_element(times.begin(), times.end(), byPart)).*part;
}

double medianOf(std::vector<TimeTaken> times, double TimeTaken::*part)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(
        times.begin(), middle, times.end(),
        [part](const TimeTaken& one, const TimeTaken& other) { return one.*part < other.*part; });
    return (*middle).*part;
}

/// Wheel and drags at a place of the day; the times to the pixels are added to `toPixels`.
void useTheView(PastViews& views, std::vector<TimeTaken>& toPixels)
{
    for (const int notches : {-1, 1, -1, 1}) {
        toPixels.push_back(views.turnWheel(notches));
    }
    for (const int pixels : {kDragPixels, -kDragPixels, -kDragPixels}) {
        toPixels.push_back(views.drag(pixels));
    }
}

/// A chart of so many curves over the day.
bool viewDay(const QString& directory, int shown)
{
    const qint64 midnight = midnightOf(kToday.addDays(-1));
    constexpr qint64 kWidths[] = {120000, kHourMs, 10 * kHourMs};
    constexpr int kHours[] = {9, 12, 15};
    PastViews views(directory, kCurves, shown);
    const TimeTaken first = views.show(midnight + 7 * kHourMs, midnight + 17 * kHourMs);
    views.waitUntilIdle();
    std::printf("%d curves: first view of ten hours %.0f ms (processor %.0f)\n", shown, first.ms,
                first.processorMs);
    std::vector<TimeTaken> toPixels;
    for (const qint64 width : kWidths) {
        std::vector<TimeTaken> ofWidth;
        for (const int hour : kHours) {
            const qint64 centre = midnight + hour * kHourMs;
            views.show(centre - width / 2, centre + width / 2);
            useTheView(views, ofWidth);
        }
        std::printf(
            "    a view of %.2f h: median %.0f ms, longest %.0f ms (processor %.0f, %.0f)\n",
            static_cast<double>(width) / kHourMs, medianOf(ofWidth, &TimeTaken::ms),
            longestOf(ofWidth, &TimeTaken::ms), medianOf(ofWidth, &TimeTaken::processorMs),
            longestOf(ofWidth, &TimeTaken::processorMs));
        toPixels.insert(toPixels.end(), ofWidth.begin(), ofWidth.end());
    }
    const QByteArray name = QByteArray::number(shown) + " curves of a day at 10/s: ";
    const bool pixelsKept =
        report(name + "gesture to pixels",
               {longestOf(toPixels, &TimeTaken::ms), longestOf(toPixels, &TimeTaken::processorMs)},
               kPixelsLimitMs);
    const bool gapKept = report(name + "largest gap", views.largestGap(), kGapLimitMs);
    return pixelsKept && gapKept;
}

/// The first views of a week in a chart as full as it gets, with a scan running.
bool viewWeek(const QString& directory)
{
    PastViews views(directory, kCurves, kMostCurvesOfAChart);
    views.startScan();
    const qint64 midnight = midnightOf(kToday);
    const TimeTaken first = views.show(midnight - 7 * kDayMs, midnight - 1);
    const TimeTaken other = views.show(midnight - 6 * kDayMs, midnight - 1);
    std::printf(
        "%d curves of a week at 1/s: first view %.1f s, another %.1f s (processor %.1f, %.1f)\n",
        kMostCurvesOfAChart, first.ms / 1000, other.ms / 1000, first.processorMs / 1000,
        other.processorMs / 1000);
    const bool gapKept = report("    largest gap", views.largestGap(), kGapLimitMs);
    std::printf("    largest delay of a reading of the scan %.1f ms\n", views.largestDelayMs());
    return gapKept;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // progress is watched as it runs
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    scn::setStoreClock(&presentTime);
    const QString day = directoryOf("day", 1, 100);
    bool allKept = viewDay(day, 8);
    viewDay(day, 16); // for comparison
    std::printf("    largest memory %.0f MB\n", largestMemoryMb());
    allKept = viewWeek(directoryOf("week", 7, 1000)) && allKept;
    std::printf("    largest memory %.0f MB\n", largestMemoryMb());
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return allKept ? 0 : 1;
}
