#include "dayfilewriter.h"
#include "plainthinning.h"
#include "randomcases.h"
#include "readmodel.h"
#include "readscene.h"
#include "storage/curvedatadb.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QtTest>

#include <limits>

namespace {

constexpr qint64 kDayMs = 86400000;

/// Keys of the days whose files a read opens: every 24 hours from its start.
QSet<QString> visitedDays(qint64 start, qint64 end)
{
    QSet<QString> keys;
    for (qint64 time = start; time <= end; time += kDayMs) {
        keys.insert(QDateTime::fromMSecsSinceEpoch(time).toString(QStringLiteral("yyyyMMdd")));
    }
    return keys;
}

} // namespace

class TestCurveDataDBRead : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { m_scene.letGo(); }

    void unknownCurveWarnsAndGivesNothing();
    void startAfterEndGivesNothingWithoutAWord();
    void boundsOfTheRangeAreIncluded();
    void pointsAreWhatWasStored();
    void pointsOfOtherCurvesAreLeftOut();
    void batchThatEnclosesTheRangeIsRead();
    void daysAreJoinedInOrderOfTime();
    void from23To01ReadsTheFirstFileOnly();
    void from23To01A24HoursLaterReadsBoth();
    void dayOf25HoursTakesTwoSteps();
    void eachMissingFileHasItsLine();
    void timesToComeAreLookedForInTodaysFile();
    void endlessRangeEnds();
    void fileWithoutTheCurveHasItsLine();
    void fileThatCannotBeOpenedIsPassedOver();
    void goneTableIsPassedOver();
    void tableThatCannotBePreparedIsPassedOver();
    void tableThatFailsAtOnceIsPassedOver();
    void tableThatFailsMidwayGivesWhatWasRead();
    void tableNamesAreData();
    void tableOfAnotherCurveUnderAReusedIdIsLeftOut();
    void limitOf10000LeavesOneOf10001Out();
    void limitIsReachedWithoutThinning();
    void thinningCompoundsAcrossBatches();
    void hugeLimitIsNoLimit();
    void pointsAreSortedAcrossTables();
    void readsEqualTheModel();

    void clearingStoreReadsNothing();

private:
    QString pathOf(const QString& day) const { return m_scene.pathOf(day); }
    QVector<QPointF> read(int curveId, qint64 start, qint64 end, int maxPoints = 0)
    {
        return m_scene.store().readCurveData(curveId, start, end, maxPoints);
    }

    ReadScene m_scene;
};

void TestCurveDataDBRead::unknownCurveWarnsAndGivesNothing()
{
    const LogCapture log;
    QVERIFY(read(999, 0, 1000).isEmpty());
    QCOMPARE(log.lines(), QStringList{QStringLiteral("warning: 曲线ID 999 不存在")});
}

void TestCurveDataDBRead::startAfterEndGivesNothingWithoutAWord()
{
    const LogCapture log;
    QVERIFY(read(1, 1000, 999).isEmpty());
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBRead::boundsOfTheRangeAreIncluded()
{
    const qint64 start = localTime("2026-01-01 06:00:00.000");
    const QVector<QPointF> points = ramp(start, 10, 100);
    DayFileWriter file(pathOf(QStringLiteral("20260101")));
    file.addCurve(1, curveName(1));
    file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
    COMPARE_EXACTLY(read(1, start + 200, start + 500), points.mid(2, 4));
    COMPARE_EXACTLY(read(1, start + 201, start + 499), points.mid(3, 2));
    COMPARE_EXACTLY(read(1, start + 900, start + 900), points.mid(9, 1));
    QVERIFY(read(1, start + 901, start + 1000).isEmpty());
}

void TestCurveDataDBRead::pointsAreWhatWasStored()
{
    const qint64 start = localTime("2026-01-02 00:00:00.000");
    const double smallest = std::numeric_limits<double>::denorm_min();
    const double largest = std::numeric_limits<double>::max();
    const QVector<QPointF> points{{double(start), 0.1},          {double(start + 1), -0.0},
                                  {double(start + 2), smallest}, {double(start + 3), -largest},
                                  {double(start + 4), 9.9e37},   {double(start + 5), 1.0 / 3.0}};
    DayFileWriter file(pathOf(QStringLiteral("20260102")));
    file.addCurve(1, curveName(1));
    file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
    const QVector<QPointF> found = read(1, start, start + 10);
    QCOMPARE(found.size(), points.size());
    for (int i = 0; i < points.size(); ++i) {
        QVERIFY(found.at(i).x() == points.at(i).x());
        QVERIFY(found.at(i).y() == points.at(i).y());
    }
}

void TestCurveDataDBRead::pointsOfOtherCurvesAreLeftOut()
{
    const qint64 start = localTime("2026-01-03 12:00:00.000");
    const QVector<QPointF> points = ramp(start, 5, 100);
    DayFileWriter file(pathOf(QStringLiteral("20260103")));
    file.addCurve(1, curveName(1));
    file.addCurve(2, curveName(2));
    file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
    file.addBatch(2, start, DayFileWriter::tableName(2, start), ramp(start + 50, 7, 100));
    // A row of another curve in this curve's table is not this curve's either.
    file.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (2, %2, 5.5)")
                     .arg(DayFileWriter::tableName(1, start))
                     .arg(start + 60));
    COMPARE_EXACTLY(read(1, start, start + 1000), points);
    COMPARE_EXACTLY(read(2, start, start + 1000), ramp(start + 50, 7, 100));
}

