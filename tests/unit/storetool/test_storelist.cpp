#include "runscene.h"
#include "storerun.h"
#include "support/readings.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QJsonObject json(const StoreRun& run)
{
    return QJsonDocument::fromJson(run.output).object();
}

/// What a user without rights gets; only root can become one.
StoreRun runAsNobody(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("setpriv"),
                  QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                              QStringLiteral("--clear-groups"), QStringLiteral(SCN_STORE)} +
                      arguments);
    process.waitForFinished();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The sum of what sqlite3 counts in the tables of a file.
qint64 countIn(const QString& file)
{
    qint64 count = 0;
    for (const QString& table :
         runSqlite(file, QStringLiteral("SELECT table_name FROM batch_metadata"))) {
        count +=
            runSqlite(file, QStringLiteral("SELECT count(*) FROM ") + table).value(0).toLongLong();
    }
    return count;
}

/// What sqlite3 says of a curve's readings over the tables of a file, "count|first|last|lowest|highest".
QString ofCurve(const QString& file, int curveId)
{
    QStringList parts;
    const QStringList tables = runSqlite(
        file,
        QStringLiteral("SELECT table_name FROM batch_metadata WHERE curve_id = %1").arg(curveId));
    for (const QString& table : tables) {
        parts.append(QStringLiteral("SELECT * FROM ") + table);
    }
    return runSqlite(file, QStringLiteral("SELECT count(*), min(timestamp), max(timestamp), "
                                          "printf('%!.17g', min(value)), printf('%!.17g', "
                                          "max(value)) FROM (%1)")
                               .arg(parts.join(QStringLiteral(" UNION ALL "))))
        .value(0);
}

} // namespace

/// What list and info tell, against sqlite3.
class TestStoreList : public QObject
{
    Q_OBJECT

private slots:
    void listTellsOfEveryRun();
    void listIsATable();
    void listLooksWhereProgramsKeepData();
    void shortNameMeansOneRun();
    void missingRightIsNoDamage();
    void closedFolderIsTold();
    void strayFileHidesNoRun();
    void emptyFolderIsTold();
    void timeThatIsNoNumberIsDamage_data();
    void timeThatIsNoNumberIsDamage();
    void controlCharactersAreNotObeyed();
    void listOfADamagedRunGoesOn();
    void infoAgreesWithSqlite();
    void infoIsATable();
    void missingRunIsASentence_data();
    void missingRunIsASentence();
};

void TestStoreList::listTellsOfEveryRun()
{
    const RunScene scene;
    scene.addDay("20260112");
    scene.addDay("20260113");
    const StoreRun run =
        runStore({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(run.exitCode, 0);
    const QJsonArray runs = json(run).value(QLatin1String("runs")).toArray();
    QCOMPARE(runs.size(), 1);
    const QJsonObject found = runs.at(0).toObject();
    QCOMPARE(found.value(QLatin1String("run")).toString(),
             QDir(scene.dataDirectory()).canonicalPath());
    QCOMPARE(found.value(QLatin1String("serial")).toString(), QStringLiteral("SN1"));
    QCOMPARE(found.value(QLatin1String("curves")).toInt(), 2);
    QCOMPARE(static_cast<qint64>(found.value(QLatin1String("readings")).toDouble()),
             countIn(scene.dayFile("20260112")) + countIn(scene.dayFile("20260113")));
    QCOMPARE(static_cast<qint64>(found.value(QLatin1String("bytes")).toDouble()),
             QFileInfo(scene.dayFile("20260112")).size() +
                 QFileInfo(scene.dayFile("20260113")).size());
    QCOMPARE(
        QDateTime::fromString(found.value(QLatin1String("start")).toString(), Qt::ISODateWithMs),
        QDateTime(QDate(2026, 1, 12), QTime(6, 0, 0, 1)));
    QCOMPARE(QDateTime::fromString(found.value(QLatin1String("end")).toString(), Qt::ISODateWithMs),
             QDateTime(QDate(2026, 1, 13), QTime(13, 59, 0, 2)));
}

void TestStoreList::listIsATable()
{
    const RunScene scene;
    scene.addDay("20260112");
    scene.keep();
    scene.clear();
    const StoreRun run = runStore({QStringLiteral("list"), scene.folder()});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = QString::fromUtf8(run.output).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0).simplified(),
             QStringLiteral("SERIAL INSTRUMENT START END CURVES READINGS BYTES RUN"));
    QVERIFY(lines.at(1).startsWith(
        QStringLiteral("SN1     TCPIP0::h   2026-01-12 06:00:00  2026-01-12 13:59:00       2")));
    QVERIFY(lines.at(1).endsWith(QStringLiteral("/runs/SN1/2026-01-12_06-00-00")));
}

