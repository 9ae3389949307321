#include "plot/custommagnifier.h"
#include "plotsupport.h"
#include "support/testprogram.h"

#include <QSignalSpy>

#include <cmath>

using namespace plotsupport;

/// The magnifier on a plot of the library and on the chart's own.
class TestCustomMagnifier : public QObject
{
    Q_OBJECT

private slots:
    void tellsAfterThePlotHasBeenRescaled();
    void zoomsWithTheKeyboardToo();
    void rightDragZooms();
    void chartZoomsWithTheKeysOnceItIsClicked();
    void rightDragOnTheChartZoomsAndHoldsTheView();
};

void TestCustomMagnifier::tellsAfterThePlotHasBeenRescaled()
{
    QwtPlot plot;
    plot.setAxisScale(QwtPlot::xBottom, -10.0, 10.0);
    plot.replot();
    CustomMagnifier magnifier(plot.canvas());
    QVERIFY(showSettled(plot));
    double width = 0.0;
    connect(&magnifier, &CustomMagnifier::zoomed, &plot,
            [&](double) { width = timeBounds(plot).width(); });
    const QSignalSpy zooms(&magnifier, &CustomMagnifier::zoomed);
    turnWheel(plot, -1);
    QCOMPARE(zooms.count(), 1);
    QCOMPARE(zooms.at(0).at(0).toDouble(), 0.9);
    QCOMPARE(width, 18.0);
}

void TestCustomMagnifier::zoomsWithTheKeyboardToo()
{
    QwtPlot plot;
    CustomMagnifier magnifier(plot.canvas());
    const QSignalSpy zooms(&magnifier, &CustomMagnifier::zoomed);
    QTest::keyClick(plot.canvas(), Qt::Key_Plus);
    QTest::keyClick(plot.canvas(), Qt::Key_Minus);
    QCOMPARE(zooms.count(), 2);
    QCOMPARE(zooms.at(0).at(0).toDouble(), magnifier.keyFactor());
    QCOMPARE(zooms.at(1).at(0).toDouble(), 1.0 / magnifier.keyFactor());
}

void TestCustomMagnifier::rightDragZooms()
{
    QwtPlot plot;
    plot.resize(400, 300);
    CustomMagnifier magnifier(plot.canvas());
    QVERIFY(showSettled(plot));
    const QSignalSpy zooms(&magnifier, &CustomMagnifier::zoomed);
    Mouse mouse(plot);
    mouse.press(QPoint(100, 100), Qt::RightButton);
    mouse.move(QPoint(100, 120));
    mouse.release(Qt::RightButton);
    QVERIFY(zooms.count() > 0);
}

void TestCustomMagnifier::chartZoomsWithTheKeysOnceItIsClicked()
{
    CCurvePlot plot;
    plot.resize(400, 300);
    QVERIFY(showSettled(plot));
    QVERIFY(QTest::qWaitForWindowActive(&plot));
    Mouse mouse(plot);
    mouse.press(QPoint(100, 100));
    mouse.release();
    QTest::keyClick(plot.windowHandle(), Qt::Key_Plus);
    QVERIFY(std::abs(timeBounds(plot).width() - 60000.0 * 0.9) < 1.0);
    QTest::keyClick(plot.windowHandle(), Qt::Key_Minus);
    QVERIFY(std::abs(timeBounds(plot).width() - 60000.0) < 1.0);
}

void TestCustomMagnifier::rightDragOnTheChartZoomsAndHoldsTheView()
{
    CCurvePlot plot;
    plot.resize(400, 300);
    plot.clearCurves();
    QVERIFY(showSettled(plot));
    const QSignalSpy zooms(plot.canvas()->findChild<CustomMagnifier*>(), &CustomMagnifier::zoomed);
    const QwtInterval values = valueBounds(plot);
    Mouse mouse(plot);
    mouse.press(QPoint(100, 100), Qt::RightButton);
    mouse.move(QPoint(100, 120));
    mouse.release(Qt::RightButton);
    QVERIFY(zooms.count() > 0);
    const QwtInterval zoomed = timeBounds(plot);
    QVERIFY(zoomed.width() != 60000.0);
    QVERIFY(valueBounds(plot) == values);
    plot.onNewSample(noonToday());
    QVERIFY(timeBounds(plot) == zoomed);
}

SCN_TEST(TestCustomMagnifier, QApplication)
#include "test_custommagnifier.moc"
