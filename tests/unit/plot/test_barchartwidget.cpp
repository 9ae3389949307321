#include "mouseevents.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "plot/curvelabel.h"
#include "plot/curveoffsetcontroller.h"
#include "plot/custommagnifier.h"
#include "seriesstore.h"
#include "storage/nonowningcurvedata.h"
#include "widgets/customcombobox.h"

#include <qwt_plot_curve.h>
#include <qwt_scale_div.h>

#include <QComboBox>
#include <QDateTime>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSizeGrip>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QtTest>

namespace {
const QStringList kChannels{QStringLiteral("无"), QStringLiteral("101(V)"),
                            QStringLiteral("102(mA)"), QStringLiteral("103(V)")};

/// Index of a channel in kChannels.
int itemOf(int channel)
{
    return channel - 100;
}

struct Fixture
{
    Fixture()
    {
        g_scanChannels = {
            {101, QStringLiteral("V")}, {102, QStringLiteral("mA")}, {103, QStringLiteral("V")}};
        chart.setChannelList(kChannels);
        chart.resize(700, 600);
        chart.show();
    }

    QTableWidget* table() const { return chart.findChild<QTableWidget*>(); }
    CCurvePlot* plot() const { return chart.findChild<CCurvePlot*>(); }
    CurveOffsetController* strip() const { return chart.findChild<CurveOffsetController*>(); }
    ColorSelectButton* button(int row) const
    {
        return table()->cellWidget(row, 1)->findChild<ColorSelectButton*>();
    }
    QComboBox* combo(int row) const
    {
        return qobject_cast<QComboBox*>(table()->cellWidget(row, 2));
    }
    QComboBox* unitsPerDiv(int row) const
    {
        return qobject_cast<QComboBox*>(table()->cellWidget(row, 4));
    }
    QDoubleSpinBox* spinBox(int row) const
    {
        return table()->cellWidget(row, 5)->findChild<QDoubleSpinBox*>();
    }
    void choose(int row, int channel) { combo(row)->setCurrentIndex(itemOf(channel)); }
    void chooseNone(int row) { combo(row)->setCurrentIndex(0); }

    QList<QwtPlotCurve*> curves() const
    {
        QList<QwtPlotCurve*> found;
        for (QwtPlotItem* item : plot()->itemList(QwtPlotItem::Rtti_PlotCurve))
            found.append(static_cast<QwtPlotCurve*>(item));
        return found;
    }
    QwtPlotCurve* curve(int channel) const
    {
        for (QwtPlotCurve* candidate : curves())
            if (candidate->title().text() == QString::number(channel))
                return candidate;
        return nullptr;
    }
    CurveLabel* label(int channel) const
    {
        for (CurveLabel* candidate : strip()->findChildren<CurveLabel*>())
            if (candidate->text() == QString::number(channel))
                return candidate;
        return nullptr;
    }
    QPushButton* buttonWithText(const QString& text) const
    {
        for (QPushButton* candidate : chart.findChildren<QPushButton*>())
            if (candidate->text() == text)
                return candidate;
        return nullptr;
    }
    CustomComboBox* zoomBox() const { return chart.findChild<CustomComboBox*>(); }

    /// True if the picture that the canvas keeps has `color`.
    bool paints(const QColor& color) const
    {
        const QImage image = plot()->canvas()->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == color)
                    return true;
        return false;
    }

    BarChartWidget chart;
};

/// Loads a line across the minute from now for `series`.
void loadLine(CurveSeriesData& series)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int i = 0; i < 10; ++i)
        series.addPoint(static_cast<double>(now + i * 1000), i);
    series.loadWindow(now, now + 60000, 0, 0.0);
}
} // namespace

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

    void tableIsSetUpForFortyCurves();
    void newRowOffersNothingYet();
    void buttonsGoRoundThePalette();
    void partsStandAsLaidOut();

    void newCurveTakesTheColorOfItsRow();
    void newCurveLooksAtTheSharedSeries();
    void choosingAChannelEnablesItsRow();
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

    void channelListReplacesTheItemsSilently();
    void emptyChannelListIsIgnored();
    void clearRemovesCurvesAndLabels();
    void clearLetsTheSeriesGo();
    void seriesOutlivesARebuiltMapUntilTheClear();
    void closedChartLetsTheSeriesGo();
    void chartOpenedBetweenTwoScansIsHarmless();
    void newSampleMovesTheTimeAxis();

    void toggleHidesAndShowsTheTable();
    void liveButtonGivesTheViewBack();
    void zoomSelectorPicksTheAxes_data();
    void zoomSelectorPicksTheAxes();
    void noZoomSelectionChangesNothing();
    void slotsWithoutASenderDoNothing();

