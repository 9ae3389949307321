#include "pictures.h"

#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "programscene.h"
#include "screen.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QtTest>

using namespace scn;

namespace {

/// Opens the panel of a row, takes its picture and closes it.
void takePanel(const ProgramScene& scene, int channel, ChannelColumn column, const QString& name)
{
    const AdvancedSetting* const panel = scene.openPanel(channel, column);
    QVERIFY(panel);
    screen::take(name, panel);
    screen::press({QStringLiteral("Escape")});
}

void takePanelOf(const ProgramScene& scene, int channel, const QString& function,
                 const QString& name)
{
    ProgramScene::choose(scene.cell<CustomComboBox>(channel, FunctionColumn), function);
    takePanel(scene, channel, MoreColumn, QStringLiteral("panel-") + name);
}

/// Opens a list of a row, takes its picture and closes it.
void takeList(const ProgramScene& scene, int channel, ChannelColumn column, const QString& name)
{
    auto* const box = scene.cell<CustomComboBox>(channel, column);
    screen::click(box);
    QTRY_VERIFY(box->view()->isVisible());
    screen::take(name, scene.tree()->viewport());
    screen::press({QStringLiteral("Escape")});
}

/// The first control of a kind that the panel shows and that can be used.
template <typename Control>
Control* shown(const AdvancedSetting* panel)
{
    for (auto* control : panel->findChildren<Control*>()) {
        if (control->isVisible() && control->isEnabled()) {
            return control;
        }
    }
    return nullptr;
}

} // namespace

void Pictures::channelTable()
{
    ProgramScene scene;
    scene.showReady();
    screen::take(QStringLiteral("channel-table"));
    screen::movePointer(scene.cell<QPushButton>(103, MoreColumn));
    screen::take(QStringLiteral("channel-table-hover-button"), scene.tree());
    screen::movePointer(scene.cell<CustomComboBox>(103, FunctionColumn));
    screen::take(QStringLiteral("channel-table-hover-list"), scene.tree());
    const QRect first = scene.tree()->visualItemRect(scene.tree()->topLevelItem(0)->child(2));
    screen::movePointer(scene.tree()->viewport(), first.center());
    screen::take(QStringLiteral("channel-table-hover-row"), scene.tree());
    const QRect module = scene.tree()->visualItemRect(scene.tree()->topLevelItem(0));
    screen::click(scene.tree()->viewport(), QPoint(5, module.center().y()));
    screen::movePointerAway();
    screen::take(QStringLiteral("channel-table-module-shut"), scene.tree());
}

void Pictures::channelTableLists()
{
    ProgramScene scene;
    scene.showReady();
    takeList(scene, 102, FunctionColumn, QStringLiteral("channel-table-functions"));
    takeList(scene, 102, RangeColumn, QStringLiteral("channel-table-ranges"));
    ProgramScene::choose(scene.cell<CustomComboBox>(103, FunctionColumn),
                         QStringLiteral("热电偶(类型K)"));
    takeList(scene, 103, ResolutionColumn, QStringLiteral("channel-table-temperatures"));
    takeList(scene, 102, ScaleFunctionColumn, QStringLiteral("channel-table-scalings"));
    takeList(scene, 102, UnitColumn, QStringLiteral("channel-table-units"));
}

void Pictures::channelTableEdits()
{
    ProgramScene scene;
    scene.showReady();
    screen::click(scene.cell<CustomLineEdit>(102, NameColumn));
    screen::type(QStringLiteral("oven 2"));
    screen::take(QStringLiteral("channel-table-name"), scene.tree());
    screen::press({QStringLiteral("ctrl+a")});
    screen::take(QStringLiteral("channel-table-selection"), scene.tree());
    screen::rightClick(scene.cell<CustomLineEdit>(102, NameColumn));
    screen::take(QStringLiteral("channel-table-menu"), scene.tree());
    screen::press({QStringLiteral("Escape")});
}

