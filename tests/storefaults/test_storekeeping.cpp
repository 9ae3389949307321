#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"
#include "launcher/runarchive.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "storage/storeclock.h"
#include "support/testprogram.h"

#include <QDir>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cstdio>
#include <thread>

// A program that starts run after run, each of which deletes the one before, under an archive that keeps
// them: this test starts itself as that program.

namespace {

using scnlauncher::factsOf;
using scnlauncher::KeptRun;

constexpr int kClears = 50;
constexpr int kKillsOfTheShortRun = 10;
constexpr int kReadings = 100; // and one more in each run
constexpr int kTimeoutMs = 120000;
constexpr unsigned kLatestKillMs = 400;
const QString kDay = QStringLiteral("20260112.db");

std::atomic<qint64> g_present{0};

qint64 present()
{
    return g_present;
}

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

/// Stores the readings of a run, all of the same value, and tells each.
bool playRun(CurveDataDB& store, const QString& directory, int run)
{
    const int id = store.registerCurve(one("101(Vdc)"));
    if (id != 1) {
        return false;
    }
    const auto append = [&store, run](int count) {
        store.appendPoint(1, ++g_present, run);
        std::printf("%d %d\n", run, count);
        std::fflush(stdout);
    };
    int count = 0;
    while (count < kReadings / 2) {
        append(++count);
    }
    // A run lasts longer than it takes to give its file and its log second names.
    const QString file = directory + QLatin1Char('/') + kDay;
    const auto isKept = [&file] {
        const auto facts = factsOf(file);
        const auto log = factsOf(file + QStringLiteral("-wal"));
        return facts && facts->names == 2 && log && log->names == 2;
    };
    if (!QTest::qWaitFor(isKept, kTimeoutMs)) {
        return false;
    }
    while (count < kReadings + run) {
        append(++count);
    }
    return true;
}

/// Runs from the first number on, while a chart reads.
int playProgram(const QString& directory, int first, int runs)
{
    g_present = localTime("2026-01-12 12:00:00.000");
    scn::setStoreClock(&present);
    const SkippedWaits waits;
    QDir(directory).removeRecursively();
    CurveDataDB store(directory);
    std::atomic<bool> stop{false};
    std::thread chart([&store, &stop] {
        while (!stop) {
            const qint64 now = g_present;
            store.readCurveData(1, now - kHourMs, now + kHourMs, 1000);
            std::this_thread::yield();
        }
    });
    bool isWell = true;
    for (int run = first; isWell && run < first + runs; ++run) {
        if (run > first) {
            // As a start does it: the files go while they are open.
            QSignalSpy cleared(&store, &CurveDataDB::sigClearFinished);
            QDir(directory).removeRecursively();
            store.clearAll();
            isWell = cleared.wait(kTimeoutMs);
        }
        isWell = isWell && playRun(store, directory, run);
    }
    stop = true;
    chart.join();
    store.closeForExit(QDeadlineTimer(kTimeoutMs));
    return isWell ? 0 : 1;
}

/// The archive and the program, one after the other on the same folder.
class Scene
{
public:
    QString data() const { return m_root.filePath(one("SN1_Data")); }
    QString runs() const { return scnlauncher::keptRunsFolder(m_root.path()); }

    /// The program's exit code; -1 if it was killed, which it is after so many milliseconds.
    int play(int first, int runs, int killAfterMs = -1)
    {
        const scnlauncher::LauncherSettings settings(m_root.filePath(one("launcher.ini")));
        scnlauncher::RunArchive archive(settings, nullptr);
        archive.watch(m_root.path(), one("TCPIP0::h::1::SOCKET"));
        QProcess program;
        program.start(QCoreApplication::applicationFilePath(),
                      {testprogram::runningTest(), one("--play"), data(), QString::number(first),
                       QString::number(runs)});
        if (killAfterMs >= 0) {
            program.waitForReadyRead(kTimeoutMs);
            program.waitForFinished(killAfterMs);
            program.kill();
        }
        program.waitForFinished(kTimeoutMs);
        noteReports(QString::fromLatin1(program.readAllStandardOutput()));
        archive.leave();
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }

    /// By run, how many readings the program said it has stored.
    const QMap<int, int>& reported() const { return m_reported; }

