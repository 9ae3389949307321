#include "dayfilereader.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/storeclock.h"
#include "support/testprogram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <cstdio>
#include <thread>

// The life of the program's one store, seen from outside: this program starts itself as a child
// that plays one part, and checks the child's output and files.

namespace {

constexpr int kKills = 12;
constexpr int kMostReadings = 1500; // before a kill
constexpr int kLineLength = 20;
constexpr int kChildTimeoutMs = 20000;
constexpr quint32 kSeed = 4070;

QString one(const char* text)
{
    return QString::fromLatin1(text);
}

void say(const QString& line)
{
    std::fputs(qPrintable(line), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

/// Appends as fast as possible until killed, and prints each stored reading.
int playWriter(const QString& directory)
{
    const SkippedWaits waits;
    CurveDataDB* store = CurveDataDB::instance(directory);
    const int id = store->registerCurve(one("101(V)"));
    qint64 time = scn::storeNow() - 60000;
    for (;;) {
        store->appendPoint(id, ++time, 1.0);
        say(QString::number(time));
    }
}

int playOrderlyEnd(const QString& directory)
{
    CurveDataDB* store = CurveDataDB::instance(directory);
    store->appendPoint(store->registerCurve(one("101(V)")), scn::storeNow() - 1000, 1.0);
    QElapsedTimer timer;
    timer.start();
    CurveDataDB::shutdown();
    say(QString::number(timer.elapsed()));
    return 0;
}

int playEndWithoutShutdown(const QString& directory)
{
    CurveDataDB* store = CurveDataDB::instance(directory);
    store->appendPoint(store->registerCurve(one("101(V)")), scn::storeNow() - 1000, 1.0);
    return 0;
}

int playNoStore()
{
    QElapsedTimer timer;
    timer.start();
    CurveDataDB::shutdown();
    say(QStringLiteral("%1 %2").arg(timer.elapsed()).arg(ConnectionPool::exists() ? 1 : 0));
    return 0;
}

int playFirstNameWins(const QString& directory)
{
    CurveDataDB* first = CurveDataDB::instance(directory);
    CurveDataDB* second = CurveDataDB::instance(one("another"));
    say(first == second ? second->dataDirectory() : one("two stores"));
    CurveDataDB::shutdown();
    return 0;
}

int playEmptyName()
{
    say(CurveDataDB::instance(QString())->dataDirectory());
    CurveDataDB::shutdown();
    return 0;
}

/// A store first requested on a helper thread still belongs to the GUI thread.
int playHelperFirst(const QString& directory)
{
    const SkippedWaits waits;
    std::thread helper([&directory] { CurveDataDB::instance(directory)->registerCurve(one("a")); });
    helper.join();
    CurveDataDB* store = CurveDataDB::instance(directory);
    QSignalSpy cleared(store, &CurveDataDB::sigClearFinished);
    store->clearAll();
    const bool finished = cleared.wait(kChildTimeoutMs / 2);
    const bool ours = store->thread() == QThread::currentThread() &&
                      ConnectionPool::instance().thread() == QThread::currentThread();
    say(finished && ours ? one("ours") : one("lost"));
    CurveDataDB::shutdown();
    return 0;
}

/// Helper threads are using the store while the program ends.
int playBusyEnd(const QString& directory)
{
    CurveDataDB* store = CurveDataDB::instance(directory);
    static std::atomic<int> round{0};
    for (int i = 0; i < 3; ++i) {
        std::thread([store] {
            for (int id = 0; id >= 0;) { // until the store is closed
                id = store->registerCurve(QString::number(++round));
                store->appendPoint(id, scn::storeNow() - 1000, 1.0);
            }
        }).detach();
    }
    if (!QTest::qWaitFor([] { return round >= 6; }, kChildTimeoutMs / 2)) {
        return 1;
    }
    QElapsedTimer timer;
    timer.start();
    CurveDataDB::shutdown();
    say(QString::number(timer.elapsed()));
    return 0;
}

int play(const QString& part, const QString& directory)
{
    if (part == QLatin1String("writer")) {
        return playWriter(directory);
    }
    if (part == QLatin1String("orderly")) {
        return playOrderlyEnd(directory);
    }
    if (part == QLatin1String("forgetful")) {
        return playEndWithoutShutdown(directory);
    }
    if (part == QLatin1String("nothing")) {
        return playNoStore();
    }
    if (part == QLatin1String("first")) {
        return playFirstNameWins(directory);
    }
    if (part == QLatin1String("empty")) {
        return playEmptyName();
    }
    if (part == QLatin1String("helper")) {
        return playHelperFirst(directory);
    }
    if (part == QLatin1String("busy")) {
        return playBusyEnd(directory);
    }
    return 99;
}

/// What a child did.
struct ChildEnd
{
    bool orderly = false;
    QString output;
    QString errors;
};

ChildEnd runChild(const char* part, const QString& directory)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {testprogram::runningTest(), one("--play"), one(part), directory});
    ChildEnd end;
    if (!child.waitForFinished(kChildTimeoutMs)) {
        child.kill();
        child.waitForFinished();
    }
    end.orderly = child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0;
    end.output = QString::fromUtf8(child.readAllStandardOutput()).trimmed();
    end.errors = QString::fromUtf8(child.readAllStandardError());
    return end;
}

} // namespace

