#include "runscene.h"
#include "storerun.h"
#include "support/privatemounts.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTest>

/// Runs on a disk that cannot be written.
class TestStoreReadOnlyDisk : public QObject
{
    Q_OBJECT

private slots:
    void closedRunIsRead();
    void runWithAWalIsRefused();
};

void TestStoreReadOnlyDisk::closedRunIsRead()
{
    const RunScene scene;
    scene.addDay("20260112");
    // A file that says WAL and has none: SQLite would have to create one.
    scene.addDay("20260113");
    spoil(scene.dayFile("20260113"), 18, QByteArray(2, '\2'));
    const auto mount = privatemounts::Mount::readOnly(scene.folder());
    QVERIFY(mount.isMounted());
    const StoreRun run = runStore({QStringLiteral("info"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("Readings    1920\n"));
}

void TestStoreReadOnlyDisk::runWithAWalIsRefused()
{
    const RunScene scene;
    scene.addDay("20260112");
    QFile wal(scene.dayFile("20260112") + QStringLiteral("-wal"));
    QVERIFY(wal.open(QIODevice::WriteOnly));
    wal.write("something");
    wal.close();
    const auto mount = privatemounts::Mount::readOnly(scene.folder());
    QVERIFY(mount.isMounted());
    const StoreRun run = runStore({QStringLiteral("info"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(
        run.errors.endsWith("20260112.db has a WAL that can be read only in a folder that can be "
                            "written. Copy the run to one.\n"),
        run.errors.constData());
}

SCN_TEST_RUN((&privatemounts::run<TestStoreReadOnlyDisk, QCoreApplication>))
#include "test_storereadonlydisk.moc"