void TestStoreList::listLooksWhereProgramsKeepData()
{
    const QTemporaryDir home;
    const RunScene scene;
    scene.addDay("20260112");
    scene.keep();
    scene.clear();
    const QString place = home.filePath(QStringLiteral("scn4070a/simulator"));
    QVERIFY(QDir().mkpath(place));
    QVERIFY(QFile::rename(scene.path(QStringLiteral("runs")), place + QStringLiteral("/runs")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.path());
    const StoreRun list = runStore({QStringLiteral("list")}, environment);
    QCOMPARE(list.exitCode, 0);
    QVERIFY(
        list.output.contains((place + QStringLiteral("/runs/SN1/2026-01-12_06-00-00")).toUtf8()));
    // A short name does for a run in such a place.
    const StoreRun info =
        runStore({QStringLiteral("info"), QStringLiteral("SN1/2026-01-12_06-00-00")}, environment);
    QCOMPARE(info.exitCode, 0);
    QVERIFY(info.output.contains("Serial      SN1\n"));
}

/// An instrument that was opened by two addresses has two folders.
void TestStoreList::shortNameMeansOneRun()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString home = scene.path(QStringLiteral("home"));
    const QString one = home + QStringLiteral("/scn4070a/lan/SN1_Data");
    const QString other = home + QStringLiteral("/scn4070a/usb/SN1_Data");
    for (const QString& path : {one, other}) {
        QVERIFY(QDir().mkpath(path));
        QVERIFY(QFile::copy(scene.dayFile("20260112"), path + QStringLiteral("/20260112.db")));
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home);
    const auto info = [&environment](const QString& run) {
        return runStore({QStringLiteral("info"), run}, environment);
    };
    const StoreRun both = info(QStringLiteral("SN1_Data"));
    QCOMPARE(both.exitCode, 1);
    QCOMPARE(both.output, QByteArray());
    QCOMPARE(QString::fromUtf8(both.errors),
             QStringLiteral("scn4070a-store: info: there are several runs 'SN1_Data'. Give the "
                            "path of one: %1, %2.\n")
                 .arg(one, other));
    QCOMPARE(info(other).exitCode, 0);
    // The start of a scan clears the directory.
    QVERIFY(QFile::remove(one + QStringLiteral("/20260112.db")));
    const StoreRun left = info(QStringLiteral("SN1_Data"));
    QCOMPARE(left.exitCode, 0);
    QVERIFY2(left.output.contains(other.toUtf8()), left.output.constData());
}