void TestCurveDataDBRead::batchThatEnclosesTheRangeIsRead()
{
    const qint64 start = localTime("2026-01-04 12:00:00.000");
    const QVector<QPointF> points = ramp(start + kHourMs, 100, 1000);
    DayFileWriter file(pathOf(QStringLiteral("20260104")));
    file.addCurve(1, curveName(1));
    file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
    COMPARE_EXACTLY(read(1, start + kHourMs + 10000, start + kHourMs + 20000), points.mid(10, 11));
}

void TestCurveDataDBRead::daysAreJoinedInOrderOfTime()
{
    QVector<QPointF> points;
    for (int day = 0; day < 4; ++day) {
        const qint64 midnight = localTime("2026-01-06 00:00:00.000") + day * kDayMs;
        DayFileWriter file(
            pathOf(QDateTime::fromMSecsSinceEpoch(midnight).toString(QStringLiteral("yyyyMMdd"))));
        file.addCurve(1, curveName(1));
        for (int batch = 3; batch >= 0; --batch) {
            const qint64 start = midnight + batch * kBatchMs;
            file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 20, 1000));
        }
        for (int batch = 0; batch < 4; ++batch) {
            points += ramp(midnight + batch * kBatchMs, 20, 1000);
        }
    }
    const qint64 start = localTime("2026-01-06 00:00:00.000");
    COMPARE_EXACTLY(read(1, start, start + 4 * kDayMs - 1), points);
}

void TestCurveDataDBRead::from23To01ReadsTheFirstFileOnly()
{
    const qint64 evening = localTime("2026-01-12 18:00:00.000");
    const qint64 night = localTime("2026-01-13 00:00:00.000");
    const QVector<QPointF> before = ramp(evening + 5 * kHourMs, 60, 60000);
    const QVector<QPointF> after = ramp(night, 60, 60000);
    {
        DayFileWriter file(pathOf(QStringLiteral("20260112")));
        file.addCurve(1, curveName(1));
        file.addBatch(1, evening, DayFileWriter::tableName(1, evening), before);
        DayFileWriter next(pathOf(QStringLiteral("20260113")));
        next.addCurve(1, curveName(1));
        next.addBatch(1, night, DayFileWriter::tableName(1, night), after);
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, night - kHourMs, night + kHourMs), before);
    COMPARE_EXACTLY(read(1, night, night + kHourMs), after);
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBRead::from23To01A24HoursLaterReadsBoth()
{
    const qint64 evening = localTime("2026-01-14 18:00:00.000");
    const qint64 night = localTime("2026-01-15 18:00:00.000");
    const QVector<QPointF> first = ramp(evening + 5 * kHourMs, 60, 60000);
    const QVector<QPointF> second = ramp(night, 60, 60000);
    DayFileWriter file(pathOf(QStringLiteral("20260114")));
    file.addCurve(1, curveName(1));
    file.addBatch(1, evening, DayFileWriter::tableName(1, evening), first);
    DayFileWriter next(pathOf(QStringLiteral("20260115")));
    next.addCurve(1, curveName(1));
    next.addBatch(1, night, DayFileWriter::tableName(1, night), second);
    // The step of a day counts from the start: one millisecond less is too short.
    const qint64 start = evening + 5 * kHourMs;
    COMPARE_EXACTLY(read(1, start, start + kDayMs - 1), first);
    COMPARE_EXACTLY(read(1, start, start + kDayMs), first + second);
}

