#include "plot/barchartwidget.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "support/hand.h"
#include "support/testprogram.h"
#include "widgets/sidebar.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QTest>
#include <qwt_plot_canvas.h>

#include <memory>

namespace {

constexpr int kOpenSideBar = 80;
constexpr int kRows = 40;
constexpr int kChannelColumn = 2;

/// Notes the first painting of a chart's canvas, and whether its table was there already.
class FirstPainting : public QObject
{
public:
    FirstPainting() { qApp->installEventFilter(this); }

    bool hasHappened() const { return m_hasHappened; }
    bool hadTable() const { return m_hadTable; }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (!m_hasHappened && event->type() == QEvent::Paint &&
            qobject_cast<QwtPlotCanvas*>(object)) {
            m_hasHappened = true;
            const auto* canvas = qobject_cast<QWidget*>(object);
            const auto* table = canvas->window()->findChild<QTableWidget*>();
            m_hadTable = table->isVisible();
        }
        return false;
    }

private:
    bool m_hasHappened = false;
    bool m_hadTable = false;
};

} // namespace

/// When the table of a chart is there.
class TestChartTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void chartIsDrawnBeforeItsTable();
    void tableTakesNoRoomAnew();
    void everyWidgetOfTheTableCanBeUsed();
    void toggleAtOnceHidesTheTable();
    void chartOfANewWindowHasItsTable();

private:
    void openChart();
    BarChartWidget* chart() const { return m_workspace->findChild<BarChartWidget*>(); }
    QTableWidget* table() const { return m_workspace->findChild<QTableWidget*>(); }

    std::unique_ptr<GraphicSettingWidget> m_workspace;
};

void TestChartTable::initTestCase()
{
    initResources();
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    QVERIFY(sheet.open(QIODevice::ReadOnly));
    qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
}

void TestChartTable::init()
{
    g_scanChannels = {{101, QStringLiteral("V")}, {102, QStringLiteral("mA")}};
    m_workspace = std::make_unique<GraphicSettingWidget>();
    m_workspace->resize(1000, 700);
    m_workspace->show();
    QVERIFY(QTest::qWaitForWindowActive(m_workspace.get()));
    const auto* bar = m_workspace->findChild<SideBar*>();
    hand::click(bar);
    QTRY_COMPARE(bar->width(), kOpenSideBar);
}

void TestChartTable::cleanup()
{
    m_workspace.reset();
    g_scanChannels.clear();
}

/// Presses the button of the charts, and returns as soon as the press is dealt with.
void TestChartTable::openChart()
{
    const auto* bar = m_workspace->findChild<SideBar*>();
    QTest::mouseClick(bar->content()->findChildren<QPushButton*>().constFirst(), Qt::LeftButton);
}

void TestChartTable::chartIsDrawnBeforeItsTable()
{
    const FirstPainting painting;
    openChart();
    QTRY_VERIFY(painting.hasHappened());
    QVERIFY(!painting.hadTable());
    QTRY_VERIFY(table()->isVisible());
}

void TestChartTable::tableTakesNoRoomAnew()
{
    openChart();
    const auto* splitter = chart()->findChild<QSplitter*>();
    m_workspace->findChild<QMdiSubWindow*>()->resize(480, 500);
    QCoreApplication::sendPostedEvents();
    QVERIFY(!table()->isVisible());
    const QList<int> before = splitter->sizes();
    QTRY_VERIFY(table()->isVisible());
    QCoreApplication::processEvents();
    QCOMPARE(splitter->sizes(), before);
}

void TestChartTable::everyWidgetOfTheTableCanBeUsed()
{
    openChart();
    QTRY_VERIFY(table()->isVisible());
    for (int row = 0; row < kRows; ++row) {
        const auto widgets = table()->cellWidget(row, 1)->findChildren<QWidget*>() +
                             table()->cellWidget(row, 5)->findChildren<QWidget*>();
        for (const QWidget* widget : widgets) {
            QVERIFY(widget->isVisible());
        }
        for (int column = 1; column < table()->columnCount(); ++column) {
            const QWidget* widget = table()->cellWidget(row, column);
            QVERIFY(widget->isVisible());
            const QRect cell = table()->visualRect(table()->model()->index(row, column));
            QCOMPARE(widget->pos(), cell.topLeft());
            QCOMPARE(widget->width(), cell.width());
        }
    }
}

void TestChartTable::toggleAtOnceHidesTheTable()
{
    openChart();
    auto* toggle =
        table()->parentWidget()->findChild<QPushButton*>(QString(), Qt::FindDirectChildrenOnly);
    QTest::mouseClick(toggle, Qt::LeftButton);
    QCOMPARE(toggle->text(), QStringLiteral("▲选择通道"));
    QTest::qWait(0);
    QTest::qWait(0);
    QVERIFY(table()->isHidden());
    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(table()->isVisible());
    QCOMPARE(toggle->text(), QStringLiteral("▼选择通道"));
}

void TestChartTable::chartOfANewWindowHasItsTable()
{
    BarChartWidget alone;
    alone.resize(700, 600);
    alone.show();
    const auto* table = alone.findChild<QTableWidget*>();
    QVERIFY(table->isVisible());
    QVERIFY(table->cellWidget(kRows - 1, kChannelColumn)->isVisible());
}

SCN_TEST(TestChartTable, QApplication)

#include "test_charttable.moc"
