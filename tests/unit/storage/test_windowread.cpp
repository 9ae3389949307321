#include "dayfilewriter.h"
#include "plainthinning.h"
#include "randomcases.h"
#include "readscene.h"
#include "storage/curvedatadb.h"
#include "storage/windowread.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QFile>
#include <QSqlDatabase>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <optional>

using namespace scn;

namespace {

const QString kDay = QStringLiteral("20260119");

qint64 midnight()
{
    return localTime("2026-01-19 00:00:00.000");
}

/// One read, with the order of the rows and without. Readings are picked from memory and, where none are kept,
/// from the file.
struct Compared
{
    QVector<QPointF> picked;
    QVector<QPointF> pickedFromFile;
    QVector<QPointF> plain;
    bool isFound = false;
};

/// Goes through a step of a read in slices as short as there are.
template <typename Step>
ReadStep inShortSlices(Step&& step)
{
    ReadStep result = ReadStep::Unfinished;
    while (result == ReadStep::Unfinished) {
        ReadSlice slice(QDeadlineTimer(0), 0);
        result = step(slice);
    }
    return result;
}

} // namespace

/// Reads that pick rows by their numbers, against reads of every row.
class TestWindowRead : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void picksOnlyWhatIsShown();
    void gapsInTheNumbersAreKnown();
    void latePointIsInItsPlace();
    void rowsAddedLaterAreFound();
    void rowsOfOthersChangeTheOrder();
    void tableDroppedAndMadeAgain();
    void textForAValueIsReadRowByRow();
    void readingsAreKept();
    void readingsFarApartAreNotKept();
    void readingsNotAskedForAreDropped();
    void lookAroundDropsNothingShown();
    void manyFilesAreNotHeld();
    void picksEqualEveryRow();

private:
    QString pathOf(const QString& day) const { return m_scene.pathOf(day); }
    Compared compare(const ReadRange& range, const QString& path, const QStringList& tables);
    QStringList fillThreeTables();
    QString fillRandomly(QRandomGenerator& random, DayFileWriter& file, int batch);

    ReadScene m_scene;
    RowOrders m_orders;
    RowOrders m_ordersAlone{0}; ///< Keeps no readings.
};

void TestWindowRead::cleanup()
{
    m_scene.letGo();
    QFile::remove(pathOf(kDay));
}

Compared TestWindowRead::compare(const ReadRange& range, const QString& path,
                                 const QStringList& tables)
{
    const QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(path);
    const auto pointsWith = [&](RowOrders* orders) -> std::optional<QVector<QPointF>> {
        WindowRead read(range, orders);
        for (const QString& table : tables) {
            inShortSlices([&](ReadSlice& slice) { return read.addTable(path, db, table, slice); });
        }
        const bool isDone =
            inShortSlices([&](ReadSlice& slice) { return read.finish(slice); }) == ReadStep::Done;
        return isDone ? std::make_optional(read.points()) : std::nullopt;
    };
    const auto picked = pointsWith(&m_orders);
    const auto pickedFromFile = pointsWith(&m_ordersAlone);
    return {picked.value_or(QVector<QPointF>()), pickedFromFile.value_or(QVector<QPointF>()),
            pointsWith(nullptr).value_or(QVector<QPointF>()),
            picked.has_value() && pickedFromFile.has_value()};
}

void TestWindowRead::picksOnlyWhatIsShown()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    file.addBatch(1, midnight(), table, ramp(midnight(), 5000, 100));
    const ReadRange range{1, midnight() + 150, midnight() + 400000, 50};
    const Compared before = compare(range, pathOf(kDay), {table});
    COMPARE_EXACTLY(before.picked, before.plain);
    COMPARE_EXACTLY(before.pickedFromFile, before.plain);
    QCOMPARE(before.picked.size(), 50);
    COMPARE_EXACTLY(before.picked, thinned(ramp(midnight(), 5000, 100).mid(2, 3999), 50));
}

void TestWindowRead::gapsInTheNumbersAreKnown()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    file.addBatch(1, midnight(), table, ramp(midnight(), 3000, 100));
    file.execute(QStringLiteral("DELETE FROM %1 WHERE id % 7 = 3").arg(table));
    const Compared both =
        compare({1, midnight(), midnight() + kBatchMs, 40}, pathOf(kDay), {table});
    QVERIFY(both.isFound);
    COMPARE_EXACTLY(both.picked, both.plain);
    COMPARE_EXACTLY(both.pickedFromFile, both.plain);
    const QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(pathOf(kDay));
    ReadSlice wholly;
    const RowOrder& order = *m_orders.update(pathOf(kDay), *db, table, 1, wholly);
    QVERIFY(order.isKnown());
    QCOMPARE(order.count(), qint64(2571));
    QCOMPARE(order.rowAt(0), qint64(1));
    QCOMPARE(order.rowAt(2), qint64(4));
    QCOMPARE(order.rowAt(2570), qint64(3000));
}

