#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesbuilder.h"
#include "storage/curveseriesdata.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QUuid>
#include <QtTest>

#include <thread>

/// Works on the program's own store, below the directory of this test program.
class TestCurveSeriesBuilder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void channelsWithUnitGetSeriesNamedAfterThem();
    void unitsAreData();
    void noChannelsGiveNoSeries();
    void buildsOnAnotherThread();
    void stopsWhenNoLongerWanted();
    void sameChannelAgainIsTheSameCurve();

private:
    QMap<int, QString> curveNames() const;

    QString m_directoryName;
    const SkippedWaits m_waits;
};

void TestCurveSeriesBuilder::initTestCase()
{
    m_directoryName = QStringLiteral("builder_%1_Data").arg(QCoreApplication::applicationPid());
    CurveDataDB::instance(m_directoryName);
}

void TestCurveSeriesBuilder::cleanupTestCase()
{
    CurveDataDB::shutdown();
    QDir directory(QCoreApplication::applicationDirPath() + QLatin1Char('/') + m_directoryName);
    QVERIFY(directory.exists());
    QVERIFY(directory.removeRecursively());
}

QMap<int, QString> TestCurveSeriesBuilder::curveNames() const
{
    return CurveDataDB::instance(QString())->curveNames();
}

void TestCurveSeriesBuilder::channelsWithUnitGetSeriesNamedAfterThem()
{
    const auto series = buildCurveSeries(
        {{101, QStringLiteral("VDC")}, {102, QString()}, {201, QStringLiteral("°C")}},
        m_directoryName);
    QCOMPARE(series.keys(), (QList<int>{101, 201}));
    QCOMPARE(curveNames().value(series.value(101)->curveId()), QStringLiteral("101(VDC)"));
    QCOMPARE(curveNames().value(series.value(201)->curveId()), QStringLiteral("201(°C)"));
    QVERIFY(series.value(101)->curveId() != series.value(201)->curveId());
}

void TestCurveSeriesBuilder::unitsAreData()
{
    const auto series =
        buildCurveSeries({{301, QStringLiteral("%1%2'; DROP TABLE curve_info")}}, m_directoryName);
    QCOMPARE(curveNames().value(series.value(301)->curveId()),
             QStringLiteral("301(%1%2'; DROP TABLE curve_info)"));
}

void TestCurveSeriesBuilder::noChannelsGiveNoSeries()
{
    QVERIFY(buildCurveSeries({}, m_directoryName).isEmpty());
    QVERIFY(buildCurveSeries({{101, QString()}}, m_directoryName).isEmpty());
}

void TestCurveSeriesBuilder::buildsOnAnotherThread()
{
    const LogCapture log;
    QMap<int, std::shared_ptr<CurveSeriesData>> series;
    std::thread helper([&series, this] {
        series = buildCurveSeries({{103, QStringLiteral("A")}}, m_directoryName);
    });
    helper.join();
    QCOMPARE(series.size(), 1);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    series.value(103)->addPoint(double(now), 1.5);
    COMPARE_EXACTLY(series.value(103)->allData(), QVector<QPointF>{QPointF(double(now), 1.5)});
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

void TestCurveSeriesBuilder::stopsWhenNoLongerWanted()
{
    const QMap<int, QString> channels{{105, QStringLiteral("V")},
                                      {106, QString()},
                                      {107, QStringLiteral("V")},
                                      {108, QStringLiteral("V")}};
    int asked = 0;
    const auto series =
        buildCurveSeries(channels, m_directoryName, [&asked] { return ++asked < 4; });
    QCOMPARE(series.keys(), (QList<int>{105, 107}));
    QVERIFY(!curveNames().values().contains(QStringLiteral("108(V)")));
}

void TestCurveSeriesBuilder::sameChannelAgainIsTheSameCurve()
{
    const QMap<int, QString> channels{{104, QStringLiteral("V")}};
    const auto first = buildCurveSeries(channels, m_directoryName);
    const auto second = buildCurveSeries(channels, m_directoryName);
    QVERIFY(first.value(104) != second.value(104));
    QCOMPARE(first.value(104)->curveId(), second.value(104)->curveId());
}

SCN_TEST(TestCurveSeriesBuilder, QCoreApplication)
#include "test_curveseriesbuilder.moc"
