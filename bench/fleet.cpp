// A hundred simulated instruments of 60 curves, each with 600 readings a second, followed into one database
// for a minute. Each instrument is a day file in the program's own format with a log; a second's readings
// come in one commit, since the processor of one machine does not make 60,000 commits a second. Prints what
// was written, when the last of it was in the database, and what it cost.
//
//     bench_fleet [instruments [seconds]]

#include "followerprocess.h"
#include "rawstore.h"
#include "storage/shardnaming.h"
#include "support/postgresserver.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kInstruments = 100;
constexpr int kSeconds = 60;
constexpr int kCurves = 60;
constexpr int kReadingsOfCurve = 10; // a second
constexpr qint64 kSecondMs = 1000;
constexpr int kPatienceMs = 120000;
constexpr double kLagLimitS = 10.0;

/// A day file that is being recorded.
class SimulatedInstrument
{
public:
    explicit SimulatedInstrument(const QString& path, qint64 start)
        : m_file(path, 1024)
    {
        m_file.execute("PRAGMA journal_mode = WAL");
        m_file.execute("PRAGMA synchronous = NORMAL");
        m_file.execute("PRAGMA cache_size = -4000");
        m_file.execute("PRAGMA wal_autocheckpoint = 4700"); // as the program spaces them
        m_file.createDay(kCurves);
        const qint64 batch = alignToBatchStart(start);
        for (int curve = 1; curve <= kCurves; ++curve) {
            const QString table = rawTableName(curve, batch);
            m_file.createBatchTable(curve, batch, table);
            m_inserts.push_back(m_file.prepare("INSERT OR IGNORE INTO " + table.toStdString() +
                                               " (curve_id, timestamp, value) VALUES (?, ?, ?)"));
        }
    }

    ~SimulatedInstrument()
    {
        for (sqlite3_stmt* insert : m_inserts) {
            sqlite3_finalize(insert);
        }
    }

    SimulatedInstrument(const SimulatedInstrument&) = delete;
    SimulatedInstrument& operator=(const SimulatedInstrument&) = delete;

    /// Commits the readings of a second.
    void record(qint64 second)
    {
        m_file.execute("BEGIN");
        for (int curve = 1; curve <= kCurves; ++curve) {
            sqlite3_stmt* const insert = m_inserts[static_cast<std::size_t>(curve - 1)];
            for (int i = 0; i < kReadingsOfCurve; ++i) {
                const qint64 time = second + i * (kSecondMs / kReadingsOfCurve);
                sqlite3_bind_int(insert, 1, curve);
                sqlite3_bind_int64(insert, 2, time);
                sqlite3_bind_double(insert, 3, std::sin(static_cast<double>(time + curve) / 1e4));
                stepDone(insert);
            }
        }
        m_file.execute("COMMIT");
    }

private:
    RawStore m_file;
    std::vector<sqlite3_stmt*> m_inserts;
};

/// Seconds of processor time of a process so far.
double processorTime(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    file.open(QIODevice::ReadOnly);
    const QByteArray stat = file.readAll();
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble();
    return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// Lets each instrument record its seconds, one after the other within each second.
void record(std::vector<std::unique_ptr<SimulatedInstrument>>& fleet, int seconds, qint64 start)
{
    QElapsedTimer clock;
    clock.start();
    const auto count = static_cast<qint64>(fleet.size());
    for (qint64 turn = 0; turn < count * seconds; ++turn) {
        const qint64 due = turn * kSecondMs / count;
        if (due > clock.elapsed()) {
            QThread::msleep(static_cast<unsigned long>(due - clock.elapsed()));
        }
        fleet[static_cast<std::size_t>(turn % count)]->record(start + turn / count * kSecondMs);
    }
    std::printf("written in %.1f s\n", static_cast<double>(clock.elapsed()) / kSecondMs);
}

int runFleet(int instruments, int seconds)
{
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/fleet-XXXXXX"));
    PostgresServer server(PostgresServer::Writing::Safe);
    const qint64 start = alignToBatchStart(QDateTime::currentMSecsSinceEpoch());
    std::vector<std::unique_ptr<SimulatedInstrument>> fleet;
    for (int i = 1; i <= instruments; ++i) {
        const QString folder = directory.filePath(QStringLiteral("SIM%1_Data").arg(i));
        QDir().mkpath(folder);
        fleet.push_back(std::make_unique<SimulatedInstrument>(
            folder + QLatin1Char('/') + todayKey() + QStringLiteral(".db"), start));
    }
    FollowerProcess follower({directory.path(), QStringLiteral("--to"), server.address()});
    const bool isReady = QTest::qWaitFor(
        [&] { return server.psql(QStringLiteral("TABLE reading_place LIMIT 0")).isEmpty(); },
        kPatienceMs);
    if (!isReady) {
        std::fputs(qPrintable(follower.errors()), stderr);
        return 1;
    }
    record(fleet, seconds, start);

    const int written = instruments * seconds * kCurves * kReadingsOfCurve;
    QElapsedTimer sinceLast;
    sinceLast.start();
    const auto forwarded = [&server] {
        return server.psql(QStringLiteral("SELECT sum(last_id) FROM reading_place")).toInt();
    };
    while (forwarded() < written && sinceLast.elapsed() < kPatienceMs) {
        QThread::msleep(20);
    }
    const double lag = static_cast<double>(sinceLast.elapsed()) / kSecondMs;
    const qint64 session =
        server
            .psql(QStringLiteral("SELECT pid FROM pg_stat_activity WHERE application_name = "
                                 "'scn4070a-store'"))
            .toLongLong();
    std::printf("processor: follower %.1f s, its session of the server %.1f s, writers %.1f s\n",
                processorTime(follower.processId()), processorTime(session),
                processorTime(::getpid()));
    const int counted = server.psql(QStringLiteral("SELECT count(*) FROM reading")).toInt();
    const bool isKept = counted == written && lag <= kLagLimitS;
    std::printf("fleet/instruments:%d %d readings written, %d in the database, the last after %.1f "
                "s, limit %.1f: %s\n",
                instruments, written, counted, lag, kLagLimitS, isKept ? "kept" : "ABOVE");
    follower.kill();
    std::fputs(qPrintable(follower.errors()), stdout);
    return isKept ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int instruments = arguments.size() > 1 ? arguments[1].toInt() : kInstruments;
    const int seconds = arguments.size() > 2 ? arguments[2].toInt() : kSeconds;
    return runFleet(instruments, seconds);
}
