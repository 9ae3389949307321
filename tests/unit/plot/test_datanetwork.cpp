#include "plot/datanetwork.h"
#include "seriesstore.h"
#include "support/hand.h"
#include "support/settle.h"
#include "support/testprogram.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDateTime>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSizeGrip>
#include <QTableWidget>
#include <QtTest>

namespace {
const QStringList kChannels{QStringLiteral("无"), QStringLiteral("101(V)"),
                            QStringLiteral("102(A)")};

/// Readings of today: the store keeps them in a file that the series is registered in.
const QDateTime kTime = QDateTime::currentDateTime();

double readingTime()
{
    return static_cast<double>(kTime.toMSecsSinceEpoch());
}

struct Fixture
{
    Fixture() { grid.setChannelList(kChannels); }

    QTableWidget* table() const { return grid.findChild<QTableWidget*>(); }
    QComboBox* combo(int row) const
    {
        return qobject_cast<QComboBox*>(table()->cellWidget(row, 1));
    }

    /// Texts of columns 2 to 6.
    QStringList cells(int row) const
    {
        QStringList texts;
        for (int column = 2; column <= 6; ++column) {
            texts.append(table()->item(row, column)->text());
        }
        return texts;
    }

    DataNetwork grid;
};

const QStringList kEmptyRow{QString(), QString(), QString(), QString(), QString()};
const QStringList kTwoReadings{
    QStringLiteral("-0.50000"), kTime.addSecs(1).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
    QStringLiteral("-0.50000"), QStringLiteral("1.25000"), QStringLiteral("0.37500")};

void addTwoReadings(CurveSeriesData& series)
{
    series.addPoint(readingTime(), 1.25);
    series.addPoint(readingTime() + 1000.0, -0.5);
}
} // namespace

class TestDataNetwork : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_store = std::make_unique<SeriesStore>(QStringLiteral("test_datanetwork_Data"));
    }
    void cleanupTestCase() { m_store.reset(); }
    void cleanup() { SeriesStore::reset(); }

    void tableHasTwentyRowsAndSevenColumns();
    void numbersCannotBeEdited();
    void newRowsAreEmpty();
    void sizeGripStandsBelowTheTable();
    void channelListReplacesTheItemsSilently();
    void emptyChannelListIsIgnored();
    void choosingAChannelShowsItsStatisticsAtOnce();
    void seriesWithoutReadingsShowsItsStartValues();
    void valuesBeyondAllNumbersLeaveAMean_data();
    void valuesBeyondAllNumbersLeaveAMean();
    void channelWithoutSeriesLeavesTheRow();
    void nullSeriesLeavesTheRow();
    void choosingNoneEmptiesTheRow();
    void channelMayStandInTwoRows();
    void refreshRewritesRowsWithAChannel();
    void newChannelListKeepsOldValuesUntilANewChoice();
    void noneChosenByHandEmptiesTheRow();
    void typedTextStaysUntilTheNextBatch();
    void wheelNeedsTheFocus();
    void slotWithoutASenderDoesNothing();

private:
    std::unique_ptr<SeriesStore> m_store;
};

void TestDataNetwork::tableHasTwentyRowsAndSevenColumns()
{
    const DataNetwork grid;
    const auto* table = grid.findChild<QTableWidget*>();
    QVERIFY(table);
    QCOMPARE(table->rowCount(), 20);
    const QStringList headers{QString(),
                              QStringLiteral("通道"),
                              QStringLiteral("读数"),
                              QStringLiteral("时间"),
                              QStringLiteral("最小值"),
                              QStringLiteral("最大值"),
                              QStringLiteral("平均值")};
    QCOMPARE(table->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column) {
        QCOMPARE(table->horizontalHeaderItem(column)->text(), headers.at(column));
        QCOMPARE(table->horizontalHeader()->sectionResizeMode(column), QHeaderView::Stretch);
    }
    QVERIFY(table->verticalHeader()->isHidden());
}

void TestDataNetwork::numbersCannotBeEdited()
{
    const Fixture f;
    for (int row = 0; row < 20; ++row) {
        QCOMPARE(f.table()->item(row, 0)->text(), QString::number(row + 1));
        QVERIFY(!(f.table()->item(row, 0)->flags() & Qt::ItemIsEditable));
    }
}

void TestDataNetwork::newRowsAreEmpty()
{
    const DataNetwork grid;
    const auto* table = grid.findChild<QTableWidget*>();
    for (int row = 0; row < 20; ++row) {
        const auto* combo = qobject_cast<QComboBox*>(table->cellWidget(row, 1));
        QVERIFY(combo);
        QCOMPARE(combo->count(), 1);
        QCOMPARE(combo->currentText(), QStringLiteral("无"));
        for (int column = 2; column <= 6; ++column) {
            QCOMPARE(table->item(row, column)->text(), QString());
        }
    }
}

