#include "followerprocess.h"
#include "forwardtest.h"
#include "readingsets.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QtEndian>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace {

const QString kTo = QStringLiteral("--to");

const QStringList kNobody{QStringLiteral("setpriv"), QStringLiteral("--reuid=65534"),
                          QStringLiteral("--regid=65534"), QStringLiteral("--clear-groups")};

/// Nobody listens there.
const QString kNoServer = QStringLiteral("postgresql://127.0.0.1:1/none");

void setMode(const QString& path, mode_t mode)
{
    if (::chmod(QFile::encodeName(path).constData(), mode) != 0) {
        qFatal("chmod %s", qPrintable(path));
    }
}

/// The statements of a kind that docs/fleet.md gives an administrator.
QString statementsOfThePage(const char* pattern)
{
    QFile page(QStringLiteral(SCN_FLEET_PAGE));
    if (!page.open(QIODevice::ReadOnly)) {
        qFatal("%s", qPrintable(page.errorString()));
    }
    const QString text = QString::fromUtf8(page.readAll());
    const QRegularExpression statement(QString::fromLatin1(pattern),
                                       QRegularExpression::DotMatchesEverythingOption |
                                           QRegularExpression::MultilineOption);
    QString found;
    for (auto each = statement.globalMatch(text); each.hasNext();) {
        found += each.next().captured() + QLatin1Char('\n');
    }
    return found.replace(QStringLiteral("DATABASE laboratory"),
                         QStringLiteral("DATABASE postgres"));
}

/// A second name of a day file, where the launcher keeps a run.
QString linkTo(const QString& file, const QDir& kept)
{
    kept.mkpath(QStringLiteral("."));
    const QString link = kept.filePath(QFileInfo(file).fileName());
    if (::link(qPrintable(file), qPrintable(link)) != 0) {
        qFatal("link %s", qPrintable(link));
    }
    return link;
}

constexpr double kMarkedValue = 1000000.5;

/// Destroys the first leaf of a table that has this value.
bool spoilPageWith(const QString& path, double value)
{
    constexpr int kPageSizePlace = 16;
    constexpr char kTableLeaf = 13;
    QFile database(path);
    if (!database.open(QIODevice::ReadWrite)) {
        return false;
    }
    QByteArray bytes(sizeof(value), '\0');
    qToBigEndian(value, bytes.data());
    const QByteArray content = database.readAll();
    const int size = qFromBigEndian<quint16>(content.constData() + kPageSizePlace);
    for (int page = size; page < content.size(); page += size) {
        if (content.at(page) == kTableLeaf && content.mid(page, size).contains(bytes)) {
            return database.seek(page) && database.write(QByteArray(size, '\xff')) == size;
        }
    }
    return false;
}

} // namespace

/// What keeps scn4070a-store forward from a file or from the server: what it says, and that the rest goes on.
class TestForwardFaults : public ForwardTest
{
    Q_OBJECT

private slots:
    void missingRightIsTold();
    void missingRightOutlastsACrowd();
    void secondNameIsTold();
    void secondNameWithoutFactsIsFollowedOnce();
    void linkOfABackupIsRefused();
    void directoryWithoutRunsIsTold();
    void strayFileHidesNoInstrument();
    void spoiltNameHoldsNobodyBack_data();
    void spoiltNameHoldsNobodyBack();
    void spoiltNumberHoldsNobodyBack_data();
    void spoiltNumberHoldsNobodyBack();
    void damagedFileIsReadToItsEnd();
    void damageOfAGrowingFileIsToldOnce();
    void tableThatDoesNotFitIsRefused_data();
    void tableThatDoesNotFitIsRefused();
    void partitionsOfAnAdministratorAreUsed_data();
    void partitionsOfAnAdministratorAreUsed();
    void missingPartitionIsNamed();
    void missingRightEndsItAtTheStart();
    void garbageTimesShareAPartition();
    void eachDayOfAnArchiveHasItsPartition();
    void otherEncodingIsRefusedAtTheStart();
    void faultOfTheServerIsToldOnce();
    void followersOfTheSameFilesDoNotMeet();

private:
    void letFollowerIn();
    QString ofFollower() const { return m_server->address(kDatabase, kFollower); }

