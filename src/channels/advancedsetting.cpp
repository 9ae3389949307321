#include "channels/advancedsetting.h"

#include "channels/commfunc.h"
#include "channels/optioncommands.h"
#include "common/threadassert.h"
#include "instrument/exchange.h"
#include "state/globals.h"

#include <QButtonGroup>

#include <algorithm>
#include <array>

using scn::OptionChoice;
using scn::OptionList;
using scn::OptionSpin;

namespace {

/// A band of accepted R0 values, in ohms.
struct R0Band
{
    double minimum;
    double maximum;
};

constexpr std::array<R0Band, 2> kR0Bands = {{{99.0, 101.0}, {990.0, 1010.0}}};

/// Last R0 within one of the bands; shared by all panels.
double lastAcceptedR0 = 100.0;

bool isAcceptedR0(double ohms)
{
    return std::any_of(kR0Bands.cbegin(), kR0Bands.cend(), [ohms](const R0Band& band) {
        return ohms >= band.minimum && ohms <= band.maximum;
    });
}

} // namespace

AdvancedSetting::AdvancedSetting(QWidget* parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint)
{
    assertGuiThread();
}

AdvancedSetting::~AdvancedSetting()
{
    // The boxes lose the focus while they are destroyed and would report a number being typed.
    m_controls.disconnectNumbers(this);
}

void AdvancedSetting::showFunctionOptions(const QString& name, int functionIndex, int channel)
{
    assertGuiThread();
    m_functionIndex = functionIndex;
    m_channel = channel;
    m_functionGroups = scn::groupsOfFunction(functionIndex);
    setTitle(QStringLiteral("%1 %2-%3").arg(tr("高级设置"), name, QString::number(channel)));
    showOfferedGroups();
}

void AdvancedSetting::showScaleOptions(const QString& scaleFunction, int channel)
{
    assertGuiThread();
    m_channel = channel;
    m_scaleGroups = scn::groupsOfScaleFunction(scaleFunction);
    setTitle(QStringLiteral("%1-%2").arg(scaleFunction, QString::number(channel)));
    showOfferedGroups();
}

const CommFunc& AdvancedSetting::catalogue()
{
    if (!m_commFunc) {
        m_commFunc = new CommFunc(this);
    }
    return *m_commFunc;
}

scn::OptionCommands AdvancedSetting::commands()
{
    return {catalogue().scpiHeader(m_functionIndex), m_channel};
}

/// An empty command stands for an option that the function does not have.
void AdvancedSetting::send(const QString& command)
{
    // Nobody would answer, and the recovery reads everything back.
    if (command.isEmpty() || !g_instrumentConnected) {
        return;
    }
    scn::exchange(command);
    emit sigComponentChanged(m_channel);
}

bool AdvancedSetting::isOn(scn::OptionChoice choice, QAbstractButton* button) const
{
    return m_controls.buttons(choice)->id(button) == scn::kOn;
}

void AdvancedSetting::onPlcComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    const QString cycles = textOf(OptionList::Nplc, index);
    if (!cycles.isEmpty()) {
        send(commands().nplc(cycles));
    }
}

void AdvancedSetting::onFreqRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        send(commands().lowFrequency(m_controls.buttons(OptionChoice::LowFrequency)->id(btn)));
    }
}

void AdvancedSetting::onOffsetRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        send(commands().offsetCompensation(isOn(OptionChoice::Offset, btn)));
    }
}

void AdvancedSetting::onDelayComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (index < 0) {
        return;
    }
    m_controls.enableDependentSpins();
    send(commands().automaticDelay(index == scn::kAutomaticDelayRow));
}

void AdvancedSetting::onDelaySpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().delay(value));
}

void AdvancedSetting::onVoltInResRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        send(commands().inputImpedanceAuto(isOn(OptionChoice::InputResistance, btn)));
    }
}

void AdvancedSetting::onAutoCheckToggled(bool checked)
{
    assertGuiThread();
    send(commands().thermocoupleCheck(checked));
}

void AdvancedSetting::onSetRefToggled(bool checked)
{
    assertGuiThread();
    send(commands().reference(checked));
}

void AdvancedSetting::onRefJuncRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        m_controls.enableDependentSpins();
        send(commands().refJunctionFixed(isOn(OptionChoice::RefJunction, btn)));
    }
}

void AdvancedSetting::onFixSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().fixedJunctionTemp(value));
}

void AdvancedSetting::onRtdRoSpinBoxValueChanged(double value)
{
    assertGuiThread();
    if (!isAcceptedR0(value)) {
        m_controls.setNumber(OptionSpin::R0, lastAcceptedR0);
        return;
    }
    lastAcceptedR0 = value;
    send(commands().rtdR0(value));
}

void AdvancedSetting::onInstCoeSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().gaugeFactor(value));
}

void AdvancedSetting::onStrResSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().strainResistance(value));
}

void AdvancedSetting::onPoissonRatioSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().poissonRatio(value));
}

void AdvancedSetting::onDrivVoltSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().driveVoltage(value));
}

void AdvancedSetting::onReferResComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    const QString ohms = textOf(OptionList::ReferenceResistance, index);
    if (!ohms.isEmpty()) {
        send(commands().dbmReferenceResistance(ohms));
    }
}

void AdvancedSetting::ondBReferSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().dbReference(value));
}

void AdvancedSetting::onReferSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(commands().percentReference(value));
}

void AdvancedSetting::onReDefSetBtnClicked()
{
    assertGuiThread();
    m_controls.restoreDefaults(
        [this] { onDelayComboCurrentIndexChanged(scn::kAutomaticDelayRow); });
}
