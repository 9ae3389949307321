#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

// Files with unexpected contents, and files that are removed or replaced while the store has them
// open.

namespace {

constexpr int kCloseMs = 5000;
constexpr qint64 kRepairMs = 5000;
constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

QString nameOf(int curve)
{
    return QStringLiteral("10%1(V)").arg(curve);
}

/// "timestamp|value" of a table's rows.
QStringList points(const QString& path, const char* table = kMorning)
{
    return dayfile::rows(
        path, QStringLiteral("SELECT timestamp, value FROM %1 ORDER BY id").arg(one(table)));
}

QString point(qint64 timestamp, const char* value)
{
    return QStringLiteral("%1|%2").arg(timestamp).arg(one(value));
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), static_cast<qint64>(bytes.size()));
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Bytes that are not a database, the same in each run.
QByteArray garbage(int size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 4070;
    for (char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// A day file with three curves and no readings.
void makeDayFile(const QString& path)
{
    DayFileWriter writer(path);
    for (int curve = 1; curve <= 3; ++curve) {
        writer.addCurve(curve, nameOf(curve));
    }
}

/// Puts a file in the place of another.
void replace(const QString& path, const QString& by)
{
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::rename(by, path));
}

/// Ways in which today's file goes, by the name of the test's row. `elsewhere` is the place for a
/// directory that is moved away.
using Loss = std::function<void(const QString& path, const QString& elsewhere)>;

const QMap<QString, Loss>& losses()
{
    static const auto directoryOf = [](const QString& path) { return QFileInfo(path).path(); };
    static const QMap<QString, Loss> all{
        {one("deleted"),
         [](const QString& path, const QString&) {
             for (const char* suffix : {"", "-wal", "-shm"}) {
                 QVERIFY(QFile::remove(path + one(suffix)));
             }
         }},
        {one("deleted without its log"),
         [](const QString& path, const QString&) { QVERIFY(QFile::remove(path)); }},
        {one("moved away"),
         [](const QString& path, const QString&) {
             QVERIFY(QFile::rename(path, path + one(".old")));
         }},
        {one("replaced"),
         [](const QString& path, const QString&) {
             makeDayFile(path + one(".new"));
             replace(path, path + one(".new"));
         }},
        {one("replaced by a copy of itself"),
         [](const QString& path, const QString&) {
             QCOMPARE(dayfile::rows(path, one("PRAGMA wal_checkpoint(TRUNCATE)")),
                      QStringList{one("0|0|0")});
             QVERIFY(QFile::copy(path, path + one(".new")));
             replace(path, path + one(".new"));
         }},
        {one("directory deleted"),
         [](const QString& path, const QString&) {
             QVERIFY(QDir(directoryOf(path)).removeRecursively());
         }},
        {one("directory moved away"),
         [](const QString& path, const QString& elsewhere) {
             QVERIFY(QDir().rename(directoryOf(path), elsewhere));
         }},
        {one("directory replaced"), [](const QString& path, const QString& elsewhere) {
             QVERIFY(QDir().rename(directoryOf(path), elsewhere));
             QVERIFY(QDir().mkdir(directoryOf(path)));
             makeDayFile(path);
         }}};
    return all;
}

} // namespace

class TestStoreDamage : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

    void garbageAtTheStart();
    void garbageInPlaceOfAPastDay();
    void garbageOverAnOpenFile();
    void junkAtTheEndOfTheLog_data();
    void junkAtTheEndOfTheLog();
    void fileThatGoesIsMadeAgain_data();
    void fileThatGoesIsMadeAgain();
    void replacedPastDayTakesLateReadings();
    void directoryThatCannotBeMadeAgain();

private:
    const SkippedWaits m_waits;
};

