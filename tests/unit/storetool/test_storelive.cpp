#include "dayfilewriter.h"
#include "runscene.h"
#include "storerun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <algorithm>

namespace {

const QString kTable = QStringLiteral("curve_1_batch_20260112_120000_20260112_175959");
constexpr int kPatienceMs = 120000;

bool holdsOpen(const QProcess& process, const QString& path)
{
    const QDir open(QStringLiteral("/proc/%1/fd").arg(process.processId()));
    const QFileInfoList files = open.entryInfoList(QDir::AllEntries | QDir::System);
    return std::any_of(files.cbegin(), files.cend(),
                       [&path](const QFileInfo& file) { return file.symLinkTarget() == path; });
}

/// Makes the first file one that takes a while to be read.
void lengthen(const RunScene& scene)
{
    scene.change(
        "20260112",
        QStringLiteral("INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) WITH RECURSIVE "
                       "n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT "
                       "2000000) SELECT 1, %2 + i, i FROM n")
            .arg(kTable)
            .arg(localTime("2026-01-12 12:00:00.000")));
}

} // namespace

/// A run that is being written meanwhile, by a writer that does not wait for anybody.
class TestStoreLive : public QObject
{
    Q_OBJECT

private slots:
    void writerMeetsNoLock_data();
    void writerMeetsNoLock();
    void readingsInTheWalCount();
    void runThatIsDeletedMeanwhileIsNoCrash();
    void runThatIsDeletedMeanwhileIsNotDamaged();
    void lockedRunIsNotDamaged();
    void runThatIsLockedMeanwhileIsNotDamaged();
};

void TestStoreLive::writerMeetsNoLock_data()
{
    QTest::addColumn<QStringList>("call");

    const auto row = [](const QStringList& call) {
        QTest::newRow(qPrintable(call.join(QLatin1Char(' ')))) << call;
    };
    row({QStringLiteral("list")});
    row({QStringLiteral("info")});
    row({QStringLiteral("check")});
    row({QStringLiteral("export")});
    row({QStringLiteral("export"), QStringLiteral("--long")});
    row({QStringLiteral("plot"), QStringLiteral("-o"), QStringLiteral("run.svg")});
}

void TestStoreLive::writerMeetsNoLock()
{
    QFETCH(QStringList, call);

    constexpr int kRuns = 10;
    const RunScene scene;
    scene.addDay("20260112", 5000);
    DayFileWriter writer(scene.dayFile("20260112"));
    writer.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    writer.execute(QStringLiteral("PRAGMA synchronous = OFF"));
    writer.execute(QStringLiteral("PRAGMA busy_timeout = 0"));
    writer.execute(QStringLiteral("PRAGMA wal_autocheckpoint = 20"));
    const qint64 start = localTime("2026-01-12 15:00:00.000");
    int written = 0;
    for (int run = 0; run < kRuns; ++run) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setWorkingDirectory(scene.folder());
        process.start(QStringLiteral(SCN_STORE), call + QStringList{scene.dataDirectory()});
        QVERIFY(process.waitForStarted());
        do { // a failure of the statement ends the test
            writer.execute(
                QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, "
                               "1.5)")
                    .arg(kTable, QString::number(start + written)));
            ++written;
        } while (!process.waitForFinished(1));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
    }
    // The writer closes its file as it always does.
    writer.execute(QStringLiteral("PRAGMA journal_mode = DELETE"));
    QCOMPARE(QDir(scene.dataDirectory()).entryList(QDir::Files),
             QStringList{QStringLiteral("20260112.db")});
    QVERIFY(runStore({QStringLiteral("check"), scene.dataDirectory()})
                .output.endsWith("The run is sound.\n"));
}

