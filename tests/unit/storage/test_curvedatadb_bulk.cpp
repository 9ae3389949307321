#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"
#include "writtenrows.h"

#include <QtTest>

// Many readings at once.

using namespace writtenrows;

class TestCurveDataDBBulk : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(at("09:30:00")); }

    void appendPointsSpreadsOverFilesAndBatches();
    void appendPointsOfAnUnknownCurveDoesNothing();
    void appendPointsIsHeldBackInBatchLoadMode();
    void pointsWithoutATimeAreLeftOut();

private:
    const SkippedWaits m_waits;
};

void TestCurveDataDBBulk::appendPointsSpreadsOverFilesAndBatches()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    const QString past = store.path("20260111");
    {
        DayFileWriter writer(past);
        writer.addCurve(1, one("101(V)"));
    }
    const qint64 yesterday = localTime("2026-01-11 23:00:00.000");
    const auto x = [](qint64 time) { return static_cast<double>(time); };
    const LogCapture log;
    store->appendPoints(1, {QPointF(x(at("09:00:00")), 1.0), QPointF(x(yesterday), 2.0),
                            QPointF(x(at("03:00:00")) + 0.9, 3.0), QPointF(x(at("09:00:00")), 4.0),
                            QPointF(x(at("09:00:01")), 5.0)});
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
    QCOMPARE(points(past, one("curve_1_batch_20260111_180000_20260111_235959")),
             QStringList{point(yesterday, "2.0")});
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             (QStringList{point(at("09:00:00"), "1.0"), point(at("09:00:01"), "5.0")}));
    QCOMPARE(points(store.path("20260112"), one("curve_1_batch_20260112_000000_20260112_055959")),
             QStringList{point(at("03:00:00"), "3.0")});
    // Files in path order: today's extremes continue from the past day's.
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, yesterday, at("09:00:01"), "1.0|5.0")});
}

void TestCurveDataDBBulk::appendPointsOfAnUnknownCurveDoesNothing()
{
    TestStore store;
    const QStringList before = dayfile::dump(store.path("20260112"));
    const LogCapture log;
    store->appendPoints(1, {QPointF(static_cast<double>(at("09:00:00")), 1.0)});
    store->registerCurve(one("101(V)"));
    store->appendPoints(1, {});
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("0")});
    QCOMPARE(before.filter(one("curve_metadata: ")), QStringList{one("curve_metadata: ")});
}

void TestCurveDataDBBulk::appendPointsIsHeldBackInBatchLoadMode()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->loadBatchesForCurve(1, 0, at("09:00:00"));
    store->appendPoints(1, {QPointF(static_cast<double>(at("09:00:00")), 1.0)});
    store->flushPending();
    store->flushAndDetach();
    QCOMPARE(dayfile::rows(store.path("20260112"), one("SELECT count(*) FROM batch_metadata")),
             QStringList{one("0")});
    store->appendPoint(1, at("09:00:01"), 2.0); // the live path is not held back
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:01"), "2.0")});
}

void TestCurveDataDBBulk::pointsWithoutATimeAreLeftOut()
{
    TestStore store;
    store->registerCurve(one("101(V)"));
    store->appendPoints(1, {QPointF(std::nan(""), 1.0), QPointF(1e300, 1.0),
                            QPointF(static_cast<double>(at("09:00:00")), 2.0)});
    QCOMPARE(points(store.path("20260112"), one(kMorning)),
             QStringList{point(at("09:00:00"), "2.0")});
    QCOMPARE(extremes(store.path("20260112")),
             QStringList{extremesRow(1, at("09:00:00"), at("09:00:00"), "2.0|2.0")});
}

SCN_TEST(TestCurveDataDBBulk, QCoreApplication)
#include "test_curvedatadb_bulk.moc"
