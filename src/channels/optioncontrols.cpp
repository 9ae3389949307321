#include "channels/optioncontrols.h"

#include "widgets/customcombobox.h"
#include "widgets/wheelguard.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDebug>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace scn {

namespace {

constexpr int kListMinimumWidth = 100;

/// Calls `step` with each of an enumeration's `count` values.
template <typename Enumeration, typename Step>
void forEach(int count, const Step& step)
{
    for (int value = 0; value < count; ++value) {
        step(static_cast<Enumeration>(value));
    }
}

} // namespace

OptionControls::OptionControls()
{
    forEach<OptionList>(kOptionListCount,
                        [this](OptionList list) { m_rows[at(list)] = factsOf(list).initialRow; });
    forEach<OptionChoice>(kOptionChoiceCount, [this](OptionChoice choice) {
        m_chosen[at(choice)] = factsOf(choice).initialId;
    });
    forEach<OptionSpin>(kOptionSpinCount,
                        [this](OptionSpin spin) { m_values[at(spin)] = factsOf(spin).initial; });
}

void OptionControls::build(QWidget* panel, QVBoxLayout* body)
{
    forEach<OptionGroup>(kOptionGroupCount, [&](OptionGroup group) {
        auto* box = new QGroupBox(tr(titleOf(group)), panel);
        box->setLayout(new QHBoxLayout);
        body->addWidget(box);
        m_groups[at(group)] = box;
    });
    forEach<OptionList>(kOptionListCount, [this](OptionList list) { buildList(list); });
    forEach<OptionChoice>(kOptionChoiceCount, [this](OptionChoice choice) { buildChoice(choice); });
    forEach<OptionCheck>(kOptionCheckCount, [this](OptionCheck check) { buildCheck(check); });
    forEach<OptionSpin>(kOptionSpinCount, [this](OptionSpin spin) { buildSpin(spin); });
    enableDependentSpins();
}

void OptionControls::buildList(OptionList list)
{
    const ListFacts& facts = factsOf(list);
    QGroupBox* group = m_groups[at(facts.group)];
    auto* box = new CustomComboBox(group);
    box->setStyleSheet(QStringLiteral("background: #171717;"));
    box->setMinimumWidth(kListMinimumWidth);
    WheelGuard::install(box);
    QStringList texts;
    for (int row = 0; row < facts.rowCount; ++row) {
        texts.append(textOf(list, row));
    }
    box->addFunctionItems(texts);
    box->setCurrentIndex(m_rows[at(list)]);
    group->layout()->addWidget(box);
    m_lists[at(list)] = box;
}

void OptionControls::buildChoice(OptionChoice choice)
{
    const ChoiceFacts& facts = factsOf(choice);
    QGroupBox* group = m_groups[at(facts.group)];
    auto* buttons = new QButtonGroup(group);
    for (int number = 0; number < facts.buttonCount; ++number) {
        const ChoiceButton& row = facts.buttons[static_cast<std::size_t>(number)];
        auto* button = new QRadioButton(QString::fromUtf8(row.text), group);
        buttons->addButton(button, row.id);
        button->setChecked(row.id == m_chosen[at(choice)]);
        group->layout()->addWidget(button);
    }
    m_choices[at(choice)] = buttons;
}

void OptionControls::buildCheck(OptionCheck check)
{
    const CheckFacts& facts = factsOf(check);
    QGroupBox* group = m_groups[at(facts.group)];
    m_checks[at(check)] = new QCheckBox(QString::fromUtf8(facts.text), group);
    group->layout()->addWidget(m_checks[at(check)]);
}

void OptionControls::buildSpin(OptionSpin spin)
{
    const SpinFacts& facts = factsOf(spin);
    QGroupBox* group = m_groups[at(facts.group)];
    if (facts.label) {
        auto* label = new QLabel(QString::fromUtf8(facts.label), group);
        label->setStyleSheet(QStringLiteral("background: #444444;"));
        group->layout()->addWidget(label);
    }
    auto* box = new QDoubleSpinBox(group);
    box->setAlignment(Qt::AlignCenter);
    box->setDecimals(facts.decimals);
    box->setRange(facts.minimum, facts.maximum);
    box->setKeyboardTracking(false);
    WheelGuard::install(box);
    box->setValue(m_values[at(spin)]);
    group->layout()->addWidget(box);
    m_spins[at(spin)] = box;
}