void TestWindowRead::latePointIsInItsPlace()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    file.addBatch(1, midnight(), table, ramp(midnight(), 300, 100));
    file.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, 77.5)")
                     .arg(table)
                     .arg(midnight() + 50));
    const Compared both =
        compare({1, midnight(), midnight() + kBatchMs, 40}, pathOf(kDay), {table});
    QVERIFY(both.isFound);
    COMPARE_EXACTLY(both.picked, both.plain);
    COMPARE_EXACTLY(both.pickedFromFile, both.plain);
    const QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(pathOf(kDay));
    ReadSlice wholly;
    QVERIFY(!m_orders.update(pathOf(kDay), *db, table, 1, wholly)->isKnown());
}

void TestWindowRead::rowsAddedLaterAreFound()
{
    CurveDataDB& store = m_scene.store();
    const qint64 start = presentTime() - kHourMs;
    QVector<QPointF> written;
    for (int i = 0; i < 300; ++i) {
        // Every tenth reading is refused, and takes a number with it.
        const qint64 time = start + 1000 * (i - (i % 10 == 9 ? 1 : 0));
        store.appendPoint(1, time, i);
        if (i % 10 != 9) {
            written.append(QPointF(double(time), i));
        }
        if (i % 50 == 0) {
            COMPARE_EXACTLY(store.readCurveData(1, start, presentTime(), 20), thinned(written, 20));
        }
    }
    COMPARE_EXACTLY(store.readCurveData(1, start, presentTime(), 20), thinned(written, 20));
    store.appendPoint(1, start + 500, -1.0);
    written.insert(1, QPointF(double(start + 500), -1.0));
    COMPARE_EXACTLY(store.readCurveData(1, start, presentTime(), 20), thinned(written, 20));
    QVERIFY(store.deleteCurveData(1));
    QVERIFY(store.readCurveData(1, start, presentTime(), 20).isEmpty());
}

void TestWindowRead::rowsOfOthersChangeTheOrder()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    file.addBatch(1, midnight(), table, ramp(midnight(), 300, 100));
    const ReadRange range{1, midnight(), midnight() + kBatchMs, 40};
    QVERIFY(compare(range, pathOf(kDay), {table}).isFound);
    // Another connection takes rows out and puts others in.
    file.execute(QStringLiteral("DELETE FROM %1 WHERE id BETWEEN 100 AND 200").arg(table));
    file.execute(QStringLiteral("UPDATE %1 SET value = value + 1 WHERE id < 50").arg(table));
    const Compared both = compare(range, pathOf(kDay), {table});
    QVERIFY(both.isFound);
    COMPARE_EXACTLY(both.picked, both.plain);
    COMPARE_EXACTLY(both.pickedFromFile, both.plain);
}

void TestWindowRead::tableDroppedAndMadeAgain()
{
    CurveDataDB& store = m_scene.store();
    const qint64 start = presentTime() - kHourMs;
    store.appendPoints(2, ramp(start, 100, 1000));
    COMPARE_EXACTLY(store.readCurveData(2, start, presentTime(), 10),
                    thinned(ramp(start, 100, 1000), 10));
    QVERIFY(store.deleteCurveData(2));
    store.appendPoints(2, ramp(start + 7, 100, 1000));
    COMPARE_EXACTLY(store.readCurveData(2, start, presentTime(), 10),
                    thinned(ramp(start + 7, 100, 1000), 10));
}

void TestWindowRead::textForAValueIsReadRowByRow()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    file.addBatch(1, midnight(), table, ramp(midnight(), 30, 100));
    file.execute(QStringLiteral("UPDATE %1 SET value = 'twelve'").arg(table));
    QVERIFY(!compare({1, midnight(), midnight() + kBatchMs, 10}, pathOf(kDay), {table}).isFound);
    QCOMPARE(m_scene.store().readCurveData(1, midnight(), midnight() + kBatchMs, 10).size(), 10);
}

