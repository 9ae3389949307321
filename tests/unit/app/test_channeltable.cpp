#include "app/mainwidget.h"
#include "channels/commfunc.h"
#include "overlay/loadingview.h"
#include "plot/datanetwork.h"
#include "plot/graphicsettingwidget.h"
#include "plot/groupedheaderview.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>

#include <initializer_list>

using namespace scn;

namespace {

/// A module of two channels in slot 2 and one of four in slot 3.
struct TwoModules : WindowBench
{
    explicit TwoModules(std::chrono::milliseconds startupView = WindowTiming().startupView)
    {
        windowTiming.startupView = startupView;
        instrument().putModule(2, QStringLiteral("SCN4005A"));
        instrument().putModule(3, QStringLiteral("SCN4006A"));
        open();
    }
};

/// The cells of a channel's row, by column: class and text.
QStringList cellsOf(QTreeWidget* tree, QTreeWidgetItem* item)
{
    QStringList cells;
    for (int column = 0; column < tree->columnCount(); ++column) {
        const QWidget* control = tree->itemWidget(item, column);
        if (!control) {
            cells.append(QString());
            continue;
        }
        QString text;
        if (const auto* edit = qobject_cast<const QLineEdit*>(control)) {
            text = edit->text();
        } else if (const auto* box = qobject_cast<const QComboBox*>(control)) {
            text = box->currentText();
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(control)) {
            text = button->text();
        }
        cells.append(QString::fromLatin1(control->metaObject()->className()) +
                     QStringLiteral(": ") + text);
    }
    return cells;
}

} // namespace

/// The channel table: layout, check marks and scan list.
class TestChannelTable : public QObject
{
    Q_OBJECT

private slots:
    void tableHasTheseColumns();
    void headerHasTheseGroups();
    void moduleRowSpansTheTable();
    void channelRowStartsWithTheseControls();
    void boxesOfferWhatThePositionCan();

    void tickSendsTheWholeList_data();
    void tickSendsTheWholeList();
    void removingTheLastChannelSendsAnEmptyList();
    void modulesTickIsOneCommand();
    void moduleShowsWhatItsChannelsAddUpTo();
    void keyOnAModuleChecksOrUnchecksOnly();
    void channelOutOfUseIsPassedOver();
    void partlyCheckedModuleTicksNothing();
    void otherColumnsSendNothing();
    void overlayCoversTheExchange();
    void scanListHoldsTheDisplayUnits_data();
    void scanListHoldsTheDisplayUnits();
    void workspaceOffersTheScanList();

    void settingsPageShowsThreeSlots();
    void settingsPageSendsNothing();
};

void TestChannelTable::tableHasTheseColumns()
{
    TwoModules bench;
    const QTreeWidget* tree = bench.tree();
    QCOMPARE(tree->columnCount(), 14);
    QCOMPARE(tree->editTriggers(), QAbstractItemView::NoEditTriggers);
    QCOMPARE(tree->selectionMode(), QAbstractItemView::NoSelection);
    QVERIFY(tree->alternatingRowColors());
    QCOMPARE(tree->indentation(), 10);
    QVERIFY(tree->rootIsDecorated());
    QCOMPARE(tree->styleSheet(), CommFunc().treeStyle());
    QVERIFY(qobject_cast<GroupedHeaderView*>(tree->header()));
    QCOMPARE(tree->header()->defaultAlignment(), Qt::AlignCenter);

    QStringList headers;
    QList<int> widths;
    for (int column = 0; column < 14; ++column) {
        headers.append(tree->headerItem()->text(column));
        widths.append(column < 13 ? tree->columnWidth(column) : 0);
    }
    QCOMPARE(headers, texts({"扫描 ", "编号", "名称", "函数", "范围", "Res", "更多", "缩放", "函数",
                             "增益(M)", "偏移(B)", "单位", "更多", " "}));
    QCOMPARE(widths, (QList<int>{60, 130, 110, 160, 110, 90, 60, 60, 90, 90, 90, 90, 60, 0}));
    QCOMPARE(tree->header()->sectionResizeMode(13), QHeaderView::Stretch);
}

