#include "mouseevents.h"
#include "plot/ccurveplot.h"
#include "plot/curvelabel.h"
#include "plot/curveoffsetcontroller.h"
#include "plotsupport.h"
#include "support/testprogram.h"

#include <QtTest>
#include <qwt_plot_curve.h>

namespace {
constexpr int kHeight = 200;

/// A strip of 200 pixels beside a plot with a y axis from 0 to 10, so one unit is 20 pixels.
struct Fixture
{
    Fixture()
    {
        plot.setAxisScale(QwtPlot::yLeft, 0.0, 10.0);
        plot.QwtPlot::updateAxes();
        strip = std::make_unique<CurveOffsetController>(&plot, nullptr);
        strip->resize(45, kHeight);
        strip->show();
    }

    CurveLabel* addLabel(QwtPlotCurve* added, double base)
    {
        const QList<CurveLabel*> before = labels();
        strip->addCurveLabel(QStringLiteral("101"), added, Qt::red, base);
        for (CurveLabel* label : labels()) {
            if (!before.contains(label)) {
                return label;
            }
        }
        return nullptr;
    }

    QList<CurveLabel*> labels() const { return strip->findChildren<CurveLabel*>(); }

    void drag(CurveLabel* label, int deltaY)
    {
        const QPoint start = label->mapToGlobal(label->rect().center());
        pressAt(label, start);
        dragTo(label, start + QPoint(0, deltaY));
        releaseAt(label, start + QPoint(0, deltaY));
    }

    CCurvePlot plot;
    QwtPlotCurve curve;
    QwtPlotCurve other;
    std::unique_ptr<CurveOffsetController> strip;
};

/// A strip's reports.
struct Reports
{
    explicit Reports(const Fixture& fixture)
    {
        QObject::connect(fixture.strip.get(), &CurveOffsetController::offsetChanged,
                         [this](QwtPlotCurve* curve, double offset) {
                             curves.append(curve);
                             offsets.append(offset);
                         });
    }

    QList<QwtPlotCurve*> curves;
    QList<double> offsets;
};
} // namespace

class TestCurveOffsetController : public QObject
{
    Q_OBJECT

private slots:
    void stripIsFortyFiveWide();
    void labelLayerFillsTheStrip();
    void labelStartsAtTheCurvesAverage_data();
    void labelStartsAtTheCurvesAverage();
    void heightIsCutToWholePixels_data();
    void heightIsCutToWholePixels();
    void newRangeHoldsLabelsInsideTheStrip_data();
    void newRangeHoldsLabelsInsideTheStrip();
    void resizeHoldsLabelsInsideTheStrip();
    void valueMovesTheLabel();
    void secondLabelOfACurveChangesNothing();
    void nullCurveGetsNoLabel();
    void curveWithoutLabelIsIgnored();
    void labelHidesAndShows();
    void labelColorChanges();
    void dragReportsTheOffset();
    void dragStopsAtTheEdges_data();
    void dragStopsAtTheEdges();
    void dragKeepsThePlaceAcross();
    void dragMovesOnlyThePressedLabel();
    void dragEndsWithTheRelease();
    void clearRemovesAllLabels();
    void curveAddedAgainTakesTheNewBase();
    void labelClearedDuringItsDragReportsNoMore();
    void stripWithoutHeightReportsZero();
    void emptyOrTinyRangeIsHarmless_data();
    void emptyOrTinyRangeIsHarmless();
    void nullPlotLeavesTheRange();
    void newPlotReplacesTheOld();
    void boundsThatAnotherChartReportedLastAreMissed();
    void boundsThatItsOwnPlotSetsAreNeverMissed();
    void reportHoldsUntilTheBoundsChange();
    void zoomInTimeLeavesTheReport();
    void zoomMovesTheLabelAtOnce();
    void reportsDoNotMoveATagOutOfTheHand();
    void stripWithoutAPlotStandsForTheUnitRange();
};

void TestCurveOffsetController::stripIsFortyFiveWide()
{
    const CurveOffsetController strip(nullptr, nullptr);
    QCOMPARE(strip.minimumWidth(), 45);
    QCOMPARE(strip.maximumWidth(), 45);
    QCOMPARE(strip.minimumSizeHint(), QSize(40, 80));
}

