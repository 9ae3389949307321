#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/managedquery.h"
#include "storage/shardnaming.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaType>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <chrono>
#include <cmath>
#include <memory>
#include <thread>

namespace {

QStringList infoRows(const QString& path)
{
    return dayfile::rows(path, QStringLiteral("SELECT curve_id, name FROM curve_info ORDER BY 1"));
}

QStringList columns(const QString& path, const char* table)
{
    return dayfile::rows(path, QStringLiteral("SELECT name, type, \"notnull\", pk "
                                              "FROM pragma_table_info('%1')")
                                   .arg(QString::fromLatin1(table)));
}

QStringList foreignKeys(const QString& path, const QString& table)
{
    return dayfile::rows(path, QStringLiteral("SELECT \"table\", \"from\", \"to\" "
                                              "FROM pragma_foreign_key_list('%1')")
                                   .arg(table));
}

QString one(const char* row)
{
    return QString::fromLatin1(row);
}

} // namespace

/// The object, the schema, registration and the move to a new day's file.
class TestCurveDataDB : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void todaysFileHasTheBaseTables();
    void batchTableHasItsColumnsAndIndex();
    void pathsOfDays();
    void typesAreRegistered();
    void initialExtremes();
    void namesAndExtremesAreCopies();
    void newCurveTakesTwoPauses();
    void knownCurveTakesNone();
    void curvesAreFoundAgainAfterARestart();
    void missingTablesAreRebuiltByRegistration();
    void directoryThatCannotBeMadeLeavesAStoreWithoutFile();
    void fileThatCannotBeOpenedIsAskedForAgain();
    void registrationReopensAClosedFile();
    void garbageFileIsReportedAndSurvived();
    void midnightRegistersAllCurvesInTheNewFile();
    void midnightTakesNoPauses();
    void curveOfAStoreInUseTakesNone();
    void midnightKeepsTheOldConnectionPooled();
    void clockSetBackGoesBackToTheOldFile();
    void detachmentLetsGoOfTheFile();
    void reattachmentIsCheapAndChangesNothing();
    void reattachmentToAnotherConnectionReadsTheFile();
    void detachmentSavesExtremes();
    void writerThatNobodyReadsIsNotSwept();
    void writeIsAUse();
    void deletedFileIsMadeAnew();
    void closedForGoodStaysClosed();
    void closingForExitLeavesNoSideFiles();
    void closingForExitDoesNotWaitForALockedFile();
    void registrationFromAnotherThread();
    void linkedDirectoryIsNotUsed();
    void refusalIsTold();
    void refusedRegistrationIsTold();
    void destructorClosesAlsoWhatIsOpenedMeanwhile();

private:
    SkippedWaits m_waits;
};

void TestCurveDataDB::init()
{
    setPresent(localTime("2026-01-12 09:30:00.000"));
    m_waits.forget();
}

void TestCurveDataDB::todaysFileHasTheBaseTables()
{
    TestStore store;
    const QString path = store.path("20260112");
    QCOMPARE(QDir(store.directory()).entryList({QStringLiteral("*.db")}),
             QStringList{QStringLiteral("20260112.db")});
    QCOMPARE(columns(path, "curve_info"),
             (QStringList{one("curve_id|INTEGER|0|1"), one("name|TEXT|1|0")}));
    QCOMPARE(columns(path, "batch_metadata"),
             (QStringList{one("id|INTEGER|0|1"), one("curve_id|INTEGER|1|0"),
                          one("batch_start|INTEGER|1|0"), one("batch_end|INTEGER|1|0"),
                          one("table_name|TEXT|1|0")}));
    QCOMPARE(columns(path, "curve_metadata"),
             (QStringList{one("curve_id|INTEGER|0|1"), one("min_time|INTEGER|0|0"),
                          one("max_time|INTEGER|0|0"), one("min_value|REAL|0|0"),
                          one("max_value|REAL|0|0")}));
    for (const char* table : {"batch_metadata", "curve_metadata"}) {
        QCOMPARE(foreignKeys(path, one(table)), QStringList{one("curve_info|curve_id|curve_id")});
    }
    QCOMPARE(
        dayfile::rows(path, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                           "AND sql LIKE '%AUTOINCREMENT%' ORDER BY 1")),
        (QStringList{one("batch_metadata"), one("curve_info")}));
    QCOMPARE(
        dayfile::execute(path, QStringLiteral("INSERT INTO curve_info (name) VALUES ('a'), ('a')")),
        QStringLiteral("UNIQUE constraint failed: curve_info.name"));
    QCOMPARE(
        dayfile::execute(path, QStringLiteral("INSERT INTO batch_metadata (curve_id, batch_start, "
                                              "batch_end, table_name) "
                                              "VALUES (1, 0, 0, 't'), (1, 1, 1, 't')")),
        QStringLiteral("UNIQUE constraint failed: batch_metadata.curve_id, "
                       "batch_metadata.table_name"));
}

