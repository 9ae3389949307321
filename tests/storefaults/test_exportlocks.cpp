#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "lockingprocess.h"
#include "lockwaits.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "support/logcapture.h"
#include "timescene.h"

#include <QDir>
#include <QSemaphore>
#include <QtTest>

#include <chrono>
#include <memory>

// Exports of many curves from a day file locked by another process: SQLite waits five seconds
// there, and the export waits once, not for each curve.

namespace {

constexpr int kCurves = 12;
constexpr int kRows = 300;
using std::chrono::milliseconds;

constexpr milliseconds kPatience(5000);
constexpr int kTimeoutMs = 60000;

const char* const kFirstDay = "20260112";
const char* const kSecondDay = "20260113";

qint64 morningOf(const char* day)
{
    return localTime(
        QByteArray(day).insert(6, '-').insert(4, '-').append(" 06:00:00.000").constData());
}

/// Two days with all the curves, and the export of both.
ExportOrder twoDays(ExportScene& scene)
{
    QMap<int, QString> curves;
    QList<int> ids;
    for (int id = 1; id <= kCurves; ++id) {
        curves.insert(id, text("%1(V)").arg(100 + id));
        ids.append(id);
    }
    scene.know(curves);
    for (const char* day : {kFirstDay, kSecondDay}) {
        QVector<DayCurve> samples;
        for (const int id : qAsConst(ids)) {
            samples.append({id, curves.value(id), samplesFrom(morningOf(day), kRows)});
        }
        scene.addDay(day, samples);
    }
    ExportOrder order = scene.order(ids, morningOf(kFirstDay), morningOf(kSecondDay) + kHourMs);
    order.rowsPerBlock = 10; // what is read ahead is not the rest
    return order;
}

QStringList filesIn(const QString& directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TestExportLocks : public QObject
{
    Q_OBJECT

private slots:
    void lockIsWaitedForOnce_data();
    void lockIsWaitedForOnce();
    void lockInTheMidstIsWaitedForOnce_data() { lockIsWaitedForOnce_data(); }
    void lockInTheMidstIsWaitedForOnce();
    void stopInTheWait_data();
    void stopInTheWait();

private:
    static void expectDbError(const ExportOutcome& outcome, const ExportScene& scene);

    const SkippedWaits m_waits;
    LockWaits m_lockWaits;
};

void TestExportLocks::expectDbError(const ExportOutcome& outcome, const ExportScene& scene)
{
    QVERIFY2(outcome.result == ExportDbError, qPrintable(outcome.log.join(QLatin1Char('\n'))));
    QCOMPARE(outcome.finished, 1);
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportLocks::lockIsWaitedForOnce_data()
{
    QTest::addColumn<bool>("isOpen");
    QTest::newRow("file that is opened") << false;
    QTest::newRow("file that is open") << true;
}

void TestExportLocks::lockIsWaitedForOnce()
{
    QFETCH(bool, isOpen);
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    const QString path = scene.store().path(kFirstDay);
    if (isOpen) {
        QVERIFY(scene.store()->openDb(path));
        ConnectionPool::instance().releaseConnection(path);
    }
    {
        const LockingProcess lock(path, LockingProcess::Everything);
        QVERIFY(lock.isHeld());
        m_lockWaits.forget();
        expectDbError(runExport(order), scene);
        QCOMPARE(m_lockWaits.total(), kPatience);
    }
    QCOMPARE(scene.difference(order), QString());
}

/// All cursors reach the file's end at the same row.
void TestExportLocks::lockInTheMidstIsWaitedForOnce()
{
    QFETCH(bool, isOpen);
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    std::unique_ptr<LockingProcess> lock;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        if (lock) {
            return;
        }
        const QString path = scene.store().path(kSecondDay);
        if (!isOpen) { // as when the pool has had to make room
            ConnectionPool::instance().discardConnection(path);
        }
        lock = std::make_unique<LockingProcess>(path, LockingProcess::Everything);
        QVERIFY(lock->isHeld());
        m_lockWaits.forget();
    });
    QVERIFY(lock);
    expectDbError(outcome, scene);
    QCOMPARE(m_lockWaits.total(), kPatience);
}

void TestExportLocks::stopInTheWait_data()
{
    QTest::addColumn<bool>("inTheMidst");
    QTest::addColumn<bool>("byItsEnd");
    QTest::newRow("stop during set-up") << false << false;
    QTest::newRow("end during set-up") << false << true;
    QTest::newRow("stop between two rows") << true << false;
    QTest::newRow("end between two rows") << true << true;
}

/// By a request, and by the end of the object.
void TestExportLocks::stopInTheWait()
{
    QFETCH(bool, inTheMidst);
    QFETCH(bool, byItsEnd);
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    const LogCapture log;
    auto thread = std::make_unique<CsvExportFromDBThread>(
        order.store, order.ids, order.path, order.separator, order.header, order.start, order.end);
    thread->setRowsPerBlock(order.rowsPerBlock);
    ExportResult result = ExportSuccess;
    connect(
        thread.get(), &CsvExportFromDBThread::exportFinished, this,
        [&result](ExportResult told) { result = told; }, Qt::DirectConnection);
    std::unique_ptr<LockingProcess> lock;
    const auto takeLock = [&] {
        if (!lock) {
            lock = std::make_unique<LockingProcess>(
                scene.store().path(inTheMidst ? kSecondDay : kFirstDay),
                LockingProcess::Everything);
            m_lockWaits.forget();
        }
    };
    if (inTheMidst) {
        connect(thread.get(), &CsvExportFromDBThread::exportProgress, this, takeLock,
                Qt::DirectConnection);
    } else {
        takeLock();
    }
    // The wait goes on until the export is told to stop.
    QSemaphore waiting;
    m_lockWaits.after(milliseconds(1000), [&waiting, exporting = thread.get()] {
        waiting.release();
        if (!QTest::qWaitFor([exporting] { return exporting->isStopRequested(); }, kTimeoutMs)) {
            qFatal("nobody stops the export");
        }
    });
    thread->startExport();
    QVERIFY(waiting.tryAcquire(1, kTimeoutMs));
    QVERIFY(lock->isHeld());
    QVERIFY(thread->isExporting());
    QCOMPARE(filesIn(scene.outputDirectory()).size(), inTheMidst ? 1 : 0);
    if (byItsEnd) {
        thread.reset();
    } else {
        thread->requestStop();
        thread->wait();
    }
    QCOMPARE(m_lockWaits.total(), kPatience);
    QCOMPARE(result, ExportCancelled);
    QVERIFY(log.lines().contains(text("debug: [导出线程] 收到停止信号，终止导出")));
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

SCN_TEST_RUN((&LockingProcess::run<TestExportLocks>))
#include "test_exportlocks.moc"
