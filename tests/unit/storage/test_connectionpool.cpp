#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/managedquery.h"
#include "storage/querymanager.h"
#include "storage/shardnaming.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr qint64 kTwelveHoursMs = 43200000;
constexpr qint64 kBudgetMs = 2000;
constexpr int kLimit = 30;
constexpr std::chrono::milliseconds kPatience(5000);

/// What the closing of one connection waits.
const QVector<int> kClosing(15, 50);

const QString kToday = QStringLiteral("20260112.db");
const QString kYesterday = QStringLiteral("20260111.db");

QString pragma(const QSqlDatabase& database, const char* name)
{
    ManagedQuery query(database);
    return query.exec(QStringLiteral("PRAGMA ") + QString::fromLatin1(name)) && query.next()
               ? query.value(0).toString()
               : query.errorText();
}

bool writeText(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

} // namespace

class TestConnectionPool : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void livesOnTheGuiThreadWhoeverAsksFirst();
    void todaysFileIsOpenedForWriting();
    void anyOtherFileIsOpenedForReading_data();
    void anyOtherFileIsOpenedForReading();
    void newFilesHaveSmallPages_data();
    void newFilesHaveSmallPages();
    void roleOutlivesMidnight();
    void leftoverLogIsFoldedIn();
    void refusedWalFallsBackToFullSynchronisation();
    void garbageFileIsOpenedWithWarnings();
    void unexpectedAnswerOfAPragmaIsLogged();
    void nameThatHasGoneIsLogged();
    void pathIsPooledOnce();
    void pathIsPooledOnceWhoeverAsksAtATime();
    void connectionNameIsMadeOfPathAndUuid();
    void missingDirectoryIsMade();
    void emptyPathIsRefused();
    void directoryThatCannotBeMadeIsLogged();
    void fileThatCannotBeOpenedIsLogged();
    void closedConnectionIsMadeAnew();
    void closingLeavesNoSideFiles();
    void closingTakesItsWaits();
    void closingHandlesEventsWithTheMutexFree();
    void closingEndsQueriesInUse();
    void holderKeepsAClosedConnection();
    void connectionOfAnotherThreadIsClosedQuietly();
    void removingAnUnknownPathDoesNothing();
    void closeAllClosesEverything();
    void connectionOpenedWhileAllAreClosedStays();
    void idleConnectionExpires();
    void expiryRemovesStraySideFiles();
    void expiryKeepsTheLogThatAnotherProcessUses();
    void releaseIsAUse();
    void heldConnectionDoesNotExpire();
    void limitEvictsTheLeastRecentlyUsed();
    void firstOfEqualsIsEvicted();
    void evictionFoldsInAndWaitsForNobody();
    void evictionOfALockedFileLeavesItsLog();
    void heldConnectionsAreNotEvictedAndThePoolGrows();
    void discardClosesAtOnce();
    void closeForExitIsOrderlyAndQuick();
    void closeForExitKeepsItsDeadline();

private:
    QString path(const QString& name) const { return m_directory->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_directory;
    SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

void TestConnectionPool::initTestCase()
{
    QVERIFY(!ConnectionPool::exists());
    std::thread first([] { ConnectionPool::instance(); });
    first.join();
    QVERIFY(ConnectionPool::exists());
}

void TestConnectionPool::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    setPresent(localTime("2026-01-12 09:30:00.000"));
    m_waits.forget();
    m_lockWaits.forget();
}

void TestConnectionPool::cleanup()
{
    ConnectionPool::instance().closeForExit(QDeadlineTimer(kBudgetMs));
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
}

void TestConnectionPool::livesOnTheGuiThreadWhoeverAsksFirst()
{
    ConnectionPool& pool = ConnectionPool::instance();
    QCOMPARE(pool.thread(), QCoreApplication::instance()->thread());
    const auto timers = pool.findChildren<QTimer*>();
    QCOMPARE(timers.size(), 2);
    const auto active = [&timers] {
        return std::count_if(timers.begin(), timers.end(),
                             [](QTimer* timer) { return timer->isActive(); });
    };
    // This program's first cleanup stops the timer, so this test comes first.
    QTRY_COMPARE(active(), 1);
    QTimer* running = timers.at(0)->isActive() ? timers.at(0) : timers.at(1);
    QCOMPARE(running->interval(), 14400000);
    QVERIFY(!running->isSingleShot());

    // The test does not wait the four hours.
    const LogCapture log;
    running->setInterval(1);
    QTRY_VERIFY(log.lines().contains(QStringLiteral("debug: 连接池清理超时连接数： 0")));
    running->setInterval(14400000);
}