    /// By run, how many readings its kept files hold. Fails where one is not whole.
    QMap<int, int> kept() const
    {
        QMap<int, int> counts;
        for (const KeptRun& run : scnlauncher::keptRunsIn(runs())) {
            const QString file = run.path(kDay);
            const QString check = dayfile::rows(file, one("PRAGMA integrity_check")).join(u' ');
            if (check != one("ok")) {
                qWarning() << file << check;
                return {};
            }
            for (const QString& table : dayfile::rows(
                     file, one("SELECT name FROM sqlite_master WHERE type = 'table' AND name "
                               "LIKE '%batch_2%'"))) {
                const QStringList rows = dayfile::rows(
                    file, QStringLiteral("SELECT CAST(value AS INT), count(*) FROM %1 GROUP BY 1")
                              .arg(table));
                for (const QString& row : rows) {
                    counts[row.section(u'|', 0, 0).toInt()] += row.section(u'|', 1).toInt();
                }
            }
        }
        return counts;
    }

private:
    void noteReports(const QString& output)
    {
        const QString whole = output.left(output.lastIndexOf(QLatin1Char('\n')));
        for (const QString& line : whole.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            m_reported[line.section(u' ', 0, 0).toInt()] = line.section(u' ', 1).toInt();
        }
    }

    const QTemporaryDir m_root;
    QMap<int, int> m_reported;
};

} // namespace

/// Runs that are deleted under their program, and kept.
class TestStoreKeeping : public QObject
{
    Q_OBJECT

private slots:
    void clearedRunsAreWhole();
    void killedRunsAreWhole();
};

void TestStoreKeeping::clearedRunsAreWhole()
{
    Scene scene;
    QCOMPARE(scene.play(1, kClears + 1), 0);
    QMap<int, int> expected;
    for (int run = 1; run <= kClears + 1; ++run) {
        expected.insert(run, kReadings + run);
    }
    QCOMPARE(scene.reported(), expected);
    // The last one is still in its place.
    QVERIFY(QDir(scene.data()).removeRecursively());
    const auto runs = scnlauncher::keptRunsIn(scene.runs());
    // A chart that reads in the middle of a start makes a file, too.
    QVERIFY(runs.size() > kClears);
    int logs = 0;
    for (const KeptRun& run : runs) {
        const auto log = factsOf(run.path(kDay + one("-wal")));
        logs += log && log->bytes > 0 ? 1 : 0;
    }
    // Folded in through the open file, each but those that the chart was reading.
    qInfo("%d of %d runs have a log", logs, kClears + 1);
    QCOMPARE(scene.kept(), expected);
}

void TestStoreKeeping::killedRunsAreWhole()
{
    const int kills = qEnvironmentVariableIsSet("SCN_KILLS")
                          ? qEnvironmentVariableIntValue("SCN_KILLS")
                          : kKillsOfTheShortRun;
    const quint32 seed = qEnvironmentVariableIsSet("SCN_SEED")
                             ? qgetenv("SCN_SEED").toUInt()
                             : QRandomGenerator::global()->generate();
    qInfo("SCN_SEED=%u", seed);
    QRandomGenerator random(seed);
    Scene scene;
    int first = 1;
    for (int kill = 0; kill < kills; ++kill) {
        QCOMPARE(scene.play(first, 10000, static_cast<int>(random.bounded(kLatestKillMs))), -1);
        QVERIFY(!scene.reported().isEmpty());
        first = scene.reported().lastKey() + 2;
    }
    // What the last kill left is deleted without being opened.
    QVERIFY(QDir(scene.data()).removeRecursively());
    const QMap<int, int> kept = scene.kept();
    qInfo("%d kills, %d runs", kills, scene.reported().size());
    for (auto run = scene.reported().begin(); run != scene.reported().end(); ++run) {
        const int readings = kept.value(run.key());
        QVERIFY2(readings >= run.value() && readings <= run.value() + 1,
                 qPrintable(QStringLiteral("run %1: %2 of %3 readings")
                                .arg(run.key())
                                .arg(readings)
                                .arg(run.value())));
    }
}

namespace {

int runOrPlay(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--play") == 0) {
        const QCoreApplication application(argc, argv);
        const QStringList arguments = QCoreApplication::arguments();
        return playProgram(arguments.value(2), arguments.value(3).toInt(),
                           arguments.value(4).toInt());
    }
    return testprogram::run<TestStoreKeeping, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runOrPlay)
#include "test_storekeeping.moc"