void TestDataNetwork::sizeGripStandsBelowTheTable()
{
    DataNetwork grid;
    grid.resize(480, 220);
    grid.show();
    const auto* grip = grid.findChild<QSizeGrip*>();
    QVERIFY(grip);
    QVERIFY(grip->y() >= grid.findChild<QTableWidget*>()->geometry().bottom());
    QVERIFY(grip->geometry().right() > grid.width() / 2);
}

void TestDataNetwork::channelListReplacesTheItemsSilently()
{
    Fixture f;
    m_store->add(101)->addPoint(readingTime(), 3.0);
    f.combo(3)->setCurrentIndex(1);
    QSignalSpy changed(f.combo(3), qOverload<int>(&QComboBox::currentIndexChanged));
    f.grid.setChannelList({QStringLiteral("无"), QStringLiteral("201(V)")});
    QCOMPARE(changed.size(), 0);
    for (int row = 0; row < 20; ++row) {
        QCOMPARE(f.combo(row)->count(), 2);
        QCOMPARE(f.combo(row)->itemText(1), QStringLiteral("201(V)"));
        QCOMPARE(f.combo(row)->currentIndex(), 0);
        QVERIFY(!f.combo(row)->signalsBlocked());
    }
}

void TestDataNetwork::emptyChannelListIsIgnored()
{
    Fixture f;
    f.combo(0)->setCurrentIndex(2);
    f.grid.setChannelList({});
    QCOMPARE(f.combo(0)->count(), 3);
    QCOMPARE(f.combo(0)->currentIndex(), 2);
}

void TestDataNetwork::choosingAChannelShowsItsStatisticsAtOnce()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    f.combo(4)->setCurrentIndex(1);
    QCOMPARE(f.cells(4), kTwoReadings);
    QCOMPARE(f.table()->item(4, 2)->data(Qt::EditRole).toString(), QStringLiteral("-0.50000"));
    for (int row = 0; row < 20; ++row) {
        if (row != 4) {
            QCOMPARE(f.cells(row), kEmptyRow);
        }
    }
}

void TestDataNetwork::seriesWithoutReadingsShowsItsStartValues()
{
    Fixture f;
    m_store->add(101);
    f.combo(0)->setCurrentIndex(1);
    QCOMPARE(f.cells(0).at(0), QStringLiteral("0.00000"));
    QCOMPARE(f.cells(0).at(1), QString());
    QCOMPARE(f.cells(0).at(2), QString::number(std::numeric_limits<double>::max(), 'f', 5));
    QCOMPARE(f.cells(0).at(3), QStringLiteral("0.00000"));
    QCOMPARE(f.cells(0).at(4), QStringLiteral("0.00000"));
}

void TestDataNetwork::valuesBeyondAllNumbersLeaveAMean_data()
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("mean");
    QTest::newRow("infinities") << QVector<double>{1.0, infinity, -infinity, 2.0} << 1.5;
    QTest::newRow("sum too large") << QVector<double>{1.5e308, 1.5e308, 1.5e308} << 1.5e308;
    QTest::newRow("both ends") << QVector<double>{1.5e308, 1.5e308, -1.5e308, -1.5e308} << 0.0;
    QTest::newRow("not a number") << QVector<double>{std::numeric_limits<double>::quiet_NaN(), 4.0}
                                  << 4.0;
}

void TestDataNetwork::valuesBeyondAllNumbersLeaveAMean()
{
    QFETCH(QVector<double>, values);
    QFETCH(double, mean);
    Fixture f;
    const auto series = m_store->add(101);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int i = 0; i < values.size(); ++i) {
        series->addPoint(static_cast<double>(now + i), values.at(i));
    }
    f.combo(0)->setFocus();
    QTest::keyClick(f.combo(0), Qt::Key_Down);
    for (int column = 2; column <= 4; ++column) {
        QVERIFY2(!f.cells(0).at(column).contains(QStringLiteral("nan")),
                 qPrintable(f.cells(0).at(column)));
    }
    const double shown = f.cells(0).at(4).toDouble();
    QVERIFY2(qAbs(shown - mean) <= qAbs(mean) * 1e-12 + (mean == 0.0 ? 1e295 : 0.0),
             qPrintable(f.cells(0).at(4)));
}

void TestDataNetwork::channelWithoutSeriesLeavesTheRow()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    f.combo(0)->setCurrentIndex(2);
    QCOMPARE(f.cells(0), kTwoReadings);
    QVERIFY(!g_curveSeries.contains(102));
}

void TestDataNetwork::nullSeriesLeavesTheRow()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    g_curveSeries[102] = nullptr;
    f.combo(0)->setCurrentIndex(2);
    QCOMPARE(f.cells(0), kTwoReadings);
}

