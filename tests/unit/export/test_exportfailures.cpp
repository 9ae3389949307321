#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "drivertap.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

#include <chrono>
#include <memory>

namespace {

constexpr int kRows = 1234;
constexpr int kCloseMs = 2000;
constexpr int kClearMs = 30000;
constexpr std::chrono::milliseconds kLockPatience(5000);

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

/// Two days with two curves, long enough that reading ahead stays far from the end of a day.
ExportOrder twoDays(ExportScene& scene)
{
    constexpr int kRowsPerBlock = 50;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const qint64 first = at("06:00:00");
    const qint64 second = localTime("2026-01-13 06:00:00.000");
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(first, kRows)},
                              {2, text("102(V)"), samplesFrom(first, kRows + 7)}});
    scene.addDay("20260113", {{1, text("101(V)"), samplesFrom(second, kRows)},
                              {2, text("102(V)"), samplesFrom(second, kRows)}});
    ExportOrder order = scene.order({1, 2}, at("00:00:00"), second + 6 * kHourMs);
    order.rowsPerBlock = kRowsPerBlock;
    order.rowsPerPart = 60;
    return order;
}

} // namespace

/// Stores that fail during an export. It ends with ExportDbError and leaves nothing; a truncated
/// file is never a success.
class TestExportFailures : public QObject
{
    Q_OBJECT

private slots:
    void fileDeletedUnderACursor_data();
    void fileDeletedUnderACursor();
    void fileReplacedUnderACursor_data();
    void fileReplacedUnderACursor();
    void connectionClosedUnderACursor_data();
    void connectionClosedUnderACursor();
    void storeClearedUnderAnExport();
    void storeClosedUnderAnExport();
    void readingFailsInTheMidst();
    void damagedTable();
    void garbageFile();
    void unreadableCatalogue_data();
    void unreadableCatalogue();
    void unreadableTable();
    void lookUpThatFails();
    void lockedFile();
    void fileLockedUnderACursor();

private:
    using Interference = std::function<void(ExportScene&)>;

    static void expectDbError(const ExportOutcome& outcome, const ExportScene& scene);
    static void expectDbErrorAfter(const Interference& interference);
    const SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

void TestExportFailures::expectDbError(const ExportOutcome& outcome, const ExportScene& scene)
{
    QVERIFY2(outcome.result == ExportDbError,
             qPrintable(QString::number(outcome.result) + outcome.log.join(QLatin1Char('\n'))));
    QCOMPARE(outcome.finished, 1);
    QVERIFY(outcome.files.isEmpty());
    QVERIFY(QDir(scene.outputDirectory()).isEmpty());
}

/// Changes the store once the first hundred rows are written.
void TestExportFailures::expectDbErrorAfter(const Interference& interference)
{
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    bool done = false;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        if (!done) {
            interference(scene);
        }
        done = true;
    });
    QVERIFY(done);
    expectDbError(outcome, scene);
}

void TestExportFailures::fileDeletedUnderACursor_data()
{
    QTest::addColumn<QByteArray>("day");
    QTest::newRow("that is read") << QByteArray("20260112");
    QTest::newRow("that is read next") << QByteArray("20260113");
}

void TestExportFailures::fileDeletedUnderACursor()
{
    QFETCH(QByteArray, day);
    expectDbErrorAfter([&day](ExportScene& scene) {
        QVERIFY(QFile::remove(scene.store().path(day.constData())));
    });
}

void TestExportFailures::fileReplacedUnderACursor_data()
{
    fileDeletedUnderACursor_data();
}

void TestExportFailures::fileReplacedUnderACursor()
{
    QFETCH(QByteArray, day);
    expectDbErrorAfter([&day](ExportScene& scene) {
        const QString path = scene.store().path(day.constData());
        QVERIFY(QFile::rename(path, path + text(".old")));
        scene.addDay(day.constData(), {{1, text("103(V)"), samplesFrom(at("06:00:00"), 5)}});
    });
}

void TestExportFailures::connectionClosedUnderACursor_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("with the waits") << 0;
    QTest::newRow("at once") << 1;
    QTest::newRow("all of them") << 2;
    QTest::newRow("for good") << 3;
}

void TestExportFailures::connectionClosedUnderACursor()
{
    QFETCH(int, way);
    expectDbErrorAfter([way](ExportScene& scene) {
        ConnectionPool& pool = ConnectionPool::instance();
        const QString path = scene.store().path("20260112");
        if (way == 0) {
            pool.closeConnection(path);
        } else if (way == 1) {
            pool.discardConnection(path);
        } else if (way == 2) {
            pool.closeAllConnections();
        } else {
            pool.closeForExit(QDeadlineTimer(kCloseMs));
        }
    });
}

