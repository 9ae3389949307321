#include "app/loggingform.h"
#include "app/loggingpagebuilder.h"
#include "app/windowdisplay.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "tablebench.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/timecolumn.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTreeWidget>
#include <QtTest>

using namespace scn;

namespace {

constexpr int kChannel = 101;
constexpr int kPartner = 109;
constexpr int kNoRow = 117;

struct DisplayBench : TableBench
{
    LoggingForm page = LoggingPageBuilder().build(&window).form;
    int found = 0;
    WindowDisplay display{table, marks, partners, page, [this] { ++found; }};
};

} // namespace

/// What the controls show of the instrument's state, and that showing it does not count as an edit.
class TestWindowDisplay : public QObject
{
    Q_OBJECT

private slots:
    void instrumentIsAnnounced();
    void modulesWithRowsAreKnown();
    void scanListIsTicked();
    void scanChannelsFollowAtTheEnd();
    void functionIsSelectedQuietly();
    void functionThatTheRowLacksLeavesIt();
    void fourWireFunctionTakesThePartner();
    void optionIsShownInItsRow();
    void triggerSourceIsShownQuietly_data();
    void triggerSourceIsShownQuietly();
    void intervalIsSplit_data();
    void intervalIsSplit();
    void sweepCountIsShownAsAnEdit();
    void logFileIsShown();
};

void TestWindowDisplay::instrumentIsAnnounced()
{
    DisplayBench bench;
    bench.display.instrumentFound();
    QCOMPARE(bench.found, 1);
}

void TestWindowDisplay::modulesWithRowsAreKnown()
{
    const DisplayBench bench;
    QVERIFY(bench.display.hasModule(1));
    QVERIFY(!bench.display.hasModule(2));
}

void TestWindowDisplay::scanListIsTicked()
{
    DisplayBench bench;
    int changes = 0;
    QObject::connect(bench.form.m_channelTree, &QTreeWidget::itemChanged, &bench.window,
                     [&changes] { ++changes; });
    bench.display.showScanList({102, 104, kNoRow});
    bench.display.showScanList({102, 103});
    for (int channel = 101; channel <= 116; ++channel) {
        QCOMPARE(bench.isTicked(channel), channel == 102 || channel == 103);
    }
    QCOMPARE(changes, 0);
    bench.tick(101);
    QCOMPARE(changes, 1);
}

void TestWindowDisplay::scanChannelsFollowAtTheEnd()
{
    DisplayBench bench;
    g_scanChannels = {{116, QStringLiteral("K")}};
    bench.display.showScanList({102, 103});
    QCOMPARE(g_scanChannels.keys(), QList<int>({116}));
    bench.display.showOption(103, ChannelOption::ScalingOn, true);
    bench.display.showOption(103, ChannelOption::Unit, QStringLiteral("W"));
    bench.display.readBackDone();
    QCOMPARE(g_scanChannels,
             (decltype(g_scanChannels){{102, QStringLiteral("Vdc")}, {103, QStringLiteral("W")}}));
    QCOMPARE(bench.announcements, 1);
}

void TestWindowDisplay::functionIsSelectedQuietly()
{
    DisplayBench bench;
    CustomComboBox* const box = bench.table.row(kChannel).function;
    const QSignalSpy changes(box, qOverload<int>(&QComboBox::currentIndexChanged));
    QVERIFY(bench.display.showFunction(kChannel, QStringLiteral("电容")));
    QCOMPARE(box->currentText(), QStringLiteral("电容"));
    QCOMPARE(changes.size(), 0);
    QVERIFY(!bench.display.showFunction(kNoRow, QStringLiteral("电容")));
}

void TestWindowDisplay::functionThatTheRowLacksLeavesIt()
{
    DisplayBench bench;
    QVERIFY(bench.display.showFunction(kChannel, QStringLiteral("频率")));
    QVERIFY(bench.display.showFunction(kChannel, QStringLiteral("直流电流")));
    QVERIFY(bench.display.showFunction(kChannel, QString()));
    QCOMPARE(bench.table.row(kChannel).function->currentText(), QStringLiteral("频率"));
}

void TestWindowDisplay::fourWireFunctionTakesThePartner()
{
    DisplayBench bench;
    const QString fourWire = QStringLiteral("四线ohm");
    QVERIFY(bench.display.showFunction(kChannel, fourWire));
    QVERIFY(!bench.isRowEnabled(kPartner));
    QCOMPARE(bench.table.row(kPartner).function->currentText(), fourWire);

    // A taken row shows what took it, whatever it reports itself.
    QVERIFY(bench.display.showFunction(kPartner, QStringLiteral("频率")));
    QCOMPARE(bench.table.row(kPartner).function->currentText(), fourWire);

    QVERIFY(bench.display.showFunction(kChannel, QStringLiteral("频率")));
    QVERIFY(bench.isRowEnabled(kPartner));
}

