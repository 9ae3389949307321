#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/dbclearworker.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <unistd.h>

#include <chrono>
#include <limits>

namespace {

constexpr int kClearTimeoutMs = 10000;
constexpr std::chrono::milliseconds kDeleteRetry(500);

QString one(const char* row)
{
    return QString::fromLatin1(row);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

bool writeText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

/// Makes a file undeletable. Only the file's own flag stops root; the directory's permissions stop
/// others.
class UndeletableFile
{
public:
    explicit UndeletableFile(const QString& path)
        : m_path(path)
    {
        m_made = geteuid() == 0
                     ? setFlag("+i")
                     : QFile::setPermissions(directory(), QFile::ReadOwner | QFile::ExeOwner);
    }
    ~UndeletableFile()
    {
        if (geteuid() == 0) {
            setFlag("-i");
        } else {
            QFile::setPermissions(directory(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
    }
    UndeletableFile(const UndeletableFile&) = delete;
    UndeletableFile& operator=(const UndeletableFile&) = delete;

    bool isMade() const { return m_made; }

private:
    QString directory() const { return QFileInfo(m_path).absolutePath(); }
    bool setFlag(const char* flag)
    {
        return QProcess::execute(one("chattr"), {one(flag), m_path}) == 0;
    }

    QString m_path;
    bool m_made = false;
};

} // namespace

class TestCurveDataDBClear : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void clearEmptiesTheStore();
    void clearReturnsAtOnceAndTakesItsTime();
    void nothingIsOpenedDuringAClear();
    void secondClearIsIgnored();
    void clearsFollowEachOther();
    void directoryThatIsGoneIsMadeAgain();
    void singleShotAfterTheEndDoesNothing();
    void readingsDuringAClearAreDropped();
    void readsInsideAClearPassOverTheFiles();
    void storeEndsDuringAClear();
    void exitDuringAClearIsQuick();
    void filesThatAreNoneOfTheStoresStay();
    void missingDirectoryIsDoneAtOnce();
    void linkedDirectoryIsLoggedAndLeft();
    void fileThatResistsIsLoggedAndLeft();
    void sideFilesGoBeforeTheDatabase();
    void deletedCurveIsGone();
    void deletingAnUnknownCurveChangesNothing();
    void failedDeletionIsRolledBack();
    void deletionThatCannotBeCommittedIsRolledBack();
    void deletedCurveGoesOn();

private:
    void holdTheWorkerUntilItIsInterrupted();

    SkippedWaits m_waits;
};

void TestCurveDataDBClear::init()
{
    setPresent(at("09:30:00"));
    m_waits.setRule({});
    m_waits.forget();
}

/// From here on the worker that meets a file that resists goes no further until it is told to end.
void TestCurveDataDBClear::holdTheWorkerUntilItIsInterrupted()
{
    m_waits.setRule([](std::chrono::milliseconds wait) {
        const auto isInterrupted = [] {
            return QThread::currentThread()->isInterruptionRequested();
        };
        if (wait == kDeleteRetry && !QTest::qWaitFor(isInterrupted, kClearTimeoutMs)) {
            qFatal("nobody ends the worker");
        }
        return std::chrono::milliseconds::zero();
    });
}

void TestCurveDataDBClear::clearEmptiesTheStore()
{
    TestStore store;
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    QCOMPARE(store->registerCurve(one("102(V)")), 2);
    store->appendPoint(2, at("09:00:00"), 1.0);
    {
        DayFileWriter writer(store.path("20260111"));
        writer.addCurve(1, one("old"));
    }
    QVERIFY(store->openDb(store.path("20260111")));
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QCOMPARE(store->curveNames(), (QMap<int, QString>()));
    QVERIFY(cleared.wait(kClearTimeoutMs));

    QCOMPARE(QDir(store.directory()).entryList({one("*.db")}), QStringList{one("20260112.db")});
    QCOMPARE(dayfile::dump(store.path("20260112")),
             (QStringList{one("batch_metadata: "), one("curve_info: "), one("curve_metadata: ")}));
    QCOMPARE(store->knownTableCount(), 0);
    QCOMPARE(store->curveMetadata(2).maxTime, std::numeric_limits<qint64>::min());
    QCOMPARE(store->registerCurve(one("102(V)")), 1);
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           one("SELECT value FROM curve_1_batch_20260112_060000_20260112_115959")),
             QStringList{one("2.0")});
    QTRY_VERIFY(store->findChildren<QThread*>().isEmpty());
    QCOMPARE(cleared.count(), 1);
}

void TestCurveDataDBClear::clearReturnsAtOnceAndTakesItsTime()
{
    TestStore store;
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    // The closing of today's file, the end of the closing, and the time until the deletion.
    QCOMPARE(m_waits.asked(), QVector<int>(15, 50) + QVector<int>(3, 100) + QVector<int>{1000});
    QCOMPARE(cleared.count(), 0);
    QVERIFY(QFile::exists(store.path("20260112")));
    QVERIFY(cleared.wait(kClearTimeoutMs));
    QCOMPARE(m_waits.asked().size(), 19);
}

void TestCurveDataDBClear::nothingIsOpenedDuringAClear()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    {
        const LogCapture log;
        QVERIFY(!store->openDb(store.path("20260112")));
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("warning: 正在清理数据库，禁止打开新连接： \"%1\"")
                                 .arg(store.path("20260112"))});
        QCOMPARE(store->registerCurve(one("102(V)")), -1);
        QVERIFY(!store->saveMetadata());
        QVERIFY(!store->deleteCurveData(1));
    }
    QVERIFY(cleared.wait(kClearTimeoutMs));
    QVERIFY(store->openDb(store.path("20260112")));
}