/// Starting a scan clears the store and waits for no one.
void TestExportFailures::storeClearedUnderAnExport()
{
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    QSignalSpy cleared(scene.store().get(), &CurveDataDB::sigClearFinished);
    bool clearing = false;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        if (!clearing) {
            QMetaObject::invokeMethod(
                scene.store().get(), [&scene] { scene.store()->clearAll(); }, Qt::DirectConnection);
        }
        clearing = true;
    });
    QVERIFY(clearing);
    expectDbError(outcome, scene);
    QVERIFY(cleared.wait(kClearMs));
    QVERIFY(!QFile::exists(scene.store().path("20260112")));
}

void TestExportFailures::storeClosedUnderAnExport()
{
    expectDbErrorAfter(
        [](ExportScene& scene) { scene.store()->closeForExit(QDeadlineTimer(kCloseMs)); });
}

void TestExportFailures::readingFailsInTheMidst()
{
    std::unique_ptr<InterruptedConnection> interrupted;
    expectDbErrorAfter([&interrupted](ExportScene& scene) {
        const auto db = scene.store()->openDb(scene.store().path("20260112"));
        interrupted = std::make_unique<InterruptedConnection>(*db);
    });
}

/// Overwrites the last pages of a file, where its last rows are.
void TestExportFailures::damagedTable()
{
    constexpr int kBytes = 16384;
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    QFile file(scene.store().path("20260113"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(file.size() - kBytes));
    QCOMPARE(file.write(QByteArray(kBytes, '\xA5')), qint64(kBytes));
    file.close();
    expectDbError(runExport(order), scene);
}

void TestExportFailures::garbageFile()
{
    ExportScene scene;
    ExportOrder order = twoDays(scene);
    QFile file(scene.store().path("20260114"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'x'));
    file.close();
    QCOMPARE(scene.difference(order), QString()); // out of the range
    order.end += 86400000;
    expectDbError(runExport(order), scene);
}

void TestExportFailures::unreadableCatalogue_data()
{
    QTest::addColumn<QString>("table");
    QTest::newRow("of curves") << text("curve_info");
    QTest::newRow("of batches") << text("batch_metadata");
}

void TestExportFailures::unreadableCatalogue()
{
    QFETCH(QString, table);
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    const auto db = scene.store()->openDb(scene.store().path("20260113"));
    {
        const DeniedTables denied(*db, {table});
        expectDbError(runExport(order), scene);
    }
    QCOMPARE(scene.difference(order), QString());
}

void TestExportFailures::unreadableTable()
{
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    const auto db = scene.store()->openDb(scene.store().path("20260113"));
    const DeniedTables denied(*db,
                              {DayFileWriter::tableName(2, localTime("2026-01-13 06:00:00.000"))});
    expectDbError(runExport(order), scene);
}

/// The table of a day without a file is looked up in the file that lists it.
void TestExportFailures::lookUpThatFails()
{
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    const qint64 batch = localTime("2026-01-15 06:00:00.000");
    DayFileWriter(scene.store().path("20260112"))
        .addBatch(1, batch, DayFileWriter::tableName(1, batch), samplesFrom(batch, 5));
    ExportOrder later = order;
    later.end = batch + kHourMs;
    QCOMPARE(runExport(later).result, ExportSuccess);
    QDir(scene.outputDirectory()).removeRecursively();
    QDir().mkpath(scene.outputDirectory());
    const auto db = scene.store()->openDb(scene.store().path("20260112"));
    const DeniedTables denied(*db, {text("sqlite_master")});
    expectDbError(runExport(later), scene);
}

void TestExportFailures::lockedFile()
{
    m_lockWaits.forget();
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    {
        const DayFileLock lock(scene.store().path("20260113"), DayFileLock::Exclusive);
        QVERIFY(lock.isHeld());
        expectDbError(runExport(order), scene);
        QCOMPARE(m_lockWaits.total(), kLockPatience);
    }
    QCOMPARE(scene.difference(order), QString());
}

/// Between listing the tables and reading them.
void TestExportFailures::fileLockedUnderACursor()
{
    m_lockWaits.forget();
    std::unique_ptr<DayFileLock> lock;
    expectDbErrorAfter([&lock](ExportScene& scene) {
        lock =
            std::make_unique<DayFileLock>(scene.store().path("20260113"), DayFileLock::Exclusive);
        QVERIFY(lock->isHeld());
    });
    QCOMPARE(m_lockWaits.total(), kLockPatience);
}

SCN_TEST(TestExportFailures, QCoreApplication)
#include "test_exportfailures.moc"
