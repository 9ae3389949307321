#include "chartfixture.h"
#include "mouseevents.h"
#include "plot/custommagnifier.h"
#include "plotsupport.h"
#include "seriesstore.h"
#include "storage/nonowningcurvedata.h"
#include "support/hand.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>
#include <QtTest>

namespace {
/// Loads a line across the minute from now for `series`.
void loadLine(CurveSeriesData& series)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int i = 0; i < 10; ++i) {
        series.addPoint(static_cast<double>(now + i * 1000), i);
    }
    series.loadWindow(now, now + 60000, 0, 0.0);
}
} // namespace

/// How channels, colours and offsets in the table affect curves and tags.
class TestBarChartWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_barchartwidget_Data"));
    }
    void cleanupTestCase() { m_store.reset(); }
    void cleanup() { SeriesStore::reset(); }

    void newCurveTakesTheColorOfItsRow();
    void newCurveLooksAtTheSharedSeries();
    void choosingAChannelEnablesItsRow();
    void lastRowWorksLikeTheFirst();
    void unitsPerDivAndAxisTextStandAlone();
    void wheelNeedsTheFocus();
    void missingUnitIsEnteredAsEmpty();
    void channelWithoutSeriesKeepsTheSelection();
    void lateSeriesIsDrawnWithTheNextChoice();
    void textWithoutANumberIsNoChannel();
    void channelOfAnotherRowFallsBackToNone();
    void fallingBackHidesTheRowsOldChannel();
    void noneHidesTheCurveAndKeepsItsOffset();
    void hiddenChannelComesBackWithItsOffset();
    void changingTheChannelHidesTheOldOne();
    void boxWithoutAnItemChangesNothing();
    void pictureFollowsTheTable();

    void colorOfASelectedRowChangesItsCurve();
    void colorOfAnUnusedRowChangesNoCurve();
    void noneIsNotChannelZero();
    void spinBoxShiftsCurveAndLabel();
    void typedOffsetShiftsTheCurve();
    void labelDragShowsInTheSpinBox();
    void labelDragBeyondTheSpinBoxIsHeldThere();
    void offsetOfANullCurveIsIgnored();
    void channelThatMovedToAnotherRowTakesItsSpinBox();
    void lateSeriesIsShiftedByItsOwnRow();
    void rowsOfANewListHaveNoOffset();

    void channelListReplacesTheItemsSilently();
    void emptyChannelListIsIgnored();
    void clearRemovesCurvesAndLabels();
    void clearLetsTheSeriesGo();
    void seriesOutlivesARebuiltMapUntilTheClear();
    void closedChartLetsTheSeriesGo();
    void chartOpenedBetweenTwoScansIsHarmless();
    void newSampleMovesTheTimeAxis();

    void liveButtonGivesTheViewBack();
    void zoomSelectorPicksTheAxes_data();
    void zoomSelectorPicksTheAxes();
    void noZoomSelectionChangesNothing();
    void slotsWithoutASenderDoNothing();

private:
    static double dragTag(const ChartFixture& f, int channel);

    std::unique_ptr<SeriesStore> m_store;
};

void TestBarChartWidget::newCurveTakesTheColorOfItsRow()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(2, 101);
    const QwtPlotCurve* curve = f.curve(101);
    QVERIFY(curve);
    QCOMPARE(curve->pen().color(), f.button(2)->color());
    QCOMPARE(curve->pen().widthF(), 0.0);
    QCOMPARE(curve->pen().style(), Qt::SolidLine);
    QCOMPARE(f.label(101)->color(), f.button(2)->color());
    QVERIFY(curve->isVisible());
    QVERIFY(f.label(101)->isVisible());
}