void Pictures::channelTableStates()
{
    ProgramScene scene;
    scene.showReady();
    for (int channel = 101; channel <= 104; ++channel) {
        scene.tick(channel);
    }
    ProgramScene::choose(scene.cell<CustomComboBox>(102, FunctionColumn),
                         QStringLiteral("四线ohm"));
    screen::take(QStringLiteral("channel-table-ticked"));
    scene.cell<CustomComboBox>(112, FunctionColumn);
    screen::movePointerAway();
    screen::take(QStringLiteral("channel-table-taken-row"));
    scene.cell<QPushButton>(101, ScaleMoreColumn);
    screen::click(scene.cell<QCheckBox>(101, ScaleColumn));
    ProgramScene::choose(scene.cell<CustomComboBox>(101, ScaleFunctionColumn),
                         QStringLiteral("DB"));
    screen::take(QStringLiteral("channel-table-scaling"));
    scene.cell<QPushButton>(220, NumberColumn);
    screen::movePointerAway();
    screen::take(QStringLiteral("channel-table-end"));
}

void Pictures::functionPanels()
{
    ProgramScene scene;
    scene.showReady();
    takePanel(scene, 101, MoreColumn, QStringLiteral("panel-dc-voltage"));
    takePanelOf(scene, 102, QStringLiteral("交流电压"), QStringLiteral("ac-voltage"));
    takePanelOf(scene, 102, QStringLiteral("双线ohm"), QStringLiteral("resistance"));
    takePanelOf(scene, 102, QStringLiteral("热电偶(类型K)"), QStringLiteral("thermocouple"));
    takePanelOf(scene, 102, QStringLiteral("温度二线制RTD"), QStringLiteral("rtd"));
    takePanelOf(scene, 102, QStringLiteral("4线制热敏电阻(2.2K)"), QStringLiteral("thermistor"));
    takePanelOf(scene, 102, QStringLiteral("电容"), QStringLiteral("capacitance"));
    takePanelOf(scene, 102, QStringLiteral("直接应变"), QStringLiteral("strain"));
    takePanelOf(scene, 102, QStringLiteral("半桥(弯曲)"), QStringLiteral("bending-bridge"));
    takePanelOf(scene, 102, QStringLiteral("全桥(弯曲柏松)"), QStringLiteral("poisson-bridge"));
}

void Pictures::currentPanels()
{
    ProgramScene scene;
    scene.showReady();
    takePanel(scene, 121, MoreColumn, QStringLiteral("panel-dc-current"));
    takePanelOf(scene, 122, QStringLiteral("交流电流"), QStringLiteral("ac-current"));
}

void Pictures::scalePanels()
{
    ProgramScene scene;
    scene.showReady();
    for (const char* function : {"PCT", "DB", "DBM"}) {
        const QString name = QLatin1String(function);
        ProgramScene::choose(scene.cell<CustomComboBox>(101, ScaleFunctionColumn), name);
        takePanel(scene, 101, ScaleMoreColumn, QStringLiteral("panel-scale-") + name.toLower());
    }
}

void Pictures::panelStates()
{
    ProgramScene scene;
    scene.showReady();
    AdvancedSetting* panel = scene.openPanel(101, MoreColumn);
    QVERIFY(panel);
    screen::movePointer(shown<QRadioButton>(panel));
    screen::take(QStringLiteral("panel-hover"), panel);
    screen::click(shown<QComboBox>(panel));
    screen::take(QStringLiteral("panel-list"), panel);
    screen::press({QStringLiteral("Escape")});
    screen::press({QStringLiteral("Escape")});
    ProgramScene::choose(scene.cell<CustomComboBox>(103, FunctionColumn),
                         QStringLiteral("温度二线制RTD"));
    panel = scene.openPanel(103, MoreColumn);
    QVERIFY(panel);
    auto* const number = shown<QAbstractSpinBox>(panel);
    QVERIFY(number);
    screen::click(number, QPoint(20, number->height() / 2));
    screen::press({QStringLiteral("ctrl+a")});
    screen::take(QStringLiteral("panel-number"), panel);
}
