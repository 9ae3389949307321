#include "dayfilewriter.h"
#include "runscene.h"
#include "storerun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <csignal>
#include <filesystem>

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

/// Keeps the run, and deletes it, as a kill leaves its files: a log that is not checkpointed has one reading.
QString keepWithLog(const RunScene& scene)
{
    const QString path = scene.dayFile("20260112");
    {
        DayFileWriter file(path);
        file.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
        file.execute(QStringLiteral("INSERT INTO curve_1_batch_20260112_120000_20260112_175959 "
                                    "(curve_id, timestamp, value) VALUES (1, %1, 9)")
                         .arg(localTime("2026-01-12 15:00:00.000")));
        QFile::copy(path, path + QStringLiteral(".copy"));
        QFile::copy(path + QStringLiteral("-wal"), path + QStringLiteral(".wal"));
    }
    QFile::remove(path);
    QFile::rename(path + QStringLiteral(".copy"), path);
    QFile::rename(path + QStringLiteral(".wal"), path + QStringLiteral("-wal"));
    const QString kept = scene.keep();
    scene.clear();
    return kept;
}

} // namespace

/// Runs that were kept by hard links: when they may be opened, and how they are left.
class TestStoreKept : public QObject
{
    Q_OBJECT

private slots:
    void secondNameIsRefused();
    void secondNameWithoutFactsIsRefused();
    void factsThatAreCutOffLeaveTheSerialNumber();
    void linkOfABackupIsRefused();
    void deletedRunIsReadAndLeftAsItIs();
    void walOfAKilledProgramIsRead();
    void closedPipeLeavesNothing();
    void interruptLeavesNothing_data();
    void interruptLeavesNothing();
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
        QCOMPARE(run.exitCode, 3);
        QCOMPARE(run.output, QByteArray());
        QVERIFY2(
            run.errors.endsWith(
                (QStringLiteral("20260112.db is not opened under its second name. Read the run in "
                                "%1.\n")
                     .arg(scene.dataDirectory()))
                    .toUtf8()),
            run.errors.constData());
        const StoreRun asJson =
            runStore({QString::fromLatin1(command), QStringLiteral("--json"), kept});
        QCOMPARE(asJson.exitCode, 3);
        QCOMPARE(asJson.errors, run.errors);
        const QJsonObject object = QJsonDocument::fromJson(asJson.output).object();
        QCOMPARE(object.value(QLatin1String("run")).toString(), QDir(kept).canonicalPath());
        QVERIFY(
            run.errors.endsWith(object.value(QLatin1String("refused")).toString().toUtf8() + '\n'));
    }
    const StoreRun list = runStore({QStringLiteral("list"), scene.folder()});
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.output.count('\n'), 3);
    QCOMPARE(list.output.count("480"), 0);
    QCOMPARE(list.output.count(" 960 "), 1);
    // The first name is read.
    QVERIFY(check(scene.dataDirectory()).output.endsWith(kSound));
}

/// The files alone tell that they may be open in a program; reading them would leave others beside them.
void TestStoreKept::secondNameWithoutFactsIsRefused()
{
    const RunScene scene;
    scene.addDay("20260112");
    DayFileWriter file(scene.dayFile("20260112"));
    file.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    file.execute(QStringLiteral("DELETE FROM batch_metadata"));
    const QString kept = scene.keep();
    QVERIFY(QFile::remove(kept + QStringLiteral("/run.json")));
    QVERIFY(QFile::remove(kept + QStringLiteral("/20260112.db-wal")));
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 3);
    QVERIFY2(run.errors.endsWith("20260112.db is not opened under its second name. Read the run "
                                 "in the program's data directory.\n"),
             run.errors.constData());
    const StoreRun list =
        runStore({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(list.output.count("\"refused\""), 1);
    QCOMPARE(QDir(kept).entryList(QDir::Files), QStringList{QStringLiteral("20260112.db")});
}

/// What the folders say is enough.
void TestStoreKept::factsThatAreCutOffLeaveTheSerialNumber()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.keep();
    scene.clear();
    QVERIFY(QFile::resize(kept + QStringLiteral("/run.json"), 10));
    const StoreRun run = runStore({QStringLiteral("info"), kept});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.output.contains("Serial      SN1\n"), run.output.constData());
    QVERIFY2(!run.output.contains("Kept from"), run.output.constData());
}

