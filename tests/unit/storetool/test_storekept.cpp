#include "dayfilewriter.h"
#include "runscene.h"
#include "storerun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace {

const QByteArray kSound("The run is sound.\n");

StoreRun check(const QString& run)
{
    return runStore({QStringLiteral("check"), run});
}

/// The same some minutes later.
StoreRun checkLater(const QString& run)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(SCN_FAKETIME_LIBRARY));
    environment.insert(QStringLiteral("FAKETIME"), QStringLiteral("+5m"));
    environment.insert(QStringLiteral("NO_FAKE_STAT"), QStringLiteral("1"));
    return runStore({QStringLiteral("check"), run}, environment);
}

} // namespace

/// Runs that were kept by hard links: when they may be opened, and how they are left.
class TestStoreKept : public QObject
{
    Q_OBJECT

private slots:
    void secondNameIsRefused();
    void deletedRunIsReadAndLeftAsItIs();
    void walOfAKilledProgramIsRead();
    void openFileOfAnotherProgramIsRefused();
    void otherReadersAreNoObstacle();
};

void TestStoreKept::secondNameIsRefused()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.keep();
    for (const char* command : {"info", "check"}) {
        const StoreRun run = runStore({QString::fromLatin1(command), kept});
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.output, QByteArray());
        QVERIFY2(
            run.errors.endsWith(
                (QStringLiteral("20260112.db is not opened under its second name. Read the run in "
                                "%1.\n")
                     .arg(scene.dataDirectory()))
                    .toUtf8()),
            run.errors.constData());
    }
    const StoreRun list = runStore({QStringLiteral("list"), scene.folder()});
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.output.count('\n'), 3);
    QCOMPARE(list.output.count("480"), 0);
    QCOMPARE(list.output.count(" 960 "), 1);
    // The first name is read.
    QVERIFY(check(scene.dataDirectory()).output.endsWith(kSound));
}

void TestStoreKept::deletedRunIsReadAndLeftAsItIs()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.keep();
    scene.clear();
    const QStringList before = RunScene::listing(kept);
    QCOMPARE(before.size(), 2);
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.endsWith(kSound));
    QCOMPARE(RunScene::listing(kept), before);
    // A program renamed on the disk keeps what it is by its file of facts.
    QVERIFY(QFile::rename(kept, scene.path(QStringLiteral("elsewhere"))));
    QVERIFY(runStore({QStringLiteral("info"), scene.path(QStringLiteral("elsewhere"))})
                .output.contains("Instrument  TCPIP0::h\n"));
}

void TestStoreKept::walOfAKilledProgramIsRead()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString path = scene.dayFile("20260112");
    {
        // The files as a kill leaves them: the WAL is not checkpointed.
        DayFileWriter file(path);
        file.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
        file.execute(QStringLiteral("INSERT INTO curve_1_batch_20260112_120000_20260112_175959 "
                                    "(curve_id, timestamp, value) VALUES (1, %1, 9)")
                         .arg(localTime("2026-01-12 15:00:00.000")));
        QVERIFY(QFile::copy(path, path + QStringLiteral(".copy")));
        QVERIFY(QFile::copy(path + QStringLiteral("-wal"), path + QStringLiteral(".wal")));
    }
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::rename(path + QStringLiteral(".copy"), path));
    QVERIFY(QFile::rename(path + QStringLiteral(".wal"), path + QStringLiteral("-wal")));
    const QString kept = scene.keep();
    scene.clear();
    const QStringList before = RunScene::listing(kept);
    QCOMPARE(before.size(), 3);
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("101(Vdc)       481"));
    QCOMPARE(RunScene::listing(kept), before);
}

/// The program deletes a run with its files still open, and checkpoints the WALs afterwards.
void TestStoreKept::openFileOfAnotherProgramIsRefused()
{
    const RunScene scene;
    scene.addDay("20260112");
    DayFileWriter file(scene.dayFile("20260112"));
    file.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    file.execute(QStringLiteral("SELECT count(*) FROM curve_info"));
    const QString kept = scene.keep();
    scene.clear();
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(
        run.errors.endsWith(
            "20260112.db is still open in a program that deleted it. Try again in a minute.\n"),
        run.errors.constData());
}

/// Who has the files open for minutes reads them.
void TestStoreKept::otherReadersAreNoObstacle()
{
    if (qstrlen(SCN_FAKETIME_LIBRARY) == 0) {
        SCN_SKIP(QStringLiteral("the package faketime is not installed"));
    }
    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112", QStringLiteral("PRAGMA journal_mode = WAL"));
    const QString kept = scene.keep();
    scene.clear();
    DayFileWriter reader(kept + QStringLiteral("/20260112.db"));
    QCOMPARE(check(kept).exitCode, 2);
    const StoreRun run = checkLater(kept);
    QVERIFY2(run.exitCode == 0, run.errors.constData());
}

SCN_TEST(TestStoreKept, QCoreApplication)
#include "test_storekept.moc"