void TestConnectionPool::todaysFileIsOpenedForWriting()
{
    const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
    QVERIFY(db && db->isOpen());
    QCOMPARE(pragma(*db, "journal_mode"), QStringLiteral("wal"));
    QCOMPARE(pragma(*db, "synchronous"), QStringLiteral("1"));
    QCOMPARE(pragma(*db, "foreign_keys"), QStringLiteral("1"));
}

void TestConnectionPool::anyOtherFileIsOpenedForReading_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("yesterday") << kYesterday;
    QTest::newRow("tomorrow") << QStringLiteral("20260113.db");
    QTest::newRow("no date") << QStringLiteral("curves.db");
    QTest::newRow("today with a further dot") << QStringLiteral("20260112.bak.db");
    QTest::newRow("an hour of today") << QStringLiteral("2026011209.db");
}

void TestConnectionPool::anyOtherFileIsOpenedForReading()
{
    QFETCH(QString, name);
    const auto db = ConnectionPool::instance().acquireConnection(path(name));
    QVERIFY(db && db->isOpen());
    QCOMPARE(pragma(*db, "journal_mode"), QStringLiteral("delete"));
    QCOMPARE(pragma(*db, "synchronous"), QStringLiteral("0"));
    QCOMPARE(pragma(*db, "foreign_keys"), QStringLiteral("1"));
}

void TestConnectionPool::newFilesHaveSmallPages_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("existing"); // page size of the file that is there; 0: none
    QTest::addColumn<QString>("expected");
    QTest::newRow("today's") << todayKey() << 0 << "1024";
    QTest::newRow("another day's") << "20250101" << 0 << "1024";
    QTest::newRow("today's, there already") << todayKey() << 4096 << "4096";
    QTest::newRow("another day's, there already") << "20250101" << 4096 << "4096";
}

/// A file keeps the page size that it was created with.
void TestConnectionPool::newFilesHaveSmallPages()
{
    QFETCH(const QString, key);
    QFETCH(const int, existing);
    const QString path = m_directory->filePath(key + QStringLiteral(".db"));
    if (existing > 0) {
        QVERIFY(writeText(path, {}));
        QCOMPARE(dayfile::execute(path, QStringLiteral("PRAGMA page_size = %1; "
                                                       "CREATE TABLE t (v INTEGER)")
                                            .arg(existing)),
                 QString());
    }
    {
        const auto db = ConnectionPool::instance().acquireConnection(path);
        QVERIFY(db && db->isOpen());
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE u (v INTEGER)")));
    }
    ConnectionPool::instance().removeConnection(path);
    QTEST(dayfile::rows(path, QStringLiteral("PRAGMA page_size")).value(0), "expected");
}

void TestConnectionPool::roleOutlivesMidnight()
{
    ConnectionPool::instance().acquireConnection(path(kToday));
    setPresent(localTime("2026-01-13 00:00:01.000"));
    const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
    QCOMPARE(pragma(*db, "journal_mode"), QStringLiteral("wal"));
    QCOMPARE(pragma(*db, "synchronous"), QStringLiteral("1"));
}

void TestConnectionPool::leftoverLogIsFoldedIn()
{
    // What a program killed yesterday leaves behind: copies of a running one's files.
    {
        const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("INSERT INTO t VALUES (42)")));
        QVERIFY(QFile::copy(path(kToday), path(kYesterday)));
        QVERIFY(QFile::copy(path(kToday) + QStringLiteral("-wal"),
                            path(kYesterday) + QStringLiteral("-wal")));
    }
    QVERIFY(QFileInfo(path(kYesterday) + QStringLiteral("-wal")).size() > 0);
    {
        const auto db = ConnectionPool::instance().acquireConnection(path(kYesterday));
        QCOMPARE(pragma(*db, "journal_mode"), QStringLiteral("delete"));
    }
    QVERIFY(!QFile::exists(path(kYesterday) + QStringLiteral("-wal")));
    QCOMPARE(dayfile::rows(path(kYesterday), QStringLiteral("SELECT v FROM t")),
             QStringList{QStringLiteral("42")});
}

