#include "app/mainwidget.h"

#include "app/channeloptions.h"
#include "app/globals.h"
#include "app/guigate.h"
#include "channels/commfunc.h"
#include "channels/functionnames.h"
#include "channels/scanlist.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "widgets/customcombobox.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QDateTime>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int kExchangeTimeoutMs = 5000;
/// How the instrument reports "no end" for a count: SCPI's infinity.
constexpr double kScpiInfinity = 9.9e37;
constexpr int kStoredStates = 5;

/// One exchange. Once the window has gone there is none, and the reply is empty: what a helper has
/// not yet sent by then must not reach a scan that goes on in the instrument.
QString ask(const GuiGate& gate, const QString& command)
{
    return gate.isOpen() ? g_visa->sendCommand(command, kExchangeTimeoutMs) : QString();
}

/// A number from the instrument cut to an integer, the nearest one where it lies beyond them all.
int cutToInt(const QString& reply)
{
    using Limits = std::numeric_limits<int>;
    const double value = reply.toDouble();
    if (std::isnan(value))
        return 0;
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

/// What one slot answered to the module query.
struct ModuleAnswer
{
    int slot;
    int type;
    int lastChannel;
};

/// Asks for the module of one slot; false for an empty slot.
bool askModule(const GuiGate& gate, int slot, ModuleAnswer& answer)
{
    const CommFunc catalogue;
    const QString model =
        ask(gate, QStringLiteral("SYST:CTYP? %1").arg(slot)).section(QLatin1Char(','), 1, 1);
    if (model.size() <= 1)
        return false;
    answer.slot = slot;
    answer.type = catalogue.moduleTypeFromModel(model);
    answer.lastChannel = catalogue.lastChannelIndex(answer.type);
    return true;
}

/// Wakes every channel of a module up; the answers are not used.
void askModuleFunctions(const ModuleAnswer& module)
{
    QStringList queries;
    for (int position = 1; position <= module.lastChannel + 1; ++position)
        queries.append(QStringLiteral("FUNC? (@%1)").arg(module.slot * 100 + position));
    g_visa->sendCommands(queries, kExchangeTimeoutMs);
}

void setCheckedQuietly(QRadioButton* radio)
{
    const QSignalBlocker blocker(radio);
    radio->setChecked(true);
}

} // namespace

/// Connects and finds the modules, blocking the caller; without an instrument the overlay appears.
void MainWidget::discoverInstrument()
{
    assertGuiThread();
    if (!discover(m_gate))
        showReconnectView();
}

/// True when the instrument has answered.
bool MainWidget::discover(const std::shared_ptr<GuiGate>& gate)
{
    if (!g_visa->connectDevice(g_resourceName))
        return false;
    ask(*gate, QStringLiteral("*CLS"));
    QString identity = ask(*gate, QStringLiteral("*IDN?"));
    identity.replace(QLatin1Char(','), QLatin1Char(' '));
    gate->run([identity] { g_instrumentId = identity; });
    if (identity.isEmpty())
        return false;
    g_instrumentConnected = true;

    for (int slot = 1; slot <= kSlotCount && gate->isOpen(); ++slot) {
        ModuleAnswer module{};
        if (!askModule(*gate, slot, module))
            continue;
        gate->run([module] {
            slotPresent[module.slot] = true;
            slotModuleType[module.slot] = module.type;
            slotLastChannel[module.slot] = module.lastChannel;
        });
        askModuleFunctions(module);
    }
    return true;
}

/// Reads the instrument's whole state into the window, blocking the caller.
void MainWidget::readBackInstrument()
{
    assertGuiThread();
    readBack(m_gate, this);
}

void MainWidget::readBack(const std::shared_ptr<GuiGate>& gate, MainWidget* window)
{
    readBackScanList(gate, window);
    syncTriggerSettings(gate, window);
    syncClock(*gate);
    queryStoredStates(*gate);
    gate->run([window] { window->rebuildScanChannels(); });
}

void MainWidget::readBackScanList(const std::shared_ptr<GuiGate>& gate, MainWidget* window)
{
    if (!g_instrumentConnected)
        return;
    ask(*gate, QStringLiteral("STAT:OPER:EVEN?"));
    const ScanListReply reply = decodeScanListReply(ask(*gate, QStringLiteral("ROUT:SCAN?")));
    QList<int> channels;
    gate->run([&reply, &channels, window] {
        if (!reply.isEmptyList)
            window->showScanList(reply.channels);
        for (int slot = 1; slot <= kSlotCount; ++slot) {
            for (int row = 0; slotPresent[slot] && row <= slotLastChannel[slot]; ++row)
                channels.append(slot * 100 + row + 1);
        }
    });
    for (const int channel : qAsConst(channels)) {
        if (!gate->isOpen())
            return;
        readBackChannel(gate, window, channel);
    }
}

void MainWidget::readBackChannel(const std::shared_ptr<GuiGate>& gate, MainWidget* window,
                                 int channel)
{
    ask(*gate, QStringLiteral("ROUT:CHAN:LAB? (@%1)").arg(channel));
    QString reply = ask(*gate, QStringLiteral("FUNC? (@%1)").arg(channel));
    reply.remove(QLatin1Char('"'));
    const QString displayName = displayNameOfFunction(
        reply, channel, [&gate](const QString& query) { return ask(*gate, query); });
    int function = -1;
    gate->run([window, channel, &reply, &displayName, &function] {
        // The name of a family, not the one on the screen: it stands for one member of it.
        if (window->showChannelFunction(channel, displayName))
            function = window->m_commFunc->functionIndex(reply);
    });
    if (function >= 0)
        readBackOptions(gate, window, function, channel);
}