void TestBarChartWidget::newCurveLooksAtTheSharedSeries()
{
    ChartFixture f;
    const auto series = m_store->add(101);
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    series->addPoint(now, 4.0);
    series->addPoint(now + 1.0, 4.0);
    series->addPoint(now + 2.0, 7.0);
    f.choose(0, 101);
    const auto* data = dynamic_cast<const NonOwningCurveData*>(f.curve(101)->data());
    QVERIFY(data);
    QCOMPARE(data->series(), series.get());
    // The label stands at the average, 5: the values fill four fifths of the axis.
    const QwtInterval values = plotsupport::valueBounds(*f.plot());
    QVERIFY(values.minValue() < 4.0 && values.maxValue() > 7.0);
    const double above = (values.maxValue() - 5.0) / values.width() * f.strip()->height();
    QVERIFY(qAbs(f.label(101)->y() + 10 - above) <= 1.0);
}

void TestBarChartWidget::choosingAChannelEnablesItsRow()
{
    ChartFixture f;
    m_store->add(102);
    f.choose(5, 102);
    QVERIFY(f.unitsPerDiv(5)->isEnabled());
    QVERIFY(f.spinBox(5)->isEnabled());
    QCOMPARE(f.spinBox(5)->suffix(), QStringLiteral(" mA"));
    QCOMPARE(f.spinBox(5)->value(), 0.0);
    QVERIFY(!f.spinBox(4)->isEnabled());
    QVERIFY(!f.unitsPerDiv(6)->isEnabled());
}

void TestBarChartWidget::lastRowWorksLikeTheFirst()
{
    constexpr int kLastRow = 39;
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.chart));
    m_store->add(101);
    f.table()->scrollToBottom();
    f.goDown(kLastRow, 1);
    QVERIFY(f.curve(101));

    const QColor before = f.button(kLastRow)->color();
    QTimer::singleShot(0, &f.chart, [&before] {
        // The menu is open; a swatch has its colour in its style.
        const QWidget* const menu = QApplication::activePopupWidget();
        for (const QPushButton* swatch : menu->findChildren<QPushButton*>()) {
            if (!swatch->styleSheet().contains(before.name())) {
                hand::click(swatch);
                return;
            }
        }
    });
    hand::click(f.button(kLastRow));
    QVERIFY(f.button(kLastRow)->color() != before);
    QCOMPARE(f.curve(101)->pen().color(), f.button(kLastRow)->color());

    f.chart.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&f.chart));
    hand::click(f.spinBox(kLastRow)->findChild<QLineEdit*>());
    hand::press(Qt::Key_A, Qt::ControlModifier);
    hand::type(QStringLiteral("2.5"));
    hand::press(Qt::Key_Return);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 2.5);
}

void TestBarChartWidget::unitsPerDivAndAxisTextStandAlone()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.chart));
    loadLine(*m_store->add(101));
    m_store->add(102);
    f.goDown(0, 1);
    f.spinBox(0)->setFocus();
    f.spinBox(0)->selectAll();
    hand::type(QStringLiteral("2.5"));
    hand::press(Qt::Key_Return);
    f.plot()->updateVisibleData();
    const QImage before = f.plot()->grab().toImage();
    f.unitsPerDiv(0)->setFocus();
    hand::press(Qt::Key_End);
    QCOMPARE(f.unitsPerDiv(0)->currentText(), QStringLiteral("10/"));
    f.plot()->updateVisibleData();
    QCOMPARE(f.plot()->grab().toImage(), before);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 2.5);

    f.goDown(0, 1);
    f.chooseNone(0);
    QCOMPARE(f.unitsPerDiv(0)->currentText(), QStringLiteral("10/"));
    QCOMPARE(qobject_cast<QLabel*>(f.table()->cellWidget(0, 3))->text(), QStringLiteral("---"));
}

void TestBarChartWidget::wheelNeedsTheFocus()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.chart));
    m_store->add(101);
    f.choose(0, 101);
    QVERIFY(f.spinBox(0)->isEnabled());
    const auto values = [&f] {
        return QStringList{f.combo(0)->currentText(), f.unitsPerDiv(0)->currentText(),
                           f.spinBox(0)->text(), f.zoomBox()->currentText()};
    };
    const QStringList before = values();
    f.chart.setFocus(Qt::OtherFocusReason);
    for (const QWidget* control :
         QList<QWidget*>{f.combo(0), f.unitsPerDiv(0), f.spinBox(0), f.zoomBox()}) {
        hand::movePointer(control, QPoint(5, 5));
        hand::movePointer(control, control->rect().center());
        hand::turnWheel(control, -1);
        QCOMPARE(values(), before);
        f.table()->verticalScrollBar()->setValue(0);
    }
    f.spinBox(0)->setFocus(Qt::TabFocusReason);
    hand::turnWheel(f.spinBox(0), 1);
    QCOMPARE(f.spinBox(0)->value(), 1.0);
}

