#include "chartfixture.h"
#include "support/testprogram.h"

#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QSizeGrip>
#include <QSplitter>
#include <QtTest>

/// The chart window's layout, and its toggle button.
class TestBarChartWidgetLayout : public QObject
{
    Q_OBJECT

private slots:
    void tableIsSetUpForFortyCurves();
    void newRowOffersNothingYet();
    void buttonsGoRoundThePalette();
    void partsStandAsLaidOut();
    void toggleHidesAndShowsTheTable();
    void tableOfAHiddenChartIsShownByTheToggle();
};

void TestBarChartWidgetLayout::tableIsSetUpForFortyCurves()
{
    const ChartFixture f;
    const QTableWidget* table = f.table();
    QCOMPARE(table->rowCount(), 40);
    const QStringList headers{QString(),
                              QStringLiteral("颜色"),
                              QStringLiteral("通道"),
                              QStringLiteral("图表 Y轴"),
                              QStringLiteral("单位/Div"),
                              QStringLiteral("偏移量")};
    QCOMPARE(table->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column) {
        QCOMPARE(table->horizontalHeaderItem(column)->text(), headers.at(column));
    }
    QCOMPARE(table->columnWidth(0), 50);
    QCOMPARE(table->columnWidth(1), 80);
    QCOMPARE(table->columnWidth(3), 100);
    for (const int column : {2, 4, 5}) {
        QCOMPARE(table->horizontalHeader()->sectionResizeMode(column), QHeaderView::Stretch);
    }
    QVERIFY(table->verticalHeader()->isHidden());
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    QCOMPARE(table->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(table->horizontalHeader()->styleSheet(),
             QStringLiteral("QHeaderView::section {    background-color: #5D5D5D;    border: 0px "
                            "solid #ddd;    padding: 4px;    font-weight: bold;}"));
}

void TestBarChartWidgetLayout::newRowOffersNothingYet()
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

void TestBarChartWidgetLayout::buttonsGoRoundThePalette()
{
    const ChartFixture f;
    for (int row = 0; row + 18 < 40; ++row) {
        QCOMPARE(f.button(row + 18)->color(), f.button(row)->color());
        QVERIFY(f.button(row + 1)->color() != f.button(row)->color());
    }
    // The next chart continues where this one ended: 40 buttons are two rounds and four.
    const ChartFixture next;
    QCOMPARE(next.button(0)->color(), f.button(4)->color());
}

void TestBarChartWidgetLayout::partsStandAsLaidOut()
{
    const ChartFixture f;
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
    QCOMPARE(inChart(f.zoomBox()).right(), inChart(f.plot()).right());
    QVERIFY(inChart(live).left() - inChart(f.strip()).left() > live->width());
    QCOMPARE(splitter->widget(0)->layout()->contentsMargins(), QMargins());
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
    QCOMPARE(inChart(grip).right(), inChart(container).right());
}

void TestBarChartWidgetLayout::toggleHidesAndShowsTheTable()
{
    ChartFixture f;
    QVERIFY(QTest::qWaitForWindowExposed(&f.chart));
    QPushButton* toggle = f.buttonWithText(QStringLiteral("▲选择通道"));
    const auto* splitter = f.chart.findChild<QSplitter*>();
    const QWidget* container = splitter->widget(1);

    // The text has an up arrow from the start, so the first click does not change it.
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

void TestBarChartWidgetLayout::tableOfAHiddenChartIsShownByTheToggle()
{
    BarChartWidget chart;
    const auto* table = chart.findChild<QTableWidget*>();
    chart.hideTableWidget();
    QVERIFY(!table->isHidden());
    const auto* toggle =
        table->parentWidget()->findChild<QPushButton*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(toggle->text(), QStringLiteral("▼选择通道"));
}

SCN_TEST(TestBarChartWidgetLayout, QApplication)
#include "test_barchartwidget_layout.moc"