void TestChannelTable::headerHasTheseGroups()
{
    TwoModules bench;
    bench.window().resize(2200, 700);
    bench.window().show();
    const QHeaderView* header = bench.tree()->header();
    QTRY_VERIFY(header->length() >= 1250); // all columns are in view
    const QVector<HeaderGroup> groups = {{QStringLiteral("通道"), 0, 3},
                                         {QStringLiteral("测量"), 3, 5},
                                         {QStringLiteral("定标(Mx+B)"), 8, 6}};
    QTreeWidget plain(bench.tree()->parentWidget());
    plain.setStyleSheet(bench.tree()->styleSheet());
    plain.setHeaderItem(new QTreeWidgetItem(*bench.tree()->headerItem()));
    auto* expected = new GroupedHeaderView(groups, &plain);
    plain.setHeader(expected);
    expected->setDefaultAlignment(Qt::AlignCenter);
    expected->setStretchLastSection(false);
    for (int column = 0; column < 14; ++column) {
        expected->resizeSection(column, header->sectionSize(column));
    }
    plain.resize(bench.tree()->size());
    plain.show();
    QCOMPARE(expected->length(), header->length());
    QCOMPARE(header->viewport()->grab().toImage(), expected->viewport()->grab().toImage());
}

void TestChannelTable::moduleRowSpansTheTable()
{
    TwoModules bench;
    QCOMPARE(bench.tree()->topLevelItemCount(), 2);
    const QTreeWidgetItem* module = bench.tree()->topLevelItem(1);
    QVERIFY(module->isFirstColumnSpanned());
    QCOMPARE(module->text(0), QStringLiteral("SCN4006:04-Channel Armature Multiplexer"));
    QCOMPARE(module->textAlignment(0), int(Qt::AlignLeft | Qt::AlignVCenter));
    QVERIFY(module->flags() & Qt::ItemIsUserCheckable);
    QCOMPARE(module->checkState(0), Qt::Unchecked);
    QVERIFY(module->isExpanded());
    QCOMPARE(module->childCount(), 4);
    QCOMPARE(bench.tree()->topLevelItem(0)->childCount(), 2);
}

void TestChannelTable::channelRowStartsWithTheseControls()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4002A"));
    // The first line of the read-back finds the table as it was built.
    QStringList cells;
    QStringList states;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&cells, &states] {
        for (const QWidget* top : QApplication::topLevelWidgets()) {
            auto* tree = top->findChild<QTreeWidget*>();
            if (!tree) {
                continue;
            }
            QTreeWidgetItem* item = tree->topLevelItem(0)->child(2);
            cells = cellsOf(tree, item);
            const auto cell = [tree, item](int column) { return tree->itemWidget(item, column); };
            const auto note = [&states](const char* what, bool isSo) {
                if (!isSo) {
                    states.append(QString::fromLatin1(what));
                }
            };
            note("unchecked", item->checkState(0) == Qt::Unchecked);
            note("checkable", item->flags() & Qt::ItemIsUserCheckable);
            note("white", item->foreground(0).color() == QColor(Qt::white));
            for (const int column : {2, 9, 10}) {
                note("centred",
                     qobject_cast<QLineEdit*>(cell(column))->alignment() == Qt::AlignCenter);
            }
            note("spaced", qobject_cast<CustomComboBox*>(cell(3))->itemSpacing() == 15);
            note("no units of temperature", qobject_cast<QComboBox*>(cell(5))->count() == 0);
            note("scaling off", !qobject_cast<QCheckBox*>(cell(7))->isChecked());
            note("panel of the function", cell(6)->isEnabled());
            note("no panel of the scaling", !cell(12)->isEnabled());
        }
    });
    bench.open();
    QCOMPARE(cells, texts({"", "QPushButton: 103", "CustomLineEdit: ", "CustomComboBox: 直流电压",
                           "CustomComboBox: 自动", "CustomComboBox: ", "QPushButton: ...",
                           "QCheckBox: ", "CustomComboBox: SCAL", "CustomLineEdit: 1",
                           "CustomLineEdit: 0", "CustomComboBox: 无", "QPushButton: ...", ""}));
    QCOMPARE(states, QStringList());
}