void TestBarChartWidget::missingUnitIsEnteredAsEmpty()
{
    ChartFixture f;
    m_store->add(103);
    g_scanChannels.remove(103);
    f.choose(0, 103);
    QCOMPARE(f.spinBox(0)->suffix(), QStringLiteral(" "));
    QVERIFY(g_scanChannels.contains(103));
    QCOMPARE(g_scanChannels.value(103), QString());
}

void TestBarChartWidget::channelWithoutSeriesKeepsTheSelection()
{
    ChartFixture f;
    f.choose(0, 101);
    QCOMPARE(f.combo(0)->currentIndex(), itemOf(101));
    QVERIFY(f.spinBox(0)->isEnabled());
    QVERIFY(f.curves().isEmpty());
    QVERIFY(!f.label(101));
    QVERIFY(!g_curveSeries.contains(101));
    // From here on the row finds no curve.
    f.spinBox(0)->setValue(2.0);
    f.chart.onNewSample(1700000000000);
    f.chooseNone(0);
    QVERIFY(f.curves().isEmpty());
}

void TestBarChartWidget::lateSeriesIsDrawnWithTheNextChoice()
{
    ChartFixture f;
    f.choose(0, 101);
    m_store->add(101);
    m_store->add(102);
    f.choose(1, 102);
    QCOMPARE(f.curves().size(), 2);
    // The second row's choice created both curves.
    QCOMPARE(f.curve(101)->pen().color(), f.button(1)->color());
    QCOMPARE(f.curve(102)->pen().color(), f.button(1)->color());
}

void TestBarChartWidget::textWithoutANumberIsNoChannel()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(0);
    f.chart.setChannelList(
        {QStringLiteral("无"), QStringLiteral("x(V)"), QStringLiteral("101(V)")});
    f.combo(0)->setCurrentIndex(1);
    f.combo(1)->setCurrentIndex(2);
    QCOMPARE(f.curves().size(), 1);
    QVERIFY(f.curve(101));
}

void TestBarChartWidget::channelOfAnotherRowFallsBackToNone()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.spinBox(0)->setValue(3.0);
    f.choose(1, 101);
    QCOMPARE(f.combo(1)->currentIndex(), 0);
    QVERIFY(!f.spinBox(1)->isEnabled());
    QCOMPARE(f.spinBox(1)->value(), 0.0);
    // The units box has been enabled on the way and stays so.
    QVERIFY(f.unitsPerDiv(1)->isEnabled());

    QCOMPARE(f.combo(0)->currentIndex(), itemOf(101));
    QVERIFY(f.spinBox(0)->isEnabled());
    QCOMPARE(f.spinBox(0)->value(), 3.0);
    QCOMPARE(f.curves().size(), 1);
    QVERIFY(f.curve(101)->isVisible());
    QCOMPARE(f.curve(101)->pen().color(), f.button(0)->color());
    f.chart.setOffset(f.curve(101), 4.0);
    QCOMPARE(f.spinBox(0)->value(), 4.0);
}

void TestBarChartWidget::fallingBackHidesTheRowsOldChannel()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(102);
    f.choose(0, 101);
    f.choose(1, 102);
    f.choose(1, 101);
    QCOMPARE(f.combo(1)->currentIndex(), 0);
    QVERIFY(f.curve(101)->isVisible());
    QVERIFY(!f.curve(102)->isVisible());
}