void TestCurveDataDBClear::secondClearIsIgnored()
{
    TestStore store;
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    m_waits.forget();
    store->clearAll();
    QCOMPARE(m_waits.asked(), QVector<int>()); // nothing is closed, no deletion is put off
    QVERIFY(cleared.wait(kClearTimeoutMs));
    QTRY_VERIFY(store->findChildren<QThread*>().isEmpty());
    QCOMPARE(cleared.count(), 1);
}

void TestCurveDataDBClear::clearsFollowEachOther()
{
    TestStore store;
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    for (int round = 1; round <= 2; ++round) {
        QCOMPARE(store->registerCurve(one("101(V)")), 1);
        store->appendPoint(1, at("09:00:00"), round);
        store->clearAll();
        QVERIFY(cleared.wait(kClearTimeoutMs));
        QCOMPARE(cleared.count(), round);
    }
}

/// What the start of a scan does first: the directory goes while its files are still open.
void TestCurveDataDBClear::directoryThatIsGoneIsMadeAgain()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    QVERIFY(QDir(store.directory()).removeRecursively());
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QVERIFY(cleared.wait(kClearTimeoutMs));
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(dayfile::rows(store.path("20260112"),
                           one("SELECT value FROM curve_1_batch_20260112_060000_20260112_115959")),
             QStringList{one("2.0")});
}

void TestCurveDataDBClear::singleShotAfterTheEndDoesNothing()
{
    TestStore store;
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QVERIFY(QMetaObject::invokeMethod(store.get(), "onClearFinished"));
    QCOMPARE(cleared.count(), 1);
    store->registerCurve(one("101(V)"));
    bool isPast = false;
    QTimer::singleShot(0, store.get(), [&isPast] { isPast = true; }); // comes after the other
    QTRY_VERIFY(isPast);
    QVERIFY(store->findChildren<QThread*>().isEmpty());
    QCOMPARE(cleared.count(), 1);
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT name FROM curve_info")),
             QStringList{one("101(V)")});
}

void TestCurveDataDBClear::readingsDuringAClearAreDropped()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    // A reading comes in during each pause of the clear, and is handled within it; more come after.
    const LogCapture log;
    int sent = 0;
    const auto send = [&store, &sent] {
        store->appendPoint(1, at("09:00:01") + sent, 1.0);
        store->appendPoints(1, {QPointF(static_cast<double>(at("09:00:01") + sent), 1.0)});
        store->flushAndDetach();
        ++sent;
    };
    m_waits.setRule([&store, &send](std::chrono::milliseconds) {
        QMetaObject::invokeMethod(store.get(), send, Qt::QueuedConnection);
        return std::chrono::milliseconds::zero();
    });
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QVERIFY(sent > 5);
    m_waits.setRule({});
    QTimer readings;
    connect(&readings, &QTimer::timeout, store.get(), send);
    readings.start(0);
    connect(store.get(), &CurveDataDB::sigClearFinished, &readings, &QTimer::stop);
    QVERIFY(cleared.wait(kClearTimeoutMs));
    QCOMPARE(dayfile::dump(store.path("20260112")),
             (QStringList{one("batch_metadata: "), one("curve_info: "), one("curve_metadata: ")}));
    QVERIFY(log.lines().contains(QStringLiteral("warning: 正在清理数据库，禁止打开新连接： \"%1\"")
                                     .arg(store.path("20260112"))));
}