void TestChannelTable::boxesOfferWhatThePositionCan()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4001A"));
    bench.open();
    const CommFunc catalogue;
    QCOMPARE(bench.module(1)->childCount(), 22);
    // The three kinds of positions have lists of their own.
    for (const int channel : {101, 110, 111, 120, 121, 122}) {
        QCOMPARE(WindowBench::itemsOf(bench.box(channel, FunctionColumn)),
                 catalogue.functionList(channel));
    }
    QCOMPARE(bench.box(101, FunctionColumn)->count(), 32);
    QCOMPARE(bench.box(111, FunctionColumn)->count(), 26);
    QCOMPARE(WindowBench::itemsOf(bench.box(121, FunctionColumn)), texts({"直流电流", "交流电流"}));
    QCOMPARE(WindowBench::itemsOf(bench.box(101, UnitColumn)), catalogue.unitList());
}

void TestChannelTable::tickSendsTheWholeList_data()
{
    QTest::addColumn<QList<int>>("channels");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("one") << QList<int>{202} << texts({"ROUT:SCAN (@202)", "SYST:ERR?"});
    QTest::newRow("two consecutive")
        << QList<int>{201, 202}
        << texts({"ROUT:SCAN (@201)", "SYST:ERR?", "ROUT:SCAN (@201,202)", "SYST:ERR?"});
    QTest::newRow("three in any order")
        << QList<int>{303, 301, 302}
        << texts({"ROUT:SCAN (@303)", "SYST:ERR?", "ROUT:SCAN (@301,303)", "SYST:ERR?",
                  "ROUT:SCAN (@301:303)", "SYST:ERR?"});
    QTest::newRow("over two modules")
        << QList<int>{304, 202}
        << texts({"ROUT:SCAN (@304)", "SYST:ERR?", "ROUT:SCAN (@202,304)", "SYST:ERR?"});
}

void TestChannelTable::tickSendsTheWholeList()
{
    QFETCH(QList<int>, channels);
    QFETCH(QStringList, lines);
    TwoModules bench;
    for (const int channel : channels) {
        bench.tick(channel);
    }
    QCOMPARE(bench.instrument().lines(), lines);
    std::sort(channels.begin(), channels.end());
    QCOMPARE(g_scanChannels.keys(), channels);
}

void TestChannelTable::removingTheLastChannelSendsAnEmptyList()
{
    TwoModules bench;
    bench.tick(301);
    bench.instrument().takeLines();
    bench.tick(301, false);
    QCOMPARE(bench.instrument().lines(), texts({"ROUT:SCAN (@)", "SYST:ERR?"}));
    QVERIFY(g_scanChannels.isEmpty());
}

void TestChannelTable::modulesTickIsOneCommand()
{
    TwoModules bench;
    bench.tick(302);
    bench.instrument().takeLines();
    bench.module(3)->setCheckState(0, Qt::Checked);
    QCOMPARE(bench.instrument().takeLines(), texts({"ROUT:SCAN (@301:304)", "SYST:ERR?"}));
    QCOMPARE(bench.tickedChannels(), (QList<int>{301, 302, 303, 304}));
    bench.module(3)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(bench.instrument().takeLines(), texts({"ROUT:SCAN (@)", "SYST:ERR?"}));
    QCOMPARE(bench.tickedChannels(), QList<int>());
}

