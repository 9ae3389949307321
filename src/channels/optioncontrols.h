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

/// The controls of an option panel. Values set before build() are stored until then. Setters emit no
/// signals, except restoreDefaults(). GUI thread.
class OptionControls
{
    Q_DECLARE_TR_FUNCTIONS(AdvancedSetting)

public:
    OptionControls();

    /// Creates the controls with all groups visible.
    void build(QWidget* panel, QVBoxLayout* body);

    // Null before build().
    CustomComboBox* box(OptionList list) const { return m_lists[at(list)]; }
    QButtonGroup* buttons(OptionChoice choice) const { return m_choices[at(choice)]; }
    QCheckBox* check(OptionCheck check) const { return m_checks[at(check)]; }
    QDoubleSpinBox* spin(OptionSpin spin) const { return m_spins[at(spin)]; }

    /// Shows these groups and hides the others.
    void showGroups(const OptionGroups& groups);

    void selectRow(OptionList list, int row);

    /// Selects the row whose number is `value`; a value without a row is only logged.
    void selectValue(OptionList list, double value);

    void choose(OptionChoice choice, int id);

    /// Chooses the button whose id is `value`; any other value is ignored.
    void chooseValue(OptionChoice choice, double value);

    /// Sets a number without disturbing what the user is typing in its box.
    void setNumber(OptionSpin spin, double value);

    /// Enables the delay and the junction temperature only while they apply.
    void enableDependentSpins();

    /// Sets each visible group to its default as the user would, with signals. `tellDelayMode` is called
    /// if the instrument must be sent the delay mode although its box does not change.
    void restoreDefaults(const std::function<void()>& tellDelayMode);

    /// Discards numbers that are being typed.
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
