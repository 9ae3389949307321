#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QFile>
#include <QtTest>

namespace {

constexpr qint64 kMinuteMs = 60000;
constexpr qint64 kDayMs = 86400000;

QString dayKey(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time).toString(QStringLiteral("yyyyMMdd"));
}

qint64 at(const char* time)
{
    return localTime(QByteArray(time).append(":00.000").constData());
}

} // namespace

/// Exports across tables and files.
class TestExportDays : public QObject
{
    Q_OBJECT

private slots:
    void daysAreJoined();
    void idsBelongToTheFile();
    void missingFileIsLeftOut();
    void missingTableIsLeftOut();
    void fileWithoutTheCurveIsLeftOut();
    void tableOfAnEarlierCurveIsLeftOut();
    void rowsOfAnotherCurveInATableAreLeftOut();
    void tablesComeInTheOrderOfTime();
    void readingsFromTheFuture();
    void dayWithAChangeOfTheClock_data();
    void dayWithAChangeOfTheClock();
    void moreFilesThanThePoolKeeps();
    void rangeWithinOneFile();
    void endBeforeTheStart();

private:
    const SkippedWaits m_waits;
};

void TestExportDays::daysAreJoined()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    for (const char* day : {"2026-01-12 ", "2026-01-13 ", "2026-01-15 "}) {
        const qint64 start = at(QByteArray(day).append("05:30").constData());
        scene.addDay(dayKey(start).toLatin1().constData(),
                     {{1, text("101(V)"), samplesFrom(start, 15, 50 * kMinuteMs)},
                      {2, text("102(V)"), samplesFrom(start + 500, 14, 50 * kMinuteMs)}});
    }
    QCOMPARE(scene.difference(scene.order({1, 2}, at("2026-01-12 00:00"), at("2026-01-15 23:59"))),
             QString());
    // Part of the first and part of the last day.
    QCOMPARE(scene.difference(scene.order({1, 2}, at("2026-01-12 12:10"), at("2026-01-15 06:20"))),
             QString());
    QCOMPARE(scene.difference(scene.order({1, 2}, at("2026-01-13 00:00"), at("2026-01-13 12:00"))),
             QString());
}

/// The same names have different ids in other files, and the ids different names.
void TestExportDays::idsBelongToTheFile()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}, {3, text("103(V)")}});
    const qint64 first = at("2026-01-12 08:00");
    const qint64 second = at("2026-01-13 08:00");
    scene.addDay("20260112", {{1, text("102(V)"), samplesFrom(first, 9)},
                              {2, text("stranger"), samplesFrom(first, 11, 100)},
                              {12, text("101(V)"), samplesFrom(first + 1, 12)},
                              {3, text("103(V)"), samplesFrom(first + 2, 13)}});
    scene.addDay("20260113", {{1, text("101(V)"), samplesFrom(second, 14)},
                              {2, text("103(V)"), samplesFrom(second + 3, 15)},
                              {7, text("102(V)"), samplesFrom(second + 4, 16)}});
    QCOMPARE(
        scene.difference(scene.order({1, 2, 3}, at("2026-01-12 00:00"), at("2026-01-13 23:59"))),
        QString());
}

void TestExportDays::missingFileIsLeftOut()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    for (const char* day : {"20260112", "20260113", "20260114"}) {
        const qint64 midnight =
            QDate::fromString(text(day), text("yyyyMMdd")).startOfDay().toMSecsSinceEpoch();
        scene.addDay(day, {{1, text("101(V)"), samplesFrom(midnight, 10, kHourMs)}});
    }
    QVERIFY(QFile::remove(scene.store().path("20260113")));
    scene.forget(text("101(V)"), at("2026-01-13 00:00"), at("2026-01-14 00:00") - 1);
    QCOMPARE(scene.difference(scene.order({1}, at("2026-01-12 00:00"), at("2026-01-14 23:59"))),
             QString());
}

void TestExportDays::missingTableIsLeftOut()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const qint64 midnight = at("2026-01-12 00:00");
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(midnight, 48, kHourMs / 2)},
                              {2, text("102(V)"), samplesFrom(midnight, 48, kHourMs / 2)}});
    const QString table = DayFileWriter::tableName(1, midnight + kBatchMs);
    QCOMPARE(dayfile::execute(scene.store().path("20260112"), text("DROP TABLE ") + table),
             QString());
    scene.forget(text("101(V)"), midnight + kBatchMs, midnight + 2 * kBatchMs - 1);
    const ExportOrder order = scene.order({1, 2}, midnight, at("2026-01-12 23:59"));
    QCOMPARE(scene.difference(order), QString());
    QVERIFY(runExport(order).log.contains(
        text(
            "warning: [初始化查询] SQL执行失败： \"no such table: %1 Unable to execute statement\"")
            .arg(table)));
}