void TestCurveDataDBRead::dayOf25HoursTakesTwoSteps()
{
    // The clock went back on 26 October 2025, so the second step still lands on that day, and a
    // range of 24 h and 50 min ends without the next one.
    const qint64 midnight = localTime("2025-10-26 00:00:00.000");
    const qint64 nextMidnight = localTime("2025-10-27 00:00:00.000");
    QCOMPARE(nextMidnight - midnight, 25 * kHourMs);
    const qint64 start = midnight + kHourMs / 6;
    const LogCapture log;
    QVERIFY(read(1, start, start + kDayMs + 50 * 60000).isEmpty());
    QCOMPARE(log.lines(), QStringList{QStringLiteral("debug: 数据库文件不存在: \"%1\"")
                                          .arg(pathOf(QStringLiteral("20251026")))});
}

void TestCurveDataDBRead::eachMissingFileHasItsLine()
{
    const qint64 first = localTime("2025-11-01 00:00:00.000");
    QVector<QPointF> points;
    QStringList expected;
    for (int day = 0; day < 30; ++day) {
        const qint64 midnight = first + day * kDayMs;
        const QString path =
            pathOf(QDateTime::fromMSecsSinceEpoch(midnight).toString(QStringLiteral("yyyyMMdd")));
        if (day % 3 == 1) {
            DayFileWriter file(path);
            file.addCurve(1, curveName(1));
            file.addBatch(1, midnight, DayFileWriter::tableName(1, midnight),
                          ramp(midnight, 5, 1000));
            points += ramp(midnight, 5, 1000);
        } else {
            expected.append(QStringLiteral("debug: 数据库文件不存在: \"%1\"").arg(path));
        }
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, first, first + 30 * kDayMs - 1), points);
    QCOMPARE(expected.size(), 20);
    QCOMPARE(log.lines(), expected);
}

void TestCurveDataDBRead::timesToComeAreLookedForInTodaysFile()
{
    // A reading from the future is in today's file, in a batch of its own date.
    const qint64 tomorrow = presentTime() + kDayMs;
    m_scene.store().appendPoint(20, tomorrow, 4.25);
    const LogCapture log;
    COMPARE_EXACTLY(read(20, tomorrow - 10, tomorrow + 10),
                    QVector<QPointF>{QPointF(double(tomorrow), 4.25)});
    COMPARE_EXACTLY(read(20, tomorrow - 10, tomorrow + 400 * kDayMs),
                    QVector<QPointF>{QPointF(double(tomorrow), 4.25)});
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBRead::endlessRangeEnds()
{
    const qint64 last = std::numeric_limits<qint64>::max();
    const qint64 tomorrow = presentTime() + kDayMs;
    m_scene.store().appendPoint(19, tomorrow, 1.5);
    const LogCapture log;
    COMPARE_EXACTLY(read(19, presentTime() - 1000, last),
                    QVector<QPointF>{QPointF(double(tomorrow), 1.5)});
    QVERIFY(read(19, last, last).isEmpty());
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

void TestCurveDataDBRead::fileWithoutTheCurveHasItsLine()
{
    const qint64 start = localTime("2026-01-16 00:00:00.000");
    const QString path = pathOf(QStringLiteral("20260116"));
    {
        DayFileWriter file(path);
        file.addCurve(1, curveName(1));
        file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 5, 1000));
    }
    const LogCapture log;
    QVERIFY(read(2, start, start + kHourMs).isEmpty());
    QVERIFY(read(1, start + kBatchMs, start + kBatchMs + 5).isEmpty());
    const QString line = QStringLiteral("debug: 在数据库 \"%1\" 中未找到匹配的分片").arg(path);
    QCOMPARE(log.lines(), (QStringList{line, line}));
}

void TestCurveDataDBRead::fileThatCannotBeOpenedIsPassedOver()
{
    const qint64 start = localTime("2026-01-17 00:00:00.000");
    QVERIFY(QDir().mkdir(pathOf(QStringLiteral("20260117"))));
    {
        DayFileWriter file(pathOf(QStringLiteral("20260118")));
        file.addCurve(1, curveName(1));
        file.addBatch(1, start + kDayMs, DayFileWriter::tableName(1, start + kDayMs),
                      ramp(start + kDayMs, 5, 1000));
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, start, start + 2 * kDayMs - 1), ramp(start + kDayMs, 5, 1000));
    QCOMPARE(log.lines(QtWarningMsg),
             QStringList{
                 QStringLiteral("无法打开数据库: \"%1\"").arg(pathOf(QStringLiteral("20260117")))});
}

