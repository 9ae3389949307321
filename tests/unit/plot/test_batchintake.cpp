#include "plot/batchintake.h"
#include "seriesstore.h"
#include "storage/storeclock.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <memory>

using namespace std::chrono_literals;

namespace {

/// Far more readings than a slice stores.
constexpr int kBatch = 5000;

MeasurementData reading(int channel, double value)
{
    static const QDateTime begin = QDateTime::currentDateTime();
    MeasurementData data;
    data.channel = channel;
    data.value = value;
    data.time = begin.addMSecs(static_cast<qint64>(value));
    data.valid = true;
    return data;
}

/// Readings for 101 and 102 in turns, their values counted up from `first`.
QList<MeasurementData> batchFrom(int first, int count = kBatch)
{
    QList<MeasurementData> batch;
    for (int i = first; i < first + count; ++i) {
        batch.append(reading(101 + i % 2, i));
    }
    return batch;
}

/// A store that cannot make its directory, as a file is in the way.
class BlockedStore
{
public:
    BlockedStore()
        : m_inTheWay(m_parent.filePath(QStringLiteral("SN_Data")))
    {
        if (!m_inTheWay.open(QIODevice::WriteOnly)) {
            qFatal("no file can be made");
        }
        m_inTheWay.close();
        m_store = std::make_unique<CurveDataDB>(m_inTheWay.fileName());
    }
    ~BlockedStore()
    {
        g_curveSeries.clear();
        m_store->closeForExit(QDeadlineTimer(2000));
    }
    Q_DISABLE_COPY_MOVE(BlockedStore)

    std::shared_ptr<CurveSeriesData> addSeries(int channel) const
    {
        const QString name = QStringLiteral("%1(V)").arg(channel);
        return g_curveSeries[channel] = std::make_shared<CurveSeriesData>(name, m_store.get());
    }

    void unblock()
    {
        if (!m_inTheWay.remove()) {
            qFatal("the file stays in the way");
        }
    }

private:
    QTemporaryDir m_parent;
    QFile m_inTheWay;
    std::unique_ptr<CurveDataDB> m_store;
};

/// Ten seconds pass for the stores, which look again after a while only.
struct LaterStores
{
    LaterStores()
    {
        scn::setStoreClock([] { return QDateTime::currentMSecsSinceEpoch() + 10000; });
    }
    ~LaterStores() { scn::setStoreClock(nullptr); }
    Q_DISABLE_COPY_MOVE(LaterStores)
};

} // namespace

class TestBatchIntake : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_batchintake_Data"));
    }
    void cleanupTestCase() { m_store.reset(); }
    void init();
    void cleanup();

    void eventLoopComesRoundWithinABatch();
    void firstReadingsAreThereAtOnce();
    void slicesKeepTheOrder();
    void batchIsToldOfOnceAllOfItIsStored();
    void nextBatchFindsTheOneBeforeStored();
    void finishingLeavesNothing();
    void withoutARunABatchIsStoredWhole();
    void emptyBatchIsToldToNobody();
    void batchThatComesMeanwhileWaitsItsTurn();
    void finishingMeanwhileLeavesNothingToATurn();
    void seriesAfterARefusedOneAreNotTried();
    void refusedSeriesAreTriedOnceABatch();

private:
    int stored() const { return m_first->count() + m_second->count(); }

    std::unique_ptr<SeriesStore> m_store;
    std::shared_ptr<CurveSeriesData> m_first;
    std::shared_ptr<CurveSeriesData> m_second;
    std::unique_ptr<scn::BatchIntake> m_intake;
    QVector<double> m_told; ///< The last value of each batch told of.
    QVector<int> m_storedThen;
};

void TestBatchIntake::init()
{
    m_first = m_store->add(101);
    m_second = m_store->add(102);
    m_told.clear();
    m_storedThen.clear();
    g_scanRunning = true;
    m_intake = std::make_unique<scn::BatchIntake>(5s, [this](const MeasurementData& last) {
        m_told.append(last.value);
        m_storedThen.append(stored());
    });
}

void TestBatchIntake::cleanup()
{
    g_scanRunning = false;
    m_intake.reset();
    SeriesStore::reset();
}

void TestBatchIntake::eventLoopComesRoundWithinABatch()
{
    QVector<int> seen;
    QTimer other;
    connect(&other, &QTimer::timeout, this, [this, &seen] { seen.append(stored()); });
    other.start(0);
    m_intake->take(batchFrom(0));
    QVERIFY(stored() > 0 && stored() < kBatch);
    QTRY_COMPARE_WITH_TIMEOUT(stored(), kBatch, 20000);
    QVERIFY(seen.size() >= 3);
    QVERIFY(std::is_sorted(seen.cbegin(), seen.cend()));
}

