#include "dayfilewriter.h"
#include "followerprocess.h"
#include "forwardtest.h"
#include "readingsets.h"
#include "support/postgresserver.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

#include <algorithm>
#include <limits>
#include <memory>

/// scn4070a-store forward beside files that are written by plain SQL.
class TestForward : public ForwardTest
{
    Q_OBJECT

private slots:
    void onceCopiesAllThereIs();
    void secondTimeAddsNothing();
    void queriesOfThePageFindReadings();
    void tablesOfSeveralNodesAreOne();
    void finishedRunGetsNoFilesBesideIt();
    void strangeValuesArrive();
    void clockSetBackLosesNothing();
    void replacedTableIsReadAnew();
    void newReadingsAndFilesAreFollowed();
    void clearedRunIsReadToItsEnd();
    void newRunUnderTheSameNameIsFollowed();
    void outageOfTheServerLosesNothing();
    void restoredServerGetsWhatItLacks();
    void daysThatAreOverAreReadByAndBy();
    void keptRunIsReadOnceItHasOneName();
    void logOfAKeptRunIsRead();
    void writerIsNeverKeptWaiting();
    void partitionsAreDaysOfUtc();
    void tableOfAnAdministratorIsUsed();
    void damageIsASentence();
    void refusalIsASentence_data();
    void refusalIsASentence();
    void silentServerDoesNotKeepTheProgram();
    void signalEndsIt();
};

void TestForward::onceCopiesAllThereIs()
{
    QStringList expected;
    for (const QString& instrument : {QStringLiteral("MY1"), QStringLiteral("MY2")}) {
        for (const QString& name : {QStringLiteral("20260112.db"), QStringLiteral("20260113.db")}) {
            const auto day = writer(file(instrument, name));
            // More than a transaction takes.
            day->addBatch(1, localTime(kMorning), table(7), points(25000, 5e-7, 1768300000000));
            expected += readingsets::inFile(file(instrument, name), instrument);
        }
    }
    expected.removeDuplicates(); // the two days begin with the same readings
    expected.sort();
    QVERIFY(expected.size() > 50000);
    QCOMPARE(once(), 0);
    QCOMPARE(readingsets::difference(expected, readingsets::inDatabase(*m_server)), QString());
    QVERIFY2(m_errors.contains(QStringLiteral(" %1 of them new").arg(expected.size())),
             qPrintable(m_errors));
}

void TestForward::secondTimeAddsNothing()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    QCOMPARE(once(), 0);
    QCOMPARE(once(), 0);
    QVERIFY2(m_errors.contains(QStringLiteral(" 0 readings forwarded")), qPrintable(m_errors));
    day->execute(insertion(1, localTime("2026-01-12 07:00:00.000"), QStringLiteral("4.5")));
    QCOMPARE(once(), 0);
    QVERIFY2(m_errors.contains(QStringLiteral(" 1 readings forwarded")), qPrintable(m_errors));
    QCOMPARE(readingsets::inDatabase(*m_server), readingsets::inFile(path, QStringLiteral("MY1")));
}

