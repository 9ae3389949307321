#include "app/channelrow.h"
#include "app/channeltable.h"
#include "app/channeltablebuilder.h"
#include "app/instrumentpagebuilder.h"
#include "app/loggingpagebuilder.h"
#include "channels/advancedsetting.h"
#include "common/channelnumber.h"
#include "state/globals.h"
#include "support/fakeinstrument.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTreeWidget>
#include <QtTest>

using namespace scn;

namespace {

/// The titles of the groups on a page, from the top.
QStringList groupsOf(const QWidget* content)
{
    QStringList titles;
    for (const QGroupBox* group : content->findChildren<QGroupBox*>()) {
        titles.append(group->title());
    }
    return titles;
}

QStringList radiosOf(const QWidget* content)
{
    QStringList texts;
    for (const QRadioButton* radio : content->findChildren<QRadioButton*>()) {
        texts.append(radio->text());
    }
    return texts;
}

void fillSlot(int slot, int type, int lastChannel)
{
    slotPresent[slot] = true;
    slotModuleType[slot] = type;
    slotLastChannel[slot] = lastChannel;
}

} // namespace

/// The pages on their own: what they contain, and that building them sends nothing.
class TestPageBuilders : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void loggingPageHoldsItsForm();
    void loggingFormStartsLikeThis();
    void instrumentPageShowsThreeSlots();
    void tableWithoutModulesHasNoRows();
    void tableHasARowForEachChannel();
    void everyControlOfARowLeadsToItsChannel();
    void rowStartsWithTheFirstFunction();
    void rowsAreEnabledAndDisabledWhole();

private:
    FakeInstrument m_instrument;
    QWidget m_parent;
};

void TestPageBuilders::init()
{
    fillSlot(1, 0, 19);
    fillSlot(4, 0, 19);
    g_instrumentConnected = true;
}