void TestConnectionPool::refusedWalFallsBackToFullSynchronisation()
{
    ConnectionPool::instance().acquireConnection(path(QStringLiteral("made.db")));
    QCOMPARE(dayfile::execute(path(QStringLiteral("made.db")),
                              QStringLiteral("CREATE TABLE t (v INTEGER)")),
             QString());
    QVERIFY(QFile::copy(path(QStringLiteral("made.db")), path(kToday)));
    const DayFileLock reader(path(kToday), DayFileLock::Read); // no change of the journal now
    QVERIFY(reader.isHeld());
    const LogCapture log;
    const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
    QVERIFY(db && db->isOpen());
    QCOMPARE(pragma(*db, "synchronous"), QStringLiteral("2"));
    QCOMPARE(pragma(*db, "foreign_keys"), QStringLiteral("1"));
    const QStringList warnings = log.lines(QtWarningMsg);
    QVERIFY(!warnings.isEmpty());
    QVERIFY2(warnings.first().contains(QLatin1String("PRAGMA journal_mode = WAL")),
             qPrintable(warnings.first()));
    QCOMPARE(m_lockWaits.total(), kPatience);
}

void TestConnectionPool::garbageFileIsOpenedWithWarnings()
{
    QVERIFY(writeText(path(kToday), QByteArray(4096, 'x')));
    const LogCapture log;
    const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
    QVERIFY(db && db->isOpen());
    const QStringList warnings = log.lines(QtWarningMsg);
    QVERIFY(!warnings.isEmpty());
    QVERIFY2(warnings.first().startsWith(
                 QStringLiteral("执行PRAGMA失败： \"PRAGMA journal_mode = WAL\"  错误： ")),
             qPrintable(warnings.first()));
    QVERIFY(warnings.first().contains(QLatin1String("file is not a database")));
}

void TestConnectionPool::unexpectedAnswerOfAPragmaIsLogged()
{
    const LogCapture log;
    const QString inMemory = QStringLiteral(":memory:"); // has a journal mode of its own
    const auto db = ConnectionPool::instance().acquireConnection(inMemory);
    QVERIFY(db && db->isOpen());
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "warning: PRAGMA结果不匹配： \"PRAGMA journal_mode = DELETE\"  "
                              "预期： \"DELETE\"  实际： \"memory\"")});
    QCOMPARE(pragma(*db, "synchronous"), QStringLiteral("0"));
}

void TestConnectionPool::nameThatHasGoneIsLogged()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const QString name = pool.acquireConnection(path(kToday))->connectionName();
    const LogCapture log;
    QSqlDatabase::removeDatabase(name);
    QVERIFY(log.lines().first().contains(QLatin1String("still in use")));
    pool.removeConnection(path(kToday));
    QCOMPARE(pool.connectionCount(), 0);
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines().last().startsWith(QStringLiteral("debug: 连接名已不存在: ")));
}

void TestConnectionPool::pathIsPooledOnce()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const auto first = pool.acquireConnection(path(kToday));
    const auto second = pool.acquireConnection(path(kToday));
    QCOMPARE(first.data(), second.data());
    QCOMPARE(first->connectionName(), second->connectionName());
    QCOMPARE(pool.connectionCount(), 1);
}