void TestStoreDamage::garbageAtTheStart()
{
    TestStore store;
    const QString path = store.path("20260112");
    store->closeForExit(QDeadlineTimer(kCloseMs));
    writeFile(path, garbage(8192));
    const LogCapture log;
    store.restart();
    constexpr const char* kNoDatabase = "\"file is not a database Unable to execute statement\"";
    QStringList expected;
    for (const char* pragma : {"PRAGMA journal_mode = WAL", "PRAGMA journal_mode = DELETE",
                               "PRAGMA synchronous = FULL"}) {
        expected.append(QStringLiteral("warning: 执行PRAGMA失败： \"%1\"  错误： %2")
                            .arg(one(pragma), one(kNoDatabase)));
    }
    for (const char* table : {"curve_info", "batch_metadata", "curve_metadata"}) {
        expected.append(
            QStringLiteral("critical: 创建%1表失败: %2").arg(one(table), one(kNoDatabase)));
    }
    QCOMPARE(log.lines(), expected);
    QCOMPARE(store->registerCurve(nameOf(1)), -1);
    store->appendPoint(1, at("09:00:00"), 1.0);
    QCOMPARE(contents(path), garbage(8192)); // it may be somebody's

    // A database replaces the garbage.
    makeDayFile(path + one(".new"));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::rename(path + one(".new"), path));
    store->appendPoint(2, at("09:00:01"), 2.0);
    QCOMPARE(points(path, "curve_2_batch_20260112_060000_20260112_115959"),
             QStringList{point(at("09:00:01"), "2.0")});
}

void TestStoreDamage::garbageInPlaceOfAPastDay()
{
    TestStore store;
    store->registerCurve(nameOf(1));
    const QString past = store.path("20260111");
    writeFile(past, garbage(8192));
    const LogCapture log;
    store->appendPoint(1, localTime("2026-01-11 09:00:00.000"), 1.0);
    QVERIFY(store->readCurveData(1, localTime("2026-01-11 08:00:00.000"), at("00:00:00") - 1, 0)
                .isEmpty());
    constexpr const char* kNoDatabase = "\"file is not a database Unable to execute statement\"";
    QStringList expected;
    for (const char* pragma : {"PRAGMA journal_mode = DELETE", "PRAGMA synchronous = OFF"}) {
        expected.append(QStringLiteral("执行PRAGMA失败： \"%1\"  错误： %2")
                            .arg(one(pragma), one(kNoDatabase)));
    }
    expected.append(one("在新数据库中注册曲线失败: ") + one(kNoDatabase));
    expected.append(one("查询分片元数据失败: ") + one(kNoDatabase));
    QCOMPARE(log.lines(QtWarningMsg), expected);
    QCOMPARE(contents(past), garbage(8192));
    store->appendPoint(1, at("09:00:00"), 2.0);
    QCOMPARE(points(store.path("20260112")), QStringList{point(at("09:00:00"), "2.0")});
}

/// What happens to a file overwritten under the store is up to SQLite; the store must survive it,
/// and continue once the file has been removed.
void TestStoreDamage::garbageOverAnOpenFile()
{
    TestStore store;
    for (int curve = 1; curve <= 3; ++curve) {
        QCOMPARE(store->registerCurve(nameOf(curve)), curve);
    }
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray bytes = garbage(static_cast<int>(file.size()));
        QCOMPARE(file.write(bytes), static_cast<qint64>(bytes.size()));
    }
    {
        const LogCapture log;
        for (int i = 1; i <= 2000; ++i) {
            store->appendPoint(1 + i % 3, at("09:00:00") + i, i);
        }
        store->flushAndDetach();
        store->appendPoint(1, at("09:00:10"), 1.0);
        store->readCurveData(1, at("09:00:00"), at("09:10:00"), 0);
    }
    for (const char* suffix : {"", "-wal", "-shm"}) {
        QFile::remove(path + one(suffix));
    }
    const LogCapture log;
    store->appendPoint(2, at("09:20:00"), 2.0);
    QCOMPARE(points(path, "curve_2_batch_20260112_060000_20260112_115959"),
             QStringList{point(at("09:20:00"), "2.0")});
    QCOMPARE(dayfile::rows(path, one("SELECT curve_id, name FROM curve_info")),
             (QStringList{one("1|101(V)"), one("2|102(V)"), one("3|103(V)")}));
}