void TestCurveDataDB::batchTableHasItsColumnsAndIndex()
{
    TestStore store;
    const int id = store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(id, localTime("2026-01-12 07:30:00.000"), 1.5);
    const QString path = store.path("20260112");
    const char* const table = "curve_1_batch_20260112_060000_20260112_115959";
    QCOMPARE(columns(path, table),
             (QStringList{one("id|INTEGER|0|1"), one("curve_id|INTEGER|1|0"),
                          one("timestamp|INTEGER|1|0"), one("value|REAL|1|0")}));
    QCOMPARE(foreignKeys(path, one(table)), QStringList{one("curve_info|curve_id|curve_id")});
    QCOMPARE(
        dayfile::rows(path, QStringLiteral("SELECT sql FROM sqlite_master WHERE type = 'index' "
                                           "AND name = 'idx_%1_curve_time'")
                                .arg(one(table)))
            .first()
            .section(QStringLiteral(" ON "), 1),
        QStringLiteral("\"%1\" (curve_id, timestamp)").arg(one(table)));
    QCOMPARE(dayfile::execute(path, QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) "
                                                   "VALUES (1, 5, 0), (1, 5, 1)")
                                        .arg(one(table))),
             QStringLiteral("UNIQUE constraint failed: %1.curve_id, %1.timestamp").arg(one(table)));
    QCOMPARE(
        dayfile::rows(path, QStringLiteral("SELECT curve_id, batch_start, batch_end, table_name "
                                           "FROM batch_metadata")),
        QStringList{QStringLiteral("1|%1|%2|%3")
                        .arg(localTime("2026-01-12 06:00:00.000"))
                        .arg(localTime("2026-01-12 11:59:59.999"))
                        .arg(one(table))});
    QCOMPARE(store->knownTableCount(), 1);
}

void TestCurveDataDB::pathsOfDays()
{
    TestStore store;
    QCOMPARE(store->dbPathForDate(QStringLiteral("20251231")), store.path("20251231"));
    QCOMPARE(store->dbPathForTime(localTime("2026-01-11 23:59:59.999")), store.path("20260111"));
    QCOMPARE(store->dbPathForTime(localTime("2026-01-13 00:00:00.000")), store.path("20260112"));
    QCOMPARE(store->todayDbPath(), store.path("20260112"));
    QCOMPARE(store->dataDirectory(), store.directory());
}

void TestCurveDataDB::typesAreRegistered()
{
    TestStore store;
    for (const char* name : {"DBBatchInfo", "DBCurveMetadata", "QSharedPointer<QSqlDatabase>"}) {
        QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
    }
}

void TestCurveDataDB::initialExtremes()
{
    TestStore store;
    const DBCurveMetadata unknown = store->curveMetadata(77);
    QCOMPARE(unknown.minTime, Q_INT64_C(9223372036854775807));
    QCOMPARE(unknown.maxTime, std::numeric_limits<qint64>::min());
    QCOMPARE(unknown.minValue, 1.7976931348623157e308);
    QCOMPARE(unknown.maxValue, -1.7976931348623157e308);
}