void TestConnectionPool::pathIsPooledOnceWhoeverAsksAtATime()
{
    constexpr int kThreads = 8;
    std::atomic<int> ready{0};
    std::vector<QString> names(kThreads);
    std::vector<std::thread> threads;
    for (QString& name : names) {
        threads.emplace_back([this, &ready, &name] {
            for (++ready; ready < kThreads;) {
                std::this_thread::yield();
            }
            if (const auto db = ConnectionPool::instance().acquireConnection(path(kToday))) {
                name = db->connectionName();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QVERIFY(!names.front().isEmpty());
    QCOMPARE(std::count(names.begin(), names.end(), names.front()), std::ptrdiff_t(kThreads));
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList{names.front()});
}

void TestConnectionPool::connectionNameIsMadeOfPathAndUuid()
{
    const auto db = ConnectionPool::instance().acquireConnection(path(kToday));
    const QByteArray hash =
        QCryptographicHash::hash(path(kToday).toUtf8(), QCryptographicHash::Md5).toHex().left(8);
    const QRegularExpression pattern(
        QStringLiteral("^curve_db_%1_\\{[0-9a-f]{15}$").arg(QString::fromLatin1(hash)));
    QVERIFY2(pattern.match(db->connectionName()).hasMatch(), qPrintable(db->connectionName()));
}

void TestConnectionPool::missingDirectoryIsMade()
{
    const QString deep = path(QStringLiteral("a/b/20260112.db"));
    QVERIFY(ConnectionPool::instance().acquireConnection(deep));
    QVERIFY(QFile::exists(deep));
}

void TestConnectionPool::emptyPathIsRefused()
{
    const LogCapture log;
    QVERIFY(!ConnectionPool::instance().acquireConnection(QString()));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("critical: 数据库路径不能为空!")});
}

void TestConnectionPool::directoryThatCannotBeMadeIsLogged()
{
    QVERIFY(writeText(path(QStringLiteral("file")), "x"));
    const LogCapture log;
    QVERIFY(
        !ConnectionPool::instance().acquireConnection(path(QStringLiteral("file/20260112.db"))));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("critical: 创建数据库目录失败: \"%1\"")
                                          .arg(path(QStringLiteral("file")))});
}

void TestConnectionPool::fileThatCannotBeOpenedIsLogged()
{
    QVERIFY(QDir().mkpath(path(kToday)));
    const QStringList names = QSqlDatabase::connectionNames();
    const LogCapture log;
    QVERIFY(!ConnectionPool::instance().acquireConnection(path(kToday)));
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(
                 QStringLiteral("critical: 打开数据库失败: \"%1\" 错误: ").arg(path(kToday))),
             qPrintable(lines.first()));
    QCOMPARE(QSqlDatabase::connectionNames(), names);
}

void TestConnectionPool::closedConnectionIsMadeAnew()
{
    ConnectionPool& pool = ConnectionPool::instance();
    QString firstName;
    {
        const auto first = pool.acquireConnection(path(kToday));
        firstName = first->connectionName();
        first->close();
    }
    const LogCapture log;
    const auto second = pool.acquireConnection(path(kToday));
    QVERIFY(second && second->isOpen());
    QVERIFY(second->connectionName() != firstName);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("debug: 连接无效，重新创建： \"%1\"").arg(path(kToday))});
}

void TestConnectionPool::closingLeavesNoSideFiles()
{
    ConnectionPool& pool = ConnectionPool::instance();
    QString name;
    {
        const auto db = pool.acquireConnection(path(kToday));
        name = db->connectionName();
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
        QVERIFY(QFile::exists(path(kToday) + QStringLiteral("-wal")));
    }
    const LogCapture log;
    pool.removeConnection(path(kToday));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(pool.connectionCount(), 0);
    QVERIFY(!QSqlDatabase::contains(name));
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-wal")));
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-shm")));
    QCOMPARE(dayfile::rows(path(kToday), QStringLiteral("PRAGMA journal_mode")),
             QStringList{QStringLiteral("delete")});
}

void TestConnectionPool::closingTakesItsWaits()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kToday));
    pool.closeConnection(path(kToday));
    QCOMPARE(m_waits.asked(), kClosing);
}

void TestConnectionPool::closingHandlesEventsWithTheMutexFree()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kToday));
    bool nested = false;
    QTimer::singleShot(0, this, [this, &pool, &nested] {
        pool.releaseConnection(path(kToday));
        nested = !pool.acquireConnection(path(kYesterday)).isNull();
    });
    pool.removeConnection(path(kToday));
    QVERIFY(nested);
    QCOMPARE(pool.connectionCount(), 1);
}

void TestConnectionPool::closingEndsQueriesInUse()
{
    ConnectionPool& pool = ConnectionPool::instance();
    auto db = pool.acquireConnection(path(kToday));
    ManagedQuery query(*db);
    QVERIFY(query.exec(QStringLiteral("SELECT 1 UNION ALL SELECT 2")));
    QVERIFY(query.next());
    db.reset();
    pool.removeConnection(path(kToday));
    QVERIFY(!query.next());
    QVERIFY(!query.isUsable());
    QCOMPARE(dayfile::rows(path(kToday), QStringLiteral("PRAGMA journal_mode")),
             QStringList{QStringLiteral("delete")});
}