/// Those that docs/fleet.md begins with: the last hour of a curve, the last day by the minute.
void TestForward::queriesOfThePageFindReadings()
{
    const QDateTime start = QDateTime::currentDateTime().addSecs(-600);
    const qint64 batch = start.toMSecsSinceEpoch();
    DayFileWriter day(file(QStringLiteral("SN00000042"),
                           start.toString(QStringLiteral("yyyyMMdd")) + QStringLiteral(".db")));
    day.addCurve(1, QStringLiteral("101(Vdc)"));
    day.addBatch(1, batch, DayFileWriter::tableName(1, batch), points(10, 1, batch));
    QCOMPARE(once(), 0);
    QFile page(QStringLiteral(SCN_FLEET_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(page.readAll());
    const QRegularExpression query(QStringLiteral("psql laboratory -c \"([^\"]*)\""));
    int queries = 0;
    for (auto each = query.globalMatch(text); each.hasNext(); ++queries) {
        const QString sql = each.next().captured(1).simplified();
        const QString found = m_server->psql(sql);
        QVERIFY2(found.contains(QLatin1String("1.9")), qPrintable(sql + QLatin1Char('\n') + found));
    }
    QCOMPARE(queries, 2);
}

/// The page's way to read the tables of several servers in one.
void TestForward::tablesOfSeveralNodesAreOne()
{
    const QString path = file(QStringLiteral("SN00000042"));
    const auto day = writer(path);
    QCOMPARE(once(), 0);
    QFile page(QStringLiteral(SCN_FLEET_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(page.readAll());
    const int begin = text.indexOf(QStringLiteral("    CREATE EXTENSION postgres_fdw;"));
    const int end = text.indexOf(QStringLiteral("\n\n"), begin);
    QVERIFY(begin >= 0 && end > begin);
    const QString host = m_server->address().section(QStringLiteral("host="), 1);
    QString sql = text.mid(begin, end - begin);
    sql.replace(QStringLiteral("hall1.example"), host)
        .replace(QStringLiteral("'laboratory'"), QStringLiteral("'postgres'"))
        .replace(QStringLiteral("'reader'"), QStringLiteral("'scn'"));
    const QString all = QStringLiteral("nodes");
    m_server->psql(QStringLiteral("CREATE DATABASE nodes"));
    QCOMPARE(m_server->psql(sql, all), QString());
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(*) FROM reading WHERE instrument = "
                                           "'SN00000042'"),
                            all),
             QStringLiteral("20"));
    m_server->psql(QStringLiteral("DROP DATABASE nodes"));
}

void TestForward::finishedRunGetsNoFilesBesideIt()
{
    const QString path = file(QStringLiteral("MY1"));
    writer(path).reset();
    QVERIFY(!QFile::exists(path + QStringLiteral("-wal")));
    QCOMPARE(once(), 0);
    QCOMPARE(QDir(m_directory->filePath(QStringLiteral("MY1_Data"))).entryList(QDir::Files),
             QStringList{QStringLiteral("20260112.db")});
    QCOMPARE(readingsets::inDatabase(*m_server).size(), 20);
}

void TestForward::strangeValuesArrive()
{
    const QString path = file(QStringLiteral("MY1"));
    DayFileWriter day(path);
    day.addCurve(1, QStringLiteral("a|b\t\\\"名"));
    // A table without the rule that keeps NaN out.
    day.execute(QStringLiteral("CREATE TABLE %1 (id INTEGER PRIMARY KEY AUTOINCREMENT, curve_id "
                               "INTEGER, timestamp INTEGER, value REAL)")
                    .arg(table(1)));
    qint64 time = -1;
    for (const char* value : {"NULL", "9e999", "-9e999", "0", "5e-324", "0.1", "'text'", "3"}) {
        day.execute(insertion(1, time += 1001, QString::fromLatin1(value)));
    }
    day.execute(insertion(1, 9223372036854775807, QStringLiteral("1")));
    QCOMPARE(once(), 0);
    QVERIFY2(m_errors.contains(QStringLiteral(" 1 readings have a time")), qPrintable(m_errors));
    QCOMPARE(
        m_server->rows(QStringLiteral("SELECT curve, extract(epoch FROM time)::numeric(9,3), "
                                      "value FROM reading ORDER BY time")),
        (QStringList{
            QStringLiteral("a|b\t\\\"名|1.000|NaN"), QStringLiteral("a|b\t\\\"名|2.001|Infinity"),
            QStringLiteral("a|b\t\\\"名|3.002|-Infinity"), QStringLiteral("a|b\t\\\"名|4.003|0"),
            QStringLiteral("a|b\t\\\"名|5.004|5e-324"), QStringLiteral("a|b\t\\\"名|6.005|0.1"),
            QStringLiteral("a|b\t\\\"名|7.006|NaN"), QStringLiteral("a|b\t\\\"名|8.007|3")}));
}

void TestForward::clockSetBackLosesNothing()
{
    const QString path = file(QStringLiteral("MY1"));
    const qint64 time = localTime("2026-01-12 07:00:00.000");
    const auto day = writer(path);
    day->execute(insertion(1, time, QStringLiteral("1")));
    day->execute(insertion(1, time - 1000, QStringLiteral("2"))); // set back in the run
    QCOMPARE(once(), 0);
    QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    // Set back before the next run: the same moments with other values.
    QFile::remove(path);
    const auto next = writer(path);
    next->execute(insertion(1, time, QStringLiteral("3")));
    QCOMPARE(once(), 0);
    expected += readingsets::inFile(path, QStringLiteral("MY1"));
    expected.removeDuplicates();
    expected.sort();
    QCOMPARE(expected.size(), 23);
    QCOMPARE(readingsets::inDatabase(*m_server), expected);
}

void TestForward::replacedTableIsReadAnew()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    QVERIFY(isForwarded(expected));
    // As many rows as before, so that only the rows themselves tell.
    day->execute(QStringLiteral("BEGIN"));
    day->execute(QStringLiteral("DROP TABLE ") + table(1));
    day->execute(QStringLiteral("CREATE TABLE %1 (id INTEGER PRIMARY KEY AUTOINCREMENT, curve_id "
                                "INTEGER, timestamp INTEGER, value REAL)")
                     .arg(table(1)));
    for (int i = 0; i < 10; ++i) {
        day->execute(insertion(1, localTime(kMorning) + 5000 + i, QStringLiteral("8")));
    }
    day->execute(QStringLiteral("COMMIT"));
    expected += readingsets::inFile(path, QStringLiteral("MY1"));
    expected.removeDuplicates();
    expected.sort();
    QCOMPARE(expected.size(), 30);
    QVERIFY(isForwarded(expected));
}

