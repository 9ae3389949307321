#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "drivertap.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/storeclock.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "timescene.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// The statements the pool and the store run on their connections: which, and in which order.

namespace {

constexpr qint64 kExpiredMs = 43200001;
constexpr int kCloseMs = 2000;
constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";

const QStringList kReaderSetUp = lines(R"(
    PRAGMA journal_mode = DELETE
    PRAGMA wal_checkpoint(FULL)
    PRAGMA synchronous = OFF
    PRAGMA foreign_keys = ON
)");

const QString kPageSize = text("PRAGMA page_size = 1024");

} // namespace

class TestStoreStatements : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase() { scn::setStoreClock(nullptr); }

    void writerIsSetUp();
    void writerWithoutALogIsSetUp();
    void readerIsSetUp();
    void readerOfALogInUseIsSetUp();
    void pooledConnectionIsAsked();
    void closingFoldsTheLogIn();
    void expiryFoldsNothingIn();
    void readLooksForItsBatchesThenReadsThem();
    void readingAndItsExtremesAreOneTransaction();
    void heldFilesAreOpenedOnceForAllCurves();
    void deletionIsOneTransaction();
    void lateReadingKeepsWhatWasLoaded();
    void pastDayIsSetUpInOneTransaction();

private:
    QString path(const char* key) const { return m_directory->filePath(text(key) + text(".db")); }

    std::unique_ptr<QTemporaryDir> m_directory;
    const SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

void TestStoreStatements::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    setPresent(localTime("2026-01-12 09:30:00.000"));
}

void TestStoreStatements::cleanup()
{
    ConnectionPool::instance().closeForExit(QDeadlineTimer(kCloseMs));
}