void TestConnectionPool::holderKeepsAClosedConnection()
{
    ConnectionPool& pool = ConnectionPool::instance();
    auto held = pool.acquireConnection(path(kToday));
    const QString name = held->connectionName();
    const LogCapture log;
    pool.removeConnection(path(kToday));
    QVERIFY(!held->isOpen());
    QCOMPARE(held->connectionName(), name);
    QVERIFY(!ManagedQuery(*held).exec(QStringLiteral("SELECT 1")));
    held.reset();
    QVERIFY(pool.acquireConnection(path(kYesterday))); // tidies up
    QVERIFY(!QSqlDatabase::contains(name));
    QCOMPARE(log.lines(), QStringList());
}

void TestConnectionPool::connectionOfAnotherThreadIsClosedQuietly()
{
    ConnectionPool& pool = ConnectionPool::instance();
    QString name;
    std::thread other(
        [this, &pool, &name] { name = pool.acquireConnection(path(kToday))->connectionName(); });
    other.join();
    const LogCapture log;
    {
        const auto db = pool.acquireConnection(path(kToday));
        QCOMPARE(db->connectionName(), name);
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
    }
    pool.removeConnection(path(kToday));
    QVERIFY(!QSqlDatabase::contains(name));
    QCOMPARE(log.lines(), QStringList());
}

void TestConnectionPool::removingAnUnknownPathDoesNothing()
{
    ConnectionPool::instance().removeConnection(path(kToday));
    ConnectionPool::instance().closeConnection(path(kToday));
    ConnectionPool::instance().discardConnection(path(kToday));
    ConnectionPool::instance().releaseConnection(path(kToday));
    QCOMPARE(m_waits.asked(), QVector<int>());
    QCOMPARE(ConnectionPool::instance().connectionCount(), 0);
}

void TestConnectionPool::closeAllClosesEverything()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kToday));
    pool.acquireConnection(path(kYesterday));
    pool.closeAllConnections();
    const QVector<int> gap{50};
    QCOMPARE(m_waits.asked(), kClosing + gap + kClosing + gap);
    QCOMPARE(pool.connectionCount(), 0);
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-wal")));
}

/// If it left the pool unclosed, it would stay open to the end, beside the next connection to its
/// file.
void TestConnectionPool::connectionOpenedWhileAllAreClosedStays()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kToday));
    QString name;
    QTimer::singleShot(0, this, [this, &pool, &name] {
        name = pool.acquireConnection(path(kYesterday))->connectionName();
    });
    pool.closeAllConnections();
    QCOMPARE(pool.connectionCount(), 1);
    const auto db = pool.acquireConnection(path(kYesterday));
    QVERIFY(db->isOpen());
    QCOMPARE(db->connectionName(), name);
}

void TestConnectionPool::idleConnectionExpires()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const QString name = pool.acquireConnection(path(kToday))->connectionName();
    advancePresent(kTwelveHoursMs);
    {
        const LogCapture log;
        QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
        QCOMPARE(log.lines(), QStringList{QStringLiteral("debug: 连接池清理超时连接数： 0")});
    }
    advancePresent(1);
    const LogCapture log;
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QCOMPARE(log.lines(),
             (QStringList{QStringLiteral("debug: 准备移除超时连接： \"%1\" 连接名： \"%2\"")
                              .arg(path(kToday), name),
                          QStringLiteral("debug: 已关闭连接并清理 WAL： \"%1\"").arg(name),
                          QStringLiteral("debug: 已从连接池移除连接： \"%1\"").arg(path(kToday)),
                          QStringLiteral("debug: 连接池清理超时连接数： 1")}));
    QCOMPARE(pool.connectionCount(), 0);
    QVERIFY(QSqlDatabase::contains(name)); // an expiry leaves the name registered
}

void TestConnectionPool::expiryRemovesStraySideFiles()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kYesterday));
    QVERIFY(writeText(path(kYesterday) + QStringLiteral("-wal"), "stray"));
    QVERIFY(writeText(path(kYesterday) + QStringLiteral("-shm"), "stray"));
    advancePresent(kTwelveHoursMs + 1);
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QVERIFY(!QFile::exists(path(kYesterday) + QStringLiteral("-wal")));
    QVERIFY(!QFile::exists(path(kYesterday) + QStringLiteral("-shm")));
}