void TestCurveDataDB::namesAndExtremesAreCopies()
{
    TestStore store;
    const int first = store->registerCurve(QStringLiteral("101(V)"));
    const int second = store->registerCurve(QStringLiteral("102(Ω)"));
    QCOMPARE(store->curveNames(), (QMap<int, QString>{{first, QStringLiteral("101(V)")},
                                                      {second, QStringLiteral("102(Ω)")}}));
    QCOMPARE(store->namesForIds({second, 99}),
             (QMap<int, QString>{{second, QStringLiteral("102(Ω)")}}));
    QCOMPARE(store->namesForIds({}), (QMap<int, QString>()));
}

void TestCurveDataDB::newCurveTakesTwoPauses()
{
    TestStore store;
    QCOMPARE(store->registerCurve(QStringLiteral("it's \"new\"; DROP TABLE curve_info")), 1);
    QCOMPARE(m_waits.asked(), (QVector<int>{100, 100}));
    QCOMPARE(infoRows(store.path("20260112")),
             QStringList{QStringLiteral("1|it's \"new\"; DROP TABLE curve_info")});
}

void TestCurveDataDB::knownCurveTakesNone()
{
    TestStore store;
    QCOMPARE(store->registerCurve(QStringLiteral("101(V)")), 1);
    m_waits.forget();
    QCOMPARE(store->registerCurve(QStringLiteral("101(V)")), 1);
    QCOMPARE(m_waits.asked(), QVector<int>());
}

void TestCurveDataDB::curvesAreFoundAgainAfterARestart()
{
    TestStore store;
    const qint64 time = localTime("2026-01-12 07:30:00.000");
    QCOMPARE(store->registerCurve(QStringLiteral("101(V)")), 1);
    QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), 2);
    store->appendPoint(2, time, -4.5);
    store.restart();
    QCOMPARE(store->curveNames(),
             (QMap<int, QString>{{1, QStringLiteral("101(V)")}, {2, QStringLiteral("102(V)")}}));
    QCOMPARE(store->curveMetadata(2).minTime, time);
    QCOMPARE(store->curveMetadata(2).maxValue, -4.5);
    QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), 2);
}

void TestCurveDataDB::missingTablesAreRebuiltByRegistration()
{
    TestStore store;
    QCOMPARE(
        dayfile::execute(store.path("20260112"),
                         QStringLiteral("DROP TABLE curve_metadata; DROP TABLE batch_metadata; "
                                        "DROP TABLE curve_info")),
        QString());
    QCOMPARE(store->registerCurve(QStringLiteral("101(V)")), 1);
    store->appendPoint(1, localTime("2026-01-12 07:30:00.000"), 2.0);
    QCOMPARE(infoRows(store.path("20260112")), QStringList{one("1|101(V)")});
    QCOMPARE(dayfile::rows(
                 store.path("20260112"),
                 QStringLiteral("SELECT value FROM curve_1_batch_20260112_060000_20260112_115959")),
             QStringList{one("2.0")});
}