void TestForward::newReadingsAndFilesAreFollowed()
{
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QStringList expected;
    for (int round = 0; round < 3; ++round) {
        const QString instrument = QStringLiteral("MY%1").arg(round);
        const auto day = writer(file(instrument));
        QTest::qWait(700);
        day->execute(insertion(2, localTime("2026-01-12 08:00:00.000"), QStringLiteral("77")));
        expected += readingsets::inFile(file(instrument), instrument);
        expected.sort();
        QVERIFY(isForwarded(expected));
    }
}

void TestForward::clearedRunIsReadToItsEnd()
{
    const QString path = file(QStringLiteral("MY1"));
    auto day = writer(path);
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QVERIFY(isForwarded(readingsets::inFile(path, QStringLiteral("MY1"))));
    m_server->stop();
    for (int i = 0; i < 3000; ++i) {
        day->execute(insertion(1, localTime("2026-01-12 09:00:00.000") + i, QString::number(i)));
    }
    QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    QVERIFY(QDir(m_directory->filePath(QStringLiteral("MY1_Data"))).removeRecursively());
    // What the writer still adds to the deleted file was in a file, too.
    day->execute(insertion(2, localTime("2026-01-12 09:30:00.000"), QStringLiteral("0.5")));
    expected.append(QStringLiteral("MY1 102(Ω) %1 0.5").arg(localTime("2026-01-12 09:30:00.000")));
    expected.sort();
    day->execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    day.reset();
    QTest::qWait(1500);
    QVERIFY(m_server->start());
    QVERIFY(isForwarded(expected));
}

void TestForward::newRunUnderTheSameNameIsFollowed()
{
    const QString path = file(QStringLiteral("MY1"));
    QStringList expected;
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    for (int run = 0; run < 4; ++run) {
        file(QStringLiteral("MY1"));
        const auto day = writer(path);
        day->execute(
            insertion(1, localTime("2026-01-12 07:00:00.000") + run, QString::number(run)));
        expected += readingsets::inFile(path, QStringLiteral("MY1"));
        expected.removeDuplicates();
        expected.sort();
        QVERIFY(isForwarded(expected));
        QVERIFY(QDir(m_directory->filePath(QStringLiteral("MY1_Data"))).removeRecursively());
    }
}

void TestForward::outageOfTheServerLosesNothing()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    FollowerProcess follower({m_directory->path(), QStringLiteral("--to"), m_server->address()});
    for (int outage = 0; outage < 3; ++outage) {
        QVERIFY(isForwarded(readingsets::inFile(path, QStringLiteral("MY1"))));
        m_server->stop();
        day->execute(
            insertion(2, localTime("2026-01-12 10:00:00.000") + outage, QString::number(outage)));
        QTest::qWait(1000);
        QVERIFY(m_server->start());
    }
    QVERIFY(isForwarded(readingsets::inFile(path, QStringLiteral("MY1"))));
    QTRY_COMPARE(follower.errors().count(QStringLiteral("The server takes readings again.")), 3);
}