void TestCurveOffsetController::labelLayerFillsTheStrip()
{
    const CurveOffsetController unshown(nullptr, nullptr);
    QCOMPARE(unshown.findChild<QWidget*>()->geometry(), unshown.rect());
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    const QWidget* layer = label->parentWidget();
    QCOMPARE(layer->parentWidget(), f.strip.get());
    QVERIFY(layer->testAttribute(Qt::WA_TranslucentBackground));
    QVERIFY(!layer->autoFillBackground());
    QCOMPARE(layer->geometry(), f.strip->rect());
    f.strip->resize(45, 120);
    QCOMPARE(layer->geometry(), f.strip->rect());
}

void TestCurveOffsetController::labelStartsAtTheCurvesAverage_data()
{
    QTest::addColumn<double>("base");
    QTest::addColumn<int>("top");
    QTest::newRow("middle") << 5.0 << 90;
    QTest::newRow("between pixels is cut off") << 5.04 << 90;
    QTest::newRow("upper bound, not held inside") << 10.0 << -10;
    QTest::newRow("lower bound, not held inside") << 0.0 << 190;
    QTest::newRow("above the range") << 1e6 << -10;
    QTest::newRow("below the range") << -1e6 << 190;
}

void TestCurveOffsetController::labelStartsAtTheCurvesAverage()
{
    QFETCH(double, base);
    QFETCH(int, top);
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, base);
    QCOMPARE(label->pos(), QPoint(0, top));
    QVERIFY(label->isVisible());
    QCOMPARE(label->text(), QStringLiteral("101"));
    QCOMPARE(label->color(), QColor(Qt::red));
    QCOMPARE(label->value(), 0.0);
}

void TestCurveOffsetController::heightIsCutToWholePixels_data()
{
    QTest::addColumn<double>("yMin");
    QTest::addColumn<double>("yMax");
    QTest::addColumn<double>("base");
    QTest::addColumn<int>("top");
    QTest::newRow("exact") << 0.0 << 100.0 << 50.0 << 40;
    QTest::newRow("29 of 100 is 28.999...96 pixels") << 0.0 << 100.0 << 29.0 << 62;
    QTest::newRow("57 of 100 is 56.999...93 pixels") << 0.0 << 100.0 << 57.0 << 34;
    QTest::newRow("0.7 of 10 is 6.999...99 pixels") << 0.0 << 10.0 << 0.7 << 84;
    QTest::newRow("1.2 above -10 of 20 is 55.999...99 pixels") << -10.0 << 10.0 << 1.2 << 35;
}

void TestCurveOffsetController::heightIsCutToWholePixels()
{
    QFETCH(double, yMin);
    QFETCH(double, yMax);
    QFETCH(double, base);
    QFETCH(int, top);
    Fixture f;
    f.strip->resize(45, 100);
    emit f.plot.yAxisRangeChanged(yMin, yMax);
    const CurveLabel* label = f.addLabel(&f.curve, base);
    QCOMPARE(label->y(), top);
    emit f.plot.yAxisRangeChanged(yMin - 10.0, yMax + 50.0);
    QVERIFY(label->y() != top);
    emit f.plot.yAxisRangeChanged(yMin, yMax);
    QCOMPARE(label->y(), qMin(top, 80));
}

void TestCurveOffsetController::newRangeHoldsLabelsInsideTheStrip_data()
{
    QTest::addColumn<double>("yMin");
    QTest::addColumn<double>("yMax");
    QTest::addColumn<int>("top");
    QTest::newRow("inside") << 0.0 << 20.0 << 140;
    QTest::newRow("at the top") << 0.0 << 5.0 << 0;
    QTest::newRow("at the bottom") << 5.0 << 10.0 << kHeight - 20;
    QTest::newRow("above") << -10.0 << 0.0 << 0;
    QTest::newRow("below") << 10.0 << 20.0 << kHeight - 20;
}

void TestCurveOffsetController::newRangeHoldsLabelsInsideTheStrip()
{
    QFETCH(double, yMin);
    QFETCH(double, yMax);
    QFETCH(int, top);
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    emit f.plot.yAxisRangeChanged(yMin, yMax);
    QCOMPARE(label->pos(), QPoint(0, top));
}