void TestStoreDamage::junkAtTheEndOfTheLog_data()
{
    QTest::addColumn<QByteArray>("junk");
    QTest::addColumn<bool>("repeatedFrames");
    QTest::newRow("one byte") << QByteArray(1, 'x') << false;
    QTest::newRow("zeros") << QByteArray(4120, '\0') << false;
    QTest::newRow("noise") << garbage(3 * 4120) << false;
    QTest::newRow("half a frame header") << garbage(12) << false;
    QTest::newRow("frames of its own") << QByteArray() << true;
}

void TestStoreDamage::junkAtTheEndOfTheLog()
{
    QFETCH(QByteArray, junk);
    QFETCH(bool, repeatedFrames);
    constexpr int kReadings = 100;
    TestStore store;
    const QString path = store.path("20260112");
    QStringList expected;
    QByteArray file;
    QByteArray wal;
    {
        // What a killed program leaves: copies of a running one's files.
        store->registerCurve(nameOf(1));
        for (int i = 0; i < kReadings; ++i) {
            store->appendPoint(1, at("09:00:00") + i, 1.0);
            expected.append(point(at("09:00:00") + i, "1.0"));
        }
        file = contents(path);
        wal = contents(path + one("-wal"));
        QVERIFY(wal.size() > kReadings * 4096);
        store->closeForExit(QDeadlineTimer(kCloseMs));
    }
    // The WAL's header is 32 bytes, a frame 24 more than a page: repeats the last frames.
    writeFile(path, file);
    writeFile(path + one("-wal"), wal + (repeatedFrames ? wal.right(2 * 4120) : junk));
    const LogCapture log;
    store.restart();
    QCOMPARE(store->registerCurve(nameOf(1)), 1);
    store->appendPoint(1, at("09:10:00"), 2.0);
    expected.append(point(at("09:10:00"), "2.0"));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(store->readCurveData(1, at("09:00:00"), at("09:20:00"), 0).size(), kReadings + 1);
    QCOMPARE(points(path), expected);
    QCOMPARE(dayfile::rows(path, one("PRAGMA integrity_check")), QStringList{one("ok")});
    QCOMPARE(dayfile::rows(path, one("SELECT min_time, max_time FROM curve_metadata")),
             QStringList{QStringLiteral("%1|%2").arg(at("09:00:00")).arg(at("09:10:00"))});
}

void TestStoreDamage::fileThatGoesIsMadeAgain_data()
{
    QTest::addColumn<QString>("how");
    for (const QString& how : losses().keys()) {
        QTest::newRow(qPrintable(how)) << how;
    }
}