void TestChannelTable::moduleShowsWhatItsChannelsAddUpTo()
{
    TwoModules bench;
    bench.tick(201);
    QCOMPARE(bench.module(2)->checkState(0), Qt::PartiallyChecked);
    QCOMPARE(bench.module(3)->checkState(0), Qt::Unchecked);
    bench.tick(202);
    QCOMPARE(bench.module(2)->checkState(0), Qt::Checked);
    bench.tick(201, false);
    QCOMPARE(bench.module(2)->checkState(0), Qt::PartiallyChecked);
    bench.tick(202, false);
    QCOMPARE(bench.module(2)->checkState(0), Qt::Unchecked);
    // A channel's mark may be partial too.
    bench.item(202)->setCheckState(0, Qt::PartiallyChecked);
    QCOMPARE(bench.module(2)->checkState(0), Qt::PartiallyChecked);
    QVERIFY(g_scanChannels.isEmpty());
}

void TestChannelTable::keyOnAModuleChecksOrUnchecksOnly()
{
    TwoModules bench;
    bench.window().show();
    bench.tick(201);
    bench.tree()->setCurrentItem(bench.module(2));
    QTest::keyClick(bench.tree(), Qt::Key_Space);
    QCOMPARE(bench.module(2)->checkState(0), Qt::Checked);
    QCOMPARE(bench.tickedChannels(), (QList<int>{201, 202}));
    QTest::keyClick(bench.tree(), Qt::Key_Space);
    QCOMPARE(bench.module(2)->checkState(0), Qt::Unchecked);
    QCOMPARE(bench.tickedChannels(), QList<int>());
}

void TestChannelTable::channelOutOfUseIsPassedOver()
{
    TwoModules bench;
    QTreeWidgetItem* outOfUse = bench.item(302);
    outOfUse->setFlags(outOfUse->flags() & ~Qt::ItemIsUserCheckable);
    bench.instrument().takeLines();
    bench.module(3)->setCheckState(0, Qt::Checked);
    QCOMPARE(bench.instrument().lines(), texts({"ROUT:SCAN (@301,303,304)", "SYST:ERR?"}));
    // The count goes over all channels.
    bench.tick(301, false);
    bench.tick(301);
    QCOMPARE(bench.module(3)->checkState(0), Qt::PartiallyChecked);
}

void TestChannelTable::partlyCheckedModuleTicksNothing()
{
    TwoModules bench;
    bench.module(2)->setCheckState(0, Qt::PartiallyChecked);
    QCOMPARE(bench.instrument().lines(), texts({"ROUT:SCAN (@)", "SYST:ERR?"}));
    QCOMPARE(bench.item(201)->checkState(0), Qt::PartiallyChecked);
    QVERIFY(g_scanChannels.isEmpty());
}

void TestChannelTable::otherColumnsSendNothing()
{
    TwoModules bench;
    bench.item(201)->setText(2, QStringLiteral("text"));
    QCOMPARE(bench.instrument().lines(), QStringList());
}

void TestChannelTable::overlayCoversTheExchange()
{
    TwoModules bench(std::chrono::milliseconds(10));
    bench.window().show();
    QTRY_VERIFY(!bench.startupView()->isVisible());
    bool wasCovered = false;
    bench.instrument().whenAsked(QStringLiteral("ROUT:SCAN (@202)"), [&bench, &wasCovered] {
        wasCovered = bench.startupView()->isVisible();
        // During the exchange the table starts no other.
        bench.item(201)->setCheckState(0, Qt::Checked);
    });
    bench.tick(202);
    QVERIFY(wasCovered);
    QVERIFY(!bench.startupView()->isVisible());
    QCOMPARE(bench.instrument().lines(), texts({"ROUT:SCAN (@202)", "SYST:ERR?"}));
    // The guard is released.
    bench.tick(201, false);
    QCOMPARE(bench.instrument().lines().mid(2), texts({"ROUT:SCAN (@202)", "SYST:ERR?"}));
}