/// A clear handles events before it forgets the curves: a read then finds its file but cannot open
/// it.
void TestCurveDataDBClear::readsInsideAClearPassOverTheFiles()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    int rows = -1;
    int batches = -1;
    QTimer::singleShot(0, store.get(), [&] {
        rows = store->readCurveData(1, at("08:00:00"), at("10:00:00"), 0).size();
        batches = store->listBatchesInFile(1, at("08:00:00"), at("10:00:00"), path).size();
    });
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    {
        const LogCapture log;
        store->clearAll();
        QCOMPARE(rows, 0);
        QCOMPARE(batches, 0);
        const QString refusal = QStringLiteral("正在清理数据库，禁止打开新连接： \"%1\"").arg(path);
        QCOMPARE(log.lines(QtWarningMsg),
                 (QStringList{refusal, QStringLiteral("无法打开数据库: \"%1\"").arg(path), refusal,
                              QStringLiteral("数据库连接无效: \"%1\"").arg(path)}));
    }
    QVERIFY(cleared.wait(kClearTimeoutMs));
}

void TestCurveDataDBClear::storeEndsDuringAClear()
{
    const QTemporaryDir directory;
    auto store = std::make_unique<CurveDataDB>(directory.filePath(one("SN1_Data")));
    // The deletion takes a while, so it is in progress when the store ends.
    QVERIFY(writeText(store->dataDirectory() + one("/0.db")));
    const UndeletableFile resisting(store->dataDirectory() + one("/0.db"));
    QVERIFY(resisting.isMade());
    m_waits.setRule([](std::chrono::milliseconds wait) {
        return wait == kDeleteRetry ? wait / 5 : std::chrono::milliseconds::zero();
    });
    store->clearAll();
    QTRY_VERIFY(m_waits.count(kDeleteRetry) > 0);
    const LogCapture log; // the end detaches once more, which the clear refuses
    store.reset();
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
    QCoreApplication::processEvents(); // what the worker has sent finds nobody
}

void TestCurveDataDBClear::exitDuringAClearIsQuick()
{
    TestStore store;
    for (int i = 0; i < 3; ++i) {
        QVERIFY(writeText(store.directory() + QStringLiteral("/%1.db").arg(i)));
    }
    const UndeletableFile first(store.directory() + one("/0.db"));
    QVERIFY(first.isMade());
    holdTheWorkerUntilItIsInterrupted();
    QSignalSpy cleared(store.get(), &CurveDataDB::sigClearFinished);
    store->clearAll();
    QTRY_COMPARE(m_waits.count(kDeleteRetry), 1);
    store->closeForExit(QDeadlineTimer(kClearTimeoutMs));
    QCOMPARE(m_waits.count(kDeleteRetry), 1); // the file is not tried again
    QCoreApplication::processEvents();
    QCOMPARE(cleared.count(), 0);
}

void TestCurveDataDBClear::filesThatAreNoneOfTheStoresStay()
{
    const QTemporaryDir directory;
    for (const char* name : {"a.db", "a.db-wal", "a.db-shm", "notes.txt", "a.db.bak"}) {
        QVERIFY(writeText(directory.filePath(one(name))));
    }
    QVERIFY(QDir(directory.path()).mkdir(one("inner.db")));
    DBClearWorker worker(nullptr, -1, directory.path());
    QSignalSpy finished(&worker, &DBClearWorker::clearFinished);
    worker.doClear();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
             (QStringList{one("a.db.bak"), one("inner.db"), one("notes.txt")}));
}

