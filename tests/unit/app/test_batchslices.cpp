#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "dayfilereader.h"
#include "exportbench.h"
#include "exportdialoghand.h"
#include "overlay/lockabledatacollectionview.h"
#include "overlay/windowlockmanager.h"
#include "state/globals.h"
#include "storage/curveseriesdata.h"
#include "support/testprogram.h"
#include "userhand.h"
#include "widgets/customdialog.h"
#include "widgets/imagebutton.h"

#include <QApplication>
#include <QDir>
#include <QGraphicsProxyWidget>
#include <QGraphicsView>
#include <QRegularExpression>
#include <QtTest>

using userhand::click;

namespace {

/// Far more readings than a slice stores.
constexpr int kBatch = 5000;

/// A window with a run, and what is stored of the batches that it gets.
struct Run : ExportBench
{
    Run()
    {
        click(startButton());
        m_isRunning = QTest::qWaitFor([] { return g_scanRunning.load(); }, kEndWaitMs);
    }

    /// Hands the window a batch, in turns for both channels. False if it is not left in the middle of it.
    bool beginBatch()
    {
        QList<MeasurementData> batch;
        const QDateTime begin = QDateTime::currentDateTime().addMSecs(-kBatch);
        for (int i = 0; i < kBatch; ++i) {
            MeasurementData reading;
            reading.channel = 201 + i % 2;
            reading.value = i;
            reading.time = begin.addMSecs(i);
            reading.valid = true;
            batch.append(reading);
        }
        const int before = inMemory();
        emit ReadData::instance()->sigSendMeasure(batch);
        m_sent += kBatch;
        return m_isRunning && inMemory() > before && inMemory() < m_sent;
    }

    int sent() const { return m_sent; }

    static int inMemory()
    {
        int count = 0;
        for (const auto& series : qAsConst(g_curveSeries)) {
            count += series->count();
        }
        return count;
    }

    static int inDayFiles()
    {
        const QDir directory(QDir(QCoreApplication::applicationDirPath())
                                 .filePath(serial() + QStringLiteral("_Data")));
        const QRegularExpression reading(QStringLiteral("^curve_\\d"));
        int count = 0;
        for (const QString& name : directory.entryList({QStringLiteral("*.db")})) {
            count += dayfile::dump(directory.filePath(name)).filter(reading).size();
        }
        return count;
    }

private:
    bool m_isRunning = false;
    int m_sent = 0;
};

} // namespace

/// What comes between two slices of a batch finds it stored. Each test runs in a process of its own, since
/// each needs its own store.
class TestBatchSlices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ExportBench::wearTheProgramsStyle(); }
    void init() { ExportBench::removeLeftovers(); }
    void cleanup();

    void batchIsStoredBySlices();
    void stopFindsTheBatchStored();
    void endByTheInstrumentFindsTheBatchStored();
    void elapsedTimeFindsTheBatchStored();
    void unlockingFindsTheBatchStored();
    void exportFindsTheBatchStored();
    void endOfTheWindowFindsTheBatchStored();
    void nextRunHoldsNothingOfTheBatch();
    void batchBehindTheEndIsStoredWhole();
};

void TestBatchSlices::cleanup()
{
    ExportBench::closeStore();
    ExportBench::removeLeftovers();
}

void TestBatchSlices::batchIsStoredBySlices()
{
    Run run;
    QVERIFY(run.beginBatch());
    QTRY_COMPARE_WITH_TIMEOUT(Run::inMemory(), run.sent(), ExportBench::kEndWaitMs);
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::stopFindsTheBatchStored()
{
    Run run;
    int storedAtAbort = 0;
    run.instrument().whenAsked(QStringLiteral("ABOR"),
                               [&storedAtAbort] { storedAtAbort = Run::inMemory(); });
    QVERIFY(run.beginBatch());
    click(run.startButton());
    QCOMPARE(storedAtAbort, run.sent());
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::endByTheInstrumentFindsTheBatchStored()
{
    Run run;
    QVERIFY(run.beginBatch());
    g_scanRunning = false;
    run.call("recvStopScan");
    QVERIFY(run.exportButton()->isEnabled());
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::elapsedTimeFindsTheBatchStored()
{
    Run run;
    QVERIFY(run.beginBatch());
    run.call("recvElapsedTimeSlot");
    QVERIFY(!g_scanRunning);
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::unlockingFindsTheBatchStored()
{
    Run run;
    QTest::mouseMove(run.tree()->window()->windowHandle(),
                     run.tree()->mapTo(run.tree()->window(), run.tree()->rect().center()));
    auto* veil = run.tree()->findChild<LockableDataCollectionView*>();
    QTRY_VERIFY(veil && veil->isVisible());
    int storedAtAbort = 0;
    run.instrument().whenAsked(QStringLiteral("ABOR"),
                               [&storedAtAbort] { storedAtAbort = Run::inMemory(); });
    QPoint bar;
    for (QGraphicsItem* item : veil->scene()->items()) {
        if (const auto* proxy = qgraphicsitem_cast<QGraphicsProxyWidget*>(item)) {
            bar = veil->mapFromScene(proxy->geometry().center());
        }
    }
    QTest::mousePress(veil->viewport(), Qt::LeftButton, Qt::NoModifier, bar);
    QVERIFY(run.beginBatch());
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, ExportBench::kEndWaitMs);
    QCOMPARE(storedAtAbort, run.sent());
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::exportFindsTheBatchStored()
{
    Run run;
    // The last readings are being fetched: the run still counts as running, and the button is enabled.
    click(run.startButton());
    bool wasBegun = false;
    int storedAtExport = 0;
    run.inDialog([&](const ExportDialogHand& dialog) {
        wasBegun = run.beginBatch();
        click(dialog.toFile());
        storedAtExport = Run::inMemory();
    });
    QVERIFY(wasBegun);
    QCOMPARE(storedAtExport, run.sent());
    run.waitForEnd();
}

void TestBatchSlices::endOfTheWindowFindsTheBatchStored()
{
    Run run;
    QVERIFY(run.beginBatch());
    run.close();
    QCOMPARE(Run::inDayFiles(), run.sent());
}

void TestBatchSlices::nextRunHoldsNothingOfTheBatch()
{
    Run run;
    QVERIFY(run.beginBatch());
    // The acquisition has ended the run, and the window has not been told yet.
    g_scanRunning = false;
    click(run.startButton());
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, ExportBench::kEndWaitMs);
    QCOMPARE(Run::inMemory(), 0);
    // A batch is begun once the one before is stored.
    run.beginBatch();
    QTRY_VERIFY_WITH_TIMEOUT(Run::inMemory() >= kBatch, ExportBench::kEndWaitMs);
    QCOMPARE(Run::inMemory(), kBatch);
    QCOMPARE(Run::inDayFiles(), kBatch);
}

void TestBatchSlices::batchBehindTheEndIsStoredWhole()
{
    Run run;
    g_scanRunning = false;
    run.call("recvStopScan");
    QVERIFY(!run.beginBatch());
    QCOMPARE(Run::inDayFiles(), run.sent());
}

SCN_TEST(TestBatchSlices, QApplication)
#include "test_batchslices.moc"