void TestCurveDataDB::directoryThatCannotBeMadeLeavesAStoreWithoutFile()
{
    const QTemporaryDir parent;
    const QString file = parent.filePath(QStringLiteral("file"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    const QString directory = file + QStringLiteral("/SN1_Data");
    const LogCapture log;
    CurveDataDB store(directory);
    QCOMPARE(log.lines(),
             (QStringList{QStringLiteral("critical: 创建数据目录失败: \"%1\"").arg(directory),
                          QStringLiteral("critical: 创建数据库目录失败: \"%1\"").arg(directory),
                          QStringLiteral("warning: 切换数据库失败，连接无效： \"%1/20260112.db\"")
                              .arg(directory)}));
    QCOMPARE(store.registerCurve(QStringLiteral("101(V)")), -1);
    QVERIFY(log.lines().contains(QStringLiteral("critical: 数据库已关闭，尝试重新打开...")));
    QVERIFY(log.lines().contains(QStringLiteral("critical: 重新打开失败! 错误: \"连接无效\"")));
    store.appendPoint(1, localTime("2026-01-12 07:30:00.000"), 2.0);
    QVERIFY(!store.saveMetadata());
    QVERIFY(!store.deleteCurveData(1));
    QVERIFY(log.lines().contains(QStringLiteral("critical: 数据库未打开，无法删除曲线数据")));
    store.flushAndDetach();

    // When the directory can be created again, readings are stored again a few seconds later.
    QVERIFY(QFile::remove(file));
    QCOMPARE(store.registerCurve(QStringLiteral("101(V)")), 1);
    store.appendPoint(1, localTime("2026-01-12 07:30:00.000"), 2.0);
    QCOMPARE(store.curveMetadata(1).maxValue, 2.0);
    store.closeForExit(QDeadlineTimer(2000));
}

void TestCurveDataDB::fileThatCannotBeOpenedIsAskedForAgain()
{
    setPresent(localTime("2026-01-12 23:59:59.000"));
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    QVERIFY(QDir(store.directory()).mkdir(QStringLiteral("20260113.db"))); // in the file's place
    setPresent(localTime("2026-01-13 00:00:10.000"));
    const qint64 time = localTime("2026-01-13 00:00:01.000");
    const LogCapture log;
    store->appendPoint(1, time, 1.0);
    store->appendPoint(1, time + 1, 2.0);
    const int attempts = log.lines(QtCriticalMsg).size();
    QVERIFY(log.lines(QtCriticalMsg).first().startsWith(QStringLiteral("打开数据库失败: ")));
    for (int i = 2; i < 20; ++i) {
        store->appendPoint(1, time + i, 3.0);
    }
    QCOMPARE(log.lines(QtCriticalMsg).size(), attempts); // not with every reading
    QVERIFY(QDir(store.directory()).rmdir(QStringLiteral("20260113.db")));
    advancePresent(5000);
    store->appendPoint(1, time + 20, 4.0);
    QCOMPARE(dayfile::rows(
                 store.path("20260113"),
                 QStringLiteral("SELECT value FROM curve_1_batch_20260113_000000_20260113_055959")),
             QStringList{one("4.0")});
}

void TestCurveDataDB::registrationReopensAClosedFile()
{
    TestStore store;
    QCOMPARE(store->registerCurve(QStringLiteral("101(V)")), 1);
    ConnectionPool::instance().removeConnection(store.path("20260112"));
    QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), 2);
    store->appendPoint(1, localTime("2026-01-12 07:30:00.000"), 2.0);
    ConnectionPool::instance().removeConnection(store.path("20260112"));
    store->appendPoint(2, localTime("2026-01-12 07:30:00.000"), 3.0);
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           QStringLiteral("SELECT curve_id, max_value FROM curve_metadata")),
             (QStringList{one("1|2.0"), one("2|3.0")}));
}

void TestCurveDataDB::garbageFileIsReportedAndSurvived()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    setPresent(localTime("2026-01-13 09:30:00.000"));
    {
        QFile file(store.path("20260113"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.write(QByteArray(8192, 'x')) == 8192);
    }
    {
        const LogCapture log;
        store->appendPoint(1, localTime("2026-01-13 09:29:00.000"), 2.0);
        const QStringList failures = log.lines(QtCriticalMsg);
        QCOMPARE(failures.size(), 3);
        QVERIFY(failures.at(0).startsWith(QStringLiteral("创建curve_info表失败:")));
        QVERIFY(failures.at(1).startsWith(QStringLiteral("创建batch_metadata表失败:")));
        QVERIFY(failures.at(2).startsWith(QStringLiteral("创建curve_metadata表失败:")));
        QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), -1);
    }
    // The file has been removed: the curves are registered in a new one.
    QVERIFY(QFile::remove(store.path("20260113")));
    store->appendPoint(1, localTime("2026-01-13 09:29:30.000"), 3.0);
    QCOMPARE(infoRows(store.path("20260113")), QStringList{one("1|101(V)")});
    QCOMPARE(dayfile::rows(
                 store.path("20260113"),
                 QStringLiteral("SELECT value FROM curve_1_batch_20260113_060000_20260113_115959")),
             QStringList{one("3.0")});
}