void TestExportDays::fileWithoutTheCurveIsLeftOut()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("2026-01-12 08:00"), 5)}});
    scene.addDay("20260113", {{1, text("102(V)"), samplesFrom(at("2026-01-13 08:00"), 6)}});
    // A file just created has no catalogue yet.
    QFile empty(scene.store().path("20260114"));
    QVERIFY(empty.open(QIODevice::WriteOnly));
    QCOMPARE(scene.difference(scene.order({1, 2}, at("2026-01-12 00:00"), at("2026-01-14 23:59"))),
             QString());
}

/// A reused id finds the tables of the curve that had it before.
void TestExportDays::tableOfAnEarlierCurveIsLeftOut()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    const qint64 start = at("2026-01-12 06:00");
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(start, 5)}});
    DayFileWriter(scene.store().path("20260112"))
        .addBatch(1, start, text("other_1_batch_20260112_060000_20260112_115959"),
                  samplesFrom(start + 7, 5));
    QCOMPARE(scene.difference(scene.order({1}, at("2026-01-12 00:00"), at("2026-01-12 23:59"))),
             QString());
}

void TestExportDays::rowsOfAnotherCurveInATableAreLeftOut()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    const qint64 start = at("2026-01-12 06:00");
    scene.addDay("20260112", {{3, text("101(V)"), samplesFrom(start, 5)}});
    DayFileWriter(scene.store().path("20260112"))
        .execute(text("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, 99)")
                     .arg(DayFileWriter::tableName(3, start), QString::number(start + 1)));
    QCOMPARE(scene.difference(scene.order({1}, at("2026-01-12 00:00"), at("2026-01-12 23:59"))),
             QString());
}

/// Whatever the order in which tables and rows were written.
void TestExportDays::tablesComeInTheOrderOfTime()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260113", {{1, text("101(V)"), samplesFrom(at("2026-01-13 01:00"), 3)}});
    scene.addDay("20260112", {{10, text("101(V)"), {}}});
    DayFileWriter day(scene.store().path("20260112"));
    const qint64 midnight = at("2026-01-12 00:00");
    ExportScene ordered; // the same day, written in order, tells what must come out
    QVector<QPointF> all;
    for (const int batch : {3, 0, 2, 1}) {
        QVector<QPointF> samples = samplesFrom(midnight + batch * kBatchMs + 5, 4);
        std::reverse(samples.begin(), samples.end());
        day.addBatch(10, midnight + batch * kBatchMs,
                     DayFileWriter::tableName(10, midnight + batch * kBatchMs), samples);
        all += samples;
    }
    ordered.know({{1, text("101(V)")}});
    ordered.addDay("20260112", {{1, text("101(V)"), all}});
    ordered.addDay("20260113", {{1, text("101(V)"), samplesFrom(at("2026-01-13 01:00"), 3)}});
    const ExportOrder order = scene.order({1}, midnight, at("2026-01-13 23:59"));
    const ExportOutcome outcome = runExport(order);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(partsIn(scene.outputDirectory()).value(1), ordered.expectedParts(order).first());
}

/// An instrument whose clock is ahead: its readings are in the file of the day they arrived, in
/// tables of days that have no file or one of their own.
void TestExportDays::readingsFromTheFuture()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const qint64 now = at("2026-03-10 12:00");
    for (int day = 0; day < 3; ++day) {
        for (int i = 0; i < 5; ++i) {
            scene.append(1, now + day * kDayMs + i * 1000, i);
            scene.append(2, now + day * kDayMs + i * 1000, -i);
        }
    }
    QVERIFY(!QFile::exists(scene.store().path("20260311")));
    ExportOrder order = scene.order({1, 2}, at("2026-03-10 00:00"), at("2026-03-12 23:59"));
    QCOMPARE(scene.difference(order), QString());
    // Later these days have no files.
    setPresent(now + 5 * kDayMs);
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    order.store = scene.store().get();
    QCOMPARE(scene.difference(order), QString());
    const QStringList log = runExport(order).log;
    const QString table = DayFileWriter::tableName(1, at("2026-03-11 12:00"));
    for (const QString& line :
         {text("warning: [初始化查询] 日期 \"20260311\" 对应的数据库 \"%1\" 不存在，启动兜底方案")
              .arg(scene.store().path("20260311")),
          text("debug: [初始化查询] 兜底方案找到表 \"%1\" 对应的数据库： \"%2\"")
              .arg(table, scene.store().path("20260310"))}) {
        QVERIFY2(log.contains(line), qPrintable(log.join(QLatin1Char('\n'))));
    }
    // Or one, with different ids, and readings of other batches.
    scene.addDay("20260311", {{2, text("101(V)"), samplesFrom(at("2026-03-11 03:00"), 4)},
                              {1, text("102(V)"), samplesFrom(at("2026-03-11 18:30"), 4)}});
    QCOMPARE(scene.difference(order), QString());
}

