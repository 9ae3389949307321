// The time to export stored curves to CSV, against two baselines: the sqlite3 program dumping a
// wide table with the same cells to a file, and a bare loop over the same values in memory.

#include "alternatingrounds.h"
#include "export/csvexportfromdbthread.h"
#include "rawstore.h"
#include "runbenchmarks.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/storeclock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kCurves = 20;
constexpr int kSamples = 500000;
constexpr int kRounds = 5;
constexpr qint64 kStepMs = 160; // a run of 22 hours
/// Consecutive samples of one curve in the file before those of the next.
constexpr int kStretch = 500;
constexpr double kProgramLimit = 0.6;
constexpr double kLoopLimit = 1.5;

qint64 midnight()
{
    static const qint64 time = QDateTime(QDate(2026, 3, 4), QTime(0, 0)).toMSecsSinceEpoch();
    return time;
}

/// Noon of the day after the run.
qint64 presentTime()
{
    return midnight() + 6 * kRawBatchLengthMs;
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "benchmark is wrong: %s\n", what);
    std::exit(1);
}

/// Values with full precision, as a voltmeter reports them.
double valueOf(int curve, int sample)
{
    return std::sin(sample * 0.001 + curve) * std::pow(10.0, curve % 5 - 2) + sample * 1e-9;
}

qint64 timeOf(int sample)
{
    return midnight() + sample * kStepMs;
}

/// A run of all curves in the store's day file, and the same data as one wide table.
class Run
{
public:
    Run()
        : m_directory(QCoreApplication::applicationDirPath() + QStringLiteral("/export-XXXXXX"))
    {
        writeDayFile();
        writeWideTable();
        scn::setStoreClock(&presentTime);
        m_store = std::make_unique<CurveDataDB>(m_directory.path());
        for (int curve = 1; curve <= kCurves; ++curve) {
            m_store->registerCurve(rawCurveName(curve));
        }
    }

    /// Exports all curves. Returns the path of the file written.
    QString exportAll() const
    {
        CsvExportFromDBThread thread(m_store.get(), m_store->curveNames().keys(),
                                     filePath("program.csv"), QStringLiteral(","), {}, midnight(),
                                     timeOf(kSamples - 1));
        QStringList written;
        QObject::connect(
            &thread, &CsvExportFromDBThread::exportFinished, &thread,
            [&written](ExportResult, const QStringList& files) { written = files; },
            Qt::DirectConnection);
        thread.startExport();
        thread.wait();
        if (written.size() != 1) {
            fail("the export did not write its file");
        }
        return written.constFirst();
    }

    void dumpBySqlite() const
    {
        std::string sql = "SELECT n, t";
        for (int curve = 1; curve <= kCurves; ++curve) {
            sql += ", printf('%.15E', v" + std::to_string(curve) + ")";
        }
        const QString command =
            QStringLiteral("sqlite3 -separator , '%1' \"%2 FROM wide\" > '%3'")
                .arg(filePath("wide.sqlite"), QString::fromStdString(sql), filePath("sqlite.csv"));
        if (std::system(qPrintable(command)) != 0) {
            fail("the sqlite3 program failed");
        }
    }

    QString filePath(const char* name) const
    {
        return m_directory.filePath(QString::fromLatin1(name));
    }

private:
    void writeDayFile() const
    {
        RawStore file(filePath("20260304.db"));
        file.execute("PRAGMA synchronous = OFF");
        file.execute("PRAGMA journal_mode = OFF");
        file.execute("PRAGMA cache_size = -400000"); // caches the pages that grow together
        file.createDay(kCurves);
        const int perBatch = static_cast<int>(kRawBatchLengthMs / kStepMs);
        for (int first = 0; first < kSamples; first += perBatch) {
            writeBatch(file, first, std::min(first + perBatch, kSamples));
        }
    }

    static void writeBatch(RawStore& file, int first, int end)
    {
        file.execute("BEGIN");
        std::vector<sqlite3_stmt*> inserts;
        for (int curve = 1; curve <= kCurves; ++curve) {
            const QString table = rawTableName(curve, timeOf(first));
            file.createBatchTable(curve, timeOf(first), table);
            inserts.push_back(file.prepare("INSERT INTO " + table.toStdString() +
                                           " (curve_id, timestamp, value) VALUES (?, ?, ?)"));
        }
        for (int from = first; from < end; from += kStretch) {
            for (int curve = 1; curve <= kCurves; ++curve) {
                sqlite3_stmt* const insert = inserts[static_cast<std::size_t>(curve - 1)];
                for (int sample = from; sample < std::min(from + kStretch, end); ++sample) {
                    sqlite3_bind_int(insert, 1, curve);
                    sqlite3_bind_int64(insert, 2, timeOf(sample));
                    sqlite3_bind_double(insert, 3, valueOf(curve, sample));
                    stepDone(insert);
                }
            }
        }
        for (sqlite3_stmt* insert : inserts) {
            sqlite3_finalize(insert);
        }
        file.execute("COMMIT");
    }