void TestBarChartWidget::noneHidesTheCurveAndKeepsItsOffset()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.spinBox(0)->setValue(2.5);
    QwtPlotCurve* curve = f.curve(101);
    const QSignalSpy valueChanged(f.spinBox(0), qOverload<double>(&QDoubleSpinBox::valueChanged));
    f.chooseNone(0);
    QCOMPARE(valueChanged.size(), 0);
    QCOMPARE(f.curves(), QList<QwtPlotCurve*>{curve});
    QVERIFY(!curve->isVisible());
    QVERIFY(!f.label(101)->isVisible());
    QVERIFY(!f.spinBox(0)->isEnabled());
    QCOMPARE(f.spinBox(0)->value(), 0.0);
    QCOMPARE(f.spinBox(0)->suffix(), QStringLiteral(" V"));
    QVERIFY(f.unitsPerDiv(0)->isEnabled());
    QCOMPARE(f.plot()->curveOffset(curve), 2.5);
    // The spin box no longer belongs to the curve.
    f.chart.setOffset(curve, 7.0);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

void TestBarChartWidget::hiddenChannelComesBackWithItsOffset()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.spinBox(0)->setValue(2.5);
    QwtPlotCurve* curve = f.curve(101);
    const CurveLabel* label = f.label(101);
    const QColor color = f.button(0)->color();
    QVERIFY(f.button(3)->color() != color);
    f.chooseNone(0);
    const QSignalSpy valueChanged(f.spinBox(3), qOverload<double>(&QDoubleSpinBox::valueChanged));
    f.choose(3, 101);
    QCOMPARE(valueChanged.size(), 0);
    QCOMPARE(f.curves(), QList<QwtPlotCurve*>{curve});
    QVERIFY(curve->isVisible());
    QVERIFY(label->isVisible());
    QCOMPARE(label->value(), 2.5);
    // Nor does it take the colour of its new row.
    QCOMPARE(curve->pen().color(), color);
    QCOMPARE(label->color(), color);
    QVERIFY(f.spinBox(3)->isEnabled());
    QCOMPARE(f.spinBox(3)->value(), 2.5);
    // The row that shows the curve follows its tag, not the row that created it.
    f.chart.setOffset(curve, 4.0);
    QCOMPARE(f.spinBox(3)->value(), 4.0);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

void TestBarChartWidget::changingTheChannelHidesTheOldOne()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(102);
    f.choose(0, 101);
    f.choose(0, 102);
    QVERIFY(!f.curve(101)->isVisible());
    QVERIFY(!f.label(101)->isVisible());
    QVERIFY(f.curve(102)->isVisible());
    QVERIFY(f.label(102)->isVisible());
    QCOMPARE(f.spinBox(0)->suffix(), QStringLiteral(" mA"));
}

void TestBarChartWidget::boxWithoutAnItemChangesNothing()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.combo(0)->setCurrentIndex(-1);
    QVERIFY(f.curve(101)->isVisible());
    f.combo(1)->setCurrentIndex(-1);
    QVERIFY(!f.spinBox(1)->isEnabled());
    QVERIFY(!f.unitsPerDiv(1)->isEnabled());
}

void TestBarChartWidget::pictureFollowsTheTable()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    loadLine(*m_store->add(101));
    const QColor color = f.button(0)->color();
    f.choose(0, 101);
    QVERIFY(f.paints(color));
    const QColor other(1, 200, 3);
    emit f.button(0)->colorChanged(other);
    QVERIFY(f.paints(other));
    QVERIFY(!f.paints(color));
    f.chooseNone(0);
    QVERIFY(!f.paints(other));
}

void TestBarChartWidget::colorOfASelectedRowChangesItsCurve()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    emit f.button(0)->colorChanged(Qt::cyan);
    QCOMPARE(f.curve(101)->pen().color(), QColor(Qt::cyan));
    QCOMPARE(f.curve(101)->pen().widthF(), 0.0);
    QCOMPARE(f.label(101)->color(), QColor(Qt::cyan));
}

void TestBarChartWidget::colorOfAnUnusedRowChangesNoCurve()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    const QColor before = f.curve(101)->pen().color();
    emit f.button(1)->colorChanged(Qt::cyan);
    QCOMPARE(f.curve(101)->pen().color(), before);
    // A selected channel without a curve has nothing to colour.
    f.choose(1, 102);
    emit f.button(1)->colorChanged(Qt::cyan);
    QCOMPARE(f.curve(101)->pen().color(), before);
    QCOMPARE(f.curves().size(), 1);
}

