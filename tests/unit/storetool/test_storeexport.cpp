#include "dayfilewriter.h"
#include "runscene.h"
#include "storerun.h"
#include "support/readings.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <csignal>
#include <filesystem>

namespace {

const QString kExport = QStringLiteral("export");
const QString kTable = QStringLiteral("curve_1_batch_20260112_060000_20260112_115959");
constexpr int kPatienceMs = 60000;

QStringList linesOf(const QByteArray& text)
{
    return QString::fromUtf8(text).split(QLatin1Char('\n'));
}

/// A run that takes some seconds to export.
class LongRun
{
public:
    LongRun()
    {
        m_scene.addDay("20260112");
        m_scene.change(
            "20260112",
            QStringLiteral("INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) WITH "
                           "RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT "
                           "2000000) SELECT 1, %2 + 7 * i, i FROM n")
                .arg(kTable, QString::number(localTime("2026-01-12 06:00:00.000"))));
    }

    const RunScene& scene() const { return m_scene; }

    /// Starts an export to a file; returns when the first bytes are on the disk.
    bool startExport(QProcess& process, const QString& file) const
    {
        process.start(QStringLiteral(SCN_STORE),
                      {kExport, m_scene.dataDirectory(), QStringLiteral("-o"), file});
        return QTest::qWaitFor([this, &process] { return bytesWritten(process) > 0; }, kPatienceMs);
    }

    /// The size of what the process has open beside the data. It has no name, or not its last.
    qint64 bytesWritten(const QProcess& process) const
    {
        qint64 bytes = 0;
        const QDir open(QStringLiteral("/proc/%1/fd").arg(process.processId()));
        for (const QFileInfo& file : open.entryInfoList(QDir::Files | QDir::System)) {
            const QString target = file.symLinkTarget();
            if (target.startsWith(m_scene.folder()) &&
                !target.startsWith(m_scene.dataDirectory())) {
                bytes += file.size();
            }
        }
        return bytes;
    }

private:
    RunScene m_scene;
};

} // namespace

/// What export writes, against sqlite3, and what it leaves.
class TestStoreExport : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreTheReadings();
    void optionsChooseWhatIsWritten();
    void headerTellsOfTheRun();
    void longRowsAreTheReadings();
    void longRowsKeepTheirZone();
    void filesOfAnotherZoneAreFound();
    void partsAreTheProgramsFiles();
    void wrongCallIsASentence_data();
    void wrongCallIsASentence();
    void fileOfARunIsNotWritten_data();
    void fileOfARunIsNotWritten();
    void damagedRunLeavesNoFile();
    void interruptLeavesNoPart();
    void deletedRunLeavesNoPart();
    void progressIsForTerminals();
    void rowsOnATerminalAreNotDisturbed();
};