    const QString kDatabase = QStringLiteral("postgres");
    const QString kFollower = QStringLiteral("follower");
};

void TestForwardFaults::missingRightIsTold()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const QString path = file(QStringLiteral("MY1"));
    writer(path);
    const QString closed = m_directory->filePath(QStringLiteral("closed"));
    QVERIFY(QDir().mkpath(closed));
    setMode(m_directory->path(), 0755);
    setMode(path, 0600);
    setMode(closed, 0700);
    FollowerProcess follower({m_directory->path(), kTo, kNoServer}, kNobody);
    const auto says = [&follower](const QString& sentence) {
        return follower.errors().count(sentence + QLatin1Char('\n')) == 1;
    };
    QTRY_VERIFY_WITH_TIMEOUT(says(QStringLiteral("There is no right to read %1.").arg(path)),
                             kForwardPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(says(QStringLiteral("There is no right to look into %1.").arg(closed)),
                             kForwardPatienceMs);
    setMode(path, 0644);
    setMode(closed, 0755);
    QTRY_VERIFY_WITH_TIMEOUT(says(path + QStringLiteral(" can be read now.")), kForwardPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(says(closed + QStringLiteral(" can be read now.")),
                             kForwardPatienceMs);
}

/// More old files come than are opened at a time, and the server takes none of them.
void TestForwardFaults::missingRightOutlastsACrowd()
{
    constexpr int kFiles = 18;
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const QString path = file(QStringLiteral("MY1"), QStringLiteral("20260101.db"));
    writer(path);
    setMode(m_directory->path(), 0755);
    setMode(path, 0600);
    FollowerProcess follower({m_directory->path(), kTo, kNoServer}, kNobody);
    const QString sentence = QStringLiteral("There is no right to read %1.\n").arg(path);
    QTRY_COMPARE_WITH_TIMEOUT(follower.errors().count(sentence), 1, kForwardPatienceMs);
    for (int i = 0; i < kFiles; ++i) {
        writer(file(QStringLiteral("MY1"), QStringLiteral("202601%1.db").arg(31 - i)));
    }
    constexpr int kSomeLooksMs = 4000;
    QTest::qWait(kSomeLooksMs);
    QCOMPARE(follower.errors().count(path), 1);
}

void TestForwardFaults::secondNameIsTold()
{
    const QString path = file(QStringLiteral("MY1"));
    writer(path);
    const QDir kept(m_directory->filePath(QStringLiteral("runs/MY1/2026-01-12_06-00-00")));
    const QString link = linkTo(path, kept);
    FollowerProcess follower({kept.path(), kTo, m_server->address()});
    QTRY_VERIFY_WITH_TIMEOUT(
        follower.errors().contains(link +
                                   QStringLiteral(" is not opened under its second name. Forward "
                                                  "the program's data directory.\n")),
        kForwardPatienceMs);
}

void TestForwardFaults::secondNameWithoutFactsIsFollowedOnce()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    const QDir kept(m_directory->filePath(QStringLiteral("runs/MY9/2026-01-12_06-00-00")));
    linkTo(path, kept);
    QCOMPARE(once(kept.path()), 3);
    QCOMPARE(kept.entryList(QDir::Files), QStringList{QStringLiteral("20260112.db")});
    QCOMPARE(once(), 0);
    QCOMPARE(readingsets::inDatabase(*m_server), readingsets::inFile(path, QStringLiteral("MY1")));
}

/// The data directory has the next run, which must not be taken for the kept one.
void TestForwardFaults::linkOfABackupIsRefused()
{
    const QString path = file(QStringLiteral("MY1"));
    writer(path);
    const QDir kept(m_directory->filePath(QStringLiteral("runs/MY1/2026-01-12_06-00-00")));
    const QString link = linkTo(path, kept);
    QVERIFY(QFile::rename(path, m_directory->filePath(QStringLiteral("backup.file"))));
    QFile facts(kept.filePath(QStringLiteral("run.json")));
    QVERIFY(facts.open(QIODevice::WriteOnly));
    facts.write("{\"serial\": \"MY1\", \"source\": \"" + QFileInfo(path).path().toUtf8() + "\"}");
    facts.close();
    const auto next = writer(path, 1);
    QCOMPARE(once(), 2);
    QVERIFY2(m_errors.contains(link + QStringLiteral(" has another name, which is not in ")),
             qPrintable(m_errors));
    QCOMPARE(readingsets::inDatabase(*m_server), readingsets::inFile(path, QStringLiteral("MY1")));
}

