#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "storeobserver.h"
#include "support/logcapture.h"
#include "support/privatemounts.h"
#include "teststore.h"

#include <QDir>
#include <QFile>
#include <QtTest>

// A full disk and a read-only directory, by private mounts.

using privatemounts::Mount;

namespace {

constexpr int kCloseMs = 5000;
constexpr qint64 kRepairMs = 5000;
constexpr qint64 kDiskBytes = 8 * 1024 * 1024;
constexpr qint64 kRoomBytes = 512 * 1024;
constexpr const char* kMorning = "curve_1_batch_20260112_060000_20260112_115959";

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

QStringList values(const QString& path, const char* table = kMorning)
{
    return dayfile::rows(path, QStringLiteral("SELECT value FROM %1 ORDER BY id").arg(one(table)));
}

/// Leaves less room on a disk.
void writeFiller(const QString& path, int bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(bytes, 'x')), qint64(bytes));
}

} // namespace

class TestStoreDisk : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

    void fullDiskInTheMidstOfARun();
    void fullDiskAtTheStart();
    void fullDiskAtMidnight();
    void readOnlyDirectoryAtTheStart();
    void readOnlyDirectoryAtMidnight();
    void readOnlyDirectoryWhenAFileIsOpenedAgain();

private:
    const SkippedWaits m_waits;
};

void TestStoreDisk::fullDiskInTheMidstOfARun()
{
    constexpr int kReadings = 4000;
    TestStore store;
    store->closeForExit(QDeadlineTimer(kCloseMs));
    const Mount disk = Mount::disk(store.directory(), kDiskBytes);
    QVERIFY(disk.isMounted());
    store.restart();
    store->registerCurve(one("101(V)"));
    const QString path = store.path("20260112");
    const QString filler = store.directory() + one("/filler");
    writeFiller(filler, kDiskBytes - kRoomBytes);
    QStringList expected;
    StoreObserver observer(store.directory());
    const auto append = [&](int number) {
        const qint64 time = at("09:00:00") + number;
        store->appendPoint(1, time, number);
        const bool stored = observer.count(one("20260112"), one(kMorning), 1, time, number) == 1;
        if (stored) {
            expected.append(QStringLiteral("%1.0").arg(number));
        }
        return stored;
    };
    int lost = 0;
    {
        const LogCapture log;
        for (int number = 1; number <= kReadings; ++number) {
            lost += append(number) ? 0 : 1;
        }
        QVERIFY2(lost > 1000 && lost < kReadings - 50, qPrintable(QString::number(lost)));
        const QStringList lines = log.lines();
        QVERIFY(lines.size() > 1000);
        const QSet<QString> kinds(lines.cbegin(), lines.cend());
        QCOMPARE(kinds.values(), QStringList{one("warning: 保存曲线元数据失败: \"database or disk "
                                                 "is full Unable to fetch row\"")});
        // No room for the table of another batch.
        store->appendPoint(1, at("03:00:00"), 1.0);
        QCOMPARE(log.lines().mid(lines.size(), 2),
                 (QStringList{one("warning: 提交事务失败: \"database or disk is full Unable to "
                                  "fetch row\""),
                              one("warning: 创建分片表失败: "
                                  "\"curve_1_batch_20260112_000000_20260112_055959\"")}));
    }
    QVERIFY(QFile::remove(filler));
    const LogCapture log;
    for (int number = kReadings + 1; number <= kReadings + 100; ++number) {
        QVERIFY(append(number));
    }
    QCOMPARE(log.lines(), QStringList());
    observer.close();
    QCOMPARE(values(path), expected);
    QCOMPARE(dayfile::rows(path, one("PRAGMA integrity_check")), QStringList{one("ok")});
    QCOMPARE(dayfile::rows(path, one("SELECT max_value FROM curve_metadata")),
             QStringList{expected.last()});
    store->closeForExit(QDeadlineTimer(kCloseMs));
    QCOMPARE(values(path), expected);
}

void TestStoreDisk::fullDiskAtTheStart()
{
    TestStore store;
    store->closeForExit(QDeadlineTimer(kCloseMs));
    const Mount disk = Mount::disk(store.directory(), kDiskBytes);
    QVERIFY(disk.isMounted());
    const QString filler = store.directory() + one("/filler");
    privatemounts::fillDisk(filler);
    {
        const LogCapture log;
        store.restart();
        QCOMPARE(store->registerCurve(one("101(V)")), -1);
        store->appendPoint(1, at("09:00:00"), 1.0);
        QVERIFY2(log.lines().contains(one("critical: 创建curve_info表失败: \"database or disk is "
                                          "full Unable to fetch row\"")),
                 qPrintable(log.lines().join(QLatin1Char('\n'))));
    }
    QVERIFY(QFile::remove(filler));
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    store->appendPoint(1, at("09:00:01"), 2.0);
    QCOMPARE(values(store.path("20260112")), QStringList{one("2.0")});
    store->closeForExit(QDeadlineTimer(kCloseMs));
}