private:
    std::unique_ptr<SeriesStore> m_store;
};

void TestBarChartWidget::tableIsSetUpForFortyCurves()
{
    const Fixture f;
    const QTableWidget* table = f.table();
    QCOMPARE(table->rowCount(), 40);
    const QStringList headers{QString(),
                              QStringLiteral("颜色"),
                              QStringLiteral("通道"),
                              QStringLiteral("图表 Y轴"),
                              QStringLiteral("单位/Div"),
                              QStringLiteral("偏移量")};
    QCOMPARE(table->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column)
        QCOMPARE(table->horizontalHeaderItem(column)->text(), headers.at(column));
    QCOMPARE(table->columnWidth(0), 50);
    QCOMPARE(table->columnWidth(1), 80);
    QCOMPARE(table->columnWidth(3), 100);
    for (const int column : {2, 4, 5})
        QCOMPARE(table->horizontalHeader()->sectionResizeMode(column), QHeaderView::Stretch);
    QVERIFY(table->verticalHeader()->isHidden());
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    QCOMPARE(table->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(table->horizontalHeader()->styleSheet(),
             QStringLiteral("QHeaderView::section {    background-color: #5D5D5D;    border: 0px "
                            "solid #ddd;    padding: 4px;    font-weight: bold;}"));
}

void TestBarChartWidget::newRowOffersNothingYet()
{
    const BarChartWidget chart;
    const auto* table = chart.findChild<QTableWidget*>();
    for (int row = 0; row < 40; ++row) {
        QCOMPARE(table->item(row, 0)->text(), QString::number(row + 1));
        QCOMPARE(table->item(row, 0)->textAlignment(), int(Qt::AlignCenter));
        const QMargins margins = table->cellWidget(row, 1)->layout()->contentsMargins();
        QCOMPARE(margins, QMargins(2, 2, 2, 2));

        const auto* channel = qobject_cast<QComboBox*>(table->cellWidget(row, 2));
        QCOMPARE(channel->count(), 1);
        QCOMPARE(channel->currentText(), QStringLiteral("无"));

        const auto* axis = qobject_cast<QLabel*>(table->cellWidget(row, 3));
        QCOMPARE(axis->text(), QStringLiteral("---"));
        QCOMPARE(axis->alignment(), Qt::AlignCenter);

        const auto* units = qobject_cast<QComboBox*>(table->cellWidget(row, 4));
        QCOMPARE(units->count(), 4);
        QCOMPARE(units->itemText(0), QStringLiteral("1/"));
        QCOMPARE(units->itemText(1), QStringLiteral("2/"));
        QCOMPARE(units->itemText(2), QStringLiteral("5/"));
        QCOMPARE(units->itemText(3), QStringLiteral("10/"));
        QVERIFY(!units->isEnabled());

        const QWidget* holder = table->cellWidget(row, 5);
        QCOMPARE(holder->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
        const auto* spinBox = holder->findChild<QDoubleSpinBox*>();
        QCOMPARE(spinBox->minimum(), -1000.0);
        QCOMPARE(spinBox->maximum(), 1000.0);
        QCOMPARE(spinBox->decimals(), 5);
        QCOMPARE(spinBox->value(), 0.0);
        QCOMPARE(spinBox->suffix(), QStringLiteral(" Vdc"));
        QVERIFY(!spinBox->isEnabled());
    }
}

void TestBarChartWidget::buttonsGoRoundThePalette()
{
    const Fixture f;
    for (int row = 0; row + 18 < 40; ++row) {
        QCOMPARE(f.button(row + 18)->color(), f.button(row)->color());
        QVERIFY(f.button(row + 1)->color() != f.button(row)->color());
    }
    // The next chart goes on where this one has ended: 40 buttons are two rounds and four.
    const Fixture next;
    QCOMPARE(next.button(0)->color(), f.button(4)->color());
}

void TestBarChartWidget::partsStandAsLaidOut()
{
    const Fixture f;
    QCOMPARE(f.chart.layout()->contentsMargins(), QMargins(10, 10, 1, 0));
    const auto* splitter = f.chart.findChild<QSplitter*>();
    QCOMPARE(splitter->orientation(), Qt::Vertical);
    QVERIFY(splitter->opaqueResize());
    QVERIFY(!splitter->childrenCollapsible());
    QCOMPARE(splitter->count(), 2);
    QCOMPARE(splitter->widget(0)->sizePolicy().verticalStretch(), 7);
    QCOMPARE(splitter->widget(1)->sizePolicy().verticalStretch(), 2);
    QVERIFY(splitter->widget(0)->isAncestorOf(f.plot()));
    QVERIFY(splitter->widget(1)->isAncestorOf(f.table()));

    const auto inChart = [&](const QWidget* widget) {
        return QRect(widget->mapTo(&f.chart, QPoint()), widget->size());
    };
    QVERIFY(inChart(f.strip()).right() < inChart(f.plot()).left());
    QCOMPARE(f.strip()->width(), 45);
    const QPushButton* live = f.buttonWithText(QStringLiteral("实时显示"));
    QVERIFY(live);
    QCOMPARE(live->styleSheet(), QStringLiteral("background:#171717;"));
    QVERIFY(inChart(live).top() > inChart(f.plot()).bottom());
    QVERIFY(inChart(live).right() < inChart(f.zoomBox()).left());
    QCOMPARE(f.zoomBox()->count(), 3);
    QCOMPARE(f.zoomBox()->itemText(0), QStringLiteral("水平"));
    QCOMPARE(f.zoomBox()->itemText(1), QStringLiteral("垂直"));
    QCOMPARE(f.zoomBox()->itemText(2), QStringLiteral("双向"));

    const QWidget* colorCell = f.table()->cellWidget(0, 1);
    const QPoint offCentre = f.button(0)->geometry().center() - colorCell->rect().center();
    QVERIFY(offCentre.manhattanLength() <= 2);

    const QWidget* container = splitter->widget(1);
    QCOMPARE(container->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
    QCOMPARE(container->layout()->spacing(), 0);
    QCOMPARE(container->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(container->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    const QPushButton* toggle = f.buttonWithText(QStringLiteral("▲选择通道"));
    QVERIFY(toggle);
    QCOMPARE(toggle->styleSheet(), QStringLiteral("text-align: left; padding-left: 8px;"));
    QVERIFY(inChart(toggle).bottom() < inChart(f.table()).top());
    const QWidget* grip = f.chart.findChild<QSizeGrip*>();
    QVERIFY(inChart(grip).top() > inChart(container).bottom());
}

void TestBarChartWidget::newCurveTakesTheColorOfItsRow()
{
    Fixture f;
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
    Fixture f;
    const auto series = m_store->add(101);
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    series->addPoint(now, 4.0);
    series->addPoint(now + 1.0, 6.0);
    emit f.plot()->yAxisRangeChanged(0.0, 20.0);
    f.choose(0, 101);
    const auto* data = dynamic_cast<const NonOwningCurveData*>(f.curve(101)->data());
    QVERIFY(data);
    QCOMPARE(data->series(), series.get());
    // The label stands at the average, 5, a quarter up the strip.
    QCOMPARE(f.label(101)->y(), f.strip()->height() - f.strip()->height() / 4 - 10);
}

void TestBarChartWidget::choosingAChannelEnablesItsRow()
{
    Fixture f;
    m_store->add(102);
    f.choose(5, 102);
    QVERIFY(f.unitsPerDiv(5)->isEnabled());
    QVERIFY(f.spinBox(5)->isEnabled());
    QCOMPARE(f.spinBox(5)->suffix(), QStringLiteral(" mA"));
    QCOMPARE(f.spinBox(5)->value(), 0.0);
    QVERIFY(!f.spinBox(4)->isEnabled());
    QVERIFY(!f.unitsPerDiv(6)->isEnabled());
}

void TestBarChartWidget::missingUnitIsEnteredAsEmpty()
{
    Fixture f;
    m_store->add(103);
    g_scanChannels.remove(103);
    f.choose(0, 103);
    QCOMPARE(f.spinBox(0)->suffix(), QStringLiteral(" "));
    QVERIFY(g_scanChannels.contains(103));
    QCOMPARE(g_scanChannels.value(103), QString());
}

void TestBarChartWidget::channelWithoutSeriesKeepsTheSelection()
{
    Fixture f;
    f.choose(0, 101);
    QCOMPARE(f.combo(0)->currentIndex(), itemOf(101));
    QVERIFY(f.spinBox(0)->isEnabled());
    QVERIFY(f.curves().isEmpty());
    QVERIFY(!f.label(101));
    QVERIFY(!g_curveSeries.contains(101));
    // What the row does from here on finds no curve.
    f.spinBox(0)->setValue(2.0);
    f.chart.onNewSample(1700000000000);
    f.chooseNone(0);
    QVERIFY(f.curves().isEmpty());
}

void TestBarChartWidget::lateSeriesIsDrawnWithTheNextChoice()
{
    Fixture f;
    f.choose(0, 101);
    m_store->add(101);
    m_store->add(102);
    f.choose(1, 102);
    QCOMPARE(f.curves().size(), 2);
    // Both curves were made by the second row's choice.
    QCOMPARE(f.curve(101)->pen().color(), f.button(1)->color());
    QCOMPARE(f.curve(102)->pen().color(), f.button(1)->color());
}

void TestBarChartWidget::textWithoutANumberIsNoChannel()
{
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    QVERIFY(f.unitsPerDiv(0)->isEnabled());
    QCOMPARE(f.plot()->curveOffset(curve), 2.5);
    // The spin box is the curve's no more.
    f.chart.setOffset(curve, 7.0);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

void TestBarChartWidget::hiddenChannelComesBackWithItsOffset()
{
    Fixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.spinBox(0)->setValue(2.5);
    QwtPlotCurve* curve = f.curve(101);
    const CurveLabel* label = f.label(101);
    f.chooseNone(0);
    const QSignalSpy valueChanged(f.spinBox(3), qOverload<double>(&QDoubleSpinBox::valueChanged));
    f.choose(3, 101);
    QCOMPARE(valueChanged.size(), 0);
    QCOMPARE(f.curves(), QList<QwtPlotCurve*>{curve});
    QVERIFY(curve->isVisible());
    QVERIFY(label->isVisible());
    QCOMPARE(label->value(), 2.5);
    QVERIFY(f.spinBox(3)->isEnabled());
    QCOMPARE(f.spinBox(3)->value(), 2.5);
}

void TestBarChartWidget::changingTheChannelHidesTheOldOne()
{
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    Fixture f;
    m_store->add(101);
    f.choose(0, 101);
    emit f.button(0)->colorChanged(Qt::cyan);
    QCOMPARE(f.curve(101)->pen().color(), QColor(Qt::cyan));
    QCOMPARE(f.curve(101)->pen().widthF(), 0.0);
    QCOMPARE(f.label(101)->color(), QColor(Qt::cyan));
}

void TestBarChartWidget::colorOfAnUnusedRowChangesNoCurve()
{
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    Fixture f;
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
    Fixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setOffset(f.curve(101), 5e6);
    QCOMPARE(f.spinBox(0)->value(), 1000.0);
    QCOMPARE(f.plot()->curveOffset(f.curve(101)), 5e6);
}

void TestBarChartWidget::offsetOfANullCurveIsIgnored()
{
    Fixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setOffset(nullptr, 5.0);
    QCOMPARE(f.plot()->curveOffset(nullptr), 0.0);
    QCOMPARE(f.spinBox(0)->value(), 0.0);
}

void TestBarChartWidget::channelListReplacesTheItemsSilently()
{
    Fixture f;
    m_store->add(101);
    f.choose(0, 101);
    f.chart.setChannelList({QStringLiteral("无"), QStringLiteral("201(V)")});
    for (int row = 0; row < 40; ++row) {
        QCOMPARE(f.combo(row)->count(), 2);
        QCOMPARE(f.combo(row)->currentIndex(), 0);
        QVERIFY(!f.combo(row)->signalsBlocked());
    }
    // Nobody was told: the curve stays on show.
    QVERIFY(f.curve(101)->isVisible());
}

void TestBarChartWidget::emptyChannelListIsIgnored()
{
    Fixture f;
    f.choose(0, 102);
    f.chart.setChannelList({});
    QCOMPARE(f.combo(0)->currentIndex(), itemOf(102));
    QCOMPARE(f.combo(0)->count(), kChannels.size());
}

void TestBarChartWidget::clearRemovesCurvesAndLabels()
{
    Fixture f;
    m_store->add(101);
    m_store->add(102);
    f.choose(0, 101);
    f.choose(1, 102);
    f.spinBox(0)->setValue(5.0);
    QwtPlotCurve* deleted = f.curve(101);
    f.chart.clearChart();
    QVERIFY(f.curves().isEmpty());
    // The spin box is no curve's any more.
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
    Fixture f;
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
    Fixture f;
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
    auto f = std::make_unique<Fixture>();
    g_curveSeries[103] = m_store->makeUnshared(103);
    const std::weak_ptr<CurveSeriesData> alive = g_curveSeries.value(103);
    f->choose(0, 103);
    const QPointer<CCurvePlot> plot = f->plot();
    const QPointer<QTableWidget> table = f->table();
    f.reset();
    QVERIFY(!plot);
    QVERIFY(!table);
    // The map's own hold is the only one left.
    QVERIFY(!alive.expired());
    g_curveSeries.clear();
    QVERIFY(alive.expired());
}

void TestBarChartWidget::chartOpenedBetweenTwoScansIsHarmless()
{
    // The old series are gone and the new ones not there yet.
    Fixture f;
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
    Fixture f;
    f.chart.clearChart();
    f.chart.onNewSample(1700000000000);
    QCOMPARE(f.plot()->axisInterval(QwtPlot::xBottom).minValue(), 1700000000000.0);
}

void TestBarChartWidget::toggleHidesAndShowsTheTable()
{
    Fixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    QPushButton* toggle = f.buttonWithText(QStringLiteral("▲选择通道"));
    const auto* splitter = f.chart.findChild<QSplitter*>();
    const QWidget* container = splitter->widget(1);

    // The text has an up arrow from the start, so the first click leaves it as it is.
    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(!f.table()->isVisible());
    QCOMPARE(toggle->text(), QStringLiteral("▲选择通道"));
    QCOMPARE(container->minimumHeight(), toggle->height());
    QCOMPARE(container->maximumHeight(), toggle->height());
    QCOMPARE(splitter->widget(0)->sizePolicy().verticalStretch(), 9);
    QCOMPARE(splitter->widget(1)->sizePolicy().verticalStretch(), 1);

    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(f.table()->isVisible());
    QCOMPARE(toggle->text(), QStringLiteral("▼选择通道"));
    QCOMPARE(container->minimumHeight(), 0);
    QCOMPARE(container->maximumHeight(), 2000);
    QCOMPARE(splitter->widget(0)->sizePolicy().verticalStretch(), 7);
    QCOMPARE(splitter->widget(1)->sizePolicy().verticalStretch(), 2);

    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(!f.table()->isVisible());
    QCOMPARE(toggle->text(), QStringLiteral("▲选择通道"));
}

void TestBarChartWidget::liveButtonGivesTheViewBack()
{
    Fixture f;
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
    const Fixture f;
    const auto* magnifier = f.plot()->findChild<CustomMagnifier*>();
    QVERIFY(magnifier);
    f.zoomBox()->setCurrentIndex(index == 0 ? 1 : 0);
    f.zoomBox()->setCurrentIndex(index);
    QCOMPARE(magnifier->isAxisEnabled(QwtPlot::xBottom), horizontal);
    QCOMPARE(magnifier->isAxisEnabled(QwtPlot::yLeft), vertical);
}

void TestBarChartWidget::noZoomSelectionChangesNothing()
{
    Fixture f;
    const auto* magnifier = f.plot()->findChild<CustomMagnifier*>();
    f.zoomBox()->setCurrentIndex(2);
    f.zoomBox()->setCurrentIndex(-1);
    QVERIFY(magnifier->isAxisEnabled(QwtPlot::xBottom));
    QVERIFY(magnifier->isAxisEnabled(QwtPlot::yLeft));
}

void TestBarChartWidget::slotsWithoutASenderDoNothing()
{
    Fixture f;
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

QTEST_MAIN(TestBarChartWidget)
#include "test_barchartwidget.moc"