void TestWindowRead::readingsAreKept()
{
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    const QVector<QPointF> written = ramp(midnight(), 3000, 100);
    file.addBatch(1, midnight(), table, written);
    QVERIFY(compare({1, midnight(), midnight() + kBatchMs, 40}, pathOf(kDay), {table}).isFound);
    QCOMPARE(m_orders.kept(), qint64(3000));
    QCOMPARE(m_ordersAlone.kept(), qint64(0));
    QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(pathOf(kDay));
    ReadSlice wholly;
    const RowOrder& order = *m_orders.update(pathOf(kDay), *db, table, 1, wholly);
    QVERIFY(order.kept());
    QCOMPARE(order.kept()->count(), qint64(3000));
    for (const int place : {0, 1, 1234, 2999}) {
        QVERIFY(exactpoints::same(order.kept()->at(place), written.at(place)));
    }
    // What another connection writes makes it start again.
    file.execute(QStringLiteral("DELETE FROM %1 WHERE id > 1000").arg(table));
    m_orders.update(pathOf(kDay), *db, table, 1, wholly);
    QCOMPARE(m_orders.kept(), qint64(1000));
    m_orders.clear();
    QCOMPARE(m_orders.kept(), qint64(0));
}

void TestWindowRead::readingsFarApartAreNotKept()
{
    constexpr qint64 kFarthestMs = std::numeric_limits<quint32>::max();
    const QString table = DayFileWriter::tableName(1, midnight());
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    QVector<QPointF> written = ramp(midnight(), 10, 100);
    written.append(QPointF(double(midnight() + kFarthestMs), 1.0));
    file.addBatch(1, midnight(), table, written);
    const ReadRange range{1, midnight(), midnight() + 2 * kFarthestMs, 5};
    const Compared near = compare(range, pathOf(kDay), {table});
    COMPARE_EXACTLY(near.picked, near.plain);
    QCOMPARE(m_orders.kept(), qint64(11));
    file.execute(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, 2.0)")
                     .arg(table)
                     .arg(midnight() + kFarthestMs + 1));
    const Compared both = compare(range, pathOf(kDay), {table});
    QVERIFY(both.isFound);
    COMPARE_EXACTLY(both.picked, both.plain);
    QCOMPARE(both.picked.last().x(), double(midnight() + kFarthestMs + 1));
    QCOMPARE(m_orders.kept(), qint64(0));
}

/// Fills three tables with a hundred readings each. Returns their names.
QStringList TestWindowRead::fillThreeTables()
{
    DayFileWriter file(pathOf(kDay));
    file.addCurve(1, curveName(1));
    QStringList tables;
    for (int batch = 0; batch < 3; ++batch) {
        const qint64 start = midnight() + batch * kBatchMs;
        tables.append(DayFileWriter::tableName(1, start));
        file.addBatch(1, start, tables.last(), ramp(start, 100, 1000));
    }
    return tables;
}

void TestWindowRead::readingsNotAskedForAreDropped()
{
    const QStringList tables = fillThreeTables();
    const QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(pathOf(kDay));
    RowOrders orders(250);
    ReadSlice wholly;
    const auto update = [&](int batch) {
        return orders.update(pathOf(kDay), *db, tables.at(batch), 1, wholly);
    };
    update(0);
    update(1);
    update(0);
    QCOMPARE(orders.kept(), qint64(200));
    QVERIFY(update(2)->kept());
    QCOMPARE(orders.kept(), qint64(200));
    QVERIFY(update(0)->kept());
    const RowOrder* const dropped = update(1);
    QVERIFY(!dropped->kept());
    QVERIFY(dropped->isKnown());
    QCOMPARE(dropped->count(), qint64(100));
}

void TestWindowRead::lookAroundDropsNothingShown()
{
    const QStringList tables = fillThreeTables();
    const QSharedPointer<QSqlDatabase> db = m_scene.store().openDb(pathOf(kDay));
    RowOrders orders(250);
    ReadSlice wholly;
    const auto update = [&](int batch) {
        return orders.update(pathOf(kDay), *db, tables.at(batch), 1, wholly);
    };
    const auto lookThrough = [&](int batch) {
        QVERIFY(orders.lookThrough(pathOf(kDay), *db, tables.at(batch), 1, wholly));
    };
    // Two tables are shown, and no other has room.
    update(0);
    update(1);
    lookThrough(0);
    lookThrough(2);
    QCOMPARE(orders.kept(), qint64(200));
    QVERIFY(update(0)->kept());
    QVERIFY(update(1)->kept());
    // What was shown long ago goes before what may be shown next.
    orders.clear();
    update(0);
    for (int call = 0; call < 1000; ++call) {
        update(1);
    }
    lookThrough(2);
    QVERIFY(update(1)->kept());
    QVERIFY(update(2)->kept());
    QVERIFY(!update(0)->kept());
}