void TestStoreExport::rowsAreTheReadings()
{
    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun run = runStore({kExport, scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray());
    const QStringList lines = linesOf(run.output);
    QCOMPARE(lines.at(5), QStringLiteral("编号,时间,101(Vdc),102(Vdc),"));
    const QStringList first =
        runSqlite(scene.dayFile("20260112"),
                  QStringLiteral("SELECT timestamp, printf('%.15E', value) FROM ") + kTable +
                      QStringLiteral(" ORDER BY timestamp"));
    const QStringList second = runSqlite(
        scene.dayFile("20260112"),
        QStringLiteral("SELECT printf('%.15E', value) FROM "
                       "curve_2_batch_20260112_060000_20260112_115959 ORDER BY timestamp"));
    QCOMPARE(first.size(), 360);
    for (int row = 0; row < first.size(); ++row) {
        const QDateTime time = QDateTime::fromMSecsSinceEpoch(
            first.at(row).section(QLatin1Char('|'), 0, 0).toLongLong());
        QCOMPARE(lines.at(6 + row),
                 QStringLiteral("%1,%2,%3,%4")
                     .arg(QString::number(row + 1),
                          time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                          first.at(row).section(QLatin1Char('|'), 1), second.at(row)));
    }
    QCOMPARE(lines.size(), 6 + 480 + 1);
}

void TestStoreExport::optionsChooseWhatIsWritten()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString file = scene.path(QStringLiteral("out.csv"));
    const StoreRun run = runStore(
        {kExport, scene.dataDirectory(), QStringLiteral("--curves"), QStringLiteral("102:110"),
         QStringLiteral("--separator"), QStringLiteral("tab"), QStringLiteral("--from"),
         QStringLiteral("2026-01-12 07:00:00"), QStringLiteral("--to"),
         QStringLiteral("2026-01-12T07:02:00.002"), QStringLiteral("-o"), file});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, QByteArray());
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QStringList lines = linesOf(written.readAll());
    QCOMPARE(lines.at(3), QStringLiteral("开始时间\t2026 01 12 07 00 00"));
    QCOMPARE(lines.at(4), QStringLiteral("结束时间\t2026 01 12 07 02 00"));
    QCOMPARE(lines.at(5), QStringLiteral("编号\t时间\t102(Vdc)\t"));
    QCOMPARE(lines.at(6), QStringLiteral("1\t2026-01-12 07:00:00\t6.066666666666666E+01"));
    QCOMPARE(lines.size(), 6 + 3 + 1);
    // Without milliseconds the end is the first of its second, as in the program.
    const StoreRun shorter = runStore(
        {kExport, scene.dataDirectory(), QStringLiteral("--curves"), QStringLiteral("102(Vdc)"),
         QStringLiteral("--from"), QStringLiteral("2026-01-12 07:00:00"), QStringLiteral("--to"),
         QStringLiteral("2026-01-12 07:02:00")});
    QCOMPARE(linesOf(shorter.output).size(), 6 + 2 + 1);
}

void TestStoreExport::headerTellsOfTheRun()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.keep();
    scene.clear();
    const StoreRun run = runStore({kExport, kept});
    QVERIFY(
        run.output.startsWith("\xEF\xBB\xBF地址,TCPIP0::h\n型号,SCN4070A\n序列号：,SN1\n开始时间,"
                              "2026 01 12 06 00 00\n结束时间,2026 01 12 13 59 00\n"));
    const StoreRun told = runStore({kExport, kept, QStringLiteral("--address=A"),
                                    QStringLiteral("--model=M"), QStringLiteral("--serial=S/1")});
    QVERIFY(told.output.startsWith("\xEF\xBB\xBF地址,A\n型号,M\n序列号：,S/1\n"));
}