void TestExportDays::dayWithAChangeOfTheClock_data()
{
    QTest::addColumn<QByteArray>("day");
    QTest::addColumn<int>("hours");
    QTest::newRow("23 hours") << QByteArray("2025-03-30") << 23;
    QTest::newRow("25 hours") << QByteArray("2025-10-26") << 25;
}

void TestExportDays::dayWithAChangeOfTheClock()
{
    QFETCH(QByteArray, day);
    QFETCH(int, hours);
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const qint64 start = at(day.append(" 00:00").constData());
    const qint64 end =
        QDateTime::fromMSecsSinceEpoch(start).date().addDays(1).startOfDay().toMSecsSinceEpoch();
    QCOMPARE(end - start, hours * kHourMs);
    // From the day before to the day after, every ten minutes, written by the store itself.
    for (qint64 time = start - 2 * kHourMs; time <= end + 2 * kHourMs; time += 10 * kMinuteMs) {
        setPresent(time + 2);
        scene.append(1, time, static_cast<double>(time - start));
        scene.append(2, time + 1, static_cast<double>(start - time));
    }
    QCOMPARE(scene.difference(scene.order({1, 2}, start - kDayMs, end + kDayMs)), QString());
    const ExportOrder order = scene.order({1, 2}, start, end - 1000);
    QCOMPARE(scene.difference(order), QString());
    QCOMPARE(scene.expectedParts(order).first().count('\n'), 6 + hours * 6);
    // Within the hour that occurs twice, or not at all.
    QCOMPARE(scene.difference(scene.order({1, 2}, start + kHourMs, start + 4 * kHourMs)),
             QString());
}

void TestExportDays::moreFilesThanThePoolKeeps()
{
    constexpr int kDays = 40;
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}, {3, text("103(V)")}});
    const QDate first(2026, 1, 12);
    for (int day = 0; day < kDays; ++day) {
        const qint64 start = QDateTime(first.addDays(day), QTime(11, 59, 50)).toMSecsSinceEpoch();
        scene.addDay(dayKey(start).toLatin1().constData(),
                     {{1 + day % 3, text("101(V)"), samplesFrom(start, 15)},
                      {1 + (day + 1) % 3, text("102(V)"), samplesFrom(start, 20)},
                      {1 + (day + 2) % 3, text("103(V)"), samplesFrom(start, 1 + day)}});
    }
    ExportOrder order = scene.order({1, 2, 3}, at("2026-01-01 00:00"), at("2026-03-10 00:00"));
    for (const int rowsPerBlock : {3, 1000}) {
        order.rowsPerBlock = rowsPerBlock;
        QCOMPARE(scene.difference(order), QString());
    }
}

/// A batch that encloses the range is found, too.
void TestExportDays::rangeWithinOneFile()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260112",
                 {{1, text("101(V)"), samplesFrom(at("2026-01-12 06:00"), 120, kMinuteMs)}});
    QCOMPARE(scene.difference(scene.order({1}, at("2026-01-12 06:30"), at("2026-01-12 06:40"))),
             QString());
}

void TestExportDays::endBeforeTheStart()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("2026-01-12 06:00"), 5)}});
    const auto outcome =
        runExport(scene.order({1}, at("2026-01-12 23:00"), at("2026-01-12 01:00")));
    QCOMPARE(outcome.result, ExportNoData);
    QVERIFY(partsIn(scene.outputDirectory()).isEmpty());
}

SCN_TEST(TestExportDays, QCoreApplication)
#include "test_exportdays.moc"
