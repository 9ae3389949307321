#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "storage/querymanager.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

constexpr int kRows = 1234;
constexpr int kWaitMs = 30000;

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

ExportOrder oneCurve(ExportScene& scene, int samples = kRows)
{
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("06:00:00"), samples)}});
    ExportOrder order = scene.order({1}, at("00:00:00"), at("23:59:59"));
    order.rowsPerBlock = 100; // what is read ahead is not the rest
    return order;
}

std::unique_ptr<CsvExportFromDBThread> threadFor(const ExportOrder& order)
{
    auto thread = std::make_unique<CsvExportFromDBThread>(
        order.store, order.ids, order.path, order.separator, order.header, order.start, order.end);
    thread->setRowsPerBlock(order.rowsPerBlock);
    return thread;
}

QStringList filesIn(const QString& directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

/// How an export ends, what it reports, and what it leaves.
class TestExportOutcomes : public QObject
{
    Q_OBJECT

private slots:
    void nothingToExport_data();
    void nothingToExport();
    void checksComeInOrder();
    void successTellsItsFiles();
    void progressIsToldEachHundredRows();
    void rowsReachTheFileByTheThousand();
    void queriesAreTheExportsOwn();
    void endReachesOtherThreads();
    void secondStartIsRefused();
    void secondStartAtOnceIsRefused();
    void startRightAfterTheEnd();
    void stopInTheMidst();
    void stopFromAnotherThread();
    void stopBeforeTheStartIsForgotten();
    void destructionInTheMidst();
    void directoryThatCannotBeMade();
    void directoryReplacedByAFile();
    void remainsOfFailuresAreLogged();

private:
    const SkippedWaits m_waits;
};

void TestExportOutcomes::nothingToExport_data()
{
    QTest::addColumn<QList<int>>("ids");
    QTest::addColumn<QString>("line");
    QTest::newRow("no ids") << QList<int>{} << text("[导出线程] 未选中任何曲线");
    QTest::newRow("unknown ids") << QList<int>{7, -1, 0}
                                 << text("[导出线程] 选中的曲线在CurveDataDB中不存在");
    QTest::newRow("no samples") << QList<int>{2}
                                << text("[导出线程] 所有选中曲线均无有效数据（游标初始化失败）");
}

void TestExportOutcomes::nothingToExport()
{
    QFETCH(QList<int>, ids);
    QFETCH(QString, line);
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("06:00:00"), 10)}});
    const auto outcome = runExport(scene.order(ids, at("00:00:00"), at("23:59:59")));
    QCOMPARE(outcome.result, ExportNoData);
    QCOMPARE(outcome.finished, 1);
    QVERIFY(outcome.files.isEmpty() && outcome.progress.isEmpty());
    QCOMPARE(outcome.log.last(), text("critical: ") + line);
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportOutcomes::checksComeInOrder()
{
    ExportScene scene;
    ExportOrder order = scene.order({}, at("00:00:00"), at("23:59:59"));
    const auto expectEnd = [&order](ExportResult result, const char* line) {
        const auto outcome = runExport(order);
        QCOMPARE(outcome.result, result);
        QCOMPARE(outcome.log, QStringList{text("critical: [导出线程] ") + text(line)});
    };
    order.store = nullptr;
    expectEnd(ExportDbError, "CurveDataDB实例为空");
    order.ids = {1};
    expectEnd(ExportDbError, "CurveDataDB实例为空");
    order.store = scene.store().get();
    order.ids = {};
    expectEnd(ExportNoData, "未选中任何曲线");
    order.ids = {1};
    expectEnd(ExportNoData, "CurveDataDB中无任何曲线");
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportOutcomes::successTellsItsFiles()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene);
    order.rowsPerPart = 500;
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(outcome.finished, 1);
    QCOMPARE(outcome.log, (QStringList{text("debug: [初始化查询] 曲线 1 所有分片表已处理完毕"),
                                       text("debug: [导出线程] 所有曲线数据导出完成")}));
    QCOMPARE(outcome.files.size(), 3);
    const QString stem = scene.outputDirectory() + text("/curves_%1_");
    for (int part = 1; part <= 3; ++part) {
        QVERIFY(outcome.files.at(part - 1).startsWith(stem.arg(part)));
    }
}

void TestExportOutcomes::progressIsToldEachHundredRows()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 499);
    order.rowsPerPart = 130;
    order.rowsPerBlock = 7;
    const auto outcome = runExport(order);
    QCOMPARE(outcome.progress, (QVector<qlonglong>{99, 199, 299, 399, 499}));
    QCOMPARE(outcome.totals, QVector<qlonglong>(5, -1));
}

