#pragma once

#include "channels/optionfacts.h"

#include <QCoreApplication>

#include <array>
#include <functional>

class CustomComboBox;
class QButtonGroup;
class QCheckBox;
class QDoubleSpinBox;
class QGroupBox;
class QObject;
class QVBoxLayout;
class QWidget;

namespace scn {

/// The controls of an option panel and what they show. Until build() it keeps what they are to show.
/// Nothing that is set here is told to anybody, but for restoreDefaults(). GUI thread only.
class OptionControls
{
    Q_DECLARE_TR_FUNCTIONS(AdvancedSetting)

public:
    OptionControls();

    /// Makes the controls, all of their groups visible.
    void build(QWidget* panel, QVBoxLayout* body);

    // Null before build().
    CustomComboBox* box(OptionList list) const { return m_lists[at(list)]; }
    QButtonGroup* buttons(OptionChoice choice) const { return m_choices[at(choice)]; }
    QCheckBox* check(OptionCheck check) const { return m_checks[at(check)]; }
    QDoubleSpinBox* spin(OptionSpin spin) const { return m_spins[at(spin)]; }

    /// Shows these groups and hides the others.
    void showGroups(const OptionGroups& groups);

    void selectRow(OptionList list, int row);

    /// Selects the row whose number is `value`; logs a value without a row and changes nothing.
    void selectValue(OptionList list, double value);

    void choose(OptionChoice choice, int id);

    /// Chooses the button whose id is `value`; any other value changes nothing.
    void chooseValue(OptionChoice choice, double value);

    /// Sets a number. What the user is typing in its box stays.
    void setNumber(OptionSpin spin, double value);

    /// A delay and a junction temperature can be entered only while they are in force.
    void enableDependentSpins();

    /// Sets each visible group to its default as the user would: what changes is told.
    /// `tellDelayMode` is for the delay mode that the instrument has to hear though its box stays.
    void restoreDefaults(const std::function<void()>& tellDelayMode);

    /// Forgets numbers that are typed but not finished.
    void dropTypedNumbers();

    void disconnectNumbers(const QObject* receiver);

private:
    void buildList(OptionList list);
    void buildChoice(OptionChoice choice);
    void buildCheck(OptionCheck check);
    void buildSpin(OptionSpin spin);
    void restoreGroup(OptionGroup group);
    void restoreDelay(const std::function<void()>& tellDelayMode);

    std::array<QGroupBox*, kOptionGroupCount> m_groups{};
    std::array<CustomComboBox*, kOptionListCount> m_lists{};
    std::array<QButtonGroup*, kOptionChoiceCount> m_choices{};
    std::array<QCheckBox*, kOptionCheckCount> m_checks{};
    std::array<QDoubleSpinBox*, kOptionSpinCount> m_spins{};

    // What the controls hold once they are made.
    std::array<int, kOptionListCount> m_rows{};
    std::array<int, kOptionChoiceCount> m_chosen{};
    std::array<double, kOptionSpinCount> m_values{};
};

} // namespace scn