void TestStoreDisk::fullDiskAtMidnight()
{
    setPresent(at("23:59:59"));
    TestStore store;
    store->closeForExit(QDeadlineTimer(kCloseMs));
    const Mount disk = Mount::disk(store.directory(), kDiskBytes);
    QVERIFY(disk.isMounted());
    store.restart();
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    QCOMPARE(store->registerCurve(one("102(V)")), 2);
    const QString filler = store.directory() + one("/filler");
    privatemounts::fillDisk(filler);
    const qint64 midnight = at("23:59:59") + 1000;
    setPresent(midnight + 10);
    {
        const LogCapture log;
        store->appendPoint(1, midnight, 1.0);
        store->appendPoint(2, midnight, 1.0);
        QVERIFY2(log.lines().contains(one("critical: 创建curve_info表失败: \"database or disk is "
                                          "full Unable to fetch row\"")),
                 qPrintable(log.lines().join(QLatin1Char('\n'))));
    }
    QVERIFY(QFile::remove(filler));
    advancePresent(kRepairMs);
    store->appendPoint(2, midnight + 1, 2.0);
    store->appendPoint(1, midnight + 1, 3.0);
    const QString path = store.path("20260113");
    QCOMPARE(values(path, "curve_1_batch_20260113_000000_20260113_055959"),
             QStringList{one("3.0")});
    QCOMPARE(values(path, "curve_2_batch_20260113_000000_20260113_055959"),
             QStringList{one("2.0")});
    QCOMPARE(dayfile::rows(path, one("SELECT curve_id, name FROM curve_info")),
             (QStringList{one("1|101(V)"), one("2|102(V)")}));
    store->closeForExit(QDeadlineTimer(kCloseMs));
}

void TestStoreDisk::readOnlyDirectoryAtTheStart()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoint(1, at("09:00:00"), 1.0);
    store->closeForExit(QDeadlineTimer(kCloseMs));
    const QString path = store.path("20260112");
    {
        const Mount readOnly = Mount::readOnly(store.directory());
        QVERIFY(readOnly.isMounted());
        const LogCapture log;
        store.restart();
        QCOMPARE(store->registerCurve(one("101(V)")), 1); // the file knows it
        store->appendPoint(1, at("09:00:01"), 2.0);
        const QStringList lines = log.lines();
        for (const char* line :
             {"warning: 执行PRAGMA失败： \"PRAGMA journal_mode = WAL\"  错误： \"attempt to write "
              "a readonly database Unable to fetch row\"",
              "warning: 保存曲线元数据失败: \"attempt to write a readonly database Unable to "
              "fetch row\""}) {
            QVERIFY2(lines.contains(one(line)), qPrintable(lines.join(QLatin1Char('\n'))));
        }
        // Stored readings can be read.
        QCOMPARE(store->readCurveData(1, at("08:00:00"), at("10:00:00"), 0).size(), 1);
        const int sizeBefore = log.lines().size();
        for (int i = 2; i < 100; ++i) {
            store->appendPoint(1, at("09:00:00") + i, i);
        }
        QVERIFY(log.lines().size() <= sizeBefore + 2 * 98); // opened again once, not each time
    }
    QCOMPARE(values(path), QStringList{one("1.0")});
    advancePresent(kRepairMs);
    store->appendPoint(1, at("09:20:00"), 3.0);
    store->appendPoint(1, at("09:20:01"), 4.0);
    QCOMPARE(values(path), (QStringList{one("1.0"), one("3.0"), one("4.0")}));
    QCOMPARE(dayfile::rows(path, one("PRAGMA journal_mode")), QStringList{one("wal")});
}

void TestStoreDisk::readOnlyDirectoryAtMidnight()
{
    setPresent(at("23:59:59"));
    TestStore store;
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    const qint64 midnight = at("23:59:59") + 1000;
    const QString path = store.path("20260113");
    {
        const Mount readOnly = Mount::readOnly(store.directory());
        QVERIFY(readOnly.isMounted());
        // The open file can still be written.
        store->appendPoint(1, midnight - 500, 1.0);
        setPresent(midnight + 10);
        const LogCapture log;
        store->appendPoint(1, midnight, 2.0);
        const QStringList lines = log.lines();
        QVERIFY2(lines.contains(QStringLiteral("critical: 打开数据库失败: \"%1\" 错误: \"unable "
                                               "to open database file Error opening database\"")
                                    .arg(path)),
                 qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(
            lines.contains(QStringLiteral("warning: 切换数据库失败，连接无效： \"%1\"").arg(path)));
    }
    advancePresent(kRepairMs);
    store->appendPoint(1, midnight + 1, 3.0);
    QCOMPARE(values(path, "curve_1_batch_20260113_000000_20260113_055959"),
             QStringList{one("3.0")});
    QCOMPARE(values(store.path("20260112"), "curve_1_batch_20260112_180000_20260112_235959"),
             QStringList{one("1.0")});
}

/// The file is deleted while its directory is read-only, and cannot be created again.
void TestStoreDisk::readOnlyDirectoryWhenAFileIsOpenedAgain()
{
    TestStore store;
    QCOMPARE(store->registerCurve(one("101(V)")), 1);
    store->appendPoint(1, at("09:00:00"), 1.0);
    const QString path = store.path("20260112");
    for (const char* suffix : {"", "-wal", "-shm"}) {
        QVERIFY(QFile::remove(path + one(suffix)));
    }
    {
        const Mount readOnly = Mount::readOnly(store.directory());
        QVERIFY(readOnly.isMounted());
        const LogCapture log;
        store->appendPoint(1, at("09:00:01"), 2.0);
        store->appendPoint(1, at("09:00:02"), 3.0);
        QCOMPARE(log.lines(QtCriticalMsg),
                 QStringList{QStringLiteral("打开数据库失败: \"%1\" 错误: \"unable to open "
                                            "database file Error opening database\"")
                                 .arg(path)});
    }
    advancePresent(kRepairMs);
    store->appendPoint(1, at("09:00:03"), 4.0);
    QCOMPARE(values(path), QStringList{one("4.0")});
}

SCN_TEST_RUN((&privatemounts::run<TestStoreDisk, QCoreApplication>))
#include "test_storedisk.moc"