/// Counted in each part during the export.
void TestExportOutcomes::rowsReachTheFileByTheThousand()
{
    constexpr int kHeaderLines = 6;
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 4000);
    order.rowsPerPart = 2500;
    QMap<int, QVector<int>> lines; // of the parts, by the row
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        QVector<int>& now = lines[lines.size() * 100 + 99];
        const auto parts = partsIn(scene.outputDirectory());
        for (const QByteArray& part : parts) {
            QVERIFY(part.endsWith('\n'));
            now.append(part.count('\n') - kHeaderLines);
        }
    });
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(lines.value(999), QVector<int>{0});
    QCOMPARE(lines.value(1099), QVector<int>{1000});
    QCOMPARE(lines.value(1999), QVector<int>{1000});
    QCOMPARE(lines.value(2099), QVector<int>{2000});
    QCOMPARE(lines.value(2599), (QVector<int>{2500, 0}));
    QCOMPARE(lines.value(3599), (QVector<int>{2500, 1000}));
    QCOMPARE(partsIn(scene.outputDirectory()).values().toVector(), scene.expectedParts(order));
}

/// Ending the queries of a connection leaves those of an export alone.
void TestExportOutcomes::queriesAreTheExportsOwn()
{
    ExportScene scene;
    const ExportOrder order = oneCurve(scene);
    const QString connection =
        scene.store()->openDb(scene.store().path("20260112"))->connectionName();
    QVector<int> counts;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        counts.append(QueryManager::instance().queryCount(connection));
        QueryManager::instance().finishQueries(connection);
    });
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(counts, QVector<int>(kRows / 100, 0));
    QCOMPARE(partsIn(scene.outputDirectory()).value(1), scene.expectedParts(order).first());
}

void TestExportOutcomes::endReachesOtherThreads()
{
    ExportScene scene;
    const auto thread = threadFor(oneCurve(scene));
    QSignalSpy seen(thread.get(), &CsvExportFromDBThread::exportFinished);
    ExportResult result = ExportCancelled;
    QStringList files;
    int progress = 0;
    connect(thread.get(), &CsvExportFromDBThread::exportProgress, this, [&] { ++progress; });
    connect(thread.get(), &CsvExportFromDBThread::exportFinished, this,
            [&](ExportResult told, const QStringList& list) {
                result = told;
                files = list;
            });
    const LogCapture log;
    QVERIFY(!thread->isExporting());
    thread->startExport();
    QTRY_COMPARE_WITH_TIMEOUT(files.size(), 1, kWaitMs);
    QCOMPARE(result, ExportSuccess);
    QCOMPARE(progress, kRows / 100);
    QCOMPARE(seen.size(), 1);
    QCOMPARE(seen.first().first().value<ExportResult>(), ExportSuccess);
    QVERIFY(!thread->isExporting());
}

void TestExportOutcomes::secondStartIsRefused()
{
    ExportScene scene;
    const ExportOrder order = oneCurve(scene, 150);
    QVector<bool> exporting;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread& thread) {
        exporting.append(thread.isExporting());
        thread.startExport();
    });
    QCOMPARE(exporting, QVector<bool>{true});
    QCOMPARE(outcome.finished, 1);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(outcome.log.count(text("warning: [导出线程] 已在运行中，无需重复启动")), 1);
    QCOMPARE(partsIn(scene.outputDirectory()).value(1), scene.expectedParts(order).first());
}

/// Before the thread starts running.
void TestExportOutcomes::secondStartAtOnceIsRefused()
{
    ExportScene scene;
    const auto thread = threadFor(oneCurve(scene));
    QSignalSpy finished(thread.get(), &CsvExportFromDBThread::exportFinished);
    const LogCapture log;
    thread->startExport();
    QVERIFY(thread->isExporting());
    thread->startExport();
    QCOMPARE(log.lines(QtWarningMsg), QStringList{text("[导出线程] 已在运行中，无需重复启动")});
    thread->wait();
    QCOMPARE(finished.size(), 1);
}