void TestForward::restoredServerGetsWhatItLacks()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    // A day that is over is closed when it is forwarded.
    const QString overFile = file(QStringLiteral("MY2"));
    writer(overFile).reset();
    const QStringList over = readingsets::inFile(overFile, QStringLiteral("MY2"));
    QFile::remove(overFile + QStringLiteral("-wal"));
    QFile::remove(overFile + QStringLiteral("-shm"));
    QFile finished(overFile);
    QVERIFY(finished.open(QIODevice::ReadWrite));
    QVERIFY(finished.setFileTime(QDateTime::currentDateTime().addSecs(-60),
                                 QFileDevice::FileModificationTime));
    finished.close();
    DayFileWriter(file(QStringLiteral("MY2"), QStringLiteral("20260113.db")));
    QStringList expected = readingsets::inFile(path, QStringLiteral("MY1")) + over;
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QVERIFY(isForwarded(expected));
    QTest::qWait(1500);
    QCOMPARE(m_server->psql(QStringLiteral("TRUNCATE reading, reading_place")), QString());
    m_server->killSessions();
    day->execute(insertion(1, localTime("2026-01-12 07:00:00.000"), QStringLiteral("1")));
    expected = readingsets::inFile(path, QStringLiteral("MY1")) + over;
    QVERIFY(isForwarded(expected));
}

void TestForward::daysThatAreOverAreReadByAndBy()
{
    constexpr int kDays = 40;
    QStringList expected;
    for (int day = 10; day < 10 + kDays; ++day) {
        const QString path = file(QStringLiteral("MY1"), QStringLiteral("202601%1.db").arg(day));
        DayFileWriter writer(path);
        writer.addCurve(1, QStringLiteral("101(V)"));
        writer.addBatch(1, localTime(kMorning), table(1), {{day * 1000.0, 1.0}});
        QFile over(path);
        QVERIFY(over.open(QIODevice::ReadWrite));
        QVERIFY(over.setFileTime(QDateTime::currentDateTime().addSecs(-60),
                                 QFileDevice::FileModificationTime));
        expected += readingsets::inFile(path, QStringLiteral("MY1"));
    }
    expected.sort();
    m_server->stop();
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    const auto openFiles = [&follower] {
        const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(follower.processId()));
        const QFileInfoList all = descriptors.entryInfoList(QDir::Files | QDir::System);
        return std::count_if(all.cbegin(), all.cend(), [](const QFileInfo& one) {
            return one.symLinkTarget().endsWith(QLatin1String(".db"));
        });
    };
    // The day that may be written to, and sixteen others.
    QTRY_COMPARE_WITH_TIMEOUT(static_cast<int>(openFiles()), 17, kForwardPatienceMs);
    QTest::qWait(1200);
    QCOMPARE(static_cast<int>(openFiles()), 17);
    QVERIFY(m_server->start());
    QVERIFY(isForwarded(expected));
}

void TestForward::keptRunIsReadOnceItHasOneName()
{
    const QString path = file(QStringLiteral("MY1"));
    auto day = writer(path);
    day->execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    const QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    const QDir kept(m_directory->filePath(QStringLiteral("runs/MY1/2026-01-12_06-00-00")));
    QVERIFY(kept.mkpath(QStringLiteral(".")));
    QFile note(kept.filePath(QStringLiteral("run.json")));
    QVERIFY(note.open(QIODevice::WriteOnly));
    const QString source = m_directory->filePath(QStringLiteral("MY1_Data"));
    note.write("{\"serial\": \"MY1\", \"source\": \"" + source.toUtf8() + "\"}");
    note.close();
    const QString link = kept.filePath(QStringLiteral("20260112.db"));
    QCOMPARE(::link(qPrintable(path), qPrintable(link)), 0);

    QCOMPARE(once(kept.path()), 3);
    QVERIFY2(m_errors.contains(
                 link + QStringLiteral(" is not opened under its second name. Forward ") + source),
             qPrintable(m_errors));
    QVERIFY(readingsets::inDatabase(*m_server).isEmpty());
    // The program has it open still: its log is not folded in yet.
    QVERIFY(QDir(m_directory->filePath(QStringLiteral("MY1_Data"))).removeRecursively());
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QTest::qWait(1500);
    QVERIFY(readingsets::inDatabase(*m_server).isEmpty());
    day.reset();
    QVERIFY(isForwarded(expected));
    QCOMPARE(kept.entryList(QDir::Files).size(), 2);
}