void TestWindowDisplay::optionIsShownInItsRow()
{
    DisplayBench bench;
    const QSignalSpy edits(bench.table.row(kChannel).gain, &QLineEdit::textChanged);
    bench.display.showOption(kChannel, ChannelOption::Gain, 2.5);
    bench.display.showOption(kNoRow, ChannelOption::Gain, 7.0);
    QCOMPARE(bench.table.row(kChannel).gain->text(), QStringLiteral("2.5"));
    QCOMPARE(bench.table.row(102).gain->text(), QStringLiteral("1"));
    QCOMPARE(edits.size(), 0);

    bench.display.showOption(kChannel, ChannelOption::ScaleFunctionRow, 1);
    QVERIFY(!bench.table.row(kChannel).gain->isEnabled());
    QVERIFY(bench.table.row(102).gain->isEnabled());
}

void TestWindowDisplay::triggerSourceIsShownQuietly_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("text");
    QTest::newRow("immediate") << int(TriggerChoice::Immediate) << QStringLiteral("start now");
    QTest::newRow("alarm") << int(TriggerChoice::Alarm) << QStringLiteral("start on alarm");
    QTest::newRow("timer") << int(TriggerChoice::Timer) << QStringLiteral("interval");
}

void TestWindowDisplay::triggerSourceIsShownQuietly()
{
    QFETCH(const int, source);
    QFETCH(const QString, text);
    DisplayBench bench;
    const QMap<QString, QRadioButton*> radios = {
        {QStringLiteral("start now"), bench.page.m_startNowRadio},
        {QStringLiteral("start on alarm"), bench.page.m_startOnAlarmRadio},
        {QStringLiteral("interval"), bench.page.m_intervalCustomRadio}};
    QRadioButton* const radio = radios.value(text);
    bench.page.m_startAtTimeRadio->setChecked(true);
    bench.page.m_intervalManualRadio->setChecked(true);
    const QSignalSpy toggles(radio, &QRadioButton::toggled);
    bench.display.showTriggerSource(TriggerChoice(source));
    QVERIFY(radio->isChecked());
    QCOMPARE(toggles.size(), 0);
}

void TestWindowDisplay::intervalIsSplit_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QList<int>>("columns");
    QTest::newRow("seconds") << 59 << QList<int>{0, 0, 0, 59};
    QTest::newRow("minute") << 60 << QList<int>{0, 0, 1, 0};
    QTest::newRow("hour") << 3600 << QList<int>{0, 1, 0, 0};
    QTest::newRow("day") << 86400 << QList<int>{1, 0, 0, 0};
    QTest::newRow("all") << 93784 << QList<int>{1, 2, 3, 4};
    QTest::newRow("just below a day") << 86399 << QList<int>{0, 23, 59, 59};
}

void TestWindowDisplay::intervalIsSplit()
{
    QFETCH(const int, seconds);
    QFETCH(const QList<int>, columns);
    DisplayBench bench;
    TimePicker* const picker = bench.page.m_intervalPicker;
    picker->setEnabled(false);
    const QSignalSpy changes(picker, &TimePicker::sigTimePickerValueChanged);
    bench.display.showInterval(std::chrono::seconds(seconds));
    QVERIFY(picker->isEnabled());
    QCOMPARE(picker->value(), double(seconds));
    QCOMPARE(changes.size(), 0);
    QList<int> shown;
    for (const TimeColumn* column : picker->findChildren<TimeColumn*>()) {
        shown << column->value();
    }
    QCOMPARE(shown.mid(0, columns.size()), columns);
}

void TestWindowDisplay::sweepCountIsShownAsAnEdit()
{
    DisplayBench bench;
    const QSignalSpy counts(bench.page.m_stopCountBox, qOverload<int>(&QSpinBox::valueChanged));
    const QSignalSpy toggles(bench.page.m_stopCountRadio, &QRadioButton::toggled);
    bench.display.showSweepCount(17);
    QVERIFY(bench.page.m_stopCountRadio->isChecked());
    QCOMPARE(bench.page.m_stopCountBox->value(), 17);
    bench.display.showSweepCount(std::nullopt);
    QVERIFY(bench.page.m_stopManualRadio->isChecked());
    QCOMPARE(bench.page.m_stopCountBox->value(), 17);
    QCOMPARE(counts.size(), 1);
    QCOMPARE(toggles.size(), 2);
}

void TestWindowDisplay::logFileIsShown()
{
    DisplayBench bench;
    for (const bool on : {true, false}) {
        bench.display.showUsbLogging(on);
        bench.display.showRowLimitOn(!on);
        QCOMPARE(bench.page.m_usbLogCheck->isChecked(), on);
        QCOMPARE(bench.page.m_rowLimitCheck->isChecked(), !on);
    }
    bench.display.showRowLimit(70000);
    QCOMPARE(bench.page.m_rowLimitSpin->value(), 70000);
}

SCN_TEST(TestWindowDisplay, QApplication)
#include "test_windowdisplay.moc"