/// The thread continues briefly after reporting the end.
void TestExportOutcomes::startRightAfterTheEnd()
{
    ExportScene scene;
    const auto thread = threadFor(oneCurve(scene));
    QSignalSpy finished(thread.get(), &CsvExportFromDBThread::exportFinished);
    QSemaphore ended;
    bool goesOnUntilTheNextStart = false;
    connect(
        thread.get(), &CsvExportFromDBThread::exportFinished, thread.get(),
        [&] {
            ended.release();
            if (finished.size() == 1) {
                goesOnUntilTheNextStart =
                    QTest::qWaitFor([&thread] { return thread->isExporting(); }, kWaitMs);
            }
        },
        Qt::DirectConnection);
    const LogCapture log;
    thread->startExport();
    QVERIFY(ended.tryAcquire(1, kWaitMs));
    thread->startExport();
    QVERIFY(ended.tryAcquire(1, kWaitMs));
    thread->wait();
    QVERIFY(goesOnUntilTheNextStart);
    QCOMPARE(finished.size(), 2);
    QCOMPARE(finished.last().first().value<ExportResult>(), ExportSuccess);
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

void TestExportOutcomes::stopInTheMidst()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene);
    order.rowsPerPart = 60;
    order.rowsPerBlock = 200; // the end of the curve is not read ahead
    const auto outcome = runExport(order, [&](CsvExportFromDBThread& thread) {
        QCOMPARE(filesIn(scene.outputDirectory()).size(), 2);
        thread.requestStop();
    });
    QCOMPARE(outcome.result, ExportCancelled);
    QCOMPARE(outcome.progress, QVector<qlonglong>{99}); // it goes no further than the row
    QVERIFY(outcome.files.isEmpty());
    // Reading ahead may have reached its end and reported so.
    QCOMPARE(outcome.log.constLast(), text("debug: [导出线程] 收到停止信号，终止导出"));
    QCOMPARE(outcome.log.filter(text("debug: ")), outcome.log);
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportOutcomes::stopFromAnotherThread()
{
    ExportScene scene;
    const auto thread = threadFor(oneCurve(scene));
    QSignalSpy finished(thread.get(), &CsvExportFromDBThread::exportFinished);
    QSemaphore begun;
    QSemaphore stopped;
    connect(
        thread.get(), &CsvExportFromDBThread::exportProgress, thread.get(),
        [&] {
            begun.release();
            stopped.tryAcquire(1, kWaitMs);
        },
        Qt::DirectConnection);
    const LogCapture log;
    thread->startExport();
    QVERIFY(begun.tryAcquire(1, kWaitMs));
    thread->requestStop();
    QVERIFY(thread->isExporting());
    stopped.release();
    thread->wait();
    QCOMPARE(finished.first().first().value<ExportResult>(), ExportCancelled);
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportOutcomes::stopBeforeTheStartIsForgotten()
{
    ExportScene scene;
    const auto thread = threadFor(oneCurve(scene));
    QSignalSpy finished(thread.get(), &CsvExportFromDBThread::exportFinished);
    const LogCapture log;
    thread->requestStop();
    thread->startExport();
    thread->wait();
    QCOMPARE(finished.first().first().value<ExportResult>(), ExportSuccess);
}

void TestExportOutcomes::destructionInTheMidst()
{
    ExportScene scene;
    auto thread = threadFor(oneCurve(scene));
    QSemaphore begun;
    ExportResult result = ExportSuccess;
    connect(
        thread.get(), &CsvExportFromDBThread::exportProgress, this,
        [&begun, exporting = thread.get()] {
            begun.release();
            if (!QTest::qWaitFor([exporting] { return exporting->isStopRequested(); }, kWaitMs)) {
                qFatal("the end of the object does not stop its export");
            }
        },
        Qt::DirectConnection);
    connect(
        thread.get(), &CsvExportFromDBThread::exportFinished, this,
        [&result](ExportResult told) { result = told; }, Qt::DirectConnection);
    const LogCapture log;
    thread->startExport();
    QVERIFY(begun.tryAcquire(1, kWaitMs));
    thread.reset();
    QCOMPARE(result, ExportCancelled);
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList());
}

void TestExportOutcomes::directoryThatCannotBeMade()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene);
    const QString obstacle = scene.outputDirectory() + text("/file");
    QVERIFY(QFile(obstacle).open(QIODevice::WriteOnly));
    order.path = obstacle + text("/curves.csv");
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    QCOMPARE(outcome.log.size(), 2);
    QCOMPARE(outcome.log.first(), text("warning: 无法创建目标目录: \"%1\"").arg(obstacle));
    QVERIFY(outcome.log.last().startsWith(
        text("critical: [导出线程] 创建CSV文件失败： \"%1/curves_1_").arg(obstacle)));
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList{text("file")});
}

/// A file replaces the directory between two parts; the first part is gone with it.
void TestExportOutcomes::directoryReplacedByAFile()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene);
    const QString directory = scene.outputDirectory() + text("/chosen");
    order.path = directory + text("/curves.csv");
    order.rowsPerPart = 150;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        QDir(directory).removeRecursively();
        QVERIFY(QFile(directory).open(QIODevice::WriteOnly));
    });
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    QVERIFY2(outcome.log.last().startsWith(
                 text("critical: [导出线程] 创建CSV分片失败： \"%1/curves_2_").arg(directory)),
             qPrintable(outcome.log.last()));
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList{text("chosen")});
}

/// What cannot be deleted is reported; the rest goes.
void TestExportOutcomes::remainsOfFailuresAreLogged()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene);
    order.rowsPerPart = 40;
    QString obstacle;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread& thread) {
        const QStringList names = QDir(scene.outputDirectory()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(names.size(), 3);
        obstacle = scene.outputDirectory() + QLatin1Char('/') + names.at(1);
        QVERIFY(QFile::remove(obstacle));
        QVERIFY(QDir().mkpath(obstacle));
        thread.requestStop();
    });
    QCOMPARE(outcome.result, ExportCancelled);
    QCOMPARE(outcome.log.last(),
             text("warning: [导出线程] 删除临时文件失败： \"%1\"").arg(obstacle));
    QCOMPARE(filesIn(scene.outputDirectory()), QStringList{QFileInfo(obstacle).fileName()});
}

SCN_TEST(TestExportOutcomes, QCoreApplication)
#include "test_exportoutcomes.moc"
