// What the panel says to the instrument, and what it is told to show.
#include "channels/advancedsetting.h"

#include "channels/advancedsetting_facts.h"
#include "channels/commfunc.h"
#include "common/threadassert.h"
#include "instrument/exchange.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDebug>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>

namespace {

/// The sensors whose resistance at 0 °C an RTD channel accepts, in ohms.
struct R0Band
{
    double minimum;
    double maximum;
};

constexpr std::array<R0Band, 2> kR0Bands = {{{99.0, 101.0}, {990.0, 1010.0}}};

/// Last R0 that lay in one of the bands; shared by all panels.
double lastAcceptedR0 = 100.0;

bool isAcceptedR0(double ohms)
{
    return std::any_of(kR0Bands.cbegin(), kR0Bands.cend(), [ohms](const R0Band& band) {
        return ohms >= band.minimum && ohms <= band.maximum;
    });
}

QString onOff(bool on)
{
    return on ? QStringLiteral("ON") : QStringLiteral("OFF");
}

} // namespace

AdvancedSetting::AdvancedSetting(QWidget* parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint)
{
    assertGuiThread();
    std::transform(s_lists.cbegin(), s_lists.cend(), m_rows.begin(),
                   [](const ListFacts& facts) { return facts.initialRow; });
    std::transform(s_choices.cbegin(), s_choices.cend(), m_chosen.begin(),
                   [](const ChoiceFacts& facts) { return facts.initialId; });
    std::transform(s_spins.cbegin(), s_spins.cend(), m_values.begin(),
                   [](const SpinFacts& facts) { return facts.initial; });
}

AdvancedSetting::~AdvancedSetting()
{
    // The boxes lose the focus on their way out, and would report what was being typed.
    for (QDoubleSpinBox* box : m_spins) {
        if (box) {
            box->disconnect(this);
        }
    }
}

const CommFunc& AdvancedSetting::catalogue()
{
    if (!m_commFunc) {
        m_commFunc = new CommFunc(this);
    }
    return *m_commFunc;
}

/// Prefix of the function's option commands.
QString AdvancedSetting::header()
{
    return catalogue().scpiHeader(m_functionIndex);
}

/// The prefix up to its first colon.
QString AdvancedSetting::headerRoot()
{
    return header().section(QLatin1Char(':'), 0, 0);
}

/// The prefix behind its first colon.
QString AdvancedSetting::headerBranch()
{
    return header().section(QLatin1Char(':'), 1);
}

void AdvancedSetting::send(const QString& command)
{
    // Nobody would answer; the recovery shows what the instrument has.
    if (!g_instrumentConnected) {
        return;
    }
    scn::exchange(command);
    emit sigComponentChanged(m_channel);
}

/// Sends an option of a temperature sensor; nothing for another function.
void AdvancedSetting::sendTransducer(const QString& form, const QString& value)
{
    if (headerRoot() == QLatin1String("TEMP")) {
        send(form.arg(headerRoot(), headerBranch(), value, QString::number(m_channel)));
    }
}

/// Sends an option of a strain gauge; nothing for another function.
void AdvancedSetting::sendStrain(const QString& form, double value)
{
    if (headerRoot() == QLatin1String("STR")) {
        send(form.arg(headerRoot()).arg(value).arg(m_channel));
    }
}

void AdvancedSetting::onPlcComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (index < 0 || index >= s_lists[NplcList].rowCount) {
        return;
    }
    // Four characters, so that a strain function's header keeps its colon: "STR::NPLC".
    constexpr int kFamilyLength = 4;
    send(QStringLiteral("%1:NPLC %2,(@%3)")
             .arg(header().left(kFamilyLength),
                  QString::fromUtf8(s_lists[NplcList].texts[static_cast<std::size_t>(index)]),
                  QString::number(m_channel)));
}

void AdvancedSetting::onFreqRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        const int hertz = m_choices[LowFrequencyChoice]->id(btn);
        send(QStringLiteral("%1:BAND %2,(@%3)").arg(header()).arg(hertz).arg(m_channel));
    }
}

void AdvancedSetting::onOffsetRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        const bool on = m_choices[OffsetChoice]->id(btn) == kOn;
        send(QStringLiteral("%1:OCOM %2,(@%3)")
                 .arg(header(), onOff(on), QString::number(m_channel)));
    }
}

void AdvancedSetting::onDelayComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (index < 0) {
        return;
    }
    enableDependentSpins();
    send(QStringLiteral("ROUT:CHAN:DEL:AUTO %1,(@%2)")
             .arg(onOff(index == kAutomaticDelayRow), QString::number(m_channel)));
}

void AdvancedSetting::onDelaySpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(QStringLiteral("ROUT:CHAN:DEL %1,(@%2)").arg(value).arg(m_channel));
}

void AdvancedSetting::onVoltInResRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (checked) {
        const bool high = m_choices[InputResistanceChoice]->id(btn) == kOn;
        send(QStringLiteral("INP:IMP:AUTO %1,(@%2)").arg(onOff(high), QString::number(m_channel)));
    }
}