void TestCurveDataDB::midnightRegistersAllCurvesInTheNewFile()
{
    setPresent(localTime("2026-01-12 23:59:59.500"));
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->registerCurve(QStringLiteral("102(V)"));
    store->appendPoint(1, localTime("2026-01-12 23:59:59.400"), 1.0);
    store->appendPoint(2, localTime("2026-01-12 23:59:59.400"), 2.0);
    setPresent(localTime("2026-01-13 00:00:00.500"));
    store->appendPoint(1, localTime("2026-01-13 00:00:00.000"), 3.0);

    QCOMPARE(
        dayfile::dump(store.path("20260112")),
        (QStringList{QStringLiteral(
                         "batch_metadata: 1|1|%1|%2|curve_1_batch_20260112_180000_20260112_235959")
                         .arg(localTime("2026-01-12 18:00:00.000"))
                         .arg(localTime("2026-01-12 23:59:59.999")),
                     QStringLiteral(
                         "batch_metadata: 2|2|%1|%2|curve_2_batch_20260112_180000_20260112_235959")
                         .arg(localTime("2026-01-12 18:00:00.000"))
                         .arg(localTime("2026-01-12 23:59:59.999")),
                     QStringLiteral("curve_1_batch_20260112_180000_20260112_235959: 1|1|%1|1.0")
                         .arg(localTime("2026-01-12 23:59:59.400")),
                     QStringLiteral("curve_2_batch_20260112_180000_20260112_235959: 1|2|%1|2.0")
                         .arg(localTime("2026-01-12 23:59:59.400")),
                     one("curve_info: 1|101(V)"), one("curve_info: 2|102(V)"),
                     QStringLiteral("curve_metadata: 1|%1|%1|1.0|1.0")
                         .arg(localTime("2026-01-12 23:59:59.400")),
                     QStringLiteral("curve_metadata: 2|%1|%1|2.0|2.0")
                         .arg(localTime("2026-01-12 23:59:59.400"))}));
    QCOMPARE(
        dayfile::dump(store.path("20260113")),
        (QStringList{QStringLiteral(
                         "batch_metadata: 1|1|%1|%2|curve_1_batch_20260113_000000_20260113_055959")
                         .arg(localTime("2026-01-13 00:00:00.000"))
                         .arg(localTime("2026-01-13 05:59:59.999")),
                     QStringLiteral("curve_1_batch_20260113_000000_20260113_055959: 1|1|%1|3.0")
                         .arg(localTime("2026-01-13 00:00:00.000")),
                     one("curve_info: 1|101(V)"), one("curve_info: 2|102(V)"),
                     QStringLiteral("curve_metadata: 1|%1|%1|3.0|3.0")
                         .arg(localTime("2026-01-13 00:00:00.000"))}));
}

void TestCurveDataDB::midnightTakesNoPauses()
{
    constexpr int kCurves = 60;
    TestStore store;
    {
        DayFileWriter file(store.path("20260112"));
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            file.addCurve(curveId, QStringLiteral("%1(V)").arg(100 + curveId));
        }
    }
    store.restart();
    const QStringList before = infoRows(store.path("20260112"));
    setPresent(localTime("2026-01-13 00:00:00.500"));
    m_waits.forget();
    store->appendPoint(1, localTime("2026-01-13 00:00:00.000"), 3.0);
    QCOMPARE(m_waits.asked(), QVector<int>());
    QCOMPARE(infoRows(store.path("20260113")), before);
}

void TestCurveDataDB::curveOfAStoreInUseTakesNone()
{
    TestStore store;
    constexpr int kCurves = 20;
    for (int curve = 1; curve <= kCurves; ++curve) {
        QCOMPARE(store->registerCurveAtOnce(QString::number(curve)), curve);
    }
    QCOMPARE(m_waits.asked(), QVector<int>());
    QCOMPARE(store->registerCurveAtOnce(one("3")), 3);
    QCOMPARE(infoRows(store.path("20260112")).size(), kCurves);
}

void TestCurveDataDB::midnightKeepsTheOldConnectionPooled()
{
    TestStore store;
    const int pooled = ConnectionPool::instance().connectionCount();
    advancePresent(kDayLengthMs);
    QVERIFY(store->saveMetadata());
    QCOMPARE(ConnectionPool::instance().connectionCount(), pooled + 1);
    QVERIFY(!ConnectionPool::instance().isHeld(store.path("20260112")));
    QVERIFY(ConnectionPool::instance().isHeld(store.path("20260113")));
}