void TestStoreExport::longRowsAreTheReadings()
{
    const RunScene scene;
    scene.addDay("20260112");
    scene.addDay("20260113");
    const StoreRun run = runStore({kExport, QStringLiteral("--long"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = linesOf(run.output);
    QCOMPARE(lines.at(0), QStringLiteral("time,channel,value,unit"));
    QStringList wanted;
    for (const char* key : {"20260112", "20260113"}) {
        QStringList parts;
        for (const QString& table : runSqlite(
                 scene.dayFile(key), QStringLiteral("SELECT table_name FROM batch_metadata"))) {
            parts.append(QStringLiteral("SELECT * FROM ") + table);
        }
        wanted += runSqlite(
            scene.dayFile(key),
            QStringLiteral(
                "SELECT timestamp, 100 + curve_id, printf('%!.17g', value) FROM (%1) ORDER "
                "BY timestamp, curve_id")
                .arg(parts.join(QStringLiteral(" UNION ALL "))));
    }
    QCOMPARE(wanted.size(), 1920);
    QCOMPARE(lines.size(), 1 + wanted.size() + 1);
    for (int row = 0; row < wanted.size(); ++row) {
        const QStringList fields = lines.at(row + 1).split(QLatin1Char(','));
        const QStringList expected = wanted.at(row).split(QLatin1Char('|'));
        QCOMPARE(fields.size(), 4);
        QCOMPARE(QDateTime::fromString(fields.at(0), Qt::ISODateWithMs).toMSecsSinceEpoch(),
                 expected.at(0).toLongLong());
        QCOMPARE(fields.at(1), expected.at(1));
        QVERIFY(fields.at(2).toDouble() == expected.at(2).toDouble()); // to the last digit
        QCOMPARE(fields.at(3), QStringLiteral("Vdc"));
    }
}

/// In the hour that autumn repeats, the offset tells the two apart.
void TestStoreExport::longRowsKeepTheirZone()
{
    const QTemporaryDir folder;
    constexpr qint64 kFirst = 1792888200000; // 2026-10-25 00:30 UTC
    {
        DayFileWriter file(folder.filePath(QStringLiteral("20261025.db")));
        file.addCurve(1, QStringLiteral("101(\"Ohm\",2)"));
        file.addBatch(1, kFirst, DayFileWriter::tableName(1, kFirst),
                      {{kFirst, 0.1}, {kFirst + kHourMs, 9.9e37}});
        // At the same moments, after the other curve.
        file.addCurve(2, QStringLiteral("102(V)"));
        file.addBatch(2, kFirst, DayFileWriter::tableName(2, kFirst),
                      {{kFirst, 2}, {kFirst + kHourMs, 3}});
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QStringLiteral("Europe/Berlin"));
    const StoreRun run = runStore({kExport, QStringLiteral("--long"), folder.path()}, environment);
    QCOMPARE(run.output, QByteArray("time,channel,value,unit\n"
                                    "2026-10-25T02:30:00.000+02:00,101,0.1,\"\"\"Ohm\"\",2\"\n"
                                    "2026-10-25T02:30:00.000+02:00,102,2,V\n"
                                    "2026-10-25T02:30:00.000+01:00,101,9.9e+37,\"\"\"Ohm\"\",2\"\n"
                                    "2026-10-25T02:30:00.000+01:00,102,3,V\n"));
}

/// A run is read where the file's date is another day's.
void TestStoreExport::filesOfAnotherZoneAreFound()
{
    const RunScene scene;
    scene.addDay("20260112", 60000, "09:00");
    for (const char* zone : {"Asia/Tokyo", "Pacific/Honolulu", "Pacific/Kiritimati"}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TZ"), QString::fromLatin1(zone));
        const StoreRun run = runStore({kExport, scene.dataDirectory()}, environment);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(linesOf(run.output).size(), 6 + 180 + 1);
    }
}

void TestStoreExport::partsAreTheProgramsFiles()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString folder = scene.path(QStringLiteral("parts"));
    QVERIFY(QDir().mkpath(folder));
    const StoreRun run = runStore({kExport, scene.dataDirectory(), QStringLiteral("--parts"),
                                   folder, QStringLiteral("--name"), QStringLiteral("Trace")});
    QCOMPARE(run.exitCode, 0);
    const QStringList files = QDir(folder).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QVERIFY(QRegularExpression(QStringLiteral("^SN1_Trace_1_\\d{14}\\.csv$"))
                .match(files.at(0))
                .hasMatch());
    QFile part(QDir(folder).filePath(files.at(0)));
    QVERIFY(part.open(QIODevice::ReadOnly));
    QCOMPARE(part.readAll(), runStore({kExport, scene.dataDirectory()}).output);
}

void TestStoreExport::wrongCallIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("sentence");

    const auto row = [](const char* name, const QStringList& arguments,
                        const QByteArray& sentence) {
        QTest::newRow(name) << arguments << sentence;
    };
    row("curve", {QStringLiteral("--curves"), QStringLiteral("101,105")},
        "the run has no curve '105'. It has 101(Vdc), 102(Vdc).");
    for (const char* range : {":101", "102:", "110:101", "101:102:103", "a:b"}) {
        row(range, {QStringLiteral("--curves"), QString::fromLatin1(range)},
            "'" + QByteArray(range) + "' is no range of channels. Write it as 101:110.");
    }
    row("time", {QStringLiteral("--from"), QStringLiteral("yesterday")},
        "'yesterday' is no time. Write it as 2026-01-12 07:30:00.");
    row("month", {QStringLiteral("--to"), QStringLiteral("2026-13-12 07:30:00")},
        "'2026-13-12 07:30:00' is no time. Write it as 2026-01-12 07:30:00.");
    row("hour", {QStringLiteral("--to"), QStringLiteral("2026-01-12 25:30:00")},
        "'2026-01-12 25:30:00' is no time. Write it as 2026-01-12 07:30:00.");
    row("order", {QStringLiteral("--from=2026-01-13"), QStringLiteral("--to=2026-01-12")},
        "the time range ends before it begins.");
    row("after the end", {QStringLiteral("--from=2027-01-01")}, "no reading lies in that time.");
    row("before the start", {QStringLiteral("--to=2025-01-01")}, "no reading lies in that time.");
    row("no reading", {QStringLiteral("--from=2027-01-13"), QStringLiteral("--to=2027-01-14")},
        "no reading lies in that time.");
    row("no reading, long",
        {QStringLiteral("--from=2027-01-13"), QStringLiteral("--to=2027-01-14"),
         QStringLiteral("--long")},
        "no reading lies in that time.");
    row("folder", {QStringLiteral("-o"), QStringLiteral("/no/such/file.csv")},
        "/no/such/file.csv cannot be written: No such file or directory.");
    row("full disk", {QStringLiteral("-o"), QStringLiteral("/dev/full")},
        "/dev/full cannot be written; is the disk full?");
    row("full disk, long",
        {QStringLiteral("-o"), QStringLiteral("/dev/full"), QStringLiteral("--long")},
        "/dev/full cannot be written");
    row("separator", {QStringLiteral("--separator=")},
        "--separator takes a text that is not empty.");
    row("parts and output",
        {QStringLiteral("--parts=/tmp"), QStringLiteral("-o"), QStringLiteral("a")},
        "--parts goes with neither --output nor --long.");
}

void TestStoreExport::wrongCallIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, sentence);

    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun run = runStore(QStringList{kExport, scene.dataDirectory()} + arguments);
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.startsWith("scn4070a-store: export: " + sentence), run.errors.constData());
    QCOMPARE(run.errors.count('\n'), 1);
}