void TestBarChartWidget::noneIsNotChannelZero()
{
    ChartFixture f;
    m_store->add(0);
    f.chart.setChannelList({QStringLiteral("无"), QStringLiteral("0(V)")});
    f.combo(0)->setCurrentIndex(1);
    const QColor before = f.curve(0)->pen().color();
    emit f.button(1)->colorChanged(Qt::cyan);
    f.spinBox(1)->setValue(3.0);
    QCOMPARE(f.curve(0)->pen().color(), before);
    QCOMPARE(f.plot()->curveOffset(f.curve(0)), 0.0);
}

void TestBarChartWidget::spinBoxShiftsCurveAndLabel()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(102);
    f.choose(0, 101);
    f.choose(1, 102);
    f.spinBox(1)->setValue(-4.25);
    QCOMPARE(f.plot()->curveOffset(f.curve(102)), -4.25);
    QCOMPARE(f.label(102)->value(), -4.25);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 0.0);
    QCOMPARE(f.label(101)->value(), 0.0);
}

void TestBarChartWidget::typedOffsetShiftsTheCurve()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.spinBox(0)->setFocus();
    f.spinBox(0)->selectAll();
    QTest::keyClicks(f.spinBox(0), QStringLiteral("12.5"));
    QTest::keyClick(f.spinBox(0), Qt::Key_Return);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 12.5);
}

void TestBarChartWidget::labelDragShowsInTheSpinBox()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    CurveLabel* label = f.label(101);
    emit f.plot()->yAxisRangeChanged(-10.0, 10.0);
    QSignalSpy valueChanged(f.spinBox(0), qOverload<double>(&QDoubleSpinBox::valueChanged));
    const QPoint start = label->mapToGlobal(label->rect().center());
    pressAt(label, start);
    dragTo(label, start - QPoint(0, 30));
    releaseAt(label, start - QPoint(0, 30));
    const double offset = label->value();
    QVERIFY(offset > 0.0);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), offset);
    QVERIFY(qAbs(f.spinBox(0)->value() - offset) < 1e-5);
    QCOMPARE(valueChanged.size(), 0);
}

void TestBarChartWidget::labelDragBeyondTheSpinBoxIsHeldThere()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setOffset(f.curve(101), 5e6);
    QCOMPARE(f.spinBox(0)->value(), 1000.0);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 5e6);
}

void TestBarChartWidget::offsetOfANullCurveIsIgnored()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setOffset(nullptr, 5.0);
    QCOMPARE(f.plot()->curveOffset(nullptr), 0.0);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

/// Drags a channel's tag up; returns its new offset.
double TestBarChartWidget::dragTag(const ChartFixture& f, int channel)
{
    CurveLabel* label = f.label(channel);
    emit f.plot()->yAxisRangeChanged(-10.0, 10.0);
    const QPoint start = label->mapToGlobal(label->rect().center());
    pressAt(label, start);
    dragTo(label, start - QPoint(0, 30));
    releaseAt(label, start - QPoint(0, 30));
    return f.plot()->curveOffset(f.curve(channel));
}

void TestBarChartWidget::channelThatMovedToAnotherRowTakesItsSpinBox()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(102);
    f.goDown(0, 2);
    f.goDown(1, 1);
    QCOMPARE(f.combo(0)->currentText(), QStringLiteral("102(mA)"));
    QCOMPARE(f.combo(1)->currentText(), QStringLiteral("101(V)"));
    const double offset = dragTag(f, 101);
    QVERIFY(offset > 0.0);
    QVERIFY(qAbs(f.spinBox(1)->value() - offset) < 1e-5);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
    // The other channel's tag moves the other box only.
    const double other = dragTag(f, 102);
    QVERIFY(qAbs(f.spinBox(0)->value() - other) < 1e-5);
    QVERIFY(qAbs(f.spinBox(1)->value() - offset) < 1e-5);
}