void TestStoreList::missingRightIsNoDamage()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const RunScene scene;
    scene.addDay("20260112");
    const auto setMode = [](const QString& path, mode_t mode) {
        return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
    };
    QVERIFY(setMode(scene.folder(), 0755));
    QVERIFY(setMode(scene.dayFile("20260112"), 0600));
    for (const char* command : {"info", "check", "export"}) {
        const StoreRun run = runAsNobody({QString::fromLatin1(command), scene.dataDirectory()});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(QString::fromUtf8(run.errors),
                 QStringLiteral("scn4070a-store: %1: there is no right to read %2.\n")
                     .arg(QString::fromLatin1(command), scene.dayFile("20260112")));
    }
    const StoreRun list =
        runAsNobody({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(list.exitCode, 0);
    QVERIFY2(list.output.contains("\"refused\": \"there is no right to read "),
             list.output.constData());
}

void TestStoreList::closedFolderIsTold()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const RunScene scene;
    scene.addDay("20260112");
    const QString closed = scene.path(QStringLiteral("closed"));
    QVERIFY(QDir().mkpath(closed + QStringLiteral("/SN2_Data")));
    QCOMPARE(::chmod(QFile::encodeName(closed).constData(), 0700), 0);
    QCOMPARE(::chmod(QFile::encodeName(scene.folder()).constData(), 0755), 0);
    const StoreRun table = runAsNobody({QStringLiteral("list"), scene.folder()});
    QCOMPARE(table.exitCode, 1);
    QVERIFY(table.output.contains("SN1 "));
    QCOMPARE(
        QString::fromUtf8(table.errors),
        QStringLiteral("scn4070a-store: list: there is no right to look into %1.\n").arg(closed));
    const StoreRun asJson =
        runAsNobody({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(json(asJson).value(QLatin1String("closed")).toArray(), QJsonArray{closed});
}

/// A copy of one file beside the data directories.
void TestStoreList::strayFileHidesNoRun()
{
    const RunScene scene;
    scene.addDay("20260112");
    QVERIFY(QFile::copy(scene.dayFile("20260112"), scene.path(QStringLiteral("20260112.db"))));
    const StoreRun run =
        runStore({QStringLiteral("list"), QStringLiteral("--json"), scene.folder()});
    QCOMPARE(run.exitCode, 0);
    QStringList found;
    for (const QJsonValue& each : json(run).value(QLatin1String("runs")).toArray()) {
        found.append(each.toObject().value(QLatin1String("run")).toString());
    }
    QCOMPARE(found, (QStringList{QDir(scene.folder()).canonicalPath(),
                                 QDir(scene.dataDirectory()).canonicalPath()}));
}

void TestStoreList::emptyFolderIsTold()
{
    const QTemporaryDir folder;
    const StoreRun run = runStore({QStringLiteral("list"), folder.path()});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(
        QString::fromUtf8(run.errors),
        QStringLiteral("scn4070a-store: list: there is no run below %1.\n").arg(folder.path()));
}

void TestStoreList::timeThatIsNoNumberIsDamage_data()
{
    QTest::addColumn<QString>("values");

    QTest::newRow("time") << QStringLiteral("'abc', 1");
    QTest::newRow("value") << QStringLiteral("5, x'00'");
}

void TestStoreList::timeThatIsNoNumberIsDamage()
{
    QFETCH(QString, values);

    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112",
                 QStringLiteral("INSERT INTO curve_1_batch_20260112_060000_20260112_115959 "
                                "(curve_id, timestamp, value) VALUES (1, %1)")
                     .arg(values));
    const QByteArray sentence = "20260112.db cannot be read: the time or value of a reading is no "
                                "number. 'scn4070a-store check' tells more.\n";
    const StoreRun info = runStore({QStringLiteral("info"), scene.dataDirectory()});
    QCOMPARE(info.exitCode, 2);
    QCOMPARE(info.output, QByteArray());
    QVERIFY2(info.errors.endsWith(sentence), info.errors.constData());
    const StoreRun asJson =
        runStore({QStringLiteral("info"), QStringLiteral("--json"), scene.dataDirectory()});
    QCOMPARE(asJson.exitCode, 2);
    QCOMPARE(asJson.errors, info.errors);
    QCOMPARE(json(asJson).value(QLatin1String("damage")).toArray().size(), 1);
    QCOMPARE(json(asJson).value(QLatin1String("serial")).toString(), QStringLiteral("SN1"));
    QVERIFY(!asJson.output.contains("1970"));
}

void TestStoreList::controlCharactersAreNotObeyed()
{
    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112",
                 QStringLiteral("UPDATE curve_info SET name = 'a' || char(27) || '[31m' "
                                "|| char(10) || 'b' WHERE curve_id = 1"));
    for (const char* command : {"info", "check"}) {
        const StoreRun run = runStore({QString::fromLatin1(command), scene.dataDirectory()});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output.indexOf('\x1b'), -1);
        QVERIFY2(run.output.contains("a\xef\xbf\xbd[31m\xef\xbf\xbd"
                                     "b "),
                 run.output.constData());
    }
}