void TestCurveDataDB::clockSetBackGoesBackToTheOldFile()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    setPresent(localTime("2026-01-13 09:30:00.000"));
    store->appendPoint(1, localTime("2026-01-13 09:00:00.000"), 2.0);
    setPresent(localTime("2026-01-12 09:40:00.000"));
    store->appendPoint(1, localTime("2026-01-12 09:39:00.000"), 3.0);
    const QString sql = QStringLiteral("SELECT value FROM curve_1_batch_%1_060000_%1_115959");
    QCOMPARE(dayfile::rows(store.path("20260112"), sql.arg(one("20260112"))),
             (QStringList{one("1.0"), one("3.0")}));
    QCOMPARE(dayfile::rows(store.path("20260113"), sql.arg(one("20260113"))),
             QStringList{one("2.0")});
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           QStringLiteral("SELECT min_value, max_value FROM curve_metadata")),
             QStringList{one("1.0|3.0")});
}

void TestCurveDataDB::detachmentLetsGoOfTheFile()
{
    TestStore store;
    QVERIFY(ConnectionPool::instance().isHeld(store.path("20260112")));
    store->flushAndDetach();
    QVERIFY(!ConnectionPool::instance().isHeld(store.path("20260112")));
    store->flushAndDetach();
    QVERIFY(store->saveMetadata());
    QVERIFY(ConnectionPool::instance().isHeld(store.path("20260112")));
}

void TestCurveDataDB::reattachmentIsCheapAndChangesNothing()
{
    TestStore store;
    constexpr int kCurves = 5;
    constexpr int kRounds = 200;
    for (int i = 1; i <= kCurves; ++i) {
        store->registerCurve(QStringLiteral("10%1(V)").arg(i));
    }
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < kRounds; ++round) {
        for (int id = 1; id <= kCurves; ++id) {
            store->appendPoint(id, localTime("2026-01-12 09:00:00.000") + round, round + id);
        }
        store->flushAndDetach();
    }
    QVERIFY2(timer.elapsed() < kRounds * 20, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           QStringLiteral("SELECT count(*), min(value), max(value) FROM "
                                          "curve_5_batch_20260112_060000_20260112_115959")),
             QStringList{one("200|5.0|204.0")});
    QCOMPARE(
        dayfile::rows(store.path("20260112"),
                      QStringLiteral("SELECT curve_id, min_value, max_value FROM curve_metadata")),
        (QStringList{one("1|1.0|200.0"), one("2|2.0|201.0"), one("3|3.0|202.0"), one("4|4.0|203.0"),
                     one("5|5.0|204.0")}));
    QCOMPARE(store->curveMetadata(5).maxValue, 204.0);
    QCOMPARE(store->curveNames().size(), kCurves);
}

void TestCurveDataDB::reattachmentToAnotherConnectionReadsTheFile()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    store->flushAndDetach();
    ConnectionPool::instance().removeConnection(store.path("20260112"));
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              QStringLiteral("UPDATE curve_metadata SET max_value = 50")),
             QString());
    QVERIFY(store->saveMetadata());
    QCOMPARE(store->curveMetadata(1).maxValue, 50.0);
    store->appendPoint(1, localTime("2026-01-12 09:00:01.000"), 2.0);
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           QStringLiteral("SELECT min_value, max_value FROM curve_metadata")),
             QStringList{one("1.0|50.0")});
}

void TestCurveDataDB::detachmentSavesExtremes()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    {
        const DayFileLock lock(store.path("20260112"), DayFileLock::Read);
        store->flushAndDetach();
    }
    QCOMPARE(store->curveMetadata(1).maxValue, 1.0);
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           QStringLiteral("SELECT max_value FROM curve_metadata")),
             QStringList{one("1.0")});
}