void TestBarChartWidget::lateSeriesIsShiftedByItsOwnRow()
{
    ChartFixture f;
    f.goDown(0, 1);
    m_store->add(101);
    m_store->add(102);
    f.goDown(1, 2);
    const double offset = dragTag(f, 101);
    QVERIFY(offset > 0.0);
    QVERIFY(qAbs(f.spinBox(0)->value() - offset) < 1e-5);
    QCOMPARE(f.spinBox(1)->value(), 0.0);
}

void TestBarChartWidget::rowsOfANewListHaveNoOffset()
{
    ChartFixture f;
    m_store->add(101);
    f.goDown(0, 1);
    f.spinBox(0)->setFocus();
    f.spinBox(0)->selectAll();
    QTest::keyClicks(f.spinBox(0), QStringLiteral("2.5"));
    QTest::keyClick(f.spinBox(0), Qt::Key_Return);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 2.5);
    f.chart.setChannelList(kChannels);
    QVERIFY(!f.spinBox(0)->isEnabled());
    QCOMPARE(f.spinBox(0)->value(), 0.0);
    // A row that shows nothing does not shift what is still drawn.
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 2.5);
    dragTag(f, 101);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

void TestBarChartWidget::channelListReplacesTheItemsSilently()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setChannelList({QStringLiteral("无"), QStringLiteral("201(V)")});
    for (int row = 0; row < 40; ++row) {
        QCOMPARE(f.combo(row)->count(), 2);
        QCOMPARE(f.combo(row)->currentIndex(), 0);
        QVERIFY(!f.combo(row)->signalsBlocked());
    }
    // No one was notified: the curve stays visible.
    QVERIFY(f.curve(101)->isVisible());
}

void TestBarChartWidget::emptyChannelListIsIgnored()
{
    ChartFixture f;
    f.choose(0, 102);
    f.chart.setChannelList({});
    QCOMPARE(f.combo(0)->currentIndex(), itemOf(102));
    QCOMPARE(f.combo(0)->count(), kChannels.size());
}

void TestBarChartWidget::clearRemovesCurvesAndLabels()
{
    ChartFixture f;
    m_store->add(101);
    m_store->add(102);
    f.choose(0, 101);
    f.choose(1, 102);
    f.spinBox(0)->setValue(5.0);
    QwtPlotCurve* deleted = f.curve(101);
    f.chart.clearChart();
    QVERIFY(f.curves().isEmpty());
    // The spin box belongs to no curve any more.
    f.chart.setOffset(deleted, 7.0);
    QCOMPARE(f.spinBox(0)->value(), 5.0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!f.label(101));
    QVERIFY(!f.label(102));
    // A channel chosen after the clear starts anew.
    f.chart.setChannelList(kChannels);
    f.choose(2, 101);
    QCOMPARE(f.curves().size(), 1);
    QCOMPARE(f.spinBox(2)->value(), 0.0);
}

void TestBarChartWidget::clearLetsTheSeriesGo()
{
    ChartFixture f;
    auto series = m_store->makeUnshared(103);
    const std::weak_ptr<CurveSeriesData> alive = series;
    g_curveSeries[103] = series;
    series.reset();
    f.choose(0, 103);
    f.chooseNone(0);
    g_curveSeries.clear();
    QVERIFY(!alive.expired());
    f.chart.clearChart();
    QVERIFY(alive.expired());
}

void TestBarChartWidget::seriesOutlivesARebuiltMapUntilTheClear()
{
    ChartFixture f;
    g_curveSeries[103] = m_store->makeUnshared(103);
    const std::weak_ptr<CurveSeriesData> old = g_curveSeries.value(103);
    f.choose(0, 103);
    g_curveSeries.clear();
    QVERIFY(!old.expired());
    // Everything that reads through the curve finds the old series.
    f.chart.onNewSample(1700000000000);
    f.plot()->updateVisibleData();
    f.chart.grab();
    QCOMPARE(f.curve(103)->dataSize(), old.lock()->size());
    f.chart.clearChart();
    QVERIFY(old.expired());
}