void TestCurveOffsetController::resizeHoldsLabelsInsideTheStrip()
{
    Fixture f;
    const CurveLabel* atTop = f.addLabel(&f.curve, 10.0);
    const CurveLabel* inMiddle = f.addLabel(&f.other, 5.0);
    f.strip->resize(45, 100);
    QCOMPARE(atTop->y(), 0);
    QCOMPARE(inMiddle->y(), 40);
}

void TestCurveOffsetController::valueMovesTheLabel()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->setLabelValue(&f.curve, 2.0);
    QCOMPARE(label->pos(), QPoint(0, 50));
    QCOMPARE(f.strip->labelValue(&f.curve), 2.0);
    f.strip->setLabelValue(&f.curve, -100.0);
    QCOMPARE(label->pos(), QPoint(0, kHeight - 20));
}

void TestCurveOffsetController::secondLabelOfACurveChangesNothing()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    QVERIFY(!f.addLabel(&f.curve, 8.0));
    QCOMPARE(f.labels().size(), 1);
    // The base is still the first one.
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), 90);
}

void TestCurveOffsetController::nullCurveGetsNoLabel()
{
    Fixture f;
    QVERIFY(!f.addLabel(nullptr, 5.0));
    QVERIFY(f.labels().isEmpty());
}

void TestCurveOffsetController::curveWithoutLabelIsIgnored()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->setLabelValue(&f.other, 3.0);
    f.strip->setLabelColor(&f.other, Qt::blue);
    f.strip->hideCurveLabel(&f.other);
    f.strip->showCurveLabel(&f.other);
    f.strip->setLabelColor(nullptr, Qt::blue);
    QCOMPARE(f.strip->labelValue(&f.other), 0.0);
    QCOMPARE(label->value(), 0.0);
    QCOMPARE(label->color(), QColor(Qt::red));
    QVERIFY(label->isVisible());
    QCOMPARE(f.labels().size(), 1);
}

void TestCurveOffsetController::labelHidesAndShows()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->hideCurveLabel(&f.curve);
    QVERIFY(!label->isVisible());
    f.strip->showCurveLabel(&f.curve);
    QVERIFY(label->isVisible());
}

void TestCurveOffsetController::labelColorChanges()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->setLabelColor(&f.curve, Qt::green);
    QCOMPARE(label->color(), QColor(Qt::green));
}

void TestCurveOffsetController::dragReportsTheOffset()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    const Reports reports(f);
    f.drag(label, -20);
    QCOMPARE(reports.curves, QList<QwtPlotCurve*>{&f.curve});
    QCOMPARE(reports.offsets, QList<double>{1.0});
    QCOMPARE(label->pos(), QPoint(0, 70));
    QCOMPARE(label->value(), 1.0);
    // A new range moves the label to its value, where it was dropped.
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), 70);
}

void TestCurveOffsetController::dragStopsAtTheEdges_data()
{
    QTest::addColumn<int>("deltaY");
    QTest::addColumn<int>("top");
    QTest::addColumn<double>("value");
    QTest::newRow("upper edge") << -500 << 0 << 4.5;
    QTest::newRow("lower edge") << 500 << kHeight - 20 << -4.5;
}

void TestCurveOffsetController::dragStopsAtTheEdges()
{
    QFETCH(int, deltaY);
    QFETCH(int, top);
    QFETCH(double, value);
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.drag(label, deltaY);
    QCOMPARE(label->y(), top);
    QCOMPARE(f.strip->labelValue(&f.curve), value);
}

void TestCurveOffsetController::dragKeepsThePlaceAcross()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    label->move(3, label->y());
    f.drag(label, -20);
    QCOMPARE(label->pos(), QPoint(3, 70));
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->pos(), QPoint(0, 70));
}

void TestCurveOffsetController::dragMovesOnlyThePressedLabel()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    CurveLabel* otherLabel = f.addLabel(&f.other, 2.0);
    const Reports reports(f);
    f.drag(label, 40);
    f.drag(otherLabel, -20);
    QCOMPARE(reports.curves, (QList<QwtPlotCurve*>{&f.curve, &f.other}));
    QCOMPARE(label->value(), -2.0);
    QCOMPARE(otherLabel->value(), 1.0);
}