/// The data directory has the next run, which must not be taken for this one.
void TestStoreKept::linkOfABackupIsRefused()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.keep();
    std::filesystem::create_hard_link(
        QDir(kept).filePath(QStringLiteral("20260112.db")).toStdString(),
        scene.path(QStringLiteral("backup.db")).toStdString());
    scene.clear();
    QVERIFY(QDir().mkpath(scene.dataDirectory()));
    scene.addDay("20260112", 30000);
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.endsWith("20260112.db has another name, which is not in the run's data "
                                 "directory. Copy the run to read it.\n"),
             run.errors.constData());
    const QString copy = scene.path(QStringLiteral("copy"));
    QVERIFY(QDir().mkpath(copy));
    for (const char* name : {"/20260112.db", "/run.json"}) {
        QVERIFY(QFile::copy(kept + QString::fromLatin1(name), copy + QString::fromLatin1(name)));
    }
    QVERIFY(check(copy).output.contains("101(Vdc)       480 "));
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
    const QString kept = keepWithLog(scene);
    const QStringList before = RunScene::listing(kept);
    QCOMPARE(before.size(), 3);
    const StoreRun run = check(kept);
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("101(Vdc)       481"));
    QCOMPARE(RunScene::listing(kept), before);
}

void TestStoreKept::closedPipeLeavesNothing()
{
    const RunScene scene;
    scene.addDay("20260112", 1000);
    const QString kept = keepWithLog(scene);
    const QStringList before = RunScene::listing(kept);
    QProcess shell;
    shell.start(
        QStringLiteral("bash"),
        {QStringLiteral("-c"), QStringLiteral("'%1' export '%2' | head -n 2; echo ${PIPESTATUS[0]}")
                                   .arg(QStringLiteral(SCN_STORE), kept)});
    QVERIFY(shell.waitForFinished());
    const QList<QByteArray> lines = shell.readAllStandardOutput().split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(2), QByteArray("1"));
    QCOMPARE(shell.readAllStandardError(), QByteArray());
    QCOMPARE(RunScene::listing(kept), before);
}

void TestStoreKept::interruptLeavesNothing_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("sentence");

    QTest::newRow("check") << QStringList{QStringLiteral("check")}
                           << QByteArray("check: interrupted.");
    QTest::newRow("export") << QStringList{QStringLiteral("export"), QStringLiteral("-o"),
                                           QStringLiteral("/dev/null")}
                            << QByteArray("export: interrupted; no file is left.");
}

void TestStoreKept::interruptLeavesNothing()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, sentence);

    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112",
                 QStringLiteral("INSERT OR IGNORE INTO "
                                "curve_1_batch_20260112_060000_20260112_115959 (curve_id, "
                                "timestamp, value) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
                                "SELECT i + 1 FROM n LIMIT 2000000) SELECT 1, %1 + 7 * i, i FROM n")
                     .arg(localTime("2026-01-12 06:00:00.000")));
    const QString kept = keepWithLog(scene);
    const QStringList before = RunScene::listing(kept);
    QProcess process;
    process.start(QStringLiteral(SCN_STORE), command + QStringList{kept});
    QTRY_VERIFY(QFile::exists(kept + QStringLiteral("/20260112.db-shm")));
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QCOMPARE(process.readAllStandardError(), "scn4070a-store: " + sentence + '\n');
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
    QCOMPARE(run.exitCode, 3);
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
    QCOMPARE(check(kept).exitCode, 3);
    const StoreRun run = checkLater(kept);
    QVERIFY2(run.exitCode == 0, run.errors.constData());
}

SCN_TEST(TestStoreKept, QCoreApplication)
#include "test_storekept.moc"
