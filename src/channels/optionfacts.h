#pragma once

#include "channels/optiongroup.h"

#include <array>

// Tables of the controls of the option panels: texts, limits, defaults.
namespace scn {

enum class OptionList { Nplc, Delay, ReferenceResistance };
enum class OptionChoice { LowFrequency, Offset, InputResistance, RefJunction };
enum class OptionCheck { AutoCheck, SetReference };
enum class OptionSpin {
    Delay,
    FixedTemperature,
    R0,
    GaugeFactor,
    StrainResistance,
    PoissonRatio,
    DriveVoltage,
    DbReference,
    PercentReference,
};

constexpr int kOptionListCount = 3;
constexpr int kOptionChoiceCount = 4;
constexpr int kOptionCheckCount = 2;
constexpr int kOptionSpinCount = 9;

/// Index of an enumerator in a table.
template <typename Enumeration>
constexpr std::size_t at(Enumeration value)
{
    return static_cast<std::size_t>(value);
}

/// Ids of the buttons for OFF and ON.
constexpr int kOff = 0;
constexpr int kOn = 1;

/// Rows of the delay box.
constexpr int kAutomaticDelayRow = 0;
constexpr int kFixedDelayRow = 1;

struct ListFacts
{
    static constexpr int kMaxRows = 17;

    OptionGroup group;
    std::array<const char*, kMaxRows> texts;
    int rowCount;
    int initialRow; ///< of a new panel and of restored defaults
};

struct ChoiceButton
{
    const char* text;
    int id;
};

struct ChoiceFacts
{
    static constexpr int kMaxButtons = 3;

    OptionGroup group;
    std::array<ChoiceButton, kMaxButtons> buttons;
    int buttonCount;
    int initialId; ///< of a new panel
    int defaultId; ///< of restored defaults
};

struct CheckFacts
{
    OptionGroup group;
    const char* text;
};

struct SpinFacts
{
    OptionGroup group;
    double minimum;
    double maximum;
    int decimals;
    double initial;              ///< of a new panel and of restored defaults
    const char* label = nullptr; ///< on a plate beside the box; null for none
};

/// To be translated in the context of AdvancedSetting.
const char* titleOf(OptionGroup group);

const ListFacts& factsOf(OptionList list);
const ChoiceFacts& factsOf(OptionChoice choice);
const CheckFacts& factsOf(OptionCheck check);
const SpinFacts& factsOf(OptionSpin spin);

/// Text of a row; empty if there is no such row.
QString textOf(OptionList list, int row);

} // namespace scn