void TestForwardFaults::directoryWithoutRunsIsTold()
{
    const auto day = writer(file(QStringLiteral("MY1")));
    const QString empty = m_directory->filePath(QStringLiteral("empty"));
    QVERIFY(QDir().mkpath(empty));
    FollowerProcess follower({empty, m_directory->filePath(QStringLiteral("MY1_Data")), kTo,
                              m_server->address(), QStringLiteral("--once")});
    QCOMPARE(follower.exitCode(), 0);
    QVERIFY2(follower.errors().contains(QStringLiteral(" There is no run below %1.\n").arg(empty)),
             qPrintable(follower.errors()));
    QCOMPARE(follower.errors().count(QStringLiteral("no run below")), 1);
}

void TestForwardFaults::strayFileHidesNoInstrument()
{
    const QString path = file(QStringLiteral("MY1"));
    writer(path);
    QVERIFY(QFile::copy(path, m_directory->filePath(QStringLiteral("20260112.db"))));
    QCOMPARE(once(), 0);
    const QStringList readings = readingsets::inDatabase(*m_server);
    for (const QString& reading : readingsets::inFile(path, QStringLiteral("MY1"))) {
        QVERIFY2(readings.contains(reading), qPrintable(reading));
    }
}

void TestForwardFaults::spoiltNameHoldsNobodyBack_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("no UTF-8") << QStringLiteral("CAST(x'313031FF56' AS TEXT)");
    QTest::newRow("zero") << QStringLiteral("'101' || char(0) || 'V'");
    QTest::newRow("too long for an index")
        << QStringLiteral("(SELECT group_concat(hex(randomblob(1000))) FROM sqlite_master)");
}

void TestForwardFaults::spoiltNameHoldsNobodyBack()
{
    QFETCH(QString, name);

    const QString sound = file(QStringLiteral("MY1"));
    const auto other = writer(sound);
    const auto day = writer(file(QStringLiteral("MY2")));
    day->execute(QStringLiteral("UPDATE curve_info SET name = %1 WHERE curve_id = 1").arg(name));
    QCOMPARE(once(), 2);
    QVERIFY2(m_errors.contains(file(QStringLiteral("MY2")) + QStringLiteral(" is damaged: ")),
             qPrintable(m_errors));
    const QStringList readings = readingsets::inDatabase(*m_server);
    QCOMPARE(readings.filter(QStringLiteral("MY1")),
             readingsets::inFile(sound, QStringLiteral("MY1")));
    QCOMPARE(readings.filter(QStringLiteral("MY2")).size(), 20);
}

void TestForwardFaults::spoiltNumberHoldsNobodyBack_data()
{
    QTest::addColumn<QString>("harm");

    QTest::newRow("of no table")
        << QStringLiteral("INSERT INTO sqlite_sequence VALUES ('%1', 5)").arg(table(9));
    QTest::newRow("of another name")
        << QStringLiteral("UPDATE sqlite_sequence SET name = replace(name, 'curve_1', 'kurve_1')");
    QTest::newRow("lost")
        << QStringLiteral("DELETE FROM sqlite_sequence WHERE name = '%1'").arg(table(1));
    QTest::newRow("no column")
        << QStringLiteral("ALTER TABLE %1 RENAME COLUMN timestamp TO moment").arg(table(9));
}

/// SQLite's own list of the tables' last numbers does not match the tables.
void TestForwardFaults::spoiltNumberHoldsNobodyBack()
{
    QFETCH(QString, harm);

    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path, 3);
    const QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    if (harm.startsWith(QLatin1String("ALTER"))) {
        day->addBatch(9, localTime(kMorning), table(9), points(10, 9, localTime(kMorning)));
    }
    day->execute(harm);
    const QString sentence = path + QStringLiteral(" is damaged: ");
    {
        FollowerProcess follower({m_directory->path(), kTo, m_server->address()});
        QVERIFY(isForwarded(expected));
        QTRY_COMPARE_WITH_TIMEOUT(follower.errors().count(sentence), 1, kForwardPatienceMs);
    }
    QCOMPARE(m_server->psql(QStringLiteral("DROP TABLE reading, reading_place")), QString());
    QCOMPARE(once(), 2);
    QVERIFY2(m_errors.contains(sentence), qPrintable(m_errors));
    QCOMPARE(readingsets::inDatabase(*m_server), expected);
}