void TestCurveDataDBRead::goneTableIsPassedOver()
{
    const qint64 start = localTime("2026-01-19 00:00:00.000");
    const QString gone = DayFileWriter::tableName(1, start);
    const qint64 next = start + kBatchMs;
    {
        DayFileWriter file(pathOf(QStringLiteral("20260119")));
        file.addCurve(1, curveName(1));
        file.addBatchRow(1, start, gone);
        file.addBatch(1, next, DayFileWriter::tableName(1, next), ramp(next, 5, 1000));
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, start, start + kDayMs - 1), ramp(next, 5, 1000));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("warning: 分片表不存在: \"%1\"").arg(gone)});
}

void TestCurveDataDBRead::tableThatCannotBePreparedIsPassedOver()
{
    const qint64 start = localTime("2026-01-20 00:00:00.000");
    const QString broken = DayFileWriter::tableName(1, start);
    const qint64 next = start + kBatchMs;
    {
        DayFileWriter file(pathOf(QStringLiteral("20260120")));
        file.addCurve(1, curveName(1));
        file.addBatchRow(1, start, broken);
        file.execute(
            QStringLiteral("CREATE TABLE %1 (curve_id INTEGER, timestamp INTEGER)").arg(broken));
        file.addBatch(1, next, DayFileWriter::tableName(1, next), ramp(next, 5, 1000));
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, start, start + kDayMs - 1), ramp(next, 5, 1000));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().at(0).startsWith(
                 QStringLiteral("warning: SQL准备失败: \"no such column: value")),
             qPrintable(log.lines().at(0)));
}

void TestCurveDataDBRead::tableThatFailsAtOnceIsPassedOver()
{
    const qint64 start = localTime("2026-01-21 00:00:00.000");
    const QString broken = DayFileWriter::tableName(1, start);
    const qint64 next = start + kBatchMs;
    {
        DayFileWriter file(pathOf(QStringLiteral("20260121")));
        file.addCurve(1, curveName(1));
        file.addBatchRow(1, start, broken);
        // The value is computed on reading, and the smallest integer has no absolute value.
        file.execute(QStringLiteral("CREATE TABLE %1 (curve_id INTEGER, timestamp INTEGER, raw "
                                    "INTEGER)")
                         .arg(broken));
        file.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, raw) VALUES (1, %2, "
                                    "-9223372036854775807 - 1)")
                         .arg(broken)
                         .arg(start));
        file.execute(QStringLiteral("ALTER TABLE %1 ADD COLUMN value AS (abs(raw))").arg(broken));
        file.addBatch(1, next, DayFileWriter::tableName(1, next), ramp(next, 5, 1000));
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, start, start + kDayMs - 1), ramp(next, 5, 1000));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().at(0).startsWith(
                 QStringLiteral("warning: 读取分片 \"%1\" 失败: \"integer overflow").arg(broken)),
             qPrintable(log.lines().at(0)));
}

void TestCurveDataDBRead::tableThatFailsMidwayGivesWhatWasRead()
{
    const qint64 start = localTime("2026-01-22 00:00:00.000");
    const QString broken = DayFileWriter::tableName(1, start);
    const qint64 next = start + kBatchMs;
    {
        DayFileWriter file(pathOf(QStringLiteral("20260122")));
        file.addCurve(1, curveName(1));
        file.addBatchRow(1, start, broken);
        file.execute(QStringLiteral("CREATE TABLE %1 (curve_id INTEGER, timestamp INTEGER, raw "
                                    "INTEGER, UNIQUE (curve_id, timestamp))")
                         .arg(broken));
        file.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, raw) VALUES (1, %2, 7), "
                                    "(1, %3, 8), (1, %4, -9223372036854775807 - 1), (1, %5, 9)")
                         .arg(broken)
                         .arg(start)
                         .arg(start + 1)
                         .arg(start + 2)
                         .arg(start + 3));
        file.execute(QStringLiteral("ALTER TABLE %1 ADD COLUMN value AS (abs(raw))").arg(broken));
        file.addBatch(1, next, DayFileWriter::tableName(1, next), ramp(next, 5, 1000));
    }
    const LogCapture log;
    const QVector<QPointF> readable{{double(start), 7.0}, {double(start + 1), 8.0}};
    COMPARE_EXACTLY(read(1, start, start + kDayMs - 1), readable + ramp(next, 5, 1000));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().at(0).startsWith(
                 QStringLiteral("warning: 读取分片 \"%1\" 失败: \"integer overflow").arg(broken)),
             qPrintable(log.lines().at(0)));
}