void TestCurveOffsetController::dragEndsWithTheRelease()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.drag(label, -20);
    const Reports reports(f);
    QVERIFY(QMetaObject::invokeMethod(f.strip.get(), "onLabelDragged", Q_ARG(int, 10)));
    QVERIFY(reports.curves.isEmpty());
    QCOMPARE(label->y(), 70);
}

void TestCurveOffsetController::clearRemovesAllLabels()
{
    Fixture f;
    const QPointer<CurveLabel> label = f.addLabel(&f.curve, 5.0);
    f.addLabel(&f.other, 2.0);
    f.strip->setLabelValue(&f.curve, 2.0);
    f.strip->clearLabels();
    QVERIFY(label);
    QCOMPARE(f.strip->labelValue(&f.curve), 0.0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!label);
    QVERIFY(f.labels().isEmpty());
}

void TestCurveOffsetController::curveAddedAgainTakesTheNewBase()
{
    Fixture f;
    f.addLabel(&f.curve, 5.0);
    f.strip->clearLabels();
    const CurveLabel* label = f.addLabel(&f.curve, 8.0);
    QCOMPARE(label->y(), 30);
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), 30);
}

void TestCurveOffsetController::labelClearedDuringItsDragReportsNoMore()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    const Reports reports(f);
    const QPoint start = label->mapToGlobal(label->rect().center());
    pressAt(label, start);
    f.strip->clearLabels();
    dragTo(label, start + QPoint(0, 10));
    releaseAt(label, start + QPoint(0, 10));
    QVERIFY(reports.curves.isEmpty());
}

void TestCurveOffsetController::stripWithoutHeightReportsZero()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->setLabelValue(&f.curve, 3.0);
    f.strip->resize(45, 0);
    const Reports reports(f);
    f.drag(label, 10);
    QCOMPARE(reports.offsets, QList<double>{0.0});
    QCOMPARE(label->y(), 0);
}

void TestCurveOffsetController::emptyOrTinyRangeIsHarmless_data()
{
    QTest::addColumn<double>("yMin");
    QTest::addColumn<double>("yMax");
    QTest::addColumn<int>("top");
    QTest::newRow("no range, on the value") << 5.0 << 5.0 << 0;
    QTest::newRow("no range, below the value") << 4.0 << 4.0 << 0;
    QTest::newRow("no range, above the value") << 6.0 << 6.0 << kHeight - 20;
    QTest::newRow("more pixels than an int holds") << 4.0 << 4.0 + 1e-12 << 0;
}

void TestCurveOffsetController::emptyOrTinyRangeIsHarmless()
{
    QFETCH(double, yMin);
    QFETCH(double, yMax);
    QFETCH(int, top);
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    emit f.plot.yAxisRangeChanged(yMin, yMax);
    QCOMPARE(label->pos(), QPoint(0, top));
}

void TestCurveOffsetController::nullPlotLeavesTheRange()
{
    Fixture f;
    f.strip->setPlot(nullptr);
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    QCOMPARE(label->y(), 90);
    emit f.plot.yAxisRangeChanged(0.0, 20.0);
    QCOMPARE(label->y(), 90);
}

void TestCurveOffsetController::newPlotReplacesTheOld()
{
    Fixture f;
    CCurvePlot second;
    second.setAxisScale(QwtPlot::yLeft, 0.0, 20.0);
    second.QwtPlot::updateAxes();
    const CurveLabel* label = f.addLabel(&f.curve, 5.0);
    f.strip->setPlot(&second);
    QCOMPARE(label->y(), 140);
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), 140);
    emit second.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), 90);
}

void TestCurveOffsetController::boundsThatAnotherChartReportedLastAreMissed()
{
    Fixture first;
    Fixture second;
    const CurveLabel* firstLabel = first.addLabel(&first.curve, 5.0);
    const CurveLabel* secondLabel = second.addLabel(&second.curve, 5.0);
    for (CCurvePlot* plot : {&first.plot, &second.plot}) {
        plot->addCurve(nullptr, Qt::red, QStringLiteral("101"));
        plot->setAxisScale(QwtPlot::yLeft, 0.0, 20.0);
        plot->QwtPlot::updateAxes();
        plot->checkAxisRangeChange();
    }
    QCOMPARE(firstLabel->y(), 140);
    // The second plot has the same bounds, but all plots compare with what any of them reported last.
    QCOMPARE(secondLabel->y(), 90);
}