void AdvancedSetting::onAutoCheckToggled(bool checked)
{
    assertGuiThread();
    sendTransducer(QStringLiteral("%1:TRAN:%2:CHEC %3,(@%4)"), onOff(checked));
}

void AdvancedSetting::onSetRefToggled(bool checked)
{
    assertGuiThread();
    sendTransducer(QStringLiteral("%1:TRAN:%2:REF %3,(@%4)"), onOff(checked));
}

void AdvancedSetting::onRefJuncRadioBtnToggled(QAbstractButton* btn, bool checked)
{
    assertGuiThread();
    if (!checked) {
        return;
    }
    enableDependentSpins();
    const bool fixed = m_choices[RefJunctionChoice]->id(btn) == kOn;
    sendTransducer(QStringLiteral("%1:TRAN:%2:RJUN:TYPE %3,(@%4)"),
                   fixed ? QStringLiteral("FIX") : QStringLiteral("INT"));
}

void AdvancedSetting::onFixSpinBoxValueChanged(double value)
{
    assertGuiThread();
    sendTransducer(QStringLiteral("%1:TRAN:%2:RJUN %3,(@%4)"), QStringLiteral("%1").arg(value));
}

void AdvancedSetting::onRtdRoSpinBoxValueChanged(double value)
{
    assertGuiThread();
    if (!isAcceptedR0(value)) {
        setSpinValue(R0Spin, lastAcceptedR0);
        return;
    }
    lastAcceptedR0 = value;
    sendTransducer(QStringLiteral("%1:TRAN:%2:RES %3,(@%4)"), QStringLiteral("%1").arg(value));
}

void AdvancedSetting::onInstCoeSpinBoxValueChanged(double value)
{
    assertGuiThread();
    sendStrain(QStringLiteral("%1:GFAC %2,(@%3)"), value);
}

void AdvancedSetting::onStrResSpinBoxValueChanged(double value)
{
    assertGuiThread();
    sendStrain(QStringLiteral("%1:RES %2,(@%3)"), value);
}

void AdvancedSetting::onPoissonRatioSpinBoxValueChanged(double value)
{
    assertGuiThread();
    sendStrain(QStringLiteral("%1:POIS %2,(@%3)"), value);
}

void AdvancedSetting::onDrivVoltSpinBoxValueChanged(double value)
{
    assertGuiThread();
    sendStrain(QStringLiteral("%1:EXC %2,(@%3)"), value);
}

void AdvancedSetting::onReferResComboCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (index < 0 || index >= s_lists[ReferenceResistanceList].rowCount) {
        return;
    }
    const char* ohms = s_lists[ReferenceResistanceList].texts[static_cast<std::size_t>(index)];
    send(QStringLiteral("CALC:SCAL:DBM:REF %1,(@%2)").arg(QString::fromUtf8(ohms)).arg(m_channel));
}

void AdvancedSetting::ondBReferSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(QStringLiteral("CALC:SCAL:DB:REF %1,(@%2)").arg(value).arg(m_channel));
}

void AdvancedSetting::onReferSpinBoxValueChanged(double value)
{
    assertGuiThread();
    send(QStringLiteral("CALC:SCAL:REF %1,(@%2)").arg(value).arg(m_channel));
}

void AdvancedSetting::onReDefSetBtnClicked()
{
    assertGuiThread();
    // Signals stay live: what a default changes is sent by its own slot.
    const auto isShown = [this](Group group) {
        const QGroupBox* box = m_groups[group];
        return box && !box->isHidden();
    };
    for (int number = 0; number < GroupCount; ++number) {
        const auto group = static_cast<Group>(number);
        if (!isShown(group)) {
            continue;
        }
        if (group == DelayGroup) {
            restoreDelay();
            continue;
        }
        for (std::size_t list = 0; list < ListCount; ++list) {
            if (s_lists[list].group == group) {
                m_lists[list]->setCurrentIndex(s_lists[list].initialRow);
            }
        }
        for (std::size_t choice = 0; choice < ChoiceCount; ++choice) {
            if (s_choices[choice].group == group) {
                m_choices[choice]->button(s_choices[choice].defaultId)->setChecked(true);
            }
        }
        for (std::size_t check = 0; check < CheckCount; ++check) {
            if (s_checks[check].group == group) {
                m_checks[check]->setChecked(false);
            }
        }
        for (std::size_t spin = 0; spin < SpinCount; ++spin) {
            if (s_spins[spin].group == group) {
                m_spins[spin]->setValue(s_spins[spin].initial);
            }
        }
    }
}

/// The value first: setting one turns the automatic delay off in the instrument, so the mode follows it
/// also where the panel shows it already.
void AdvancedSetting::restoreDelay()
{
    const double initial = s_spins[DelaySpin].initial;
    const bool turnsAutomaticOff = m_spins[DelaySpin]->value() != initial;
    m_spins[DelaySpin]->setValue(initial);
    CustomComboBox* const mode = m_lists[DelayList];
    if (mode->currentIndex() != kAutomaticDelayRow) {
        mode->setCurrentIndex(kAutomaticDelayRow);
    } else if (turnsAutomaticOff) {
        onDelayComboCurrentIndexChanged(kAutomaticDelayRow);
    }
}

