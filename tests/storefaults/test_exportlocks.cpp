#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "lockingprocess.h"
#include "logcapture.h"
#include "storage/connectionpool.h"
#include "timescene.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSemaphore>
#include <QtTest>

#include <memory>

// Exports of many curves from a day file that another process has locked: SQLite waits five seconds
// there, and the export once, not for each curve.

namespace {

constexpr int kCurves = 12;
constexpr int kRows = 300;
constexpr int kBusyMs = 5000;
/// Less than a second wait would make of it, on a machine that is busy with something else.
constexpr int kOneWaitMs = kBusyMs + 3000;
constexpr int kForever = 120000;
constexpr int kIntoTheWaitMs = 1000;

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
        const LockingProcess lock(path, LockingProcess::Everything, kForever);
        QVERIFY(lock.isHeld());
        QElapsedTimer timer;
        timer.start();
        expectDbError(runExport(order), scene);
        QVERIFY2(timer.elapsed() > kBusyMs - 1000 && timer.elapsed() < kOneWaitMs,
                 qPrintable(QString::number(timer.elapsed())));
    }
    QCOMPARE(scene.difference(order), QString());
}

/// All the cursors come to the file's end at the same row.
void TestExportLocks::lockInTheMidstIsWaitedForOnce()
{
    QFETCH(bool, isOpen);
    ExportScene scene;
    const ExportOrder order = twoDays(scene);
    std::unique_ptr<LockingProcess> lock;
    QElapsedTimer timer;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        if (lock) {
            return;
        }
        const QString path = scene.store().path(kSecondDay);
        if (!isOpen) { // as when the pool has had to make room
            ConnectionPool::instance().discardConnection(path);
        }
        lock = std::make_unique<LockingProcess>(path, LockingProcess::Everything, kForever);
        QVERIFY(lock->isHeld());
        timer.start();
    });
    QVERIFY(lock);
    expectDbError(outcome, scene);
    QVERIFY2(timer.elapsed() > kBusyMs - 1000 && timer.elapsed() < kOneWaitMs,
             qPrintable(QString::number(timer.elapsed())));
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
                scene.store().path(inTheMidst ? kSecondDay : kFirstDay), LockingProcess::Everything,
                kForever);
        }
    };
    QSemaphore begun;
    if (inTheMidst) {
        connect(
            thread.get(), &CsvExportFromDBThread::exportProgress, this,
            [&] {
                takeLock();
                begun.release();
            },
            Qt::DirectConnection);
    } else {
        takeLock();
        begun.release();
    }
    thread->startExport();
    QVERIFY(begun.tryAcquire(1, kForever));
    QVERIFY(lock->isHeld());
    QTest::qWait(kIntoTheWaitMs);
    QVERIFY(thread->isExporting());
    QCOMPARE(filesIn(scene.outputDirectory()).size(), inTheMidst ? 1 : 0);
    QElapsedTimer timer;
    timer.start();
    if (byItsEnd) {
        thread.reset();
    } else {
        thread->requestStop();
        thread->wait();
    }
    QVERIFY2(timer.elapsed() < kOneWaitMs - kIntoTheWaitMs,
             qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(result, ExportCancelled);
    QCOMPARE(log.lines().last(), text("debug: [导出线程] 收到停止信号，终止导出"));
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (LockingProcess::isMeant(QCoreApplication::arguments())) {
        return LockingProcess::playLock(QCoreApplication::arguments());
    }
    TestExportLocks test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_exportlocks.moc"