void TestStoreList::listOfADamagedRunGoesOn()
{
    const RunScene scene;
    scene.addDay("20260112");
    QVERIFY(QDir().mkpath(scene.path(QStringLiteral("SN0_Data"))));
    spoil(scene.path(QStringLiteral("SN0_Data/20260112.db")), 0, "no database");
    const StoreRun run = runStore({QStringLiteral("list"), scene.folder()});
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.output.count('\n'), 3);
    QVERIFY(run.output.contains("SN1"));
    QVERIFY(run.errors.contains("SN0_Data/20260112.db cannot be read: file is not a database"));
}

void TestStoreList::infoAgreesWithSqlite()
{
    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun run =
        runStore({QStringLiteral("info"), QStringLiteral("--json"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    const QJsonArray curves = json(run).value(QLatin1String("curves")).toArray();
    QCOMPARE(curves.size(), 2);
    for (int i = 0; i < curves.size(); ++i) {
        const QJsonObject curve = curves.at(i).toObject();
        QCOMPARE(curve.value(QLatin1String("curve")).toString(),
                 QStringLiteral("10%1(Vdc)").arg(i + 1));
        const auto time = [&curve](const char* key) {
            return QString::number(
                QDateTime::fromString(curve.value(QLatin1String(key)).toString(), Qt::ISODateWithMs)
                    .toMSecsSinceEpoch());
        };
        const QStringList wanted =
            ofCurve(scene.dayFile("20260112"), i + 1).split(QLatin1Char('|'));
        QCOMPARE(wanted.size(), 5);
        QCOMPARE(curve.value(QLatin1String("readings")).toInt(), wanted.at(0).toInt());
        QCOMPARE(time("first"), wanted.at(1));
        QCOMPARE(time("last"), wanted.at(2));
        QCOMPARE(curve.value(QLatin1String("lowest")).toDouble(), wanted.at(3).toDouble());
        QCOMPARE(curve.value(QLatin1String("highest")).toDouble(), wanted.at(4).toDouble());
    }
}

void TestStoreList::infoIsATable()
{
    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun run = runStore({QStringLiteral("info"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("Serial      SN1\n"));
    QVERIFY(run.output.contains("Readings    960\n"));
    QVERIFY(run.output.contains("101(Vdc)       480  2026-01-12 06:00:00  2026-01-12 13:59:00  "
                                "0.3333333333  359.3333333\n"));
}

void TestStoreList::missingRunIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("sentence");

    const auto row = [](const char* name, const QStringList& arguments, const char* sentence) {
        QTest::newRow(name) << arguments << QByteArray(sentence);
    };
    row("info of nothing", {QStringLiteral("info"), QStringLiteral("SN9/never")},
        "info: there is no run 'SN9/never'. 'scn4070a-store list' shows those there are.");
    row("info of a folder without a run", {QStringLiteral("info"), QStringLiteral("/proc")},
        "info: /proc holds no day files (yyyyMMdd.db).");
    row("info of a file", {QStringLiteral("info"), QStringLiteral("/proc/version")},
        "info: /proc/version is no directory.");
    row("list of nothing", {QStringLiteral("list"), QStringLiteral("/no/such")},
        "list: there is no folder /no/such.");
    row("missing argument", {QStringLiteral("check")}, "check: an argument is missing.");
    row("argument too many", {QStringLiteral("check"), QStringLiteral("a"), QStringLiteral("b")},
        "check: 'b' is an argument too many.");
    row("unknown option", {QStringLiteral("list"), QStringLiteral("--jsn")},
        "list: Unknown option 'jsn'.");
    row("bad factor", {QStringLiteral("check"), QStringLiteral("--gap=0"), QStringLiteral("a")},
        "check: --gap takes a whole number from 1 on, not '0'.");
}

void TestStoreList::missingRunIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, sentence);

    const StoreRun run = runStore(arguments);
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.output, QByteArray());
    QVERIFY2(run.errors.startsWith("scn4070a-store: " + sentence), run.errors.constData());
    QCOMPARE(run.errors.count('\n'), 1);
}

SCN_TEST(TestStoreList, QCoreApplication)
#include "test_storelist.moc"