void AdvancedSetting::selectRow(List list, int row)
{
    m_rows[list] = row;
    if (CustomComboBox* box = m_lists[list]) {
        const QSignalBlocker blocker(box);
        box->setCurrentIndex(row);
    }
}

void AdvancedSetting::selectMatchingRow(List list, double value)
{
    const ListFacts& facts = s_lists[list];
    const auto* const end = facts.texts.cbegin() + facts.rowCount;
    const auto* const match = std::find_if(facts.texts.cbegin(), end, [value](const char* text) {
        return qFuzzyCompare(QString::fromUtf8(text).toDouble(), value);
    });
    if (match == end) {
        qDebug() << "未找到与值" << value << "匹配的选项";
        return;
    }
    selectRow(list, static_cast<int>(match - facts.texts.cbegin()));
}

void AdvancedSetting::choose(Choice choice, int id)
{
    m_chosen[choice] = id;
    if (QButtonGroup* buttons = m_choices[choice]) {
        const QSignalBlocker blocker(buttons);
        buttons->button(id)->setChecked(true);
    }
}

void AdvancedSetting::setSpinValue(Spin spin, double value)
{
    m_values[spin] = value;
    QDoubleSpinBox* const box = m_spins[spin];
    if (!box) {
        return;
    }
    const bool isBeingTyped = box->hasFocus() && box->text() != box->textFromValue(box->value());
    auto* const line = box->findChild<QLineEdit*>();
    const QString typed = box->text();
    const int cursor = line->cursorPosition();
    const QSignalBlocker blocker(box);
    box->setValue(value);
    if (isBeingTyped) {
        line->setText(typed);
        line->setCursorPosition(cursor);
    }
}

/// A delay and a junction temperature can be entered only while they are in force.
void AdvancedSetting::enableDependentSpins()
{
    if (m_spins[DelaySpin]) {
        m_spins[DelaySpin]->setEnabled(m_lists[DelayList]->currentIndex() != kAutomaticDelayRow);
    }
    if (m_spins[FixedTempSpin]) {
        m_spins[FixedTempSpin]->setEnabled(m_choices[RefJunctionChoice]->checkedId() == kOn);
    }
}

void AdvancedSetting::setNplc(double cycles)
{
    assertGuiThread();
    selectMatchingRow(NplcList, cycles);
}

void AdvancedSetting::setLowFrequency(double hertz)
{
    assertGuiThread();
    for (const ChoiceButton& button : s_choices[LowFrequencyChoice].buttons) {
        if (hertz == button.id) {
            choose(LowFrequencyChoice, button.id);
        }
    }
}

void AdvancedSetting::setOffsetCompensation(bool on)
{
    assertGuiThread();
    choose(OffsetChoice, on ? kOn : kOff);
}

void AdvancedSetting::setDelayMode(int row)
{
    assertGuiThread();
    if (row == kAutomaticDelayRow || row == kFixedDelayRow) {
        selectRow(DelayList, row);
        enableDependentSpins();
    }
}

void AdvancedSetting::setDelayValue(double seconds)
{
    assertGuiThread();
    setSpinValue(DelaySpin, seconds);
}

void AdvancedSetting::setInputImpedanceAuto(bool on)
{
    assertGuiThread();
    choose(InputResistanceChoice, on ? kOn : kOff);
}

void AdvancedSetting::setRefJunctionFixed(bool fixed)
{
    assertGuiThread();
    choose(RefJunctionChoice, fixed ? kOn : kOff);
    enableDependentSpins();
}

void AdvancedSetting::setFixedJunctionTemp(double temperature)
{
    assertGuiThread();
    setSpinValue(FixedTempSpin, temperature);
}

void AdvancedSetting::setRtdR0(double ohms)
{
    assertGuiThread();
    setSpinValue(R0Spin, ohms);
}

void AdvancedSetting::setGaugeFactor(double factor)
{
    assertGuiThread();
    setSpinValue(GaugeFactorSpin, factor);
}

void AdvancedSetting::setStrainResistance(double ohms)
{
    assertGuiThread();
    setSpinValue(StrainResistanceSpin, ohms);
}

void AdvancedSetting::setPoissonRatio(double ratio)
{
    assertGuiThread();
    setSpinValue(PoissonRatioSpin, ratio);
}

void AdvancedSetting::setDriveVoltage(double volts)
{
    assertGuiThread();
    setSpinValue(DriveVoltageSpin, volts);
}

void AdvancedSetting::setDbmReferenceResistance(double ohms)
{
    assertGuiThread();
    selectMatchingRow(ReferenceResistanceList, ohms);
}

void AdvancedSetting::setDbReference(double decibels)
{
    assertGuiThread();
    setSpinValue(DbReferenceSpin, decibels);
}

void AdvancedSetting::setPercentReference(double reference)
{
    assertGuiThread();
    setSpinValue(PercentReferenceSpin, reference);
}
