#include "app/mainwidget.h"

#include "app/channeloptions.h"
#include "app/channeltable.h"
#include "app/fourwirepartners.h"
#include "app/linkwatch.h"
#include "app/scanmarks.h"
#include "channels/commfunc.h"
#include "channels/functionnames.h"
#include "channels/scanlist.h"
#include "common/guigate.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
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

/// How the instrument reports "no end" for a count: SCPI's infinity.
constexpr double kScpiInfinity = 9.9e37;
constexpr int kStoredStates = 5;

/// A number from the instrument cut to an integer, the nearest one where it lies beyond them all.
int cutToInt(const QString& reply)
{
    using Limits = std::numeric_limits<int>;
    const double value = reply.toDouble();
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

/// What one slot answered to the module query.
struct ModuleAnswer
{
    int slot;
    int type;
    int lastChannel;
};

/// What is known of a slot.
struct SlotRegisters
{
    bool isPresent;
    int type;
    int lastChannel;
};

/// Enters a slot; what was known of it before.
SlotRegisters enterSlot(int slot, const SlotRegisters& registers)
{
    const SlotRegisters before{slotPresent[slot], slotModuleType[slot], slotLastChannel[slot]};
    slotPresent[slot] = registers.isPresent;
    slotModuleType[slot] = registers.type;
    slotLastChannel[slot] = registers.lastChannel;
    return before;
}

/// Asks for the module of one slot; false for an empty slot.
bool askModule(LinkWatch& link, int slot, ModuleAnswer& answer)
{
    const CommFunc catalogue;
    const QString model =
        link.ask(QStringLiteral("SYST:CTYP? %1").arg(slot)).section(QLatin1Char(','), 1, 1);
    if (model.size() <= 1) {
        return false;
    }
    answer.slot = slot;
    answer.type = catalogue.moduleTypeFromModel(model);
    answer.lastChannel = catalogue.lastChannelIndex(answer.type);
    return true;
}

/// Wakes every channel of a module up; the answers are not used. False when none of them answers.
bool askModuleFunctions(LinkWatch& link, const ModuleAnswer& module)
{
    QStringList queries;
    for (int position = 1; position <= module.lastChannel + 1; ++position) {
        queries.append(QStringLiteral("FUNC? (@%1)").arg(module.slot * 100 + position));
    }
    return link.askAll(queries);
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
    LinkWatch link(m_gate);
    if (!discover(link, this)) {
        showReconnectView();
    }
}

/// True when the instrument has answered, to the last question.
bool MainWidget::discover(LinkWatch& link, MainWidget* window)
{
    if (!g_visa->connectDevice(g_resourceName)) {
        return false;
    }
    link.ask(QStringLiteral("*CLS"));
    QString identity = link.ask(QStringLiteral("*IDN?"));
    identity.replace(QLatin1Char(','), QLatin1Char(' '));
    link.show([identity] { g_instrumentId = identity; });
    if (identity.isEmpty()) {
        return false;
    }
    g_instrumentConnected = true;
    // From here on the launcher is listened to: the search and the read-back may take long.
    link.show([window] { window->listenToLauncher(); });

    for (int slot = 1; slot <= kSlotCount && link.goesOn(); ++slot) {
        ModuleAnswer module{};
        if (!askModule(link, slot, module)) {
            continue;
        }
        SlotRegisters before{};
        link.show([module, &before] {
            before = enterSlot(module.slot, {true, module.type, module.lastChannel});
        });
        if (askModuleFunctions(link, module)) {
            continue;
        }
        // A spoilt reply can read like a module. Every later read-back would wait for the channels of
        // one that is not there, and end as on a dead link.
        window->m_gate->run([slot, before, window] {
            if (!window->slotItems.contains(slot)) {
                enterSlot(slot, before);
            }
        });
    }
    if (link.isLost()) {
        g_instrumentConnected = false;
    }
    return !link.isLost();
}

/// Reads the instrument's whole state into the window, blocking the caller.
void MainWidget::readBackInstrument()
{
    assertGuiThread();
    readBackHere([this](LinkWatch& link) { readBack(link, this); });
}

/// A read-back on the GUI thread. One that finds the link dead leads to the recovery, and what is left
/// of the gesture asks nothing more. The watch goes on from one read-back to the next: each of a few
/// questions would never add up to the minute.
void MainWidget::readBackHere(const std::function<void(LinkWatch&)>& questions)
{
    assertGuiThread();
    if (!g_instrumentConnected) {
        return;
    }
    if (!m_link) {
        m_link = std::make_shared<LinkWatch>(m_gate);
    }
    const std::shared_ptr<LinkWatch> link = m_link;
    questions(*link);
    if (link->isLost()) {
        loseInstrument();
    }
}

void MainWidget::readBackChannel(int channel)
{
    readBackHere([this, channel](LinkWatch& link) { readBackChannel(link, this, channel); });
}

void MainWidget::readBackOptions(int function, int channel)
{
    readBackHere([this, function, channel](LinkWatch& link) {
        readBackOptions(link, this, function, channel);
    });
}

void MainWidget::readBack(LinkWatch& link, MainWidget* window)
{
    readBackScanList(link, window);
    syncTriggerSettings(link, window);
    syncClock(link);
    queryStoredStates(link);
    link.show([window] { window->m_marks->rebuildScanChannels(); });
}

void MainWidget::readBackScanList(LinkWatch& link, MainWidget* window)
{
    if (!g_instrumentConnected) {
        return;
    }
    link.ask(QStringLiteral("STAT:OPER:EVEN?"));
    const ScanListReply reply = decodeScanListReply(link.ask(QStringLiteral("ROUT:SCAN?")));
    QList<int> channels;
    link.show([&reply, &channels, window] {
        if (!reply.isEmptyList) {
            window->m_marks->check(reply.channels);
        }
        for (int slot = 1; slot <= kSlotCount; ++slot) {
            for (int row = 0; slotPresent[slot] && row <= slotLastChannel[slot]; ++row) {
                channels.append(slot * 100 + row + 1);
            }
        }
    });
    for (const int channel : qAsConst(channels)) {
        if (!link.goesOn()) {
            return;
        }
        readBackChannel(link, window, channel);
    }
}

void MainWidget::readBackChannel(LinkWatch& link, MainWidget* window, int channel)
{
    link.ask(QStringLiteral("ROUT:CHAN:LAB? (@%1)").arg(channel));
    QString reply = link.ask(QStringLiteral("FUNC? (@%1)").arg(channel));
    reply.remove(QLatin1Char('"'));
    const QString displayName = displayNameOfFunction(
        reply, channel, [&link](const QString& query) { return link.ask(query); });
    int function = -1;
    link.show([window, channel, &reply, &displayName, &function] {
        // The name of a family, not the one on the screen: it stands for one member of it.
        if (window->showChannelFunction(channel, displayName)) {
            function = window->m_commFunc->functionIndex(reply);
        }
    });
    if (function >= 0) {
        readBackOptions(link, window, function, channel);
    }
}

void MainWidget::readBackOptions(LinkWatch& link, MainWidget* window, int function, int channel)
{
    readBackChannelOptions(
        link, [window](int wanted) { return window->m_table->row(wanted); }, function, channel);
}

void MainWidget::syncTriggerSettings(LinkWatch& link, MainWidget* window)
{
    if (!g_instrumentConnected) {
        return;
    }
    const QString source = link.ask(QStringLiteral("TRIG:SOUR?"));
    link.show([window, source] { window->showTriggerSource(source); });
    if (source == QLatin1String("TIM")) {
        syncIntervalPicker(link, window);
    }

    const QString count = link.ask(QStringLiteral("TRIG:COUN?"));
    link.show([window, count] { window->showTriggerCount(count); });

    const bool logsToUsb = link.ask(QStringLiteral("MMEM:LOG:ENAB?")).toInt() != 0;
    link.show([window, logsToUsb] { window->m_usbLogCheck->setChecked(logsToUsb); });
    const bool limitsRows = link.ask(QStringLiteral("MMEM:FORM:READ:RLIM?")).toInt() != 0;
    link.show([window, limitsRows] { window->m_rowLimitCheck->setChecked(limitsRows); });
    const int rowLimit = cutToInt(link.ask(QStringLiteral("MMEM:FORM:READ:RLIM:COUN?")));
    link.show([window, rowLimit] { window->m_rowLimitSpin->setValue(rowLimit); });

    link.ask(QStringLiteral("ROUT:MON:STAT?"));
    // An instrument found running is stopped, never adopted.
    if (link.ask(QStringLiteral("STAT:OPER:COND?")) != QLatin1String("+256")) {
        link.ask(QStringLiteral("ABOR"));
    }
}

void MainWidget::syncIntervalPicker(LinkWatch& link, MainWidget* window)
{
    const int seconds = cutToInt(link.ask(QStringLiteral("TRIG:TIM?")));
    link.show([window, seconds] {
        TimePicker* const picker = window->m_intervalPicker;
        const QSignalBlocker blocker(picker);
        picker->setEnabled(true);
        picker->setTime(seconds / 86400, seconds % 86400 / 3600, seconds % 3600 / 60, seconds % 60,
                        0);
    });
}

/// Sets the instrument's clock to the computer's.
void MainWidget::syncClock(LinkWatch& link)
{
    if (!g_instrumentConnected) {
        return;
    }
    const QDateTime now = QDateTime::currentDateTime();
    link.ask(QStringLiteral("SYST:DATE %1").arg(now.toString(QStringLiteral("yyyy,MM,dd"))));
    link.ask(QStringLiteral("SYST:TIME %1").arg(now.toString(QStringLiteral("hh,mm,ss.zzz"))));
}

/// Asks for the stored states; the answers are not used.
void MainWidget::queryStoredStates(LinkWatch& link)
{
    link.ask(QStringLiteral("SYST:PERS:MOD:DEF?"));
    link.ask(QStringLiteral("SYST:PERS:MOD?"));
    for (int state = 1; state <= kStoredStates; ++state) {
        link.ask(QStringLiteral("MEM:STAT:NAME? %1").arg(state));
        link.ask(QStringLiteral("MEM:STAT:VAL? %1").arg(state));
    }
}

/// Selects the function in the channel's row, and takes its partner over or gives it back as choosing the
/// function does; a name that the row does not offer changes nothing, and nor does any name in a row that is
/// taken over: it shows the function of the row that has it.
/// False when the channel has no row.
bool MainWidget::showChannelFunction(int channel, const QString& displayName)
{
    assertGuiThread();
    CustomComboBox* const box = m_table->row(channel).function;
    if (!box) {
        return false;
    }
    if (m_partners->isTakenOver(channel)) {
        return true;
    }
    const QSignalBlocker blocker(box);
    const int row = box->findText(displayName, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0) {
        box->setCurrentIndex(row);
        m_partners->match(channel);
    }
    return true;
}

void MainWidget::showTriggerSource(const QString& reply)
{
    assertGuiThread();
    if (reply == QLatin1String("IMM")) {
        setCheckedQuietly(m_startNowRadio);
    } else if (reply.left(4) == QLatin1String("ALAR")) {
        setCheckedQuietly(m_startOnAlarmRadio);
    } else if (reply == QLatin1String("TIM")) {
        setCheckedQuietly(m_intervalCustomRadio);
    }
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
