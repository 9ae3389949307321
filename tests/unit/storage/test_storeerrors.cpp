#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "drivertap.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/storeclock.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <memory>

// Failures of single steps of the store: each has its log line, and what follows continues.

namespace {

const char* const kPresent = "2026-01-12T09:30:00.000+00:00";
const char* const kMorning = "curve_1_batch_20260112_060000_20260112_115959";
const char* const kNight = "curve_1_batch_20260112_000000_20260112_055959";

/// A time of the morning of the present day.
qint64 at(int minute, int second = 0)
{
    return instant("2026-01-12T09:00:00.000+00:00") + (minute * 60 + second) * 1000;
}

QStringList pointsOf(const TestStore& store, const char* table)
{
    return dayfile::rows(store.path("20260112"),
                         QStringLiteral("SELECT value FROM %1 ORDER BY id").arg(text(table)));
}

} // namespace

class TestStoreErrors : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_zone = std::make_unique<ZoneGuard>("UTC"); }
    void cleanupTestCase();
    void init() { setPresent(instant(kPresent)); }

    void connectionThatDoesNotAnswerIsMadeAnew();
    void acquiringIsAUse();
    void readerOfALogInUseLeavesItAlone();
    void registrationThatFailsTwiceIsCritical();
    void registrationThatIsRefusedSaysNothing();
    void transactionThatCannotBegin();
    void transactionThatCannotBeCommitted();
    void extremesThatCannotBeSavedLeaveTheReading_data();
    void extremesThatCannotBeSavedLeaveTheReading();
    void readingThatEndsItsTransactionLeavesTheExtremes();
    void noTransactionIsLeftOpen_data();
    void noTransactionIsLeftOpen();
    void fileWithoutItsListOfBatches();
    void batchInsertThatFailsGoesOnWithTheNextTable();
    void batchWhoseFileCannotBeOpened();
    void tableThatCannotBeLookedFor();
    void extremesThatCannotBeResetEndADeletion();
    void extremesThatCannotBeUpdatedAreInserted();

private:
    std::unique_ptr<ZoneGuard> m_zone;
    const SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

void TestStoreErrors::cleanupTestCase()
{
    scn::setStoreClock(nullptr);
    m_zone.reset();
}

void TestStoreErrors::connectionThatDoesNotAnswerIsMadeAnew()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(text("20260112.db"));
    ConnectionPool& pool = ConnectionPool::instance();
    QString name;
    std::unique_ptr<InterruptedConnection> interruption;
    {
        const auto db = pool.acquireConnection(path);
        name = db->connectionName();
        interruption = std::make_unique<InterruptedConnection>(*db);
    }
    // The interruption ends before its connection is closed.
    QTimer::singleShot(0, this, [&interruption] { interruption.reset(); });
    const LogCapture log;
    {
        const auto db = pool.acquireConnection(path);
        QVERIFY(db && db->isOpen());
        QVERIFY(db->connectionName() != name);
    }
    QVERIFY(!interruption);
    QCOMPARE(log.lines(),
             (QStringList{
                 QStringLiteral("debug: 连接验证失败： \"%1\" 错误： \"interrupted Unable to fetch "
                                "row\"")
                     .arg(name),
                 QStringLiteral("debug: 连接无效，重新创建： \"%1\"").arg(path)}));
    pool.closeForExit(QDeadlineTimer(2000));
}

void TestStoreErrors::acquiringIsAUse()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(text("20260112.db"));
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path);
    QCOMPARE(pool.lastUse(path), instant(kPresent));
    advancePresent(60000);
    pool.acquireConnection(path);
    QCOMPARE(pool.lastUse(path), instant(kPresent) + 60000);
    pool.closeForExit(QDeadlineTimer(2000));
}

