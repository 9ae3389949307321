#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "support/privatemounts.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <sys/statvfs.h>

// Exports to a disk that fills up, at any position in the file, and to a read-only directory, by
// private mounts.

using privatemounts::Mount;

namespace {

constexpr qint64 kDiskBytes = 1024 * 1024;
constexpr int kPageBytes = 4096;

/// A small disk on a directory made for it.
Mount smallDisk(const QString& directory)
{
    QDir().mkpath(directory);
    return Mount::disk(directory, kDiskBytes);
}

int freePages(const QString& directory)
{
    struct statvfs status = {};
    statvfs(QFile::encodeName(directory).constData(), &status);
    return static_cast<int>(status.f_bfree);
}

/// Leaves room for this many pages.
void fillUpTo(const QString& directory, int pages)
{
    QFile filler(directory + QStringLiteral("/filler"));
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (freePages(directory) > pages) {
        QCOMPARE(filler.write(QByteArray(kPageBytes, 'x')), qint64(kPageBytes));
    }
    QCOMPARE(freePages(directory), pages);
}

ExportOrder oneCurve(ExportScene& scene, int rows)
{
    const qint64 start = localTime("2026-01-12 06:00:00.000");
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(start, rows)}});
    ExportOrder order = scene.order({1}, start, start + 6 * kHourMs - 1000);
    order.path = scene.outputDirectory() + text("/disk/curves.csv");
    return order;
}

} // namespace

class TestExportDisk : public QObject
{
    Q_OBJECT

private slots:
    void diskFullAtEachPage_data();
    void diskFullAtEachPage();
    void diskFullAtTheEdgeOfAPart();
    void directoryThatMayOnlyBeRead();
    void directoryThatTurnsReadOnly();

private:
    const SkippedWaits m_waits;
};

void TestExportDisk::diskFullAtEachPage_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("rowsPerPart");
    // Less than QFile buffers: the header at once, the rows with the last flush.
    QTest::newRow("one page and a bit") << 120 << 0;
    QTest::newRow("less than a flush") << 800 << 0;
    QTest::newRow("several flushes") << 3500 << 0;
    QTest::newRow("rows just behind a flush") << 2001 << 0;
    QTest::newRow("several parts") << 900 << 200;
    QTest::newRow("last part with its header only") << 600 << 200;
}

/// Whichever byte is the first without room, up to those of the last flush and close.
void TestExportDisk::diskFullAtEachPage()
{
    QFETCH(int, rows);
    QFETCH(int, rowsPerPart);
    ExportScene scene;
    ExportOrder order = oneCurve(scene, rows);
    order.rowsPerPart = rowsPerPart;
    const QVector<QByteArray> expected = scene.expectedParts(order);
    int needed = 0;
    for (const QByteArray& part : expected) {
        needed += (part.size() + kPageBytes - 1) / kPageBytes;
    }
    for (int pages = 0; pages <= needed + 1; ++pages) {
        const QString directory = QFileInfo(order.path).path();
        const Mount disk = smallDisk(directory);
        QVERIFY(disk.isMounted());
        fillUpTo(directory, pages);
        const auto outcome = runExport(order);
        QDir(directory).remove(text("filler"));
        if (pages < needed) {
            QVERIFY2(outcome.result == ExportWriteError,
                     qPrintable(text("%1 of %2 pages: %3")
                                    .arg(pages)
                                    .arg(needed)
                                    .arg(outcome.log.join(QLatin1Char('\n')))));
            QCOMPARE(outcome.log.count(text("critical: [导出线程] 写入CSV行失败")), 1);
            QVERIFY(outcome.files.isEmpty());
            QVERIFY2(QDir(directory).isEmpty(), "a part was left");
        } else {
            QCOMPARE(outcome.result, ExportSuccess);
            QVERIFY(partsIn(directory).values().toVector() == expected);
        }
    }
}

/// The end of the ninth part finds no room, and the name of the tenth would be a byte too long: the
/// first loss is reported.
void TestExportDisk::diskFullAtTheEdgeOfAPart()
{
    constexpr int kStemBytes = 234; // with "_9_", a stamp and ".csv" the longest name there is
    constexpr int kRowsPerPart = 100;
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 10 * kRowsPerPart);
    const QString directory = QFileInfo(order.path).path();
    order.path =
        directory + QLatin1Char('/') + QString(kStemBytes, QLatin1Char('x')) + text(".csv");
    order.rowsPerPart = kRowsPerPart;
    const Mount disk = smallDisk(directory);
    QVERIFY(disk.isMounted());
    const auto runWith = [&](bool full) {
        return runExport(order, [&](CsvExportFromDBThread&) {
            if (full && QDir(directory).entryList(QDir::Files).size() == 9) {
                fillUpTo(directory, 0);
            }
        });
    };
    QCOMPARE(runWith(false).result, ExportFileError);
    QVERIFY(QDir(directory).isEmpty());
    const auto outcome = runWith(true);
    QVERIFY(QDir(directory).remove(text("filler")));
    QVERIFY2(outcome.result == ExportWriteError, qPrintable(outcome.log.join(QLatin1Char('\n'))));
    QCOMPARE(outcome.log.last(), text("critical: [导出线程] 写入CSV行失败"));
    QVERIFY(outcome.files.isEmpty());
    QVERIFY(QDir(directory).isEmpty());
}

void TestExportDisk::directoryThatMayOnlyBeRead()
{
    ExportScene scene;
    const ExportOrder order = oneCurve(scene, 10);
    const QString directory = QFileInfo(order.path).path();
    QVERIFY(QDir().mkpath(directory));
    QVERIFY(privatemounts::makeReadOnly(directory));
    const auto outcome = runExport(order);
    QVERIFY(privatemounts::unmount(directory));
    QCOMPARE(outcome.result, ExportFileError);
    QCOMPARE(outcome.log.size(), 2);
    QVERIFY(outcome.log.first().startsWith(
        text("warning: 无法创建CSV文件: \"%1/curves_1_").arg(directory)));
    QVERIFY(outcome.log.first().endsWith(text("\"Read-only file system\"")));
    QVERIFY(QDir(directory).isEmpty());
}

/// The second part cannot be created, and the first one not deleted.
void TestExportDisk::directoryThatTurnsReadOnly()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 250);
    order.rowsPerPart = 150;
    const QString directory = QFileInfo(order.path).path();
    bool readOnly = false;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        if (!readOnly) {
            readOnly = privatemounts::makeReadOnly(directory);
        }
    });
    QVERIFY(readOnly);
    QVERIFY(privatemounts::unmount(directory));
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    const QStringList left = QDir(directory).entryList(QDir::Files);
    QCOMPARE(left.size(), 1);
    QCOMPARE(outcome.log.last(),
             text("warning: [导出线程] 删除临时文件失败： \"%1/%2\"").arg(directory, left.first()));
}

SCN_TEST_RUN((&privatemounts::run<TestExportDisk, QCoreApplication>))
#include "test_exportdisk.moc"