void TestCurveDataDBClear::missingDirectoryIsDoneAtOnce()
{
    const QTemporaryDir directory;
    DBClearWorker worker(nullptr, -1, directory.filePath(one("missing")));
    QSignalSpy finished(&worker, &DBClearWorker::clearFinished);
    const LogCapture log;
    worker.doClear();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBClear::linkedDirectoryIsLoggedAndLeft()
{
    const QTemporaryDir elsewhere;
    const QString kept = elsewhere.filePath(one("a.db"));
    QVERIFY(writeText(kept));
    const QTemporaryDir directory;
    const QString link = directory.filePath(one("SN_Data"));
    QVERIFY(QFile::link(elsewhere.path(), link));
    DBClearWorker worker(nullptr, -1, link);
    QSignalSpy finished(&worker, &DBClearWorker::clearFinished);
    const LogCapture log;
    worker.doClear();
    QCOMPARE(finished.count(), 1);
    QVERIFY(QFile::exists(kept));
    QCOMPARE(
        log.lines(),
        QStringList{QStringLiteral("critical: 数据目录是链接，不清理其内容： \"%1\"").arg(link)});
}

void TestCurveDataDBClear::fileThatResistsIsLoggedAndLeft()
{
    const QTemporaryDir directory;
    const QString held = directory.filePath(one("a.db"));
    QVERIFY(writeText(held));
    if (geteuid() == 0) {
        QVERIFY(writeText(directory.filePath(one("b.db"))));
    }
    const UndeletableFile guard(held);
    QVERIFY(guard.isMade());
    DBClearWorker worker(nullptr, -1, directory.path());
    QSignalSpy finished(&worker, &DBClearWorker::clearFinished);
    const LogCapture log;
    worker.doClear();
    QCOMPARE(m_waits.asked(), (QVector<int>{500, 500, 500}));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(log.lines(),
             QStringList{
                 QStringLiteral("critical: 多次重试后仍无法删除文件（可能被其他进程占用）: \"%1\"")
                     .arg(held)});
    QVERIFY(QFile::exists(held));
    QVERIFY(!QFile::exists(directory.filePath(one("b.db"))));
}

/// While a side file cannot be deleted, those before it are gone and no database is.
void TestCurveDataDBClear::sideFilesGoBeforeTheDatabase()
{
    const QTemporaryDir directory;
    for (const char* name : {"a.db", "a.db-shm", "a.db-wal", "b.db", "b.db-shm", "b.db-wal"}) {
        QVERIFY(writeText(directory.filePath(one(name))));
    }
    const UndeletableFile first(directory.filePath(one("a.db-shm")));
    const UndeletableFile second(directory.filePath(one("b.db-shm")));
    QVERIFY(first.isMade() && second.isMade());
    holdTheWorkerUntilItIsInterrupted();
    QThread thread;
    DBClearWorker worker(nullptr, -1, directory.path());
    QSignalSpy finished(&worker, &DBClearWorker::clearFinished);
    worker.moveToThread(&thread);
    connect(&thread, &QThread::started, &worker, &DBClearWorker::doClear);
    thread.start();
    const LogCapture log;
    if (geteuid() == 0) {
        QTRY_VERIFY(!QFile::exists(directory.filePath(one("b.db-wal"))));
    }
    thread.requestInterruption(); // the present file is the last
    thread.quit();
    QVERIFY(thread.wait(kClearTimeoutMs));
    for (const char* name : {"a.db", "a.db-shm", "b.db", "b.db-shm"}) {
        QVERIFY2(QFile::exists(directory.filePath(one(name))), name);
    }
    QVERIFY(!QFile::exists(directory.filePath(one("a.db-wal"))) || geteuid() != 0);
    QCOMPARE(finished.count(), 0);
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBClear::deletedCurveIsGone()
{
    setPresent(at("12:30:00"));
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->registerCurve(one("102(V)"));
    for (const int id : {1, 2}) {
        store->appendPoint(id, at("09:00:00"), id);
        store->appendPoint(id, at("12:00:00"), id);
    }
    const LogCapture log;
    QVERIFY(store->deleteCurveData(1));
    QCOMPARE(log.lines(), QStringList());
    const QString path = store.path("20260112");
    QCOMPARE(
        dayfile::rows(path, one("SELECT name FROM sqlite_master WHERE type = 'table' AND name LIKE "
                                "'curve_1_batch%'")),
        QStringList());
    QCOMPARE(dayfile::rows(path, one("SELECT DISTINCT curve_id FROM batch_metadata")),
             QStringList{one("2")});
    QCOMPARE(dayfile::rows(path, one("SELECT * FROM curve_metadata WHERE curve_id = 1")),
             QStringList{one("1|NULL|NULL|NULL|NULL")});
    QCOMPARE(dayfile::rows(path, one("SELECT name FROM curve_info")).size(), 2);
    QCOMPARE(store->curveMetadata(1).minTime, std::numeric_limits<qint64>::max());
    QCOMPARE(store->curveMetadata(2).maxValue, 2.0);
    QCOMPARE(dayfile::rows(
                 path, one("SELECT count(*) FROM curve_2_batch_20260112_060000_20260112_115959")),
             QStringList{one("1")});
}

void TestCurveDataDBClear::deletingAnUnknownCurveChangesNothing()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QStringList before = dayfile::dump(store.path("20260112"));
    QVERIFY(store->deleteCurveData(7));
    QCOMPARE(dayfile::dump(store.path("20260112")), before);
}

void TestCurveDataDBClear::failedDeletionIsRolledBack()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    QCOMPARE(dayfile::execute(path, one("CREATE TRIGGER refuse BEFORE DELETE ON batch_metadata "
                                        "BEGIN SELECT RAISE(ABORT, 'refused'); END")),
             QString());
    const QStringList before = dayfile::dump(path);
    {
        const LogCapture log;
        QVERIFY(!store->deleteCurveData(1));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().first().startsWith(
            QStringLiteral("warning: 删除分片元数据失败: \"refused")));
    }
    QCOMPARE(dayfile::dump(path), before);
    QCOMPARE(dayfile::execute(
                 path, one("DROP TRIGGER refuse; UPDATE batch_metadata SET table_name = 'a b c'")),
             QString());
    {
        const LogCapture log;
        QVERIFY(!store->deleteCurveData(1));
        QVERIFY2(log.lines().first().startsWith(
                     QStringLiteral("warning: 删除分片表 \"a b c\" 失败: \"")),
                 qPrintable(log.lines().first()));
    }
    QCOMPARE(dayfile::execute(path, one("DROP TABLE batch_metadata")), QString());
    const LogCapture log;
    QVERIFY(!store->deleteCurveData(1));
    QVERIFY(log.lines().first().startsWith(
        QStringLiteral("warning: 查询曲线分片失败: \"no such table")));
}

