#include "storage/pointthinning.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QtTest>

namespace {

QVector<QPointF> ramp(int size)
{
    QVector<QPointF> points;
    for (int i = 0; i < size; ++i) {
        points.append(QPointF(1000.0 + i, i * 0.5));
    }
    return points;
}

QVector<double> xs(const QVector<QPointF>& points)
{
    QVector<double> result;
    for (const QPointF& point : points) {
        result.append(point.x());
    }
    return result;
}

} // namespace

class TestPointThinning : public QObject
{
    Q_OBJECT

private slots:
    void noLimitKeepsAll_data();
    void noLimitKeepsAll();
    void asManyAsTheLimitStay();
    void oneTooManyDropsOne();
    void stepsAreEvenByIndexAndTruncated();
    void lastTakenGivesWayToTheLastPoint();
    void lastPointOfEqualXDoesNotReplace();
    void limitOfOneIsTheLastPoint();
    void copyLeavesTheSourceAlone();
};

void TestPointThinning::noLimitKeepsAll_data()
{
    QTest::addColumn<int>("maxPoints");
    QTest::newRow("zero") << 0;
    QTest::newRow("negative") << -5;
    QTest::newRow("above the size") << 101;
}

void TestPointThinning::noLimitKeepsAll()
{
    QFETCH(int, maxPoints);
    QVector<QPointF> points = ramp(100);
    thinPoints(points, maxPoints);
    COMPARE_EXACTLY(points, ramp(100));
    QVector<QPointF> none;
    thinPoints(none, maxPoints);
    QVERIFY(none.isEmpty());
}

void TestPointThinning::asManyAsTheLimitStay()
{
    QVector<QPointF> points = ramp(100);
    thinPoints(points, 100);
    COMPARE_EXACTLY(points, ramp(100));
}

void TestPointThinning::oneTooManyDropsOne()
{
    QVector<QPointF> points = ramp(10001);
    thinPoints(points, 10000);
    QCOMPARE(points.size(), 10000);
    COMPARE_EXACTLY(points.constFirst(), ramp(10001).constFirst());
    COMPARE_EXACTLY(points.constLast(), ramp(10001).constLast());
    // Index 9999 * 1.0001 truncates to 9999, which the last point, 10000, then replaces.
    QCOMPARE(points.at(9998).x(), 1000.0 + 9998);
}

void TestPointThinning::stepsAreEvenByIndexAndTruncated()
{
    QVector<QPointF> points = ramp(10);
    thinPoints(points, 4);
    // Step 2.5: indices 0, 2, 5, 7; the last one becomes 9.
    QCOMPARE(xs(points), (QVector<double>{1000.0, 1002.0, 1005.0, 1009.0}));
    QCOMPARE(points.at(2).y(), 2.5);
}

void TestPointThinning::lastTakenGivesWayToTheLastPoint()
{
    QVector<QPointF> points = ramp(6);
    thinPoints(points, 3);
    QCOMPARE(xs(points), (QVector<double>{1000.0, 1002.0, 1005.0}));
}

void TestPointThinning::lastPointOfEqualXDoesNotReplace()
{
    QVector<QPointF> points{{1.0, 10.0}, {2.0, 20.0}, {3.0, 30.0}, {3.0, 40.0}};
    thinPoints(points, 2);
    // Step 2: indices 0 and 2; the source's last point has the x of the one taken.
    COMPARE_EXACTLY(points, (QVector<QPointF>{{1.0, 10.0}, {3.0, 30.0}}));
}

void TestPointThinning::limitOfOneIsTheLastPoint()
{
    QVector<QPointF> points = ramp(5);
    thinPoints(points, 1);
    QCOMPARE(xs(points), QVector<double>{1004.0});
}

void TestPointThinning::copyLeavesTheSourceAlone()
{
    const QVector<QPointF> source = ramp(1000);
    QVector<QPointF> inPlace = source;
    QVector<QPointF> copied(300);
    thinPoints(source.constData(), source.size(), 300, copied.data());
    thinPoints(inPlace, 300);
    COMPARE_EXACTLY(copied, inPlace);
    COMPARE_EXACTLY(source, ramp(1000));
}

SCN_TEST(TestPointThinning, QCoreApplication)
#include "test_pointthinning.moc"