void TestBarChartWidget::closedChartLetsTheSeriesGo()
{
    auto f = std::make_unique<ChartFixture>();
    g_curveSeries[103] = m_store->makeUnshared(103);
    const std::weak_ptr<CurveSeriesData> alive = g_curveSeries.value(103);
    f->choose(0, 103);
    const QPointer<CCurvePlot> plot = f->plot();
    const QPointer<QTableWidget> table = f->table();
    f.reset();
    QVERIFY(!plot);
    QVERIFY(!table);
    // Only the map still holds it.
    QVERIFY(!alive.expired());
    g_curveSeries.clear();
    QVERIFY(alive.expired());
}

void TestBarChartWidget::chartOpenedBetweenTwoScansIsHarmless()
{
    // The old series are gone and the new ones do not exist yet.
    ChartFixture f;
    f.choose(0, 101);
    f.choose(1, 102);
    f.chart.onNewSample(1700000000000);
    f.chart.grab();
    QVERIFY(f.curves().isEmpty());
    m_store->add(101);
    m_store->add(102);
    f.chooseNone(1);
    QCOMPARE(f.curves().size(), 1);
    QVERIFY(f.curve(101)->isVisible());
}

void TestBarChartWidget::newSampleMovesTheTimeAxis()
{
    ChartFixture f;
    f.chart.clearChart();
    f.chart.onNewSample(1700000000000);
    QCOMPARE(f.plot()->axisInterval(QwtPlot::xBottom).minValue(), 1700000000000.0);
}

void TestBarChartWidget::liveButtonGivesTheViewBack()
{
    ChartFixture f;
    f.chart.clearChart();
    f.chart.onNewSample(1700000000000);
    f.plot()->setFollowTime(false);
    QVERIFY(!f.plot()->axisInterval(QwtPlot::xBottom).contains(1.6e12));
    f.plot()->setAxisScale(QwtPlot::xBottom, 1.6e12, 1.6e12 + 60000.0);
    QTest::mouseClick(f.buttonWithText(QStringLiteral("实时显示")), Qt::LeftButton);
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    const QwtInterval view = f.plot()->axisInterval(QwtPlot::xBottom);
    QVERIFY(view.maxValue() > now - 10000.0 && view.maxValue() <= now);
}

void TestBarChartWidget::zoomSelectorPicksTheAxes_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("horizontal");
    QTest::addColumn<bool>("vertical");
    QTest::newRow("horizontal") << 0 << true << false;
    QTest::newRow("vertical") << 1 << false << true;
    QTest::newRow("both") << 2 << true << true;
}

void TestBarChartWidget::zoomSelectorPicksTheAxes()
{
    QFETCH(int, index);
    QFETCH(bool, horizontal);
    QFETCH(bool, vertical);
    const ChartFixture f;
    const auto* magnifier = f.plot()->findChild<CustomMagnifier*>();
    QVERIFY(magnifier);
    f.zoomBox()->setCurrentIndex(index == 0 ? 1 : 0);
    f.zoomBox()->setCurrentIndex(index);
    QCOMPARE(magnifier->isAxisEnabled(QwtPlot::xBottom), horizontal);
    QCOMPARE(magnifier->isAxisEnabled(QwtPlot::yLeft), vertical);
}

void TestBarChartWidget::noZoomSelectionChangesNothing()
{
    ChartFixture f;
    const auto* magnifier = f.plot()->findChild<CustomMagnifier*>();
    f.zoomBox()->setCurrentIndex(2);
    f.zoomBox()->setCurrentIndex(-1);
    QVERIFY(magnifier->isAxisEnabled(QwtPlot::xBottom));
    QVERIFY(magnifier->isAxisEnabled(QwtPlot::yLeft));
}

void TestBarChartWidget::slotsWithoutASenderDoNothing()
{
    ChartFixture f;
    m_store->add(101);
    f.choose(0, 101);
    const QColor color = f.curve(101)->pen().color();
    f.chart.onChannelTypeChange(0);
    f.chart.onChannelTypeChange(1);
    f.chart.onColorChanged(Qt::cyan);
    f.chart.onOffsetChanged(5.0);
    QVERIFY(f.curve(101)->isVisible());
    QCOMPARE(f.curve(101)->pen().color(), color);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 0.0);
}

SCN_TEST(TestBarChartWidget, QApplication)
#include "test_barchartwidget.moc"