void TestStoreDamage::fileThatGoesIsMadeAgain()
{
    QFETCH(QString, how);
    TestStore store;
    for (int curve = 1; curve <= 3; ++curve) {
        QCOMPARE(store->registerCurve(nameOf(curve)), curve);
    }
    for (int curve = 1; curve <= 3; ++curve) {
        store->appendPoint(curve, at("09:00:00"), 1.0);
    }
    const QString path = store.path("20260112");
    const QTemporaryDir elsewhere;
    QDir().rmdir(elsewhere.path());
    const LogCapture log;
    losses().value(how)(path, elsewhere.path());
    for (int curve = 1; curve <= 3; ++curve) {
        store->appendPoint(curve, at("09:00:01"), 2.0);
    }
    // Late readings and the next ones find the same file.
    store->flushAndDetach();
    store->appendPoint(1, at("09:00:02"), 3.0);
    QCOMPARE(log.lines(QtWarningMsg) + log.lines(QtCriticalMsg), QStringList());
    QStringList expected{point(at("09:00:01"), "2.0"), point(at("09:00:02"), "3.0")};
    if (how == one("replaced by a copy of itself")) {
        expected.prepend(point(at("09:00:00"), "1.0"));
    }
    QCOMPARE(points(path), expected);
    QCOMPARE(dayfile::rows(path, one("PRAGMA integrity_check")), QStringList{one("ok")});
    QCOMPARE(dayfile::rows(path, one("SELECT i.curve_id, name, max_time FROM curve_info i JOIN "
                                     "curve_metadata m ON m.curve_id = i.curve_id ORDER BY 1")),
             (QStringList{QStringLiteral("1|101(V)|%1").arg(at("09:00:02")),
                          QStringLiteral("2|102(V)|%1").arg(at("09:00:01")),
                          QStringLiteral("3|103(V)|%1").arg(at("09:00:01"))}));
    // The moved file has everything stored before.
    QString moved;
    if (how == one("moved away")) {
        moved = path + one(".old");
    } else if (how == one("directory moved away") || how == one("directory replaced")) {
        moved = elsewhere.path() + one("/20260112.db");
    }
    if (!moved.isEmpty()) {
        QCOMPARE(points(moved), QStringList{point(at("09:00:00"), "1.0")});
        QCOMPARE(dayfile::rows(moved, one("PRAGMA integrity_check")), QStringList{one("ok")});
    }
}

void TestStoreDamage::replacedPastDayTakesLateReadings()
{
    constexpr const char* kTable = "curve_1_batch_20260111_060000_20260111_115959";
    const qint64 yesterday = localTime("2026-01-11 09:00:00.000");
    TestStore store;
    store->registerCurve(nameOf(1));
    const QString past = store.path("20260111");
    makeDayFile(past);
    store->appendPoint(1, yesterday, 1.0);
    QCOMPARE(points(past, kTable).size(), 1);
    makeDayFile(past + one(".new"));
    QVERIFY(QFile::remove(past));
    QVERIFY(QFile::rename(past + one(".new"), past));
    const LogCapture log;
    store->appendPoint(1, yesterday + 1, 2.0);
    QCOMPARE(points(past, kTable), QStringList{point(yesterday + 1, "2.0")});
    QCOMPARE(store->readCurveData(1, yesterday, yesterday + 1, 0).size(), 1);
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(ConnectionPool::instance().connectionCount(), 2);
}

void TestStoreDamage::directoryThatCannotBeMadeAgain()
{
    TestStore store;
    store->registerCurve(nameOf(1));
    store->appendPoint(1, at("09:00:00"), 1.0);
    QVERIFY(QDir(store.directory()).removeRecursively());
    writeFile(store.directory(), "in its place");
    {
        const LogCapture log;
        store->appendPoint(1, at("09:00:01"), 2.0);
        QCOMPARE(
            log.lines(QtWarningMsg) + log.lines(QtCriticalMsg),
            (QStringList{
                QStringLiteral("切换数据库失败，连接无效： \"%1\"").arg(store.path("20260112")),
                QStringLiteral("创建数据库目录失败: \"%1\"").arg(store.directory())}));
        for (int i = 0; i < 100; ++i) {
            store->appendPoint(1, at("09:00:02") + i, 3.0);
        }
        QCOMPARE(log.lines(QtCriticalMsg).size(), 1); // it is not asked for with every reading
    }
    QVERIFY(QFile::remove(store.directory()));
    advancePresent(kRepairMs);
    const LogCapture log;
    store->appendPoint(1, at("09:00:03"), 4.0);
    QCOMPARE(points(store.path("20260112")), QStringList{point(at("09:00:03"), "4.0")});
    QCOMPARE(log.lines(QtWarningMsg) + log.lines(QtCriticalMsg), QStringList());
}

SCN_TEST(TestStoreDamage, QCoreApplication)
#include "test_storedamage.moc"