void TestCurveDataDBRead::tableNamesAreData()
{
    const qint64 start = localTime("2026-01-23 00:00:00.000");
    const QString odd = QStringLiteral("curve_1_o'ne \"two\"; DROP TABLE curve_info; --");
    const QString gone = QStringLiteral("curve_1_'gone");
    {
        DayFileWriter file(pathOf(QStringLiteral("20260123")));
        file.addCurve(1, curveName(1));
        file.addBatch(1, start, odd, ramp(start, 5, 1000));
        file.addBatchRow(1, start, gone);
    }
    const LogCapture log;
    COMPARE_EXACTLY(read(1, start, start + kHourMs), ramp(start, 5, 1000));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("warning: 分片表不存在: \"%1\"").arg(gone)});
    COMPARE_EXACTLY(read(1, start, start + kHourMs), ramp(start, 5, 1000));
}

void TestCurveDataDBRead::tableOfAnotherCurveUnderAReusedIdIsLeftOut()
{
    const qint64 start = localTime("2026-01-24 00:00:00.000");
    {
        DayFileWriter file(pathOf(QStringLiteral("20260124")));
        file.addCurve(1, curveName(1));
        file.addCurve(12, curveName(12));
        file.addBatch(1, start, DayFileWriter::tableName(12, start), ramp(start, 5, 1000));
        file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 3, 1000));
    }
    const auto batches = m_scene.store().queryBatches(
        1, start, start + kHourMs, m_scene.store().openDb(pathOf(QStringLiteral("20260124"))));
    QCOMPARE(batches.size(), 1);
    QCOMPARE(batches.at(0).tableName, DayFileWriter::tableName(1, start));
    COMPARE_EXACTLY(read(1, start, start + kHourMs), ramp(start, 3, 1000));
}

void TestCurveDataDBRead::limitOf10000LeavesOneOf10001Out()
{
    const qint64 start = localTime("2026-01-25 00:00:00.000");
    const QVector<QPointF> points = ramp(start, 10001, 100);
    DayFileWriter file(pathOf(QStringLiteral("20260125")));
    file.addCurve(1, curveName(1));
    file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
    const QVector<QPointF> found = read(1, start, start + kBatchMs, 10000);
    QCOMPARE(found.size(), 10000);
    COMPARE_EXACTLY(found.constFirst(), points.constFirst());
    COMPARE_EXACTLY(found.constLast(), points.constLast());
    COMPARE_EXACTLY(found, thinned(points, 10000));
    COMPARE_EXACTLY(read(1, start, start + kBatchMs, 1), points.mid(10000));
    COMPARE_EXACTLY(read(1, start, start + kBatchMs, 0), points);
    COMPARE_EXACTLY(read(1, start, start + kBatchMs, -3), points);
}

void TestCurveDataDBRead::limitIsReachedWithoutThinning()
{
    const qint64 start = localTime("2026-01-25 00:00:00.000");
    COMPARE_EXACTLY(read(1, start, start + 999900, 10000), ramp(start, 10000, 100));
    COMPARE_EXACTLY(read(1, start, start + kBatchMs, 10001), ramp(start, 10001, 100));
}

void TestCurveDataDBRead::thinningCompoundsAcrossBatches()
{
    const qint64 midnight = localTime("2026-01-26 00:00:00.000");
    QVector<QVector<QPointF>> batches;
    {
        DayFileWriter file(pathOf(QStringLiteral("20260126")));
        file.addCurve(1, curveName(1));
        for (int batch = 0; batch < 3; ++batch) {
            const qint64 start = midnight + batch * kBatchMs;
            batches.append(ramp(start, 21 - batch, 1000));
            file.addBatch(1, start, DayFileWriter::tableName(1, start), batches.last());
        }
    }
    // 21 points exceed twice 10 and become 10; with 20 more they exceed it again; 10 and 19 do so
    // a third time.
    QVector<QPointF> expected = thinned(batches.at(0), 10);
    expected = thinned(expected + batches.at(1), 10);
    expected = thinned(expected + batches.at(2), 10);
    COMPARE_EXACTLY(read(1, midnight, midnight + kDayMs - 1, 10), expected);
    COMPARE_EXACTLY(expected.last(), batches.at(2).last());
    QVERIFY(!samePoints(expected, thinned(batches.at(0) + batches.at(1) + batches.at(2), 10)));
    // Twice the limit exactly is not thinned on the way: 20 points of the second batch, then 19.
    COMPARE_EXACTLY(read(1, midnight + kBatchMs, midnight + kDayMs - 1, 10),
                    thinned(batches.at(1) + batches.at(2), 10));
}

