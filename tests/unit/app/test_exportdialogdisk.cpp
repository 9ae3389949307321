#include "exportbench.h"
#include "support/privatemounts.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

// Exports to a full disk and to a read-only directory, by private mounts.

namespace {

constexpr qint64 kDiskBytes = 131072;
/// More rows than the disk has room for.
constexpr int kRows = 10000;

} // namespace

/// How the window handles an export that its disk refuses. Each test runs in a process of its own,
/// since each needs its own store.
class TestExportDialogDisk : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ExportBench::wearTheProgramsStyle(); }
    void init();
    void cleanup();

    void diskFillsUpMeanwhile();
    void diskIsFullFromTheStart();
    void directoryMayOnlyBeRead();

private:
    static void exportFails(ExportBench& bench, const QString& directory, const QString& text);
    static void exportSucceeds(ExportBench& bench, const QString& directory);
};

void TestExportDialogDisk::init()
{
    ExportBench::removeStore();
}

void TestExportDialogDisk::cleanup()
{
    ExportBench::closeStore();
    ExportBench::removeStore();
}

/// Only the message remains.
void TestExportDialogDisk::exportFails(ExportBench& bench, const QString& directory,
                                       const QString& text)
{
    bench.exportTo(directory);
    QCOMPARE(bench.outcome(), text);
    QVERIFY(bench.isInformation());
    QCOMPARE(csvFiles(directory), QStringList());
}

/// The button works again.
void TestExportDialogDisk::exportSucceeds(ExportBench& bench, const QString& directory)
{
    bench.exportTo(directory);
    QCOMPARE(csvFiles(directory).size(), 1);
    const QString path = QDir(directory).filePath(csvFiles(directory).constFirst());
    QCOMPARE(withoutStamps(bench.outcome()), QStringLiteral("导出成功") + withoutStamps(path));
}

void TestExportDialogDisk::diskFillsUpMeanwhile()
{
    ExportBench bench;
    bench.scan(kRows);
    const QTemporaryDir directory;
    QVERIFY(privatemounts::mountMemory(directory.path(), kDiskBytes));
    exportFails(bench, directory.path(), QStringLiteral("导出失败"));
    QVERIFY(privatemounts::unmount(directory.path()));
    exportSucceeds(bench, directory.path());
}

void TestExportDialogDisk::diskIsFullFromTheStart()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    QVERIFY(privatemounts::mountMemory(directory.path(), kDiskBytes));
    const QString filler = directory.filePath(QStringLiteral("filler"));
    privatemounts::fillDisk(filler);
    exportFails(bench, directory.path(), QStringLiteral("导出失败"));
    QVERIFY(QFile::remove(filler));
    exportSucceeds(bench, directory.path());
    QVERIFY(privatemounts::unmount(directory.path()));
}

void TestExportDialogDisk::directoryMayOnlyBeRead()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    QVERIFY(privatemounts::makeReadOnly(directory.path()));
    exportFails(bench, directory.path(), QStringLiteral("CSV文件无法打开（可能被占用）"));
    QVERIFY(privatemounts::unmount(directory.path()));
    exportSucceeds(bench, directory.path());
}

SCN_TEST_RUN((&privatemounts::run<TestExportDialogDisk, QApplication>))
#include "test_exportdialogdisk.moc"