void TestForward::logOfAKeptRunIsRead()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    const QStringList expected = readingsets::inFile(path, QStringLiteral("MY1"));
    const QDir kept(m_directory->filePath(QStringLiteral("runs/MY1/2026-01-12_06-00-00")));
    QVERIFY(kept.mkpath(QStringLiteral(".")));
    QFile note(kept.filePath(QStringLiteral("run.json")));
    QVERIFY(note.open(QIODevice::WriteOnly));
    note.write("{\"serial\": \"MY1\"}");
    note.close();
    for (const char* suffix : {"", "-wal"}) {
        const QString name = QStringLiteral("20260112.db") + QString::fromLatin1(suffix);
        QVERIFY(QFile::copy(path + QString::fromLatin1(suffix), kept.filePath(name)));
    }
    QVERIFY(QFile(kept.filePath(QStringLiteral("20260112.db-wal"))).size() > 0);
    QCOMPARE(once(kept.path()), 0);
    QCOMPARE(readingsets::inDatabase(*m_server), expected);
    QCOMPARE(kept.entryList(QDir::Files),
             (QStringList{QStringLiteral("20260112.db"), QStringLiteral("20260112.db-wal"),
                          QStringLiteral("run.json")}));
}

/// A file with a rollback journal, whose writer has no patience: any lock would fail its commit.
void TestForward::writerIsNeverKeptWaiting()
{
    const QString path = file(QStringLiteral("MY1"));
    DayFileWriter day(path);
    day.execute(QStringLiteral("PRAGMA busy_timeout = 0"));
    day.execute(QStringLiteral("PRAGMA synchronous = OFF"));
    day.addCurve(1, QStringLiteral("101(V)"));
    day.addBatch(1, localTime(kMorning), table(1), points(200000, 0.0, localTime(kMorning)));
    const FollowerProcess follower(
        {m_directory->path(), QStringLiteral("--to"), m_server->address()});
    const qint64 later = localTime("2026-01-12 12:00:00.000");
    int count = 0;
    for (; count < 20000 && (count < 2000 || readingsets::inDatabase(*m_server).size() < 100000);
         ++count) {
        day.execute(insertion(1, later + count, QStringLiteral("1")));
        for (int i = 0; i < 99 && count < 20000; ++i) {
            day.execute(insertion(1, later + ++count, QStringLiteral("1")));
        }
    }
    QVERIFY(QTest::qWaitFor(
        [&] {
            return m_server->psql(QStringLiteral("SELECT count(*) FROM reading")).toInt() ==
                   200000 + count;
        },
        kForwardPatienceMs));
}

void TestForward::partitionsAreDaysOfUtc()
{
    const QString path = file(QStringLiteral("MY1"));
    DayFileWriter day(path);
    day.addCurve(1, QStringLiteral("101(V)"));
    day.addBatch(1, localTime(kMorning), table(1),
                 {{-1.0, 1.0}, {0.0, 2.0}, {86399999.0, 3.0}, {86400000.0, 4.0}, {-6.3e13, 5.0}});
    QCOMPARE(once(), 0);
    QCOMPARE(
        m_server->rows(QStringLiteral("SELECT tableoid::regclass, value FROM reading ORDER BY "
                                      "value")),
        (QStringList{QStringLiteral("reading_19691231|1"), QStringLiteral("reading_19700101|2"),
                     QStringLiteral("reading_19700101|3"), QStringLiteral("reading_19700102|4"),
                     QStringLiteral("reading_00280811_bc|5")}));
}

void TestForward::tableOfAnAdministratorIsUsed()
{
    const QString path = file(QStringLiteral("MY1"));
    const auto day = writer(path);
    // Months of one's own, and a role that may write but create nothing.
    QCOMPARE(
        m_server->psql(QStringLiteral(
            "CREATE TABLE reading (instrument text, curve text, time timestamptz, value float8, "
            "PRIMARY KEY (instrument, curve, time, value)) PARTITION BY RANGE (time);"
            "CREATE TABLE reading_2026_01 PARTITION OF reading FOR VALUES FROM ('2026-01-01') TO "
            "('2026-02-01');"
            "CREATE TABLE reading_place (instrument text, source text, first_time bigint, last_id "
            "bigint, last_time bigint, last_value float8, PRIMARY KEY (instrument, source, "
            "first_time));")),
        QString());
    QCOMPARE(once(), 0);
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(*) FROM reading_2026_01")),
             QStringLiteral("20"));
    // A table that is not partitioned, as an extension has it.
    QCOMPARE(m_server->psql(QStringLiteral(
                 "DROP TABLE reading, reading_place; CREATE TABLE reading (instrument text, curve "
                 "text, time timestamptz, value float8, PRIMARY KEY (instrument, curve, time, "
                 "value))")),
             QString());
    QCOMPARE(once(), 0);
    QCOMPARE(m_server->psql(QStringLiteral("SELECT count(*) FROM ONLY reading")),
             QStringLiteral("20"));
}