void TestPageBuilders::cleanup()
{
    QCOMPARE(m_instrument.takeLines(), QStringList());
    qDeleteAll(m_parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
    g_instrumentConnected = false;
    for (int slot = 1; slot <= kSlotCount; ++slot) {
        slotPresent[slot] = false;
    }
}

void TestPageBuilders::loggingPageHoldsItsForm()
{
    const LoggingPage page = LoggingPageBuilder().build(&m_parent);
    QCOMPARE(page.page->parentWidget(), &m_parent);
    QCOMPARE(page.page->widget(), page.content);
    QCOMPARE(groupsOf(page.content),
             QStringList({QStringLiteral("数据记录"), QStringLiteral("开始数据记录"),
                          QStringLiteral("扫描时间间隔"), QStringLiteral("停止数据记录"),
                          QStringLiteral("Start Digitizing")}));
    const LoggingForm& form = page.form;
    const QList<const QWidget*> controls = {
        form.m_usbLogCheck,         form.m_rowLimitCheck,    form.m_rowLimitSpin,
        form.m_startNowRadio,       form.m_startAtTimeRadio, form.m_startOnAlarmRadio,
        form.m_alarmCombo,          form.m_intervalGroup,    form.m_intervalMinimumRadio,
        form.m_intervalCustomRadio, form.m_intervalPicker,   form.m_intervalExternalRadio,
        form.m_intervalManualRadio, form.m_stopManualRadio,  form.m_stopElapsedRadio,
        form.m_stopElapsedPicker,   form.m_stopCountRadio,   form.m_stopCountBox};
    for (const QWidget* control : controls) {
        QVERIFY(control);
        QVERIFY(page.content->isAncestorOf(control));
    }
    const QSet<const QWidget*> different(controls.begin(), controls.end());
    QCOMPARE(different.size(), controls.size());
}

void TestPageBuilders::loggingFormStartsLikeThis()
{
    const LoggingForm form = LoggingPageBuilder().build(&m_parent).form;
    QVERIFY(!form.m_usbLogCheck->isChecked());
    QVERIFY(form.m_rowLimitCheck->isChecked());
    QVERIFY(!form.m_rowLimitCheck->isEnabled());
    QCOMPARE(form.m_rowLimitSpin->value(), 65536);
    QCOMPARE(form.m_rowLimitSpin->maximum(), 100000);
    QVERIFY(form.m_startNowRadio->isChecked());
    QVERIFY(!form.m_alarmCombo->isEnabled());
    QCOMPARE(form.m_alarmCombo->count(), 4);
    QVERIFY(form.m_intervalMinimumRadio->isChecked());
    QVERIFY(!form.m_intervalPicker->isEnabled());
    QVERIFY(form.m_stopManualRadio->isChecked());
    QVERIFY(!form.m_stopElapsedPicker->isEnabled());
    QVERIFY(form.m_stopCountBox->isEnabled());
    QCOMPARE(form.m_stopCountBox->maximum(), 1000000);
}

void TestPageBuilders::instrumentPageShowsThreeSlots()
{
    const InstrumentPage page = InstrumentPageBuilder::build(&m_parent);
    QCOMPARE(page.page->parentWidget(), &m_parent);
    QCOMPARE(page.page->widget(), page.content);
    const QStringList modes = {QStringLiteral("扫描模式"), QStringLiteral("开关模式")};
    QCOMPARE(radiosOf(page.content), modes + modes + modes);
    QVERIFY(page.content->findChild<QPushButton*>(QStringLiteral("setupButton")));
}

void TestPageBuilders::tableWithoutModulesHasNoRows()
{
    slotPresent[1] = false;
    slotPresent[4] = false;
    const ChannelForm form = ChannelTableBuilder().build(&m_parent);
    QCOMPARE(form.m_channelTree->topLevelItemCount(), 0);
    QCOMPARE(form.m_channelTree->columnCount(), int(ChannelColumnCount));
    QVERIFY(form.slotItems.isEmpty());
    QVERIFY(!ChannelTable(form).row(101).exists());
    QVERIFY(!ChannelTable(ChannelForm()).item(101));
}

void TestPageBuilders::tableHasARowForEachChannel()
{
    const ChannelForm form = ChannelTableBuilder().build(&m_parent);
    QCOMPARE(form.slotItems.keys(), QList<int>({1, 4}));
    QCOMPARE(form.moduleItems.size(), 2);
    const ChannelTable table(form);
    for (const int slot : {1, 4}) {
        QCOMPARE(form.slotItems.value(slot)->childCount(), 20);
        for (int position = 1; position <= 20; ++position) {
            const int channel = scn::ChannelNumber(slot, position).label();
            QCOMPARE(table.channelOf(table.item(channel)), channel);
            QCOMPARE(table.item(channel)->checkState(ScanColumn), Qt::Unchecked);
        }
    }
    QVERIFY(!table.item(100));
    QVERIFY(!table.item(121));
    QVERIFY(!table.item(201));
}

void TestPageBuilders::everyControlOfARowLeadsToItsChannel()
{
    const ChannelForm form = ChannelTableBuilder().build(&m_parent);
    const ChannelRow row = ChannelTable(form).row(403);
    const QList<QWidget*> controls = {row.name,   row.function, row.range,         row.resolution,
                                      row.more,   row.scale,    row.scaleFunction, row.gain,
                                      row.offset, row.unit,     row.scaleMore};
    for (QWidget* control : controls) {
        QVERIFY(control);
        QCOMPARE(form.rowWidgetChannels.value(control), 403);
    }
    QCOMPARE(form.rowWidgetChannels.size(), 40 * controls.size());
    QVERIFY(row.functionPanel);
    QVERIFY(row.scalePanel);
    QVERIFY(row.functionPanel != row.scalePanel);
}

void TestPageBuilders::rowStartsWithTheFirstFunction()
{
    const ChannelForm form = ChannelTableBuilder().build(&m_parent);
    const ChannelTable table(form);
    const ChannelRow row = table.row(101);
    QCOMPARE(row.function->currentText(), QStringLiteral("直流电压"));
    QCOMPARE(table.functionOf(row), 0);
    QCOMPARE(row.gain->text(), QStringLiteral("1"));
    QCOMPARE(row.offset->text(), QStringLiteral("0"));
    QVERIFY(!row.scale->isChecked());
    QVERIFY(!row.scaleMore->isEnabled());
}

void TestPageBuilders::rowsAreEnabledAndDisabledWhole()
{
    const ChannelForm form = ChannelTableBuilder().build(&m_parent);
    const ChannelTable table(form);
    const ChannelRow row = table.row(102);
    table.setRowEnabled(table.item(102), false);
    for (const QWidget* control :
         QList<const QWidget*>({row.number, row.name, row.unit, row.scaleMore})) {
        QVERIFY(!control->isEnabled());
    }
    QVERIFY(table.row(103).unit->isEnabled());
    table.setRowEnabled(table.item(102), true);
    QVERIFY(row.number->isEnabled());
    QVERIFY(row.scaleMore->isEnabled());
}

SCN_TEST(TestPageBuilders, QApplication)
#include "test_pagebuilders.moc"
