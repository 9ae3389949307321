#include "dayfilewriter.h"
#include "plot/loadedcurvedata.h"
#include "plotsupport.h"
#include "randomcases.h"
#include "skippedwaits.h"
#include "support/exactpoints.h"
#include "support/testprogram.h"

#include <QTemporaryDir>

using namespace plotsupport;

namespace {

constexpr qint64 kDayMs = 86400000;

const qint64 kStart = noonToday() - 3 * kDayMs;

/// A view of the past.
scn::CurveView someView()
{
    return {kStart + 1000, kStart + 50000, 20, 0.5};
}

QVector<QPointF> ramp(qint64 start, int count)
{
    QVector<QPointF> points;
    for (int i = 0; i < count; ++i) {
        points.append(QPointF(static_cast<double>(start + 1000 * i), i));
    }
    return points;
}

} // namespace

/// What a curve keeps of its load, and when it loads again.
class TestLoadedCurveData : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void sameViewIsReadOnce();
    void anotherViewIsRead_data();
    void anotherViewIsRead();
    void anotherOffsetIsNotRead();
    void offsetAddsToWhatWasMeasured();
    void readingAfterTheEndChangesNothing();
    void readingUpToTheEndIsShown_data();
    void readingUpToTheEndIsShown();
    void bulkUpToTheEndIsShown();
    void memoryIsAlwaysLoaded();
    void viewThatMemoryNowServesIsLoaded();
    void deletedReadingsGo();
    void fileThatCouldNotBeReadIsReadAgain();
    void loadsEqualTheSeries();

private:
    /// Whether the series was asked to load its window again.
    bool loads(const scn::CurveView& view);

    const SkippedWaits m_waits;
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<CurveDataDB> m_store;
    std::unique_ptr<CurveSeriesData> m_series;
    std::unique_ptr<scn::LoadedCurveData> m_curve;
};

/// Two minutes in the store, none in memory.
void TestLoadedCurveData::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_store = std::make_unique<CurveDataDB>(m_directory->path());
    m_store->registerCurveAtOnce(QStringLiteral("101(V)"));
    m_series = std::make_unique<CurveSeriesData>(QStringLiteral("101(V)"), m_store.get());
    m_series->addPoints(ramp(kStart, 120));
    m_series->clear();
    m_curve = std::make_unique<scn::LoadedCurveData>(m_series.get());
    QVERIFY(loads(someView()));
}

void TestLoadedCurveData::cleanup()
{
    m_curve.reset();
    m_series.reset();
    m_store.reset();
    m_directory.reset();
}

bool TestLoadedCurveData::loads(const scn::CurveView& view)
{
    constexpr double kNoOffset = -1.0;
    m_series->loadWindow(0, 0, 1, kNoOffset);
    m_curve->load(view);
    return m_series->yOffset() != kNoOffset;
}

void TestLoadedCurveData::sameViewIsReadOnce()
{
    const QVector<QPointF> shown = m_curve->points();
    QCOMPARE(shown.size(), 20);
    COMPARE_EXACTLY(shown.first(), QPointF(double(kStart + 1000), 1.5));
    COMPARE_EXACTLY(shown.last(), QPointF(double(kStart + 50000), 50.5));
    QVERIFY(!loads(someView()));
    COMPARE_EXACTLY(m_curve->points(), shown);
    QCOMPARE(m_curve->offset(), 0.5);
}

void TestLoadedCurveData::anotherViewIsRead_data()
{
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::addColumn<int>("maxPoints");
    const scn::CurveView window = someView();
    QTest::newRow("start") << window.start + 1 << window.end << window.maxPoints;
    QTest::newRow("end") << window.start << window.end + 1 << window.maxPoints;
    QTest::newRow("limit") << window.start << window.end << 21;
}

void TestLoadedCurveData::anotherViewIsRead()
{
    QFETCH(const qint64, start);
    QFETCH(const qint64, end);
    QFETCH(const int, maxPoints);
    const scn::CurveView view{start, end, maxPoints, someView().offset};
    QVERIFY(loads(view));
    QVERIFY(!loads(view));
    QVERIFY(loads(someView()));
}

void TestLoadedCurveData::anotherOffsetIsNotRead()
{
    scn::CurveView view = someView();
    for (const double offset : {0.75, -3.0, 0.0, 0.5}) {
        view.offset = offset;
        QVERIFY(!m_curve->needsStore(view));
        QVERIFY(!loads(view));
        QCOMPARE(m_curve->offset(), offset);
        QCOMPARE(m_curve->points().size(), 20);
        QVERIFY(m_curve->points().first().y() == 1.0 + offset);
        QVERIFY(m_curve->points().last().y() == 50.0 + offset);
    }
    // Nor does a reading after the end count, but one before it does.
    m_series->addPoint(double(kStart + 200000), 7.0);
    view.offset = 8.0;
    QVERIFY(!loads(view));
    m_store->appendPoint(m_series->curveId(), kStart + 20500, 99.0);
    view.offset = 9.0;
    QVERIFY(loads(view));
}

/// Each sum is rounded once. A sum of sums would keep the rounding of every offset on the way.
void TestLoadedCurveData::offsetAddsToWhatWasMeasured()
{
    constexpr double kMeasured = 0.1;
    const qint64 time = kStart + 600000;
    m_store->appendPoint(m_series->curveId(), time, kMeasured);
    for (const double offset : {0.0, 1e17, 0.3, -1e9, 0.0}) {
        m_curve->load({time, time, 0, offset});
        QCOMPARE(m_curve->points().size(), 1);
        QVERIFY(m_curve->points().first().y() == kMeasured + offset);
        QVERIFY(m_curve->points().first().x() == double(time));
    }
}