class TestStoreProcess : public QObject
{
    Q_OBJECT

private slots:
    void orderlyEndLeavesOnlyTheDayFile();
    void endWithoutShutdownDoesNotCrash();
    void shutdownWithoutAStoreDoesNothing();
    void firstNameWins();
    void emptyNameIsCurveData();
    void helperMayAskFirst();
    void endWithBusyHelpersIsQuick();
    void killedWriterLosesNothingItReported();
};

void TestStoreProcess::orderlyEndLeavesOnlyTheDayFile()
{
    const QTemporaryDir directory;
    const ChildEnd end = runChild("orderly", directory.path());
    QVERIFY2(end.orderly, qPrintable(end.errors));
    QCOMPARE(end.errors, QString());
    QVERIFY2(end.output.toInt() < 500, qPrintable(end.output));
    const QStringList files = QDir(directory.path()).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    const QString path = directory.filePath(files.first());
    QCOMPARE(dayfile::rows(path, one("PRAGMA journal_mode")), QStringList{one("delete")});
    QCOMPARE(dayfile::rows(path, one("SELECT max_value FROM curve_metadata")),
             QStringList{one("1.0")});
}

void TestStoreProcess::endWithoutShutdownDoesNotCrash()
{
    const QTemporaryDir directory;
    const ChildEnd end = runChild("forgetful", directory.path());
    QVERIFY2(end.orderly, qPrintable(end.errors));
    QCOMPARE(end.errors, QString());
}

void TestStoreProcess::shutdownWithoutAStoreDoesNothing()
{
    const ChildEnd end = runChild("nothing", QString());
    QVERIFY(end.orderly);
    QVERIFY2(end.output.section(QLatin1Char(' '), 0, 0).toInt() < 100, qPrintable(end.output));
    QCOMPARE(end.output.section(QLatin1Char(' '), 1, 1), one("0"));
}

void TestStoreProcess::firstNameWins()
{
    const QTemporaryDir directory;
    const ChildEnd end = runChild("first", directory.path());
    QVERIFY(end.orderly);
    QCOMPARE(end.output, directory.path());
    QVERIFY(!QFile::exists(QDir(QCoreApplication::applicationDirPath()).filePath(one("another"))));
}

void TestStoreProcess::emptyNameIsCurveData()
{
    QDir expected(QDir(QCoreApplication::applicationDirPath()).filePath(one("curve_data")));
    QVERIFY(expected.removeRecursively());
    const ChildEnd end = runChild("empty", QString());
    QVERIFY(end.orderly);
    QCOMPARE(end.output, expected.path());
    QCOMPARE(expected.entryList({one("*.db")}).size(), 1);
    QVERIFY(expected.removeRecursively());
}

void TestStoreProcess::helperMayAskFirst()
{
    const QTemporaryDir directory;
    const ChildEnd end = runChild("helper", directory.path());
    QVERIFY2(end.orderly, qPrintable(end.errors));
    QCOMPARE(end.output, one("ours"));
}

void TestStoreProcess::endWithBusyHelpersIsQuick()
{
    const QTemporaryDir directory;
    const ChildEnd end = runChild("busy", directory.path());
    QVERIFY2(end.orderly, qPrintable(end.errors));
    QVERIFY2(end.output.toInt() < 2300, qPrintable(end.output));
    QVERIFY(QDir(directory.path()).entryList({one("*-wal")}, QDir::Files).isEmpty());
}

void TestStoreProcess::killedWriterLosesNothingItReported()
{
    const QTemporaryDir directory;
    QRandomGenerator random(kSeed);
    QStringList reported;
    for (int kill = 0; kill < kKills; ++kill) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(),
                    {testprogram::runningTest(), one("--play"), one("writer"), directory.path()});
        const int readings = random.bounded(1, kMostReadings);
        while (child.peek(kMostReadings * kLineLength).count('\n') < readings) {
            QVERIFY(child.waitForReadyRead(kChildTimeoutMs));
        }
        child.kill();
        QVERIFY(child.waitForFinished(kChildTimeoutMs));
        const QByteArray output = child.readAllStandardOutput();
        const QString whole = QString::fromLatin1(output.left(output.lastIndexOf('\n')));
        reported += whole.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    QSet<QString> stored;
    const QStringList files = QDir(directory.path()).entryList({one("*.db")}, QDir::Files);
    QVERIFY(!files.isEmpty());
    for (const QString& file : files) {
        const QString path = directory.filePath(file);
        QCOMPARE(dayfile::rows(path, one("PRAGMA integrity_check")), QStringList{one("ok")});
        const QStringList tables =
            dayfile::rows(path, one("SELECT table_name FROM batch_metadata"));
        for (const QString& table : tables) {
            const QStringList times =
                dayfile::rows(path, QStringLiteral("SELECT timestamp FROM %1").arg(table));
            stored += QSet<QString>(times.begin(), times.end());
        }
    }
    QVERIFY2(reported.size() > 10 * kKills, qPrintable(QString::number(reported.size())));
    for (const QString& time : qAsConst(reported)) {
        QVERIFY2(stored.contains(time), qPrintable(time));
    }
}

namespace {

int runOrPlay(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--play") == 0) {
        const QCoreApplication application(argc, argv);
        const QStringList arguments = QCoreApplication::arguments();
        return play(arguments.value(2), arguments.value(3));
    }
    return testprogram::run<TestStoreProcess, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runOrPlay)
#include "test_storeprocess.moc"