void TestCurveDataDBRead::hugeLimitIsNoLimit()
{
    const qint64 start = localTime("2026-01-26 00:00:00.000");
    COMPARE_EXACTLY(read(1, start, start + kBatchMs - 1, std::numeric_limits<int>::max()),
                    ramp(start, 21, 1000));
}

void TestCurveDataDBRead::pointsAreSortedAcrossTables()
{
    // Two tables with interleaved times, as a changed clock leaves them.
    const qint64 start = localTime("2026-01-27 00:00:00.000");
    {
        DayFileWriter file(pathOf(QStringLiteral("20260127")));
        file.addCurve(1, curveName(1));
        file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 50, 20));
        file.addBatch(1, start + kBatchMs, DayFileWriter::tableName(1, start + kBatchMs),
                      ramp(start + 10, 50, 20));
    }
    const QVector<QPointF> found = read(1, start, start + kDayMs - 1);
    QCOMPARE(found.size(), 100);
    for (int i = 0; i < found.size(); ++i) {
        COMPARE_EXACTLY(found.at(i), QPointF(double(start + 10 * i), i / 2 * 0.5 - 3.0));
    }
}

void TestCurveDataDBRead::readsEqualTheModel()
{
    const quint32 seed = randomSeed();
    const int cases = randomCaseCount();
    QRandomGenerator random(seed);
    const qint64 first = localTime("2025-12-01 00:00:00.000");
    QVector<ModelDay> days;
    for (int day = 0; day < 5; ++day) {
        if (day == 2) {
            continue; // has no file
        }
        const qint64 midnight = first + day * kDayMs;
        ModelDay model;
        model.key = QDateTime::fromMSecsSinceEpoch(midnight).toString(QStringLiteral("yyyyMMdd"));
        DayFileWriter file(pathOf(model.key));
        file.addCurve(1, curveName(1));
        for (int batch = 0; batch < 4; ++batch) {
            if (random.bounded(5) == 0) {
                continue;
            }
            const qint64 start = midnight + batch * kBatchMs;
            const qint64 averageStep = kBatchMs / 400;
            QVector<QPointF> points;
            for (qint64 time = start + random.bounded(int(averageStep)); time < start + kBatchMs;
                 time += 1 + random.bounded(int(2 * averageStep))) {
                points.append(QPointF(double(time), random.bounded(200.0) - 100.0));
            }
            file.addBatch(1, start, DayFileWriter::tableName(1, start), points);
            model.batches.append(points);
        }
        days.append(model);
    }
    const LogCapture log;
    for (int round = 0; round < cases; ++round) {
        const qint64 start = first + random.bounded(int(5 * kDayMs / 1000)) * qint64(1000);
        const qint64 length = random.bounded(int(kDayMs / 1000) << random.bounded(3));
        const qint64 end = start + length * 1000 - 5000;
        const int maxPoints = random.bounded(4) == 0 ? 0 : 1 + random.bounded(700);
        const QVector<QPointF> expected =
            modelRead(days, visitedDays(start, end), start, end, maxPoints);
        const QString about = QStringLiteral("seed %1, read %2: %3 to %4, at most %5 points");
        QVERIFY2(
            samePoints(read(1, start, end, maxPoints), expected),
            qPrintable(
                about.arg(seed).arg(round).arg(start - first).arg(end - first).arg(maxPoints)));
    }
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

void TestCurveDataDBRead::clearingStoreReadsNothing()
{
    const QTemporaryDir directory;
    CurveDataDB store(directory.path());
    const int curveId = store.registerCurve(curveName(1));
    const qint64 start = presentTime() - kHourMs;
    store.appendPoints(curveId, ramp(start, 5, 1000));
    QCOMPARE(store.readCurveData(curveId, start, presentTime(), 0).size(), 5);
    QSignalSpy finished(&store, &CurveDataDB::sigClearFinished);
    store.clearAll();
    QVERIFY(store.readCurveData(curveId, start, presentTime(), 0).isEmpty());
    QVERIFY(store.listBatchesInFile(curveId, start, presentTime(), store.todayDbPath()).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 10000);
    QVERIFY(store.readCurveData(curveId, start, presentTime(), 0).isEmpty());
}

SCN_TEST(TestCurveDataDBRead, QCoreApplication)
#include "test_curvedatadb_read.moc"