void OptionControls::showGroups(const OptionGroups& groups)
{
    forEach<OptionGroup>(kOptionGroupCount, [&](OptionGroup group) {
        if (QGroupBox* box = m_groups[at(group)]) {
            box->setVisible(groups.contains(group));
        }
    });
}

void OptionControls::selectRow(OptionList list, int row)
{
    m_rows[at(list)] = row;
    if (CustomComboBox* box = m_lists[at(list)]) {
        const QSignalBlocker blocker(box);
        box->setCurrentIndex(row);
    }
}

void OptionControls::selectValue(OptionList list, double value)
{
    const ListFacts& facts = factsOf(list);
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

void OptionControls::choose(OptionChoice choice, int id)
{
    m_chosen[at(choice)] = id;
    if (QButtonGroup* buttons = m_choices[at(choice)]) {
        const QSignalBlocker blocker(buttons);
        buttons->button(id)->setChecked(true);
    }
}

void OptionControls::chooseValue(OptionChoice choice, double value)
{
    const ChoiceFacts& facts = factsOf(choice);
    for (int number = 0; number < facts.buttonCount; ++number) {
        const int id = facts.buttons[static_cast<std::size_t>(number)].id;
        if (value == id) {
            choose(choice, id);
        }
    }
}

void OptionControls::setNumber(OptionSpin spin, double value)
{
    m_values[at(spin)] = value;
    QDoubleSpinBox* const box = m_spins[at(spin)];
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

void OptionControls::enableDependentSpins()
{
    if (QDoubleSpinBox* delay = spin(OptionSpin::Delay)) {
        delay->setEnabled(box(OptionList::Delay)->currentIndex() != kAutomaticDelayRow);
    }
    if (QDoubleSpinBox* temperature = spin(OptionSpin::FixedTemperature)) {
        temperature->setEnabled(buttons(OptionChoice::RefJunction)->checkedId() == kOn);
    }
}

void OptionControls::restoreDefaults(const std::function<void()>& tellDelayMode)
{
    forEach<OptionGroup>(kOptionGroupCount, [&](OptionGroup group) {
        const QGroupBox* box = m_groups[at(group)];
        if (!box || box->isHidden()) {
            return;
        }
        if (group == OptionGroup::Delay) {
            restoreDelay(tellDelayMode);
        } else {
            restoreGroup(group);
        }
    });
}

void OptionControls::restoreGroup(OptionGroup group)
{
    forEach<OptionList>(kOptionListCount, [&](OptionList list) {
        if (factsOf(list).group == group) {
            box(list)->setCurrentIndex(factsOf(list).initialRow);
        }
    });
    forEach<OptionChoice>(kOptionChoiceCount, [&](OptionChoice choice) {
        if (factsOf(choice).group == group) {
            buttons(choice)->button(factsOf(choice).defaultId)->setChecked(true);
        }
    });
    forEach<OptionCheck>(kOptionCheckCount, [&](OptionCheck which) {
        if (factsOf(which).group == group) {
            check(which)->setChecked(false);
        }
    });
    forEach<OptionSpin>(kOptionSpinCount, [&](OptionSpin which) {
        if (factsOf(which).group == group) {
            spin(which)->setValue(factsOf(which).initial);
        }
    });
}

/// The value first: setting it switches the instrument's automatic delay off, so the mode must be sent
/// afterwards even if the panel already shows it.
void OptionControls::restoreDelay(const std::function<void()>& tellDelayMode)
{
    const double initial = factsOf(OptionSpin::Delay).initial;
    QDoubleSpinBox* const delay = spin(OptionSpin::Delay);
    const bool turnsAutomaticOff = delay->value() != initial;
    delay->setValue(initial);
    CustomComboBox* const mode = box(OptionList::Delay);
    if (mode->currentIndex() != kAutomaticDelayRow) {
        mode->setCurrentIndex(kAutomaticDelayRow);
    } else if (turnsAutomaticOff) {
        tellDelayMode();
    }
}

/// A box with an unfinished number would report it when it loses the focus.
void OptionControls::dropTypedNumbers()
{
    for (QDoubleSpinBox* box : m_spins) {
        if (box) {
            box->setValue(box->value());
        }
    }
}

void OptionControls::disconnectNumbers(const QObject* receiver)
{
    for (QDoubleSpinBox* box : m_spins) {
        if (box) {
            box->disconnect(receiver);
        }
    }
}

} // namespace scn