/// Without WAL a file cannot be committed to while someone reads it.
void TestCurveDataDBClear::deletionThatCannotBeCommittedIsRolledBack()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    {
        const auto db = store->openDb(path);
        QVERIFY(ManagedQuery(*db).exec(one("PRAGMA journal_mode = DELETE")));
        QVERIFY(ManagedQuery(*db).exec(one("PRAGMA busy_timeout = 0")));
    }
    const QStringList before = dayfile::dump(path);
    {
        const DayFileLock reader(path, DayFileLock::Read);
        QVERIFY(reader.isHeld());
        const LogCapture log;
        QVERIFY(!store->deleteCurveData(1));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY2(log.lines().first().startsWith(
                     QStringLiteral("warning: 提交事务失败: \"database is locked")),
                 qPrintable(log.lines().first()));
    }
    QCOMPARE(dayfile::dump(path), before);
    QCOMPARE(store->curveMetadata(1).maxValue, 1.0);
    // The next reading is not part of a leftover transaction.
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(
        dayfile::rows(path, one("SELECT value FROM curve_1_batch_20260112_060000_20260112_115959")),
        (QStringList{one("1.0"), one("2.0")}));
}

void TestCurveDataDBClear::deletedCurveGoesOn()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    QVERIFY(store->deleteCurveData(1));
    store->appendPoint(1, at("09:00:01"), 2.0);
    const QString path = store.path("20260112");
    QCOMPARE(dayfile::rows(
                 path,
                 one("SELECT timestamp, value FROM curve_1_batch_20260112_060000_20260112_115959")),
             QStringList{QStringLiteral("%1|2.0").arg(at("09:00:01"))});
    QCOMPARE(dayfile::rows(path, one("SELECT min_value, max_value FROM curve_metadata")),
             QStringList{one("2.0|2.0")});

    // Detaching saves the initial extremes over the nulls.
    QVERIFY(store->deleteCurveData(1));
    store->flushAndDetach();
    QCOMPARE(dayfile::rows(path, one("SELECT min_time, max_time FROM curve_metadata")),
             QStringList{one("9223372036854775807|-9223372036854775808")});
}

SCN_TEST(TestCurveDataDBClear, QCoreApplication)
#include "test_curvedatadb_clear.moc"
