#pragma once

#include "channels/advancedsetting.h"

/// The tables that the panel's controls are made from; a part of AdvancedSetting's own sources.

constexpr int kMaxListRows = 17;
constexpr int kMaxChoiceButtons = 3;

struct AdvancedSetting::ListFacts
{
    Group group;
    std::array<const char*, kMaxListRows> texts;
    int rowCount;
    /// Row of a new panel and of restored defaults.
    int initialRow;
    void (AdvancedSetting::*slot)(int);
};

struct ChoiceButton
{
    const char* text;
    int id;
};

struct AdvancedSetting::ChoiceFacts
{
    Group group;
    std::array<ChoiceButton, kMaxChoiceButtons> buttons;
    int buttonCount;
    int initialId;
    int defaultId;
    void (AdvancedSetting::*slot)(QAbstractButton*, bool);
};

struct AdvancedSetting::CheckFacts
{
    Group group;
    const char* text;
    void (AdvancedSetting::*slot)(bool);
};

struct AdvancedSetting::SpinFacts
{
    Group group;
    double minimum;
    double maximum;
    int decimals;
    /// Value of a new panel and of restored defaults.
    double initial;
    void (AdvancedSetting::*slot)(double);
    /// Text on a plate beside the box; null for none.
    const char* label = nullptr;
};

/// Ids of the buttons that stand for OFF and ON, internal and fixed.
constexpr int kOff = 0;
constexpr int kOn = 1;

/// Rows of the delay box.
constexpr int kAutomaticDelayRow = 0;
constexpr int kFixedDelayRow = 1;