void TestCurveOffsetController::boundsThatItsOwnPlotSetsAreNeverMissed()
{
    Fixture first;
    Fixture second;
    const CurveLabel* firstLabel = first.addLabel(&first.curve, 5.0);
    const CurveLabel* secondLabel = second.addLabel(&second.curve, 5.0);
    for (CCurvePlot* plot : {&first.plot, &second.plot}) {
        plot->clearCurves();
        plot->addCurve(nullptr, Qt::red, QStringLiteral("101"));
        plot->checkAxisRangeChange();
    }
    // From -10 to 10, as the first plot has reported.
    QCOMPARE(firstLabel->y(), 40);
    QCOMPARE(secondLabel->y(), 40);
    QCOMPARE(second.addLabel(&second.other, -5.0)->y(), 140);
}

void TestCurveOffsetController::reportHoldsUntilTheBoundsChange()
{
    Fixture f;
    CurveLabel* label = f.addLabel(&f.curve, 0.5);
    f.plot.addCurve(nullptr, Qt::red, QStringLiteral("101"));
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    f.plot.onNewSample(now);
    QCOMPARE(label->y(), 90); // 0 to 1, without a reading
    emit f.plot.yAxisRangeChanged(0.0, 10.0);
    QCOMPARE(label->y(), kHeight - 20);
    f.plot.onNewSample(now + 50);
    f.plot.autoScaleY();
    QCOMPARE(label->y(), kHeight - 20);
    f.plot.clearCurves();
    QCOMPARE(label->y(), 85); // -10 to 10
}

void TestCurveOffsetController::zoomInTimeLeavesTheReport()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 8.0);
    f.plot.resize(400, 300);
    QVERIFY(plotsupport::showSettled(f.plot));
    plotsupport::timerOf(f.plot, false)->stop();
    emit f.plot.yAxisRangeChanged(0.0, 20.0);
    QCOMPARE(label->y(), 110);
    plotsupport::turnWheel(f.plot, 1);
    QCOMPARE(label->y(), 110);
}

void TestCurveOffsetController::zoomMovesTheLabelAtOnce()
{
    Fixture f;
    const CurveLabel* label = f.addLabel(&f.curve, 8.0);
    f.plot.setZoomMode(2);
    f.plot.resize(400, 300);
    QVERIFY(plotsupport::showSettled(f.plot));
    plotsupport::timerOf(f.plot, false)->stop();
    plotsupport::turnWheel(f.plot, 1);
    const QwtInterval shown = plotsupport::valueBounds(f.plot);
    QVERIFY(shown.width() > 10.5);
    const double fromBottom = (8.0 - shown.minValue()) / shown.width() * kHeight;
    QVERIFY(qAbs(label->y() + 10 - (kHeight - fromBottom)) <= 1.0);
}

void TestCurveOffsetController::reportsDoNotMoveATagOutOfTheHand()
{
    Fixture f;
    emit f.plot.yAxisRangeChanged(4.4, 5.6);
    CurveLabel* label = f.addLabel(&f.curve, 5.0);
    const int start = label->y();
    QPoint at = label->mapToGlobal(label->rect().center());
    pressAt(label, at);
    for (int step = 1; step <= 60; ++step) {
        const int direction = step <= 30 ? -1 : 1;
        at.ry() += direction;
        dragTo(label, at);
        const int top = label->y();
        emit f.plot.yAxisRangeChanged(4.4, 5.6);
        QCOMPARE(label->y(), top);
    }
    releaseAt(label, at);
    QCOMPARE(label->y(), start);
    QVERIFY(qAbs(label->value()) < 1e-9);
}

void TestCurveOffsetController::stripWithoutAPlotStandsForTheUnitRange()
{
    CurveOffsetController strip(nullptr, nullptr);
    strip.resize(45, kHeight);
    QwtPlotCurve curve;
    strip.addCurveLabel(QStringLiteral("101"), &curve, Qt::red, 0.75);
    QCOMPARE(strip.findChild<CurveLabel*>()->y(), 40);
}

SCN_TEST(TestCurveOffsetController, QApplication)
#include "test_curveoffsetcontroller.moc"