void TestStoreLive::readingsInTheWalCount()
{
    const RunScene scene;
    scene.addDay("20260112");
    DayFileWriter writer(scene.dayFile("20260112"));
    writer.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    writer.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, 1.5)")
                       .arg(kTable)
                       .arg(localTime("2026-01-12 15:00:00.000")));
    const StoreRun run = runStore({QStringLiteral("info"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("Readings    961\n"));
    QVERIFY(runStore({QStringLiteral("export"), QStringLiteral("--long"), scene.dataDirectory()})
                .output.contains(",101,1.5,Vdc\n"));
}

void TestStoreLive::runThatIsDeletedMeanwhileIsNoCrash()
{
    for (const char* command : {"list", "info", "check", "export", "plot -o run.svg"}) {
        for (int delayMs = 0; delayMs < 40; delayMs += 4) {
            const RunScene scene;
            scene.addDay("20260112", 20000);
            scene.addDay("20260113", 20000);
            QProcess process;
            process.setStandardOutputFile(QProcess::nullDevice());
            process.setWorkingDirectory(scene.folder());
            process.start(QStringLiteral(SCN_STORE),
                          QString::fromLatin1(command).split(QLatin1Char(' ')) +
                              QStringList{scene.dataDirectory()});
            QVERIFY(process.waitForStarted());
            process.waitForFinished(delayMs);
            scene.clear();
            QVERIFY(process.state() == QProcess::NotRunning ||
                    process.waitForFinished(kPatienceMs));
            QCOMPARE(process.exitStatus(), QProcess::NormalExit);
            const QByteArray errors = process.readAllStandardError();
            QVERIFY2(process.exitCode() == 0 || errors.startsWith("scn4070a-store: "),
                     errors.constData());
        }
    }
}

void TestStoreLive::runThatIsDeletedMeanwhileIsNotDamaged()
{
    for (const char* command : {"info", "check", "export -o run.csv", "plot -o run.svg"}) {
        const QStringList call = QString::fromLatin1(command).split(QLatin1Char(' '));
        const RunScene scene;
        scene.addDay("20260112", 1000);
        scene.addDay("20260113", 1000);
        lengthen(scene); // read until the other is gone
        QProcess process;
        process.setWorkingDirectory(scene.folder());
        process.start(QStringLiteral(SCN_STORE), call + QStringList{scene.dataDirectory()});
        QTRY_VERIFY(holdsOpen(process, scene.dayFile("20260112")));
        scene.clear();
        QVERIFY(process.waitForFinished(kPatienceMs));
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());
        QCOMPARE(process.readAllStandardError(),
                 "scn4070a-store: " + call.first().toUtf8() +
                     ": the run was deleted meanwhile. 'scn4070a-store list' shows where it is "
                     "kept.\n");
    }
}

void TestStoreLive::lockedRunIsNotDamaged()
{
    const RunScene scene;
    scene.addDay("20260112");
    DayFileWriter writer(scene.dayFile("20260112"));
    writer.execute(QStringLiteral("BEGIN EXCLUSIVE"));
    const QByteArray sentence = "another program has locked the run's files. Try again.\n";
    for (const char* command : {"check", "export"}) {
        const StoreRun run = runStore({QString::fromLatin1(command), scene.dataDirectory()});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errors, "scn4070a-store: " + QByteArray(command) + ": " + sentence);
    }
    const StoreRun list =
        runStore({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(list.exitCode, 0);
    QVERIFY2(list.output.contains("\"refused\": \"another program has locked"),
             list.output.constData());
}

void TestStoreLive::runThatIsLockedMeanwhileIsNotDamaged()
{
    for (const char* command : {"export -o run.csv", "plot -o run.svg"}) {
        const QStringList call = QString::fromLatin1(command).split(QLatin1Char(' '));
        const RunScene scene;
        scene.addDay("20260112", 1000);
        scene.addDay("20260113", 1000);
        lengthen(scene);
        DayFileWriter writer(scene.dayFile("20260113"));
        QProcess process;
        process.setWorkingDirectory(scene.folder());
        process.start(QStringLiteral(SCN_STORE), call + QStringList{scene.dataDirectory()});
        QTRY_VERIFY(holdsOpen(process, scene.dayFile("20260112")));
        writer.execute(QStringLiteral("BEGIN EXCLUSIVE"));
        QVERIFY(process.waitForFinished(kPatienceMs));
        QCOMPARE(process.readAllStandardError(),
                 "scn4070a-store: " + call.first().toUtf8() +
                     ": another program has locked the run's files. Try again.\n");
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(!QFile::exists(scene.folder() + QLatin1Char('/') + call.last()));
    }
}

SCN_TEST(TestStoreLive, QCoreApplication)
#include "test_storelive.moc"