void TestForward::damageIsASentence()
{
    const auto whole = writer(file(QStringLiteral("MY1")));
    QFile damaged(file(QStringLiteral("MY2")));
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray(8192, 'x'));
    damaged.close();
    QCOMPARE(once(), 2);
    QVERIFY2(m_errors.contains(damaged.fileName() + QStringLiteral(" is damaged: ")),
             qPrintable(m_errors));
    QCOMPARE(readingsets::inDatabase(*m_server),
             readingsets::inFile(file(QStringLiteral("MY1")), QStringLiteral("MY1")));
}

void TestForward::refusalIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");

    const QString to = QStringLiteral("--to");
    const QString here = QStringLiteral("here");
    QTest::newRow("no directory") << QStringList{to, QStringLiteral("postgresql://x")}
                                  << QStringLiteral("forward: an argument is missing.");
    QTest::newRow("missing directory")
        << QStringList{QStringLiteral("/nowhere"), to, QStringLiteral("postgresql://x")}
        << QStringLiteral("forward: /nowhere is no directory.");
    QTest::newRow("no address") << QStringList{here}
                                << QStringLiteral("forward: no database is given with --to.");
    QTest::newRow("other address")
        << QStringList{here, to, QStringLiteral("mysql://x")}
        << QStringLiteral("forward: the address of the database is wrong: it does not begin with "
                          "postgresql://.");
    QTest::newRow("wrong address")
        << QStringList{here, to, QStringLiteral("postgresql://x/y?colour=red")}
        << QStringLiteral("forward: the address of the database is wrong: invalid URI query "
                          "parameter: \"colour\".");
    QTest::newRow("wrong port")
        << QStringList{here, to, QStringLiteral("postgresql://127.0.0.1/x?port=5999;")}
        << QStringLiteral("forward: the address of the database is wrong: '5999;' is no port.");
    QTest::newRow("missing database")
        << QStringList{here, to, m_server->address(QStringLiteral("missing"))}
        << QStringLiteral("database \"missing\" does not exist.");
    QTest::newRow("missing right")
        << QStringList{here, to,
                       m_server->address(QStringLiteral("postgres"), QStringLiteral("guest"))}
        << QStringLiteral("permission denied for schema public.");
}

void TestForward::refusalIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, sentence);

    m_server->psql(QStringLiteral("CREATE ROLE guest LOGIN"));
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^here$")), m_directory->path());
    FollowerProcess follower(arguments);
    QCOMPARE(follower.exitCode(), 1);
    const QString errors = follower.errors();
    QVERIFY2(errors.startsWith(QStringLiteral("scn4070a-store: forward: ")) &&
                 errors.contains(sentence) && errors.count(QLatin1Char('\n')) == 1,
             qPrintable(errors));
}

void TestForward::silentServerDoesNotKeepTheProgram()
{
    const auto day = writer(file(QStringLiteral("MY1")));
    FollowerProcess follower({m_directory->path(), QStringLiteral("--to"), m_server->address()});
    QVERIFY(isForwarded(readingsets::inFile(file(QStringLiteral("MY1")), QStringLiteral("MY1"))));
    m_server->freeze(true);
    day->execute(insertion(1, localTime("2026-01-12 07:00:00.000"), QStringLiteral("1")));
    QTest::qWait(1500);
    follower.signal(SIGTERM);
    const int code = follower.exitCode();
    m_server->freeze(false);
    QCOMPARE(code, 0);
    QCOMPARE(once(), 0);
    QCOMPARE(readingsets::inDatabase(*m_server),
             readingsets::inFile(file(QStringLiteral("MY1")), QStringLiteral("MY1")));
}

void TestForward::signalEndsIt()
{
    const auto day = writer(file(QStringLiteral("MY1")));
    for (const int signal : {SIGINT, SIGTERM}) {
        FollowerProcess follower(
            {m_directory->path(), QStringLiteral("--to"), m_server->address()});
        QVERIFY(
            isForwarded(readingsets::inFile(file(QStringLiteral("MY1")), QStringLiteral("MY1"))));
        follower.signal(signal);
        QCOMPARE(follower.exitCode(), 0);
        QVERIFY2(follower.errors().contains(QStringLiteral(" readings forwarded in ")),
                 qPrintable(follower.errors()));
    }
}

SCN_TEST(TestForward, QCoreApplication)
#include "test_forward.moc"