void TestStoreStatements::writerIsSetUp()
{
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260112")));
    QCOMPARE(trace.take(), QStringList{kPageSize} + lines(R"(
        PRAGMA journal_mode = WAL
        PRAGMA synchronous = NORMAL
        PRAGMA foreign_keys = ON
    )"));
}

void TestStoreStatements::writerWithoutALogIsSetUp()
{
    DayFileWriter(path("20260112")).addCurve(1, text("101(V)"));
    const DayFileLock reader(path("20260112"), DayFileLock::Read);
    QVERIFY(reader.isHeld());
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260112")));
    QCOMPARE(trace.take(), lines(R"(
        PRAGMA journal_mode = WAL
        PRAGMA journal_mode = DELETE
        PRAGMA synchronous = FULL
        PRAGMA foreign_keys = ON
    )"));
}

void TestStoreStatements::readerIsSetUp()
{
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260111")));
    QCOMPARE(trace.take(), QStringList{kPageSize} + kReaderSetUp);
}

/// Its journal cannot be switched, so its WAL is not checkpointed.
void TestStoreStatements::readerOfALogInUseIsSetUp()
{
    DayFileWriter(path("20260111")).addCurve(1, text("101(V)"));
    QCOMPARE(dayfile::execute(path("20260111"), text("PRAGMA journal_mode = WAL")), QString());
    const DayFileLock writer(path("20260111"));
    QVERIFY(writer.isHeld());
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260111")));
    QCOMPARE(trace.take(), lines(R"(
        PRAGMA journal_mode = DELETE
        PRAGMA synchronous = OFF
        PRAGMA foreign_keys = ON
    )"));
}

void TestStoreStatements::pooledConnectionIsAsked()
{
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260112")));
    trace.take();
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260112")));
    QCOMPARE(trace.take(), QStringList{text("SELECT 1")});
    ConnectionPool::instance().releaseConnection(path("20260112"));
    QCOMPARE(trace.take(), QStringList());
}

void TestStoreStatements::closingFoldsTheLogIn()
{
    StatementTrace trace;
    {
        const auto db = ConnectionPool::instance().acquireConnection(path("20260112"));
        QVERIFY(ManagedQuery(*db).exec(text("CREATE TABLE t (v INTEGER)")));
    }
    trace.take();
    ConnectionPool::instance().removeConnection(path("20260112"));
    QCOMPARE(trace.take(), lines(R"(
        PRAGMA wal_checkpoint(TRUNCATE)
        PRAGMA journal_mode = DELETE
    )"));
}

/// It only asks whether there is a WAL.
void TestStoreStatements::expiryFoldsNothingIn()
{
    StatementTrace trace;
    QVERIFY(ConnectionPool::instance().acquireConnection(path("20260112")));
    trace.take();
    advancePresent(kExpiredMs);
    QMetaObject::invokeMethod(&ConnectionPool::instance(), "cleanExpiredConnections");
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
    QCOMPARE(trace.take(), QStringList{text("PRAGMA journal_mode")});
}

void TestStoreStatements::readLooksForItsBatchesThenReadsThem()
{
    TestStore store;
    enlist(store, "101(V)");
    const qint64 yesterday = localTime("2026-01-11 06:00:00.000");
    {
        DayFileWriter writer(store.path("20260111"));
        writer.addCurve(1, text("101(V)"));
        for (const qint64 start : {yesterday, yesterday + kBatchMs}) {
            writer.addBatch(1, start, DayFileWriter::tableName(1, start),
                            {QPointF(static_cast<double>(start), 1.0)});
        }
    }
    StatementTrace trace;
    QCOMPARE(store->readCurveData(1, yesterday, yesterday + kBatchMs, 0).size(), 2);
    const char* const select = "SELECT timestamp, value FROM \"%1\" WHERE curve_id = ? AND "
                               "timestamp BETWEEN ? AND ? ORDER BY timestamp ASC";
    QCOMPARE(trace.take(),
             kReaderSetUp +
                 (QStringList{
                     text("SELECT 1"),
                     text("SELECT curve_id, batch_start, batch_end, table_name FROM "
                          "batch_metadata WHERE curve_id = ? AND ( (batch_start BETWEEN ? AND ?) "
                          "OR (batch_end BETWEEN ? AND ?) OR (batch_start <= ? AND batch_end >= "
                          "?) )"),
                     text(select).arg(text("curve_1_batch_20260111_060000_20260111_115959")),
                     text(select).arg(text("curve_1_batch_20260111_120000_20260111_175959"))}));
}

/// Nothing else is asked once the batch has its table.
void TestStoreStatements::readingAndItsExtremesAreOneTransaction()
{
    StatementTrace trace;
    TestStore store;
    enlist(store, "101(V)");
    enlist(store, "102(V)");
    const qint64 morning = localTime("2026-01-12 09:00:00.000");
    store->appendPoint(1, morning, 1.0);
    store->appendPoint(2, morning, 1.0);
    trace.take();
    for (int i = 1; i <= 4; ++i) {
        store->appendPoint(1 + i % 2, morning + i, 2.0);
        QCOMPARE(trace.take(),
                 (QStringList{
                     text("BEGIN"),
                     text("INSERT OR IGNORE INTO curve_%1_batch_20260112_060000_20260112_115959 "
                          "(curve_id, timestamp, value) VALUES (?, ?, ?)")
                         .arg(1 + i % 2),
                     text("INSERT OR REPLACE INTO curve_metadata (curve_id, min_time, max_time, "
                          "min_value, max_value) VALUES (?, ?, ?, ?, ?)"),
                     text("COMMIT")}));
    }
}

void TestStoreStatements::heldFilesAreOpenedOnceForAllCurves()
{
    constexpr int kDays = 40; // more than the pool keeps
    constexpr int kCurves = 3;
    constexpr qint64 kDayMs = 86400000;
    const qint64 first = localTime("2025-11-01 00:00:00.000");
    CurveDataDB store(m_directory->path());
    for (int curveId = 1; curveId <= kCurves; ++curveId) {
        store.registerCurveAtOnce(QString::number(curveId));
    }
    for (int day = 0; day < kDays; ++day) {
        const qint64 start = first + day * kDayMs;
        const QString key = QDateTime::fromMSecsSinceEpoch(start).toString(text("yyyyMMdd"));
        DayFileWriter file(path(qPrintable(key)));
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            file.addCurve(curveId, QString::number(curveId));
            file.addBatch(curveId, start, DayFileWriter::tableName(curveId, start),
                          {QPointF(double(start), curveId)});
        }
    }
    const qint64 end = first + kDays * kDayMs - 1;
    StatementTrace trace;
    {
        scn::HeldFiles files;
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            scn::CurveRead read({curveId, first, end, 100}, &files);
            scn::ReadSlice wholly;
            QVERIFY(store.proceed(read, wholly));
            QCOMPARE(read.points().size(), kDays);
        }
        QCOMPARE(files.size(), kDays);
    }
    QCOMPARE(trace.take().count(text("PRAGMA journal_mode = DELETE")), kDays);
    // The next file opened brings the pool back to what it keeps.
    QVERIFY(ConnectionPool::instance().connectionCount() > kDays);
    store.openDb(path("20200101"));
    QCOMPARE(ConnectionPool::instance().connectionCount(), 30);
}

void TestStoreStatements::deletionIsOneTransaction()
{
    StatementTrace trace;
    TestStore store;
    enlist(store, "101(V)");
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 1.0);
    trace.take();
    QVERIFY(store->deleteCurveData(1));
    QCOMPARE(trace.take(),
             (QStringList{
                 text("BEGIN"), text("SELECT table_name FROM batch_metadata WHERE curve_id = ?"),
                 text("DROP TABLE IF EXISTS %1").arg(text(kMorning)),
                 text("DELETE FROM batch_metadata WHERE curve_id = ?"),
                 text("UPDATE curve_metadata SET min_time = NULL, max_time = NULL, min_value "
                      "= NULL, max_value = NULL WHERE curve_id = ?"),
                 text("COMMIT")}));
}

void TestStoreStatements::lateReadingKeepsWhatWasLoaded()
{
    StatementTrace trace;
    TestStore store;
    DayFileWriter(store.path("20260111")).addCurve(1, text("101(V)"));
    store->registerCurve(text("101(V)"));
    store->registerCurve(text("102(V)"));
    const qint64 late = localTime("2026-01-11 09:00:00.000");
    store->appendPoint(1, late, 1.0);
    store->appendPoint(2, late, 2.0);
    const QStringList kept = lines(R"(
        SELECT 1
        INSERT OR IGNORE INTO curve_1_batch_20260111_060000_20260111_115959 (curve_id, timestamp, value) VALUES (?, ?, ?)
        INSERT OR REPLACE INTO curve_metadata (curve_id, min_time, max_time, min_value, max_value) VALUES (?, ?, ?, ?, ?)
    )");
    trace.take();
    store->appendPoint(1, late + 1, 3.0);
    QCOMPARE(trace.take(), kept);
    // A reading of today in between changes nothing.
    store->appendPoint(1, localTime("2026-01-12 09:00:00.000"), 4.0);
    trace.take();
    store->appendPoint(1, late + 2, 5.0);
    QCOMPARE(trace.take(), kept);
    // A file that has replaced the first is loaded.
    QVERIFY(QFile::remove(store.path("20260111")));
    store->appendPoint(1, late + 3, 6.0);
    QVERIFY(trace.take().contains(text("SELECT curve_id, name FROM curve_info")));
    store->appendPoint(1, late + 4, 7.0);
    QCOMPARE(trace.take(), kept);
}

void TestStoreStatements::pastDayIsSetUpInOneTransaction()
{
    StatementTrace trace;
    TestStore store;
    store->registerCurve(text("101(V)"));
    store->registerCurve(text("102(V)"));
    trace.take();
    store->appendPoint(2, localTime("2026-01-11 09:00:00.000"), 1.0);
    QStringList statements;
    const QStringList all = trace.take();
    const int begin = all.indexOf(text("BEGIN"));
    for (const QString& statement : all.mid(begin, 7)) {
        statements.append(statement.section(QLatin1Char('('), 0, 0).trimmed());
    }
    QCOMPARE(statements, lines(R"(
        BEGIN
        CREATE TABLE IF NOT EXISTS curve_info
        CREATE TABLE IF NOT EXISTS batch_metadata
        CREATE TABLE IF NOT EXISTS curve_metadata
        INSERT INTO curve_info
        INSERT INTO curve_info
        COMMIT
    )"));
}

SCN_TEST(TestStoreStatements, QCoreApplication)
#include "test_storestatements.moc"