void TestChannelTable::scanListHoldsTheDisplayUnits_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("shown");
    QTest::newRow("scaling off") << QStringLiteral("0") << QStringLiteral("\"W\"")
                                 << QStringLiteral("Vdc");
    QTest::newRow("scaling on") << QStringLiteral("1") << QStringLiteral("\"W\"")
                                << QStringLiteral("W");
    QTest::newRow("scaling on without a unit")
        << QStringLiteral("1") << QStringLiteral("\"\"") << QStringLiteral(" ");
}

void TestChannelTable::scanListHoldsTheDisplayUnits()
{
    QFETCH(QString, state);
    QFETCH(QString, unit);
    QFETCH(QString, shown);
    TwoModules bench;
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@302)"), state);
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@302)"), unit);
    bench.readBack(302);
    bench.tick(302);
    bench.tick(202);
    QCOMPARE(g_scanChannels, (QMap<int, QString>{{202, QStringLiteral("Vdc")}, {302, shown}}));
}

void TestChannelTable::workspaceOffersTheScanList()
{
    TwoModules bench;
    auto* workspace = bench.window().findChild<GraphicSettingWidget*>();
    QVERIFY(QMetaObject::invokeMethod(workspace, "recvDataNetworkBtnSlots"));
    const auto* table = workspace->findChild<DataNetwork*>()->findChild<QTableWidget*>();
    const auto* box = qobject_cast<QComboBox*>(table->cellWidget(0, 1));
    bench.tick(302);
    bench.tick(201);
    QStringList items;
    for (int row = 0; row < box->count(); ++row) {
        items.append(box->itemText(row));
    }
    QCOMPARE(items, texts({"无", "201(Vdc)", "302(Vdc)"}));
}

void TestChannelTable::settingsPageShowsThreeSlots()
{
    TwoModules bench;
    const auto* settings = bench.window().findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    const auto* page = qobject_cast<QScrollArea*>(settings->widget(0));
    const QWidget* content = page->widget();
    QCOMPARE(content->styleSheet(), QStringLiteral("background:rgb(63,63,63);"));

    QStringList labels;
    for (const QLabel* label : content->findChildren<QLabel*>()) {
        labels.append(label->text());
    }
    const QString module = QStringLiteral("20-Channel Armature Multiplexer...\n版本: 01.02");
    QCOMPARE(labels, QStringList({QStringLiteral("时隙 1:"), module, QStringLiteral("时隙 2:"),
                                  module, QStringLiteral("时隙 3:"), module}));
    const auto boxes = content->findChildren<QComboBox*>();
    QCOMPARE(boxes.size(), 3);
    for (const QComboBox* box : boxes) {
        QCOMPARE(box->count(), 1);
        QCOMPARE(box->itemText(0), QStringLiteral("无"));
    }
    QStringList modes;
    for (const QRadioButton* radio : content->findChildren<QRadioButton*>()) {
        modes.append(radio->text());
    }
    QCOMPARE(modes,
             texts({"扫描模式", "开关模式", "扫描模式", "开关模式", "扫描模式", "开关模式"}));
    const auto* more = content->findChild<QPushButton*>(QStringLiteral("setupButton"));
    QVERIFY(more);
    QCOMPARE(more->text(), QStringLiteral("更多设置..."));
}

void TestChannelTable::settingsPageSendsNothing()
{
    TwoModules bench;
    const auto* settings = bench.window().findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    const QWidget* content = qobject_cast<QScrollArea*>(settings->widget(0))->widget();
    for (QAbstractButton* button : content->findChildren<QAbstractButton*>()) {
        button->click();
    }
    QCOMPARE(bench.instrument().lines(), QStringList());
    // The modes of one slot exclude each other, those of two slots do not.
    QStringList checked;
    for (const QRadioButton* radio : content->findChildren<QRadioButton*>()) {
        if (radio->isChecked()) {
            checked.append(radio->text());
        }
    }
    QCOMPARE(checked, texts({"开关模式", "开关模式", "开关模式"}));
}

SCN_TEST(TestChannelTable, QApplication)
#include "test_channeltable.moc"