void TestStoreExport::fileOfARunIsNotWritten_data()
{
    QTest::addColumn<QString>("output");

    const auto row = [](const char* name, const char* output) {
        QTest::newRow(name) << QString::fromLatin1(output);
    };
    row("day file", "run/20260112.db");
    row("log of a day file", "run/20260113.db-wal");
    row("index of a log", "run/20260112.db-shm");
    row("facts", "run/run.json");
    row("file of another run", "SN2_Data/20260112.db");
    row("hard link", "hardlink.csv");
    row("symbolic link", "symlink.csv");
    row("path around", "SN2_Data/../run/20260112.db");
}

/// What is written replaces what was there.
void TestStoreExport::fileOfARunIsNotWritten()
{
    QFETCH(QString, output);

    const RunScene scene;
    scene.addDay("20260112");
    const QString kept = scene.path(QStringLiteral("run"));
    QVERIFY(QFile::rename(scene.keep(), kept));
    scene.clear();
    const QString dayFile = kept + QStringLiteral("/20260112.db");
    QVERIFY(QFile::link(dayFile, scene.path(QStringLiteral("symlink.csv"))));
    const QString other = scene.path(QStringLiteral("SN2_Data"));
    const QString otherFile = other + QStringLiteral("/20260112.db");
    QVERIFY(QDir().mkpath(other) && QFile::copy(dayFile, otherFile));
    QString run = kept;
    if (output == QLatin1String("hardlink.csv")) {
        // A kept run with such a link is not opened, a data directory is.
        std::filesystem::create_hard_link(otherFile.toStdString(),
                                          scene.path(output).toStdString());
        run = other;
    }
    const QStringList before = RunScene::listing(kept) + RunScene::listing(other);
    const StoreRun call = runStore({kExport, run, QStringLiteral("-o"), scene.path(output)});
    QCOMPARE(call.exitCode, 1);
    QCOMPARE(call.errors, QStringLiteral("scn4070a-store: export: %1 is a file of a run and is not "
                                         "written. Give another name.\n")
                              .arg(scene.path(output))
                              .toUtf8());
    QCOMPARE(RunScene::listing(kept) + RunScene::listing(other), before);
    QCOMPARE(runStore({QStringLiteral("check"), run}).exitCode, 0);
}