/// A past file that another program still writes: its journal cannot be changed, so its WAL is not
/// checkpointed.
void TestStoreErrors::readerOfALogInUseLeavesItAlone()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(text("20260111.db"));
    DayFileWriter(path).addCurve(1, text("101(V)"));
    QCOMPARE(dayfile::execute(path, text("PRAGMA journal_mode = WAL; CREATE TABLE t (v INTEGER)")),
             QString());
    const auto writer = std::make_unique<DayFileLock>(path, DayFileLock::Read);
    QVERIFY(writer->isHeld());
    QCOMPARE(dayfile::execute(path, text("INSERT INTO t VALUES (1)")), QString());
    const auto content = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray before = content();
    ConnectionPool& pool = ConnectionPool::instance();
    const LogCapture log;
    const auto db = pool.acquireConnection(path);
    QVERIFY(db && db->isOpen());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().constFirst().startsWith(
                 text("warning: 执行PRAGMA失败： \"PRAGMA journal_mode = DELETE\"  错误： "
                      "\"database is locked")),
             qPrintable(log.lines().constFirst()));
    QVERIFY(!before.isEmpty());
    QCOMPARE(content(), before);
    ManagedQuery query(*db);
    QVERIFY(query.exec(text("SELECT v FROM t")) && query.next());
    query.clear();
    pool.closeForExit(QDeadlineTimer(2000));
}

void TestStoreErrors::registrationThatFailsTwiceIsCritical()
{
    TestStore store;
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              text("CREATE TRIGGER refuse BEFORE INSERT ON curve_info "
                                   "BEGIN SELECT RAISE(ABORT, 'SQL logic error'); END")),
             QString());
    {
        const LogCapture log;
        QCOMPARE(store->registerCurve(text("101(V)")), -1);
        QCOMPARE(log.lines().size(), 1);
        QVERIFY2(log.lines().constFirst().startsWith(
                     text("critical: 重新初始化后仍无法注册曲线: \"SQL logic error")),
                 qPrintable(log.lines().constFirst()));
    }
    QCOMPARE(dayfile::execute(store.path("20260112"), text("DROP TRIGGER refuse")), QString());
    QCOMPARE(store->registerCurve(text("101(V)")), 1);
}

void TestStoreErrors::registrationThatIsRefusedSaysNothing()
{
    TestStore store;
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              text("CREATE TRIGGER refuse BEFORE INSERT ON curve_info "
                                   "BEGIN SELECT RAISE(ABORT, 'refused'); END")),
             QString());
    const LogCapture log;
    QCOMPARE(store->registerCurve(text("101(V)")), -1);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(store->curveNames(), (QMap<int, QString>()));
}

void TestStoreErrors::transactionThatCannotBegin()
{
    TestStore store;
    enlist(store, "101(V)");
    {
        const auto db = store->openDb(store.path("20260112"));
        QVERIFY(ManagedQuery(*db).exec(text("BEGIN"))); // there is room for one only
        const LogCapture log;
        store->appendPoint(1, at(0), 1.0);
        const QStringList warnings = log.lines(QtWarningMsg);
        QCOMPARE(warnings.size(), 2);
        QVERIFY2(warnings.at(0).startsWith(text("开始事务失败: \"cannot start a transaction")),
                 qPrintable(warnings.at(0)));
        QCOMPARE(warnings.at(1), text("创建分片表失败: \"%1\"").arg(text(kMorning)));
        QVERIFY(ManagedQuery(*db).exec(text("COMMIT")));
    }
    store->appendPoint(1, at(1), 2.0);
    QCOMPARE(pointsOf(store, kMorning), QStringList{text("2.0")});
}

void TestStoreErrors::transactionThatCannotBeCommitted()
{
    TestStore store;
    enlist(store, "101(V)");
    const LogCapture log;
    {
        const auto db = store->openDb(store.path("20260112"));
        const RefusedCommit refusal(*db);
        store->appendPoint(1, at(0), 1.0);
    }
    const QStringList warnings = log.lines(QtWarningMsg);
    QCOMPARE(warnings.size(), 3);
    QVERIFY2(warnings.at(0).startsWith(text("提交事务失败: \"constraint failed")),
             qPrintable(warnings.at(0)));
    QCOMPARE(warnings.at(1), text("创建分片表失败: \"%1\"").arg(text(kMorning)));
    QVERIFY(warnings.at(2).startsWith(text("保存曲线元数据失败: \"constraint failed")));
    store->appendPoint(1, at(1), 2.0);
    QCOMPARE(log.lines(QtWarningMsg).size(), 3);
    QCOMPARE(pointsOf(store, kMorning), QStringList{text("2.0")});
}