void MainWidget::readBackOptions(const std::shared_ptr<GuiGate>& gate, MainWidget* window,
                                 int function, int channel)
{
    readBackChannelOptions(
        *gate, [window](int wanted) { return window->channelRow(wanted); }, function, channel);
}

void MainWidget::syncTriggerSettings(const std::shared_ptr<GuiGate>& gate, MainWidget* window)
{
    if (!g_instrumentConnected)
        return;
    const QString source = ask(*gate, QStringLiteral("TRIG:SOUR?"));
    gate->run([window, source] { window->showTriggerSource(source); });
    if (source == QLatin1String("TIM"))
        syncIntervalPicker(gate, window);

    const QString count = ask(*gate, QStringLiteral("TRIG:COUN?"));
    gate->run([window, count] { window->showTriggerCount(count); });

    const bool logsToUsb = ask(*gate, QStringLiteral("MMEM:LOG:ENAB?")).toInt() != 0;
    gate->run([window, logsToUsb] { window->m_usbLogCheck->setChecked(logsToUsb); });
    const bool limitsRows = ask(*gate, QStringLiteral("MMEM:FORM:READ:RLIM?")).toInt() != 0;
    gate->run([window, limitsRows] { window->m_rowLimitCheck->setChecked(limitsRows); });
    const int rowLimit = cutToInt(ask(*gate, QStringLiteral("MMEM:FORM:READ:RLIM:COUN?")));
    gate->run([window, rowLimit] { window->m_rowLimitSpin->setValue(rowLimit); });

    ask(*gate, QStringLiteral("ROUT:MON:STAT?"));
    // An instrument found running is stopped, never adopted.
    if (ask(*gate, QStringLiteral("STAT:OPER:COND?")) != QLatin1String("+256"))
        ask(*gate, QStringLiteral("ABOR"));
}

void MainWidget::syncIntervalPicker(const std::shared_ptr<GuiGate>& gate, MainWidget* window)
{
    const int seconds = cutToInt(ask(*gate, QStringLiteral("TRIG:TIM?")));
    gate->run([window, seconds] {
        TimePicker* const picker = window->m_intervalPicker;
        const QSignalBlocker blocker(picker);
        picker->setEnabled(true);
        picker->setTime(seconds / 86400, seconds % 86400 / 3600, seconds % 3600 / 60, seconds % 60,
                        0);
    });
}

/// Sets the instrument's clock to the computer's.
void MainWidget::syncClock(const GuiGate& gate)
{
    if (!g_instrumentConnected)
        return;
    const QDateTime now = QDateTime::currentDateTime();
    ask(gate, QStringLiteral("SYST:DATE %1").arg(now.toString(QStringLiteral("yyyy,MM,dd"))));
    ask(gate, QStringLiteral("SYST:TIME %1").arg(now.toString(QStringLiteral("hh,mm,ss.zzz"))));
}

/// Asks for the stored states; the answers are not used.
void MainWidget::queryStoredStates(const GuiGate& gate)
{
    ask(gate, QStringLiteral("SYST:PERS:MOD:DEF?"));
    ask(gate, QStringLiteral("SYST:PERS:MOD?"));
    for (int state = 1; state <= kStoredStates; ++state) {
        ask(gate, QStringLiteral("MEM:STAT:NAME? %1").arg(state));
        ask(gate, QStringLiteral("MEM:STAT:VAL? %1").arg(state));
    }
}

/// Checks exactly the listed channels. No command follows; an entry without a row is passed over.
void MainWidget::showScanList(const QList<int>& channels)
{
    assertGuiThread();
    const QSignalBlocker blocker(m_channelTree);
    for (QTreeWidgetItem* module : qAsConst(slotItems)) {
        for (int row = 0; row < module->childCount(); ++row) {
            if (module->child(row)->checkState(0) == Qt::Checked)
                module->child(row)->setCheckState(0, Qt::Unchecked);
        }
    }
    for (const int channel : channels) {
        if (QTreeWidgetItem* item = findChannelItem(channel))
            item->setCheckState(0, Qt::Checked);
    }
    for (QTreeWidgetItem* module : qAsConst(slotItems))
        updateModuleCheckState(module);
}

/// Selects the function in the channel's row, and takes its partner over or gives it back as choosing the
/// function does; a name that the row does not offer changes nothing.
/// False when the channel has no row.
bool MainWidget::showChannelFunction(int channel, const QString& displayName)
{
    assertGuiThread();
    CustomComboBox* const box = channelRow(channel).function;
    if (!box)
        return false;
    const QSignalBlocker blocker(box);
    const int row = box->findText(displayName, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0) {
        box->setCurrentIndex(row);
        matchPartner(channel);
    }
    return true;
}

void MainWidget::showTriggerSource(const QString& reply)
{
    assertGuiThread();
    if (reply == QLatin1String("IMM"))
        setCheckedQuietly(m_startNowRadio);
    else if (reply.left(4) == QLatin1String("ALAR"))
        setCheckedQuietly(m_startOnAlarmRadio);
    else if (reply == QLatin1String("TIM"))
        setCheckedQuietly(m_intervalCustomRadio);
}

/// Shows the stop condition. The radio's signals are live: when it changes it sends its command.
void MainWidget::showTriggerCount(const QString& reply)
{
    assertGuiThread();
    if (reply.toDouble() >= kScpiInfinity) {
        m_stopManualRadio->setChecked(true);
        return;
    }
    m_stopCountRadio->setChecked(true);
    m_stopCountBox->setValue(cutToInt(reply));
}

QTreeWidgetItem* MainWidget::rowForChannel(int channel) const
{
    return findChannelItem(channel);
}