void TestStoreExport::damagedRunLeavesNoFile()
{
    for (const QString& form : {QStringLiteral("--long"), QStringLiteral("--separator=;")}) {
        const RunScene scene;
        scene.addDay("20260112", 5000);
        const QString file = scene.path(QStringLiteral("out.csv"));
        // In the middle of the first table.
        spoil(scene.dayFile("20260112"), 20 * 4096, QByteArray(3 * 4096, '\0'));
        const StoreRun run =
            runStore({kExport, scene.dataDirectory(), QStringLiteral("-o"), file, form});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.errors.startsWith("scn4070a-store: export: "), run.errors.constData());
        QCOMPARE(QDir(scene.folder()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }
}

void TestStoreExport::interruptLeavesNoPart()
{
    const LongRun run;
    const QString file = run.scene().path(QStringLiteral("out.csv"));
    QFile old(file);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("the file before");
    old.close();
    QProcess process;
    QVERIFY(run.startExport(process, file));
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(kPatienceMs));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QCOMPARE(process.readAllStandardError(),
             QByteArray("scn4070a-store: export: interrupted; no file is left.\n"));
    QCOMPARE(QDir(run.scene().folder()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("out.csv")});
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("the file before"));
}

void TestStoreExport::deletedRunLeavesNoPart()
{
    const LongRun run;
    const QString file = run.scene().path(QStringLiteral("out.csv"));
    QProcess process;
    QVERIFY(run.startExport(process, file));
    run.scene().clear();
    QVERIFY(process.waitForFinished(kPatienceMs));
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("the run was deleted meanwhile"));
    QCOMPARE(QDir(run.scene().folder()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TestStoreExport::progressIsForTerminals()
{
    const LongRun run;
    const QString file = run.scene().path(QStringLiteral("out.csv"));
    for (const QString& form : {QString(), QStringLiteral(" --long")}) {
        const QString call =
            QStringLiteral("'%1' export '%2' -o '%3'%4")
                .arg(QStringLiteral(SCN_STORE), run.scene().dataDirectory(), file, form);
        QProcess terminal;
        terminal.setProcessChannelMode(QProcess::MergedChannels);
        terminal.start(QStringLiteral("script"),
                       {QStringLiteral("-qec"), call, QStringLiteral("/dev/null")});
        QVERIFY(terminal.waitForFinished(kPatienceMs));
        QCOMPARE(terminal.exitCode(), 0);
        const QByteArray shown = terminal.readAll();
        const QByteArray unit = form.isEmpty() ? " rows" : " readings";
        QVERIFY2(shown.contains(unit), shown.constData());
        QVERIFY(shown.endsWith("\r\x1b[K"));
    }
    const StoreRun piped =
        runStore({kExport, run.scene().dataDirectory(), QStringLiteral("-o"), file});
    QCOMPARE(piped.exitCode, 0);
    QCOMPARE(piped.errors, QByteArray());
}

/// Both go to one terminal.
void TestStoreExport::rowsOnATerminalAreNotDisturbed()
{
    const LongRun run;
    for (const QString& form : {QString(), QStringLiteral(" --long")}) {
        QProcess terminal;
        terminal.start(QStringLiteral("script"),
                       {QStringLiteral("-qec"),
                        QStringLiteral("'%1' export '%2'%3")
                            .arg(QStringLiteral(SCN_STORE), run.scene().dataDirectory(), form),
                        QStringLiteral("/dev/null")});
        QVERIFY(terminal.waitForFinished(kPatienceMs));
        QCOMPARE(terminal.exitCode(), 0);
        const QByteArray shown = terminal.readAll();
        QVERIFY(shown.size() > 100000);
        QCOMPARE(shown.indexOf('\x1b'), -1);
    }
}

SCN_TEST(TestStoreExport, QCoreApplication)
#include "test_storeexport.moc"