void TestStoreErrors::extremesThatCannotBeSavedLeaveTheReading_data()
{
    QTest::addColumn<QString>("refusal");
    QTest::newRow("statement fails") << text("ABORT");
    QTest::newRow("transaction ends") << text("ROLLBACK");
}

/// The extremes of several curves are saved all or none; the reading stays in either case.
void TestStoreErrors::extremesThatCannotBeSavedLeaveTheReading()
{
    QFETCH(const QString, refusal);
    TestStore store;
    const QString path = store.path("20260112");
    enlist(store, "101(V)");
    enlist(store, "102(V)");
    store->appendPoint(1, at(0), 1.0);
    store->appendPoint(2, at(0), 1.0);
    QCOMPARE(dayfile::execute(path, text("CREATE TRIGGER refuse BEFORE INSERT ON curve_metadata "
                                         "WHEN NEW.curve_id = 2 "
                                         "BEGIN SELECT RAISE(%1, 'refused'); END")
                                        .arg(refusal)),
             QString());
    const QString maxima = text("SELECT max_value FROM curve_metadata ORDER BY curve_id");
    {
        const LogCapture log;
        store->appendPoint(2, at(1), 2.0);
        store->appendPoint(1, at(1), 2.0);
        QVERIFY(!store->refusesReadings());
        const QStringList warnings = log.lines(QtWarningMsg);
        QCOMPARE(warnings.size(), 2);
        for (const QString& warning : warnings) {
            QVERIFY2(warning.startsWith(text("保存曲线元数据失败: \"refused")),
                     qPrintable(warning));
        }
    }
    const QStringList twoReadings{text("1.0"), text("2.0")};
    QCOMPARE(pointsOf(store, kMorning), twoReadings);
    QCOMPARE(pointsOf(store, "curve_2_batch_20260112_060000_20260112_115959"), twoReadings);
    QCOMPARE(dayfile::rows(path, maxima), (QStringList{text("1.0"), text("1.0")}));
    QCOMPARE(dayfile::execute(path, text("DROP TRIGGER refuse")), QString());
    const LogCapture log;
    store->appendPoint(1, at(2), 3.0);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(dayfile::rows(path, maxima), (QStringList{text("3.0"), text("2.0")}));
}

void TestStoreErrors::readingThatEndsItsTransactionLeavesTheExtremes()
{
    TestStore store;
    enlist(store, "101(V)");
    store->appendPoint(1, at(0), 1.0);
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              text("CREATE TRIGGER refuse BEFORE INSERT ON %1 "
                                   "BEGIN SELECT RAISE(ROLLBACK, 'refused'); END")
                                  .arg(text(kMorning))),
             QString());
    const LogCapture log;
    store->appendPoint(1, at(1), 2.0);
    QVERIFY(store->refusesReadings());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(pointsOf(store, kMorning), QStringList{text("1.0")});
    QCOMPARE(dayfile::rows(store.path("20260112"), text("SELECT max_value FROM curve_metadata")),
             QStringList{text("2.0")});
}

void TestStoreErrors::noTransactionIsLeftOpen_data()
{
    QTest::addColumn<int>("times"); // how many readings of each curve meet the lock
    QTest::addColumn<bool>("bulk");
    QTest::addColumn<QStringList>("failures");
    const QString locked = text("\"database is locked Unable to fetch row\"");
    const QString save = text("保存曲线元数据失败: ") + locked;
    QTest::newRow("new table") << 1 << false
                               << QStringList{text("提交事务失败: ") + locked,
                                              text("创建分片表失败: \"%1\"").arg(text(kMorning)),
                                              save};
    QTest::newRow("extremes of two curves") << 2 << false << QStringList{save, save};
    QTest::newRow("many points") << 0 << true << QStringList{save};
}