/// More than one turn takes from a file.
void TestForwardFaults::damagedFileIsReadToItsEnd()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path, 1);
    day->addCurve(2, QStringLiteral("102(Ω)"));
    day->addBatch(2, localTime(kMorning), table(2), points(25000, 1.0, localTime(kMorning)));
    const QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    // Read before those that are whole.
    day->execute(QStringLiteral("INSERT INTO sqlite_sequence VALUES ('%1', 5)")
                     .arg(table(1).replace(QLatin1String("curve_1"), QLatin1String("curve_0"))));
    QCOMPARE(once(), 2);
    QCOMPARE(readingsets::difference(expected, readingsets::inDatabase(*m_server)), QString());
}

void TestForwardFaults::damageOfAGrowingFileIsToldOnce()
{
    constexpr int kReadings = 40;
    constexpr int kIntervalMs = 250;

    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path, 1);
    day->addCurve(2, QStringLiteral("102(Ω)"));
    day->addBatch(2, localTime(kMorning), table(2),
                  points(5000, kMarkedValue, localTime(kMorning)));
    day->execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    QVERIFY(spoilPageWith(path, kMarkedValue + 250.0));
    FollowerProcess follower({m_directory->path(), kTo, m_server->address()});
    for (int i = 0; i < kReadings; ++i) {
        const qint64 time = localTime("2026-01-12 07:00:00.000") + i * kIntervalMs;
        day->execute(insertion(1, time, QStringLiteral("1")));
        QTest::qWait(kIntervalMs);
    }
    const QString ofSoundCurve =
        QStringLiteral("SELECT count(*) FROM reading WHERE curve = '101(Ω)'");
    QTRY_COMPARE_WITH_TIMEOUT(m_server->psql(ofSoundCurve), QString::number(10 + kReadings),
                              kForwardPatienceMs);
    follower.signal(SIGTERM);
    QCOMPARE(follower.exitCode(), 0);
    QCOMPARE(follower.errors().count(QStringLiteral(" is damaged: ")), 1);
    // What comes before the damage is not sent again and again.
    const auto sent = QRegularExpression(QStringLiteral("(\\d+) readings forwarded"))
                          .match(follower.errors())
                          .captured(1);
    QVERIFY2(!sent.isEmpty() && sent.toInt() < 6000, qPrintable(follower.errors()));
}

void TestForwardFaults::tableThatDoesNotFitIsRefused_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("sentence");

    QTest::newRow("other columns")
        << QStringLiteral("CREATE TABLE reading (a int)")
        << QStringLiteral("column \"instrument\" of relation \"reading\" does not exist");
    // What is sent again would be there twice.
    QTest::newRow("no key") << QStringLiteral("CREATE TABLE reading (instrument text, curve text, "
                                              "time timestamptz, value float8)")
                            << QStringLiteral("no unique or exclusion constraint");
    QTest::newRow("other places")
        << QStringLiteral("CREATE TABLE reading_place (instrument text, source text)")
        << QStringLiteral("column \"first_time\"");
}

/// At once, and not with the first reading.
void TestForwardFaults::tableThatDoesNotFitIsRefused()
{
    QFETCH(QString, table);
    QFETCH(QString, sentence);

    QCOMPARE(m_server->psql(table), QString());
    FollowerProcess follower({m_directory->path(), kTo, m_server->address()});
    QCOMPARE(follower.exitCode(), 1);
    QVERIFY2(follower.errors().contains(sentence), qPrintable(follower.errors()));
}