void TestLoadedCurveData::readingAfterTheEndChangesNothing()
{
    for (int second = 200; second < 210; ++second) {
        m_series->addPoint(double(kStart + second * 1000), 7.0);
        QVERIFY(!loads(someView()));
    }
}

void TestLoadedCurveData::readingUpToTheEndIsShown_data()
{
    QTest::addColumn<qint64>("time");
    QTest::newRow("inside") << kStart + 20500;
    QTest::newRow("at the end") << kStart + 50000 - 1;
    QTest::newRow("at the start") << kStart + 1001;
}

void TestLoadedCurveData::readingUpToTheEndIsShown()
{
    QFETCH(const qint64, time);
    const scn::CurveView all{kStart + 1000, kStart + 50000, 0, 0.0};
    QVERIFY(loads(all));
    QVERIFY(!loads(all));
    m_store->appendPoint(m_series->curveId(), time, 99.0);
    QVERIFY(loads(all));
    QVERIFY(hasPoint(m_curve->points(), QPointF(double(time), 99.0)));
    QCOMPARE(m_curve->points().size(), 51);
}

void TestLoadedCurveData::bulkUpToTheEndIsShown()
{
    m_store->appendPoints(m_series->curveId(), ramp(kStart + 500, 20));
    QVERIFY(loads(someView()));
}

void TestLoadedCurveData::memoryIsAlwaysLoaded()
{
    m_series->addPoints(ramp(kStart + 200000, 10));
    const scn::CurveView live{kStart + 200000, kStart + 205000, 0, 0.5};
    QVERIFY(loads(live));
    QVERIFY(loads(live));
    // All of memory is shown, beyond the end too.
    m_series->addPoint(double(kStart + 300000), 7.0);
    QVERIFY(loads(live));
    COMPARE_EXACTLY(m_curve->points().last(), QPointF(double(kStart + 300000), 7.5));
    // In the order of arrival, and so are the bounds.
    m_series->addPoint(double(kStart + 199000), 7.0);
    QVERIFY(loads(live));
    COMPARE_EXACTLY(m_curve->boundingRect(), QRectF(double(kStart + 200000), 0.5, -1000.0, 9.0));
}

void TestLoadedCurveData::viewThatMemoryNowServesIsLoaded()
{
    m_series->addPoint(double(kStart + 9000), 7.0);
    QVERIFY(loads(someView()));
    COMPARE_EXACTLY(m_curve->points(), QVector<QPointF>{QPointF(double(kStart + 9000), 7.5)});
    m_series->clear();
    QVERIFY(loads(someView()));
    QCOMPARE(m_curve->points().size(), 20);
}

void TestLoadedCurveData::deletedReadingsGo()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    m_store->appendPoint(m_series->curveId(), now, 3.0);
    const scn::CurveView today{now - 1000, now, 0, 0.0};
    QVERIFY(loads(today));
    QCOMPARE(m_curve->points().size(), 1);
    m_store->registerCurveAtOnce(QStringLiteral("101(V)"));
    QVERIFY(m_store->deleteCurveData(m_series->curveId()));
    QVERIFY(loads(today));
    QVERIFY(m_curve->points().isEmpty());
}

void TestLoadedCurveData::fileThatCouldNotBeReadIsReadAgain()
{
    const qint64 start = localTime("2026-01-17 00:00:00.000");
    const QString path = m_store->dbPathForDate(QStringLiteral("20260117"));
    QVERIFY(QDir().mkdir(path));
    const scn::CurveView window{start, start + 10000, 0, 0.0};
    QVERIFY(loads(window));
    QVERIFY(loads(window));
    QVERIFY(m_curve->points().isEmpty());
    QVERIFY(QDir().rmdir(path));
    {
        DayFileWriter file(path);
        file.addCurve(1, QStringLiteral("101(V)"));
        file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 5));
    }
    QVERIFY(loads(window));
    COMPARE_EXACTLY(m_curve->points(), ramp(start, 5));
    QVERIFY(!loads(window));
}

void TestLoadedCurveData::loadsEqualTheSeries()
{
    const quint32 seed = randomSeed();
    QRandomGenerator random(seed);
    const auto someTime = [&random] { return kStart + random.bounded(40) * qint64(10000); };
    scn::CurveView window = someView();
    int repeats = 0;
    for (int round = 0; round < randomCaseCount(); ++round) {
        switch (random.bounded(8)) {
        case 0:
            window = {someTime(), someTime(), random.bounded(30), 0.25 * random.bounded(3)};
            break;
        case 1:
            m_series->clear();
            break;
        case 2:
            m_series->addPoint(double(someTime() + random.bounded(3)), round);
            break;
        case 3:
            m_store->appendPoints(m_series->curveId(), ramp(someTime() + random.bounded(9), 2));
            break;
        default:
            m_store->appendPoint(m_series->curveId(), someTime() + random.bounded(9), round);
            break;
        }
        repeats += loads(window) ? 0 : 1;
        const QVector<QPointF> loaded = m_curve->points();
        m_series->loadWindow(window.start, window.end, window.maxPoints, window.offset);
        QVERIFY2(samePoints(loaded, m_series->visiblePoints()),
                 qPrintable(QStringLiteral("seed %1, round %2").arg(seed).arg(round)));
    }
    QVERIFY(repeats > 0);
}

SCN_TEST(TestLoadedCurveData, QApplication)
#include "test_loadedcurvedata.moc"