/// Without WAL a file that someone reads cannot be committed to, and the attempted transaction
/// stays open until it is rolled back. What is stored afterwards is visible to others.
void TestStoreErrors::noTransactionIsLeftOpen()
{
    QFETCH(int, times);
    QFETCH(bool, bulk);
    QFETCH(QStringList, failures);
    TestStore store;
    const QString path = store.path("20260112");
    enlist(store, "101(V)");
    enlist(store, "102(V)");
    if (times != 1) {
        store->appendPoint(1, at(0), 1.0);
        store->appendPoint(2, at(0), 1.0);
    }
    {
        const auto db = store->openDb(path);
        QVERIFY(ManagedQuery(*db).exec(text("PRAGMA journal_mode = DELETE")));
        QVERIFY(ManagedQuery(*db).exec(text("PRAGMA busy_timeout = 0")));
    }
    {
        const DayFileLock reader(path, DayFileLock::Read);
        QVERIFY(reader.isHeld());
        const LogCapture log;
        for (int curve = 1; curve <= times; ++curve) {
            store->appendPoint(curve, at(1), 2.0);
        }
        if (bulk) {
            store->appendPoints(1, {QPointF(static_cast<double>(at(1)), 2.0)});
        }
        QCOMPARE(log.lines(QtWarningMsg), failures);
        // An open one would block the next reader.
        QCOMPARE(dayfile::rows(path, text("SELECT name FROM curve_info")).size(), 2);
    }
    const LogCapture log;
    store->appendPoint(1, at(2), 3.0);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(pointsOf(store, kMorning).last(), text("3.0"));
    QVERIFY(!pointsOf(store, kMorning).contains(text("2.0")));
    QCOMPARE(dayfile::rows(path, text("SELECT max_time FROM curve_metadata WHERE curve_id = 1")),
             QStringList{QString::number(at(2))});
}

/// A past file that lacks one of its base tables: the others' contents are loaded, the reading
/// finds no place.
void TestStoreErrors::fileWithoutItsListOfBatches()
{
    TestStore store;
    enlist(store, "101(V)");
    {
        DayFileWriter writer(store.path("20260111"));
        writer.addCurve(1, text("101(V)"));
        writer.execute(text("INSERT INTO curve_metadata VALUES (1, 1000, 2000, -7.5, 7.5)"));
        writer.execute(text("DROP TABLE batch_metadata"));
    }
    const qint64 yesterday = at(0) - 86400000;
    const LogCapture log;
    store->appendPoint(1, yesterday, 1.0);
    const QStringList warnings = log.lines(QtWarningMsg);
    QCOMPARE(warnings.size(), 2);
    QVERIFY2(warnings.at(0).startsWith(text("准备分片元数据插入语句失败: \"no such table")),
             qPrintable(warnings.at(0)));
    QCOMPARE(warnings.at(1),
             text("创建分片表失败: \"curve_1_batch_20260111_060000_20260111_115959\""));
    QCOMPARE(dayfile::rows(store.path("20260111"),
                           text("SELECT name FROM sqlite_master WHERE name LIKE '%batch%'")),
             QStringList());
    QCOMPARE(store->curveMetadata(1).minTime, qint64(1000));
    QCOMPARE(store->curveMetadata(1).maxTime, yesterday);
    QCOMPARE(store->curveMetadata(1).minValue, -7.5);
    QCOMPARE(store->curveMetadata(1).maxValue, 7.5);
}

void TestStoreErrors::batchInsertThatFailsGoesOnWithTheNextTable()
{
    TestStore store;
    enlist(store, "101(V)");
    const qint64 night = instant("2026-01-12T01:00:00.000+00:00");
    store->appendPoint(1, night, 1.0);
    store->appendPoint(1, at(0), 2.0);
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON %1 BEGIN "
                                             "SELECT RAISE(ABORT, 'refused'); END")
                                  .arg(text(kNight))),
             QString());
    const LogCapture log;
    store->appendPoints(1, {QPointF(static_cast<double>(night + 1), 3.0),
                            QPointF(static_cast<double>(at(1)), 4.0)});
    QCOMPARE(log.lines(QtWarningMsg).size(), 1);
    QVERIFY2(log.lines(QtWarningMsg).constFirst().startsWith(text("批量插入失败: \"refused")),
             qPrintable(log.lines(QtWarningMsg).constFirst()));
    QCOMPARE(pointsOf(store, kNight), QStringList{text("1.0")});
    QCOMPARE(pointsOf(store, kMorning), (QStringList{text("2.0"), text("4.0")}));
}