/// The first of a run make their tables on the way.
void TestBatchIntake::firstReadingsAreThereAtOnce()
{
    constexpr int kSweep = 60;
    QList<MeasurementData> batch;
    for (int i = 0; i < kSweep; ++i) {
        m_store->add(201 + i);
        batch.append(reading(201 + i, i));
    }
    m_intake->take(batch);
    QCOMPARE(m_told.size(), 1);
    for (int i = 0; i < kSweep; ++i) {
        QCOMPARE(g_curveSeries.value(201 + i)->count(), 1);
    }
}

void TestBatchIntake::slicesKeepTheOrder()
{
    m_intake->take(batchFrom(0));
    QTRY_COMPARE_WITH_TIMEOUT(stored(), kBatch, 20000);
    for (const auto& series : {m_first, m_second}) {
        const QVector<QPointF> points = series->recentPoints();
        QCOMPARE(points.size(), kBatch / 2);
        for (int i = 0; i < points.size(); ++i) {
            QCOMPARE(points.at(i).y(), 2.0 * i + (series == m_second ? 1 : 0));
        }
    }
}

void TestBatchIntake::batchIsToldOfOnceAllOfItIsStored()
{
    m_intake->take(batchFrom(0));
    QVERIFY(m_told.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(m_told, QVector<double>{kBatch - 1}, 20000);
    QCOMPARE(m_storedThen, QVector<int>{kBatch});
}

void TestBatchIntake::nextBatchFindsTheOneBeforeStored()
{
    m_intake->take(batchFrom(0));
    QVERIFY(stored() < kBatch);
    m_intake->take(batchFrom(kBatch));
    QCOMPARE(m_told, QVector<double>{kBatch - 1});
    QCOMPARE(m_storedThen, QVector<int>{kBatch});
    QVERIFY(stored() > kBatch && stored() < 2 * kBatch);
    QTRY_COMPARE_WITH_TIMEOUT(m_told.size(), 2, 20000);
    QCOMPARE(stored(), 2 * kBatch);
}

void TestBatchIntake::finishingLeavesNothing()
{
    m_intake->take(batchFrom(0));
    QVERIFY(stored() < kBatch);
    m_intake->finish();
    QCOMPARE(stored(), kBatch);
    QCOMPARE(m_told, QVector<double>{kBatch - 1});
    m_intake->finish();
    QTest::qWait(50);
    QCOMPARE(stored(), kBatch);
    QCOMPARE(m_told.size(), 1);
}

void TestBatchIntake::withoutARunABatchIsStoredWhole()
{
    g_scanRunning = false;
    m_intake->take(batchFrom(0));
    QCOMPARE(stored(), kBatch);
    QCOMPARE(m_told, QVector<double>{kBatch - 1});
}

void TestBatchIntake::emptyBatchIsToldToNobody()
{
    m_intake->take({});
    QTest::qWait(20);
    QVERIFY(m_told.isEmpty());
}

void TestBatchIntake::batchThatComesMeanwhileWaitsItsTurn()
{
    QVector<double> told;
    std::unique_ptr<scn::BatchIntake> intake;
    intake = std::make_unique<scn::BatchIntake>(5s, [&](const MeasurementData& last) {
        told.append(last.value);
        if (told.size() == 1) {
            const int before = stored();
            intake->take(batchFrom(10, 10));
            intake->finish();
            QCOMPARE(stored(), before);
        }
    });
    intake->take(batchFrom(0, 10));
    QTRY_COMPARE(told, (QVector<double>{9, 19}));
    QCOMPARE(stored(), 20);
}

void TestBatchIntake::finishingMeanwhileLeavesNothingToATurn()
{
    std::unique_ptr<scn::BatchIntake> intake;
    bool isFirst = true;
    intake = std::make_unique<scn::BatchIntake>(5s, [&](const MeasurementData&) {
        if (isFirst) {
            isFirst = false;
            intake->take(batchFrom(10));
            intake->finish();
        }
    });
    intake->take(batchFrom(0, 10));
    QCOMPARE(stored(), 10 + kBatch);
}

void TestBatchIntake::seriesAfterARefusedOneAreNotTried()
{
    const BlockedStore refusing;
    BlockedStore willing;
    const auto first = refusing.addSeries(99);
    const auto second = willing.addSeries(100);
    willing.unblock();
    const LaterStores later;
    m_intake->take({reading(101, 1.0)});
    QCOMPARE(first->curveId(), -1);
    QCOMPARE(second->curveId(), -1);
}

void TestBatchIntake::refusedSeriesAreTriedOnceABatch()
{
    BlockedStore blocked;
    const auto series = blocked.addSeries(99);
    scn::BatchIntake intake(0ms, [](const MeasurementData&) {});
    intake.take(batchFrom(0));
    blocked.unblock();
    const LaterStores later;
    QTRY_COMPARE_WITH_TIMEOUT(stored(), kBatch, 20000);
    QCOMPARE(series->curveId(), -1);
    intake.take(batchFrom(kBatch, 10));
    QVERIFY(series->curveId() != -1);
}

SCN_TEST(TestBatchIntake, QApplication)
#include "test_batchintake.moc"