void TestConnectionPool::expiryKeepsTheLogThatAnotherProcessUses()
{
    ConnectionPool& pool = ConnectionPool::instance();
    {
        const auto db = pool.acquireConnection(path(kToday));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
    }
    const DayFileLock other(path(kToday));
    QVERIFY(other.isHeld());
    advancePresent(kTwelveHoursMs + 1);
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QCOMPARE(pool.connectionCount(), 0);
    QVERIFY(QFileInfo(path(kToday) + QStringLiteral("-wal")).size() > 0);
    QCOMPARE(dayfile::rows(path(kToday), QStringLiteral("SELECT count(*) FROM t")),
             QStringList{QStringLiteral("0")});
}

void TestConnectionPool::releaseIsAUse()
{
    ConnectionPool& pool = ConnectionPool::instance();
    pool.acquireConnection(path(kToday));
    advancePresent(kTwelveHoursMs);
    pool.releaseConnection(path(kToday));
    advancePresent(kTwelveHoursMs);
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QCOMPARE(pool.connectionCount(), 1);
}

void TestConnectionPool::heldConnectionDoesNotExpire()
{
    ConnectionPool& pool = ConnectionPool::instance();
    auto held = pool.acquireConnection(path(kToday));
    QVERIFY(pool.isHeld(path(kToday)));
    advancePresent(2 * kTwelveHoursMs);
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QCOMPARE(pool.connectionCount(), 1);
    QVERIFY(held->isOpen());
    held.reset();
    QVERIFY(!pool.isHeld(path(kToday)));
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QCOMPARE(pool.connectionCount(), 0);
}

void TestConnectionPool::limitEvictsTheLeastRecentlyUsed()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const auto name = [](int number) {
        return QStringLiteral("%1.db").arg(number, 2, 10, QLatin1Char('0'));
    };
    QVector<QSharedPointer<QSqlDatabase>> held;
    for (int i = 0; i < kLimit; ++i) {
        held.append(pool.acquireConnection(path(name(i))));
        advancePresent(1);
    }
    // The oldest is in use. Of the two that nobody holds, one was used again since.
    const QString usedAgain = held[1]->connectionName();
    const QString evicted = held[2]->connectionName();
    held[1].reset();
    held[2].reset();
    pool.releaseConnection(path(name(1)));
    QVERIFY(pool.acquireConnection(path(name(kLimit))));
    QCOMPARE(pool.connectionCount(), kLimit);
    QVERIFY(held[0]->isOpen() && held[3]->isOpen());
    QVERIFY(QSqlDatabase::contains(usedAgain));
    QVERIFY(!QSqlDatabase::contains(evicted));
}

void TestConnectionPool::firstOfEqualsIsEvicted()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const QString first = pool.acquireConnection(path(QStringLiteral("a.db")))->connectionName();
    const QString second = pool.acquireConnection(path(QStringLiteral("b.db")))->connectionName();
    pool.evictOldestConnection();
    QVERIFY(!QSqlDatabase::contains(first));
    QVERIFY(QSqlDatabase::contains(second));
}

/// A read of more files than the pool keeps evicts one for each: handling events there would nest
/// reads.
void TestConnectionPool::evictionFoldsInAndWaitsForNobody()
{
    ConnectionPool& pool = ConnectionPool::instance();
    {
        const auto db = pool.acquireConnection(path(kToday));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
    }
    advancePresent(1);
    for (int i = 1; i < kLimit; ++i) {
        QVERIFY(pool.acquireConnection(path(QStringLiteral("%1.db").arg(i))));
    }
    bool handled = false;
    QTimer::singleShot(0, this, [&handled] { handled = true; });
    const LogCapture log;
    QVERIFY(pool.acquireConnection(path(QStringLiteral("last.db"))));
    QCOMPARE(m_waits.asked(), QVector<int>());
    QVERIFY(!handled);
    QCOMPARE(pool.lastUse(path(kToday)), 0);
    QCOMPARE(QSqlDatabase::connectionNames().size(), kLimit);
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-wal")));
    QCOMPARE(dayfile::rows(path(kToday), QStringLiteral("PRAGMA journal_mode")),
             QStringList{QStringLiteral("delete")});
    QCOMPARE(log.lines(), QStringList());
}