/// The page's tables, with the page's rights for a role that owns nothing.
void TestForwardFaults::letFollowerIn()
{
    const QString tables =
        statementsOfThePage("^    CREATE TABLE reading(_place)? \\([^;]*PRIMARY KEY[^;]*;");
    const QString rights = statementsOfThePage("^    GRANT [^;]*;");
    QCOMPARE(tables.count(QLatin1String("CREATE TABLE")), 2);
    QCOMPARE(rights.count(QLatin1String("GRANT")), 3);
    m_server->psql(QStringLiteral("CREATE ROLE follower LOGIN"));
    QCOMPARE(m_server->psql(tables), QString());
    QCOMPARE(m_server->psql(rights), QString());
}

void TestForwardFaults::partitionsOfAnAdministratorAreUsed_data()
{
    QTest::addColumn<QString>("partition");

    const QString create = QStringLiteral("CREATE TABLE %1 PARTITION OF reading %2");
    const QString day = QStringLiteral("FOR VALUES FROM ('2026-01-11') TO ('2026-01-14')");
    QTest::newRow("year") << create.arg(
        QStringLiteral("reading_2026"),
        QStringLiteral("FOR VALUES FROM ('2026-01-01') TO ('2027-01-01')"));
    QTest::newRow("days of another name") << create.arg(QStringLiteral("reading_p20260112"), day);
    QTest::newRow("default") << create.arg(QStringLiteral("reading_rest"),
                                           QStringLiteral("DEFAULT"));
}

void TestForwardFaults::partitionsOfAnAdministratorAreUsed()
{
    QFETCH(QString, partition);

    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    letFollowerIn();
    QCOMPARE(m_server->psql(partition), QString());
    FollowerProcess follower({m_directory->path(), kTo, ofFollower(), QStringLiteral("--once")});
    const int code = follower.exitCode();
    QVERIFY2(code == 0, qPrintable(follower.errors()));
    QCOMPARE(readingsets::inDatabase(*m_server), readingsets::inFile(path, QStringLiteral("MY1")));
}

void TestForwardFaults::missingPartitionIsNamed()
{
    const auto day = writer(file(QStringLiteral("MY1")));
    letFollowerIn();
    FollowerProcess follower({m_directory->path(), kTo, ofFollower()});
    QCOMPARE(follower.exitCode(), 1);
    QVERIFY2(follower.errors().contains(QRegularExpression(QStringLiteral(
                 "no partition takes the readings of 2026-01-1[12], and this role may not create "
                 "one: "))),
             qPrintable(follower.errors()));
}

void TestForwardFaults::missingRightEndsItAtTheStart()
{
    const auto day = writer(file(QStringLiteral("MY1")));
    letFollowerIn();
    QCOMPARE(m_server->psql(QStringLiteral("REVOKE INSERT ON reading FROM follower")), QString());
    FollowerProcess follower({m_directory->path(), kTo, ofFollower()});
    QCOMPARE(follower.exitCode(), 1);
    QVERIFY2(follower.errors().contains(QStringLiteral("permission denied for table reading")),
             qPrintable(follower.errors()));
}

/// Thousands of partitions would leave no query room for their locks.
void TestForwardFaults::garbageTimesShareAPartition()
{
    constexpr qint64 kDayMs = 86400000;
    const auto sound = writer(file(QStringLiteral("MY1")));
    const QString path = file(QStringLiteral("MY2"));
    const auto day = writer(path, 1);
    QVector<QPointF> garbage;
    for (int i = 0; i < 3000; ++i) {
        garbage.append({static_cast<double>(i * kDayMs), 1.0});
    }
    day->addBatch(1, localTime(kMorning), table(7), garbage);
    QStringList expected = readingsets::inFile(path, QStringLiteral("MY2")) +
                           readingsets::inFile(file(QStringLiteral("MY1")), QStringLiteral("MY1"));
    expected.sort();
    QCOMPARE(once(), 0);
    QCOMPARE(readingsets::difference(expected, readingsets::inDatabase(*m_server)), QString());
    QVERIFY(m_server->psql(QStringLiteral("SELECT count(*) FROM pg_inherits")).toInt() < 300);
    QCOMPARE(m_errors.count(QStringLiteral("The readings of 3000 days go into reading_rest "
                                           "together: ")),
             1);
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(*) FROM reading_rest")),
             QStringLiteral("3000"));
    // A day of its own as before.
    day->execute(insertion(1, localTime("2026-01-20 07:00:00.000"), QStringLiteral("1")));
    QCOMPARE(once(), 0);
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(*) FROM reading_20260120")),
             QStringLiteral("1"));
}