/// The sweep runs every four hours. A file used only by its writer has not been requested from the
/// pool again.
void TestCurveDataDB::writerThatNobodyReadsIsNotSwept()
{
    setPresent(localTime("2026-01-12 00:00:00.000"));
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    const LogCapture log; // the sweeps tell what they close
    const qint64 start = localTime("2026-01-12 00:00:00.000");
    constexpr qint64 kStepMs = 600000;
    int expected = 0;
    for (qint64 time = start; time < start + 2 * kDayLengthMs; time += kStepMs) {
        setPresent(time);
        store->appendPoint(1, time, 1.0);
        ++expected;
        if ((time - start) % 14400000 == 0) {
            QMetaObject::invokeMethod(&ConnectionPool::instance(), "cleanExpiredConnections");
        }
    }
    int stored = 0;
    for (const char* day : {"20260112", "20260113"}) {
        const QStringList tables =
            dayfile::rows(store.path(day), QStringLiteral("SELECT table_name FROM batch_metadata"));
        QCOMPARE(tables.size(), 4);
        for (const QString& table : tables) {
            stored +=
                dayfile::rows(store.path(day), QStringLiteral("SELECT 1 FROM ") + table).size();
        }
    }
    QCOMPARE(stored, expected);
    QVERIFY(log.lines(QtWarningMsg).isEmpty());
}

void TestCurveDataDB::writeIsAUse()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    setPresent(localTime("2026-01-12 20:00:00.000"));
    store->appendPoint(1, localTime("2026-01-12 19:59:59.000"), 1.0);
    QCOMPARE(ConnectionPool::instance().lastUse(store.path("20260112")),
             localTime("2026-01-12 20:00:00.000"));
    QCOMPARE(ConnectionPool::instance().lastUse(store.path("20260111")), 0);
}

void TestCurveDataDB::deletedFileIsMadeAnew()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    for (const char* suffix : {"", "-wal", "-shm"}) {
        QVERIFY(QFile::remove(store.path("20260112") + one(suffix)));
    }
    store->appendPoint(1, localTime("2026-01-12 09:00:01.000"), 2.0);
    const QString sql =
        QStringLiteral("SELECT value FROM curve_1_batch_20260112_060000_20260112_115959");
    QCOMPARE(dayfile::rows(store.path("20260112"), sql), QStringList{one("2.0")});

    QVERIFY(QDir(store.directory()).removeRecursively());
    QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), 2);
    store->appendPoint(1, localTime("2026-01-12 09:00:02.000"), 3.0);
    QCOMPARE(dayfile::rows(store.path("20260112"), sql), QStringList{one("3.0")});
    QCOMPARE(infoRows(store.path("20260112")), (QStringList{one("1|101(V)"), one("2|102(V)")}));

    store->flushAndDetach();
    QVERIFY(QDir(store.directory()).removeRecursively());
    store->appendPoint(1, localTime("2026-01-12 09:00:03.000"), 4.0);
    QCOMPARE(dayfile::rows(store.path("20260112"), sql), QStringList{one("4.0")});
}

void TestCurveDataDB::closedForGoodStaysClosed()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->closeForExit(QDeadlineTimer(2000));
    const LogCapture log;
    QVERIFY(!store->openDb(store.path("20260112")));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    store->appendPoint(1, localTime("2026-01-11 09:00:00.000"), 1.0);
    QVERIFY(!store->saveMetadata());
    store->clearAll();
    store->closeForExit(QDeadlineTimer(2000));
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(store->registerCurve(QStringLiteral("102(V)")), -1);
}

void TestCurveDataDB::closingForExitLeavesNoSideFiles()
{
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    QVERIFY(QFile::exists(store.path("20260112") + one("-wal")));
    m_waits.forget();
    const LogCapture log;
    store->closeForExit(QDeadlineTimer(2000));
    QCOMPARE(m_waits.asked(), QVector<int>());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(QDir(store.directory()).entryList(QDir::Files), QStringList{one("20260112.db")});
    QCOMPARE(dayfile::rows(store.path("20260112"), QStringLiteral("PRAGMA journal_mode")),
             QStringList{one("delete")});
}

void TestCurveDataDB::closingForExitDoesNotWaitForALockedFile()
{
    const LockWaits lockWaits;
    TestStore store;
    store->registerCurve(QStringLiteral("101(V)"));
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    const DayFileLock lock(store.path("20260112"));
    QVERIFY(lock.isHeld());
    store->closeForExit(QDeadlineTimer(2000));
    QVERIFY(lockWaits.total() <= std::chrono::milliseconds(2000));
}