void TestWindowRead::manyFilesAreNotHeld()
{
    const qint64 first = localTime("2025-09-01 00:00:00.000");
    constexpr qint64 kDayMs = 86400000;
    QVector<QPointF> expected;
    for (int day = 0; day < 20; ++day) {
        const qint64 start = first + day * kDayMs;
        DayFileWriter file(
            pathOf(QDateTime::fromMSecsSinceEpoch(start).toString(QStringLiteral("yyyyMMdd"))));
        file.addCurve(1, curveName(1));
        for (int batch = 0; batch < 4; ++batch) {
            const qint64 batchStart = start + batch * kBatchMs;
            const QVector<QPointF> points = ramp(batchStart, 3 + day % 5, 1000);
            file.addBatch(1, batchStart, DayFileWriter::tableName(1, batchStart), points);
            expected += points;
            if (expected.size() > 2 * 90) {
                expected = thinned(expected, 90);
            }
        }
    }
    COMPARE_EXACTLY(m_scene.store().readCurveData(1, first, first + 20 * kDayMs - 1, 90),
                    thinned(expected, 90));
}

/// A table with gaps, disorder, rows of others or nothing, as the dice fall. Returns its name.
QString TestWindowRead::fillRandomly(QRandomGenerator& random, DayFileWriter& file, int batch)
{
    const qint64 start = midnight() + batch * kBatchMs;
    const QString table = DayFileWriter::tableName(1, start);
    const int size = random.bounded(4) == 0 ? random.bounded(5) : random.bounded(2500);
    QVector<QPointF> points;
    qint64 time = start + random.bounded(1000);
    for (int i = 0; i < size; ++i) {
        points.append(QPointF(double(time), random.bounded(100.0)));
        time += 1 + random.bounded(3000);
    }
    if (size > 3 && random.bounded(4) == 0) {
        std::rotate(points.begin(), points.begin() + random.bounded(size), points.end());
    }
    file.addBatch(1, start, table, points);
    if (random.bounded(3) == 0) {
        file.execute(QStringLiteral("DELETE FROM %1 WHERE id % %2 = 1")
                         .arg(table)
                         .arg(2 + random.bounded(20)));
    }
    if (random.bounded(3) == 0) {
        file.execute(QStringLiteral("UPDATE %1 SET curve_id = 2 WHERE id % %2 = 1")
                         .arg(table)
                         .arg(2 + random.bounded(20)));
    }
    return table;
}

void TestWindowRead::picksEqualEveryRow()
{
    const quint32 seed = randomSeed();
    QRandomGenerator random(seed);
    int lost = 0;
    for (int round = 0; round < randomCaseCount() / 20; ++round) {
        const QString path = pathOf(QStringLiteral("2025%1").arg(1000 + round, 4));
        QStringList tables;
        {
            DayFileWriter file(path);
            file.addCurve(1, curveName(1));
            file.addCurve(2, curveName(2));
            const int batches = 1 + random.bounded(6);
            for (int batch = 0; batch < batches; ++batch) {
                tables.append(fillRandomly(random, file, batch));
            }
            if (random.bounded(4) == 0) {
                std::swap(tables[random.bounded(batches)], tables[random.bounded(batches)]);
            }
        }
        for (int read = 0; read < 20; ++read) {
            const qint64 start = midnight() + random.bounded(int(2 * kBatchMs)) - 5000;
            const qint64 end = start + random.bounded(int(4 * kBatchMs));
            constexpr int kLimits[] = {3, 50, 700, 5000, 20000};
            const int limit = 1 + random.bounded(kLimits[random.bounded(5)]);
            const Compared both = compare({1, start, end, limit}, path, tables);
            lost += both.isFound ? 0 : 1;
            QVERIFY2(samePoints(both.picked, both.plain) &&
                         samePoints(both.pickedFromFile, both.plain),
                     qPrintable(QStringLiteral("seed %1, round %2, read %3: at most %4")
                                    .arg(seed)
                                    .arg(round)
                                    .arg(read)
                                    .arg(limit)));
        }
        m_scene.letGo();
    }
    QCOMPARE(lost, 0);
}

SCN_TEST(TestWindowRead, QCoreApplication)
#include "test_windowread.moc"