/// Where the clock goes back over midnight, a reading ahead of it belongs to today's file and its
/// batch to the day before's.
void TestStoreErrors::batchWhoseFileCannotBeOpened()
{
    const ZoneGuard zone("America/St_Johns");
    setPresent(instant("2010-11-07T00:00:30.000-02:30"));
    TestStore store;
    enlist(store, "101(V)");
    QVERIFY(QDir(store.directory()).mkdir(text("20101106.db")));
    const LogCapture log;
    store->appendPoint(1, instant("2010-11-06T23:30:00.000-03:30"), 1.0);
    QVERIFY(log.lines(QtWarningMsg)
                .contains(text("切换数据库失败: \"%1\"").arg(store.path("20101106"))));
    QCOMPARE(dayfile::rows(store.path("20101107"), text("SELECT * FROM batch_metadata")),
             QStringList());
    store->appendPoint(1, instant("2010-11-07T00:00:29.000-02:30"), 2.0);
    QCOMPARE(dayfile::rows(store.path("20101107"),
                           text("SELECT value FROM curve_1_batch_20101107_000000_20101107_045959")),
             QStringList{text("2.0")});
}

void TestStoreErrors::tableThatCannotBeLookedFor()
{
    TestStore store;
    enlist(store, "101(V)");
    const qint64 night = instant("2026-01-12T01:00:00.000+00:00");
    store->appendPoint(1, night, 1.0);
    store->appendPoint(1, at(0), 2.0);
    const LogCapture log;
    {
        const auto db = store->openDb(store.path("20260112"));
        const DeniedTables denied(*db, {text(kNight), text("sqlite_master")});
        COMPARE_EXACTLY(store->readCurveData(1, night, at(0), 0),
                        QVector<QPointF>{QPointF(static_cast<double>(at(0)), 2.0)});
    }
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().constFirst().startsWith(
                 QStringLiteral("warning: 检查表存在性失败: \"%1\" 错误: \"access to sqlite_master")
                     .arg(text(kNight))),
             qPrintable(log.lines().constFirst()));
    QCOMPARE(store->readCurveData(1, night, at(0), 0).size(), 2);
}

void TestStoreErrors::extremesThatCannotBeResetEndADeletion()
{
    TestStore store;
    enlist(store, "101(V)");
    store->appendPoint(1, at(0), 1.0);
    QCOMPARE(dayfile::execute(store.path("20260112"), text("DROP TABLE curve_metadata")),
             QString());
    const QStringList before = dayfile::dump(store.path("20260112"));
    const LogCapture log;
    QVERIFY(!store->deleteCurveData(1));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().constFirst().startsWith(
                 text("warning: 重置曲线元数据失败: \"no such table: curve_metadata")),
             qPrintable(log.lines().constFirst()));
    QCOMPARE(dayfile::dump(store.path("20260112")), before);
    QCOMPARE(store->curveMetadata(1).maxValue, 1.0);
}

void TestStoreErrors::extremesThatCannotBeUpdatedAreInserted()
{
    TestStore store;
    enlist(store, "101(V)");
    store->appendPoint(1, at(0), 1.0);
    QCOMPARE(dayfile::execute(store.path("20260112"),
                              text("CREATE TRIGGER refuse BEFORE UPDATE ON curve_metadata "
                                   "BEGIN SELECT RAISE(ABORT, 'refused'); END")),
             QString());
    const LogCapture log;
    QVERIFY(store->deleteCurveData(1));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(dayfile::rows(store.path("20260112"), text("SELECT count(*) FROM batch_metadata")),
             QStringList{text("0")});
    // The row already exists, so the insert leaves it unchanged.
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           text("SELECT min_value, max_value FROM curve_metadata")),
             QStringList{text("1.0|1.0")});
    QCOMPARE(store->curveMetadata(1).minTime, DBCurveMetadata().minTime);
}

SCN_TEST(TestStoreErrors, QCoreApplication)
#include "test_storeerrors.moc"
