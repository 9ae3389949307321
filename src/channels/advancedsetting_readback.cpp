// Showing what the instrument reports. Nothing here sends a command.
#include "channels/advancedsetting.h"

#include "common/threadassert.h"

using scn::OptionChoice;
using scn::OptionList;
using scn::OptionSpin;

void AdvancedSetting::setNplc(double cycles)
{
    assertGuiThread();
    m_controls.selectValue(OptionList::Nplc, cycles);
}

void AdvancedSetting::setLowFrequency(double hertz)
{
    assertGuiThread();
    m_controls.chooseValue(OptionChoice::LowFrequency, hertz);
}

void AdvancedSetting::setOffsetCompensation(bool on)
{
    assertGuiThread();
    m_controls.choose(OptionChoice::Offset, on ? scn::kOn : scn::kOff);
}

void AdvancedSetting::setDelayMode(int row)
{
    assertGuiThread();
    if (row == scn::kAutomaticDelayRow || row == scn::kFixedDelayRow) {
        m_controls.selectRow(OptionList::Delay, row);
        m_controls.enableDependentSpins();
    }
}

void AdvancedSetting::setDelayValue(double seconds)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::Delay, seconds);
}

void AdvancedSetting::setInputImpedanceAuto(bool on)
{
    assertGuiThread();
    m_controls.choose(OptionChoice::InputResistance, on ? scn::kOn : scn::kOff);
}

void AdvancedSetting::setRefJunctionFixed(bool fixed)
{
    assertGuiThread();
    m_controls.choose(OptionChoice::RefJunction, fixed ? scn::kOn : scn::kOff);
    m_controls.enableDependentSpins();
}

void AdvancedSetting::setFixedJunctionTemp(double temperature)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::FixedTemperature, temperature);
}

void AdvancedSetting::setRtdR0(double ohms)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::R0, ohms);
}

void AdvancedSetting::setGaugeFactor(double factor)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::GaugeFactor, factor);
}

void AdvancedSetting::setStrainResistance(double ohms)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::StrainResistance, ohms);
}

void AdvancedSetting::setPoissonRatio(double ratio)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::PoissonRatio, ratio);
}

void AdvancedSetting::setDriveVoltage(double volts)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::DriveVoltage, volts);
}

void AdvancedSetting::setDbmReferenceResistance(double ohms)
{
    assertGuiThread();
    m_controls.selectValue(OptionList::ReferenceResistance, ohms);
}

void AdvancedSetting::setDbReference(double decibels)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::DbReference, decibels);
}

void AdvancedSetting::setPercentReference(double reference)
{
    assertGuiThread();
    m_controls.setNumber(OptionSpin::PercentReference, reference);
}