void TestCurveDataDB::registrationFromAnotherThread()
{
    TestStore store;
    int other = -1;
    std::thread helper(
        [&store, &other] { other = store->registerCurve(QStringLiteral("101(V)")); });
    const int own = store->registerCurve(QStringLiteral("102(V)"));
    helper.join();
    QVERIFY(other > 0 && own > 0 && other != own);
    QCOMPARE(store->curveNames().size(), 2);
}

void TestCurveDataDB::linkedDirectoryIsNotUsed()
{
    const QTemporaryDir elsewhere;
    const QTemporaryDir parent;
    const QString link = parent.filePath(one("SN_Data"));
    QVERIFY(QFile::link(elsewhere.path(), link));
    const QString reason = QStringLiteral("critical: 数据目录是链接，不予使用： \"%1\"").arg(link);
    CurveDataDB store(link);
    {
        const LogCapture log;
        QCOMPARE(store.registerCurve(one("101(V)")), -1);
        QVERIFY(log.lines().contains(reason));
    }
    {
        const LogCapture log;
        store.appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
        store.appendPoint(1, localTime("2026-01-11 09:00:00.000"), 1.0);
        QVERIFY(log.lines().contains(reason));
    }
    QVERIFY(store.refusesReadings());
    QCOMPARE(QDir(elsewhere.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
    // A directory in its place is.
    QVERIFY(QFile::remove(link));
    QCOMPARE(store.registerCurve(one("101(V)")), 1);
    store.appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    QVERIFY(!store.refusesReadings());
    store.closeForExit(QDeadlineTimer(2000));
}

void TestCurveDataDB::refusalIsTold()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const qint64 time = localTime("2026-01-12 09:00:00.000");
    const qint64 late = localTime("2026-01-11 09:00:00.000");
    QVERIFY(!store->refusesReadings());
    const auto db = store->openDb(store.path("20260112"));
    const auto past = store->openDb(store.path("20260111"));
    const LogCapture log;
    for (const char* on : {"ON", "OFF"}) {
        const QString pragma = QStringLiteral("PRAGMA query_only = %1").arg(one(on));
        QVERIFY(ManagedQuery(*db).exec(pragma));
        QVERIFY(ManagedQuery(*past).exec(pragma));
        const bool isRefusing = pragma.endsWith(one("ON"));
        advancePresent(6000);
        store->appendPoint(1, time, 1.0);
        QCOMPARE(store->refusesReadings(), isRefusing);
        store->appendPoint(1, late, 1.0);
        QCOMPARE(store->refusesReadings(), isRefusing);
    }
    // A second reading in a millisecond is dropped, not refused; so is NaN.
    store->appendPoint(1, time, 1.0);
    store->appendPoint(1, time + 1, std::nan(""));
    QVERIFY(!store->refusesReadings());
}

void TestCurveDataDB::refusedRegistrationIsTold()
{
    TestStore store;
    store->flushAndDetach();
    ConnectionPool::instance().discardConnection(store.path("20260112"));
    QVERIFY(QDir(store.directory()).removeRecursively());
    QFile inTheWay(store.directory());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    QCOMPARE(store->registerCurveAtOnce(one("101(V)")), -1);
    QVERIFY(store->refusesReadings());
    QVERIFY(inTheWay.remove());
    QCOMPARE(store->registerCurveAtOnce(one("101(V)")), 1);
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    QVERIFY(!store->refusesReadings());
    // A store that is being cleared drops readings; it does not refuse them.
    store->clearAll();
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    QVERIFY(!store->refusesReadings());
}

/// While it closes, queued work of the thread finishes; that may open a file.
void TestCurveDataDB::destructorClosesAlsoWhatIsOpenedMeanwhile()
{
    const QTemporaryDir directory;
    auto store = std::make_unique<CurveDataDB>(directory.path());
    const QString path = directory.filePath(one("20260110.db"));
    store->flushAndDetach();
    ConnectionPool::instance().closeAllConnections();
    bool isOpened = false;
    QTimer::singleShot(0, [&path, &isOpened] {
        isOpened = !ConnectionPool::instance().acquireConnection(path).isNull();
    });
    store.reset();
    QVERIFY(isOpened);
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
}

SCN_TEST(TestCurveDataDB, QCoreApplication)
#include "test_curvedatadb.moc"