/// Many new days at once are no garbage.
void TestForwardFaults::eachDayOfAnArchiveHasItsPartition()
{
    constexpr int kDays = 210;
    constexpr qint64 kDayMs = 86400000;
    const auto day = writer(file(QStringLiteral("MY1")), 0);
    day->addCurve(1, QStringLiteral("101(Ω)"));
    QVector<QPointF> readings;
    for (int i = 0; i < kDays; ++i) {
        readings.append(
            {static_cast<double>(localTime("2021-06-01 06:00:00.000") - i * kDayMs), 1.0});
    }
    day->addBatch(1, localTime(kMorning), table(7), readings);
    QCOMPARE(once(), 0);
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(DISTINCT tableoid) FROM reading")),
             QString::number(kDays));
    QCOMPARE(m_server->psql(QStringLiteral("SELECT to_regclass('reading_rest') IS NULL")),
             QStringLiteral("t"));
    QVERIFY2(!m_errors.contains(QStringLiteral("reading_rest")), qPrintable(m_errors));
}

void TestForwardFaults::otherEncodingIsRefusedAtTheStart()
{
    m_server->psql(QStringLiteral("CREATE DATABASE latin ENCODING 'LATIN1' TEMPLATE template0"));
    FollowerProcess follower(
        {m_directory->path(), kTo, m_server->address(QStringLiteral("latin"))});
    QCOMPARE(follower.exitCode(), 1);
    QVERIFY2(follower.errors().contains(QStringLiteral("\"LATIN1\"")),
             qPrintable(follower.errors()));
}

void TestForwardFaults::faultOfTheServerIsToldOnce()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    FollowerProcess follower({m_directory->path(), kTo, m_server->address()});
    QVERIFY(isForwarded(readingsets::inFile(path, QStringLiteral("MY1"))));
    QCOMPARE(m_server->psql(
                 QStringLiteral("ALTER TABLE reading ADD CONSTRAINT small CHECK (value < 100)")),
             QString());
    day->execute(insertion(1, localTime("2026-01-12 07:00:00.000"), QStringLiteral("101")));
    const QString fault = QStringLiteral("The server does not take readings: ");
    QTRY_VERIFY_WITH_TIMEOUT(follower.errors().contains(fault), kForwardPatienceMs);
    // It tries again after one second, and after two more.
    QTest::qWait(4000);
    QCOMPARE(follower.errors().count(fault), 1);
    QCOMPARE(follower.errors().count(QStringLiteral("again")), 0);
    QCOMPARE(m_server->psql(QStringLiteral("ALTER TABLE reading DROP CONSTRAINT small")),
             QString());
    QVERIFY(isForwarded(readingsets::inFile(path, QStringLiteral("MY1"))));
    QTRY_COMPARE_WITH_TIMEOUT(
        follower.errors().count(QStringLiteral("The server takes readings again.")), 1,
        kForwardPatienceMs);
}

void TestForwardFaults::followersOfTheSameFilesDoNotMeet()
{
    constexpr int kRounds = 5;
    QStringList directories;
    for (const QString& instrument : {QStringLiteral("MY1"), QStringLiteral("MY2")}) {
        const auto day = writer(file(instrument), 1);
        day->addBatch(1, localTime(kMorning), table(7), points(150000, 1.0, 1768300000000));
        directories.append(m_directory->filePath(instrument + QStringLiteral("_Data")));
    }
    const QStringList end{kTo, m_server->address(), QStringLiteral("--once")};
    for (int round = 0; round < kRounds; ++round) {
        QCOMPARE(m_server->psql(QStringLiteral("DROP TABLE IF EXISTS reading, reading_place")),
                 QString());
        FollowerProcess one(directories + end);
        FollowerProcess other(QStringList{directories.last(), directories.first()} + end);
        QCOMPARE(one.exitCode(), 0);
        QCOMPARE(other.exitCode(), 0);
        const QString said = one.errors() + other.errors();
        QVERIFY2(!said.contains(QStringLiteral("deadlock")), qPrintable(said));
    }
}

SCN_TEST(TestForwardFaults, QCoreApplication)
#include "test_forwardfaults.moc"
