#include "channels/optionfacts.h"

#include <QtGlobal>

namespace scn {

namespace {

constexpr std::array<const char*, kOptionGroupCount> kTitles = {
    QT_TRANSLATE_NOOP("AdvancedSetting", "电源线周期数(NPLC)"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "频率下限"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "偏移补偿"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "通道延迟(秒)"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "直流输入电阻"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "热电偶"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "热电偶"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "参考结温度"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "RTD类型"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "仪器系数"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "应变仪电阻"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "柏松比"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "激励电压"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "参考电阻"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "dB参考值"),
    QT_TRANSLATE_NOOP("AdvancedSetting", "参考值"),
};

constexpr std::array<ListFacts, kOptionListCount> kLists = {{
    {OptionGroup::Nplc, {"0.02", "0.2", "1", "10", "100"}, 5, 2},
    {OptionGroup::Delay, {"自动", "时间"}, 2, kAutomaticDelayRow},
    {OptionGroup::ReferenceResistance,
     {"50", "75", "93", "110", "124", "125", "135", "150", "250", "300", "500", "600", "800", "900",
      "1000", "1200", "8000"},
     17,
     11},
}};

// A new panel shows the low input resistance, restored defaults the high one.
constexpr std::array<ChoiceFacts, kOptionChoiceCount> kChoices = {{
    {OptionGroup::LowFrequency,
     {{{"3Hz(低速)", 3}, {"20Hz(中速)", 20}, {"200Hz(高速)", 200}}},
     3,
     200,
     200},
    {OptionGroup::Offset, {{{"关闭", kOff}, {"开启", kOn}}}, 2, kOff, kOff},
    {OptionGroup::InputResistance, {{{"10M", kOff}, {"高", kOn}}}, 2, kOff, kOn},
    {OptionGroup::RefJunction, {{{"内部", kOff}, {"固定", kOn}}}, 2, kOff, kOff},
}};

constexpr std::array<CheckFacts, kOptionCheckCount> kChecks = {{
    {OptionGroup::AutoCheck, "自动检查"},
    {OptionGroup::SetReference, "设置为参考"},
}};

constexpr std::array<SpinFacts, kOptionSpinCount> kSpins = {{
    {OptionGroup::Delay, 0.0, 60.0, 3, 0.0},
    {OptionGroup::RefJunction, -20.0, 80.0, 2, 20.0},
    {OptionGroup::R0, 99.0, 1010.0, 4, 100.0, "R0"},
    {OptionGroup::GaugeFactor, 0.5, 5.0, 3, 2.0},
    {OptionGroup::StrainResistance, 80.0, 1100.0, 3, 120.0},
    {OptionGroup::PoissonRatio, -0.999, 0.5, 3, 0.3},
    {OptionGroup::DriveVoltage, 0.9, 12.0, 3, 5.0},
    {OptionGroup::DbReference, -200.0, 200.0, 3, 0.0},
    {OptionGroup::PercentReference, -1e15, 1e15, 3, 0.0},
}};

} // namespace

const char* titleOf(OptionGroup group)
{
    return kTitles[at(group)];
}

const ListFacts& factsOf(OptionList list)
{
    return kLists[at(list)];
}

const ChoiceFacts& factsOf(OptionChoice choice)
{
    return kChoices[at(choice)];
}

const CheckFacts& factsOf(OptionCheck check)
{
    return kChecks[at(check)];
}

const SpinFacts& factsOf(OptionSpin spin)
{
    return kSpins[at(spin)];
}

QString textOf(OptionList list, int row)
{
    const ListFacts& facts = factsOf(list);
    const bool exists = row >= 0 && row < facts.rowCount;
    return exists ? QString::fromUtf8(facts.texts[static_cast<std::size_t>(row)]) : QString();
}

} // namespace scn