    void writeWideTable() const
    {
        RawStore file(filePath("wide.sqlite"));
        file.execute("PRAGMA synchronous = OFF");
        file.execute("PRAGMA journal_mode = OFF");
        std::string columns;
        std::string marks = "?, ?";
        for (int curve = 1; curve <= kCurves; ++curve) {
            columns += ", v" + std::to_string(curve) + " REAL";
            marks += ", ?";
        }
        file.execute("CREATE TABLE wide (n INTEGER PRIMARY KEY, t TEXT" + columns + ")");
        file.execute("BEGIN");
        sqlite3_stmt* const insert = file.prepare("INSERT INTO wide VALUES (" + marks + ")");
        for (int sample = 0; sample < kSamples; ++sample) {
            const std::string time = timeText(timeOf(sample));
            sqlite3_bind_int(insert, 1, sample + 1);
            sqlite3_bind_text(insert, 2, time.c_str(), -1, SQLITE_TRANSIENT);
            for (int curve = 1; curve <= kCurves; ++curve) {
                sqlite3_bind_double(insert, curve + 2, valueOf(curve, sample));
            }
            stepDone(insert);
        }
        sqlite3_finalize(insert);
        file.execute("COMMIT");
    }

    static std::string timeText(qint64 timestamp)
    {
        return QDateTime::fromMSecsSinceEpoch(timestamp)
            .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))
            .toStdString();
    }

    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

/// Writes the same values from memory: one conversion and one fwrite per cell.
class BareLoop
{
public:
    BareLoop()
    {
        for (int curve = 1; curve <= kCurves; ++curve) {
            std::vector<double> column(kSamples);
            for (int sample = 0; sample < kSamples; ++sample) {
                column[static_cast<std::size_t>(sample)] = valueOf(curve, sample);
            }
            m_columns.push_back(std::move(column));
        }
    }

    void write(const QString& path) const
    {
        std::FILE* const file = std::fopen(qPrintable(path), "wb");
        if (!file) {
            fail("the baseline's file cannot be created");
        }
        char field[64];
        for (std::size_t row = 0; row < static_cast<std::size_t>(kSamples); ++row) {
            for (const std::vector<double>& column : m_columns) {
                char* const end = std::to_chars(field, field + sizeof field, column[row],
                                                std::chars_format::scientific, 15)
                                      .ptr;
                field[*field == '-' ? 18 : 17] = 'E';
                *end = &column == &m_columns.back() ? '\n' : ',';
                std::fwrite(field, 1, static_cast<std::size_t>(end - field) + 1, file);
            }
        }
        if (std::fclose(file) != 0) {
            fail("the baseline's file was not written");
        }
    }

private:
    std::vector<std::vector<double>> m_columns;
};

/// The exported values, behind row number and time, match those of the bare loop byte for byte.
/// (The sqlite3 program rounds the last digits differently.)
void requireSameValues(const QString& exported, const QString& looped)
{
    constexpr int kLinesAbove = 6;
    QFile ours(exported);
    QFile theirs(looped);
    if (!ours.open(QIODevice::ReadOnly) || !theirs.open(QIODevice::ReadOnly)) {
        fail("a file cannot be read");
    }
    for (int line = 0; line < kLinesAbove; ++line) {
        ours.readLine();
    }
    while (!ours.atEnd()) {
        const QByteArray line = ours.readLine();
        const int values = line.indexOf(',', line.indexOf(',') + 1) + 1;
        if (line.mid(values) != theirs.readLine()) {
            fail("the export and the bare loop differ");
        }
    }
    if (!theirs.atEnd()) {
        fail("the export is shorter than the run");
    }
}

void exportCurves(benchmark::State& state, const Run& run, const BareLoop& loop, bool againstLoop)
{
    const auto candidate = [&run] { QFile::remove(run.exportAll()); };
    const auto baseline = [&] {
        if (againstLoop) {
            loop.write(run.filePath("loop.csv"));
        } else {
            run.dumpBySqlite();
        }
    };
    for (auto _ : state) {
        reportRatio(state, measureAlternating(kRounds, kCurves * kSamples, candidate, baseline),
                    againstLoop ? kLoopLimit : kProgramLimit);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    int result = 1;
    {
        const Run run;
        const BareLoop loop;
        loop.write(run.filePath("loop.csv"));
        requireSameValues(run.exportAll(), run.filePath("loop.csv"));
        for (const bool againstLoop : {false, true}) {
            benchmark::RegisterBenchmark(againstLoop ? "export/against:loop"
                                                     : "export/against:sqlite3",
                                         [&run, &loop, againstLoop](benchmark::State& state) {
                                             exportCurves(state, run, loop, againstLoop);
                                         })
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
        result = runBenchmarks(argc, argv);
    }
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    return result;
}