void TestDataNetwork::choosingNoneEmptiesTheRow()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    f.combo(0)->setCurrentIndex(0);
    QCOMPARE(f.cells(0), kEmptyRow);
}

void TestDataNetwork::channelMayStandInTwoRows()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    f.combo(7)->setCurrentIndex(1);
    QCOMPARE(f.cells(0), kTwoReadings);
    QCOMPARE(f.cells(7), kTwoReadings);
}

void TestDataNetwork::refreshRewritesRowsWithAChannel()
{
    Fixture f;
    const auto series = m_store->add(101);
    f.combo(2)->setCurrentIndex(1);
    f.table()->item(5, 2)->setText(QStringLiteral("untouched"));
    addTwoReadings(*series);
    f.grid.refreshRows();
    QCOMPARE(f.cells(2), kTwoReadings);
    QCOMPARE(f.table()->item(5, 2)->text(), QStringLiteral("untouched"));
}

void TestDataNetwork::newChannelListKeepsOldValuesUntilANewChoice()
{
    Fixture f;
    const auto series = m_store->add(101);
    addTwoReadings(*series);
    f.combo(0)->setCurrentIndex(1);
    f.grid.setChannelList(kChannels);
    series->addPoint(readingTime() + 2000.0, 9.0);
    f.grid.refreshRows();
    QCOMPARE(f.cells(0), kTwoReadings);
    f.combo(0)->setCurrentIndex(1);
    QCOMPARE(f.cells(0).at(0), QStringLiteral("9.00000"));
}

void TestDataNetwork::noneChosenByHandEmptiesTheRow()
{
    Fixture f;
    f.grid.show();
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    f.grid.setChannelList(kChannels);
    QCOMPARE(f.cells(0), kTwoReadings);
    // The box already shows "none", so the choice does not change it.
    QCOMPARE(f.combo(0)->currentIndex(), 0);
    f.combo(0)->showPopup();
    QTest::keyClick(f.combo(0)->view(), Qt::Key_Return);
    QCOMPARE(f.combo(0)->currentIndex(), 0);
    QCOMPARE(f.cells(0), kEmptyRow);
}

void TestDataNetwork::typedTextStaysUntilTheNextBatch()
{
    Fixture f;
    f.grid.resize(900, 400);
    f.grid.show();
    QVERIFY(QTest::qWaitForWindowActive(&f.grid));
    addTwoReadings(*m_store->add(101));
    f.combo(0)->setCurrentIndex(1);
    const auto type = [&f](int row, int column) {
        const QPoint place = f.table()->visualItemRect(f.table()->item(row, column)).center();
        QTest::mouseClick(f.table()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(f.table()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("note"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        settle(); // the table takes the text over afterwards
        return f.table()->item(row, column)->text();
    };
    for (int column = 2; column <= 6; ++column) {
        QCOMPARE(type(0, column), QStringLiteral("note"));
        QCOMPARE(type(1, column), QStringLiteral("note"));
    }
    f.grid.refreshRows();
    QCOMPARE(f.cells(0), kTwoReadings);
    QCOMPARE(f.cells(1), QStringList(QVector<QString>(5, QStringLiteral("note")).toList()));
}

void TestDataNetwork::wheelNeedsTheFocus()
{
    Fixture f;
    f.grid.resize(700, 300);
    f.grid.show();
    QVERIFY(QTest::qWaitForWindowActive(&f.grid));
    f.combo(0)->clearFocus();
    hand::movePointer(f.combo(0), QPoint(5, 5));
    hand::movePointer(f.combo(0), f.combo(0)->rect().center());
    hand::turnWheel(f.combo(0), -1);
    QCOMPARE(f.combo(0)->currentIndex(), 0);
    QVERIFY(!f.combo(0)->hasFocus());
    // The table scrolls instead.
    QVERIFY(f.table()->verticalScrollBar()->value() > 0);
    f.table()->verticalScrollBar()->setValue(0);
    f.combo(0)->setFocus(Qt::TabFocusReason);
    hand::turnWheel(f.combo(0), -1);
    QCOMPARE(f.combo(0)->currentIndex(), 1);
}

void TestDataNetwork::slotWithoutASenderDoesNothing()
{
    Fixture f;
    addTwoReadings(*m_store->add(101));
    {
        const QSignalBlocker blocker(f.combo(0));
        f.combo(0)->setCurrentIndex(1);
    }
    QVERIFY(QMetaObject::invokeMethod(&f.grid, "onChannelChanged", Q_ARG(int, 1)));
    QCOMPARE(f.cells(0), kEmptyRow);
}

SCN_TEST(TestDataNetwork, QApplication)
#include "test_datanetwork.moc"