void TestConnectionPool::evictionOfALockedFileLeavesItsLog()
{
    ConnectionPool& pool = ConnectionPool::instance();
    {
        const auto db = pool.acquireConnection(path(kToday));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("INSERT INTO t VALUES (7)")));
    }
    advancePresent(1);
    for (int i = 1; i < kLimit; ++i) {
        QVERIFY(pool.acquireConnection(path(QStringLiteral("%1.db").arg(i))));
    }
    {
        const DayFileLock lock(path(kToday));
        QVERIFY(lock.isHeld());
        QVERIFY(pool.acquireConnection(path(QStringLiteral("last.db"))));
        QCOMPARE(m_lockWaits.total(), std::chrono::milliseconds::zero());
        QCOMPARE(m_waits.asked(), QVector<int>());
        QCOMPARE(pool.lastUse(path(kToday)), 0);
    }
    QCOMPARE(dayfile::rows(path(kToday), QStringLiteral("SELECT v FROM t")),
             QStringList{QStringLiteral("7")});
}

void TestConnectionPool::heldConnectionsAreNotEvictedAndThePoolGrows()
{
    ConnectionPool& pool = ConnectionPool::instance();
    QVector<QSharedPointer<QSqlDatabase>> held;
    for (int i = 0; i <= kLimit; ++i) {
        held.append(pool.acquireConnection(path(QStringLiteral("%1.db").arg(i))));
    }
    QCOMPARE(pool.connectionCount(), kLimit + 1);
    for (const auto& connection : qAsConst(held)) {
        QVERIFY(connection && connection->isOpen());
    }
}

void TestConnectionPool::discardClosesAtOnce()
{
    ConnectionPool& pool = ConnectionPool::instance();
    const QString name = pool.acquireConnection(path(kToday))->connectionName();
    pool.discardConnection(path(kToday));
    QCOMPARE(m_waits.asked(), QVector<int>());
    QVERIFY(!QSqlDatabase::contains(name));
    QCOMPARE(pool.connectionCount(), 0);
}

void TestConnectionPool::closeForExitIsOrderlyAndQuick()
{
    ConnectionPool& pool = ConnectionPool::instance();
    for (const QString& name : {kToday, kYesterday}) {
        const auto db = pool.acquireConnection(path(name));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
    }
    // One name left behind by an expiry, one connection still held.
    const QString expired =
        pool.acquireConnection(path(QStringLiteral("old.db")))->connectionName();
    const auto held = pool.acquireConnection(path(QStringLiteral("held.db")));
    advancePresent(kTwelveHoursMs + 1);
    pool.releaseConnection(path(kToday));
    pool.releaseConnection(path(kYesterday));
    QMetaObject::invokeMethod(&pool, "cleanExpiredConnections");
    QVERIFY(QSqlDatabase::contains(expired));

    const LogCapture log;
    pool.closeForExit(QDeadlineTimer(kBudgetMs));
    QCOMPARE(m_waits.asked(), QVector<int>());
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(!held->isOpen());
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList{held->connectionName()});
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-wal")));
    QVERIFY(!QFile::exists(path(kToday) + QStringLiteral("-shm")));
}

void TestConnectionPool::closeForExitKeepsItsDeadline()
{
    ConnectionPool& pool = ConnectionPool::instance();
    {
        const auto db = pool.acquireConnection(path(kToday));
        QVERIFY(ManagedQuery(*db).exec(QStringLiteral("CREATE TABLE t (v INTEGER)")));
    }
    const DayFileLock other(path(kToday)); // the log cannot be folded in
    QVERIFY(other.isHeld());
    pool.closeForExit(QDeadlineTimer(1000));
    QVERIFY(m_lockWaits.total() > std::chrono::milliseconds::zero());
    QVERIFY(m_lockWaits.total() <= std::chrono::milliseconds(1000));
    QCOMPARE(m_waits.asked(), QVector<int>());
}

SCN_TEST(TestConnectionPool, QCoreApplication)
#include "test_connectionpool.moc"
