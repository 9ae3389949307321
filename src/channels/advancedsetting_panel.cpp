// What the panel looks like: its groups, which of them a function has, and how it opens and closes.
#include "channels/advancedsetting.h"

#include "channels/advancedsetting_facts.h"
#include "common/threadassert.h"
#include "widgets/customcombobox.h"
#include "widgets/wheelguard.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kListMinimumWidth = 100;

/// Which groups the functions from first to last have, as a set of bits.
struct FunctionGroups
{
    int first;
    int last;
    quint32 groups;
};

constexpr quint32 bit(int group)
{
    return 1U << group;
}

template <typename... Groups>
constexpr quint32 groupSet(Groups... groups)
{
    return (bit(groups) | ...);
}

} // namespace

const std::array<const char*, AdvancedSetting::GroupCount> AdvancedSetting::s_groupTitles = {
    QT_TR_NOOP("电源线周期数(NPLC)"),
    QT_TR_NOOP("频率下限"),
    QT_TR_NOOP("偏移补偿"),
    QT_TR_NOOP("通道延迟(秒)"),
    QT_TR_NOOP("直流输入电阻"),
    QT_TR_NOOP("热电偶"),
    QT_TR_NOOP("热电偶"),
    QT_TR_NOOP("参考结温度"),
    QT_TR_NOOP("RTD类型"),
    QT_TR_NOOP("仪器系数"),
    QT_TR_NOOP("应变仪电阻"),
    QT_TR_NOOP("柏松比"),
    QT_TR_NOOP("激励电压"),
    QT_TR_NOOP("参考电阻"),
    QT_TR_NOOP("dB参考值"),
    QT_TR_NOOP("参考值"),
};

const std::array<AdvancedSetting::ListFacts, AdvancedSetting::ListCount> AdvancedSetting::s_lists =
    {{
        {NplcGroup,
         {"0.02", "0.2", "1", "10", "100"},
         5,
         2,
         &AdvancedSetting::onPlcComboCurrentIndexChanged},
        {DelayGroup,
         {"自动", "时间"},
         2,
         kAutomaticDelayRow,
         &AdvancedSetting::onDelayComboCurrentIndexChanged},
        {ReferenceResistanceGroup,
         {"50", "75", "93", "110", "124", "125", "135", "150", "250", "300", "500", "600", "800",
          "900", "1000", "1200", "8000"},
         17,
         11,
         &AdvancedSetting::onReferResComboCurrentIndexChanged},
    }};

// A new panel shows the low input resistance, restored defaults the high one.
const std::array<AdvancedSetting::ChoiceFacts, AdvancedSetting::ChoiceCount>
    AdvancedSetting::s_choices = {{
        {LowFrequencyGroup,
         {{{"3Hz(低速)", 3}, {"20Hz(中速)", 20}, {"200Hz(高速)", 200}}},
         3,
         200,
         200,
         &AdvancedSetting::onFreqRadioBtnToggled},
        {OffsetGroup,
         {{{"关闭", kOff}, {"开启", kOn}}},
         2,
         kOff,
         kOff,
         &AdvancedSetting::onOffsetRadioBtnToggled},
        {InputResistanceGroup,
         {{{"10M", kOff}, {"高", kOn}}},
         2,
         kOff,
         kOn,
         &AdvancedSetting::onVoltInResRadioBtnToggled},
        {RefJunctionGroup,
         {{{"内部", kOff}, {"固定", kOn}}},
         2,
         kOff,
         kOff,
         &AdvancedSetting::onRefJuncRadioBtnToggled},
    }};

const std::array<AdvancedSetting::CheckFacts, AdvancedSetting::CheckCount>
    AdvancedSetting::s_checks = {{
        {AutoCheckGroup, "自动检查", &AdvancedSetting::onAutoCheckToggled},
        {SetReferenceGroup, "设置为参考", &AdvancedSetting::onSetRefToggled},
    }};

const std::array<AdvancedSetting::SpinFacts, AdvancedSetting::SpinCount> AdvancedSetting::s_spins =
    {{
        {DelayGroup, 0.0, 60.0, 3, 0.0, &AdvancedSetting::onDelaySpinBoxValueChanged},
        {RefJunctionGroup, -20.0, 80.0, 2, 20.0, &AdvancedSetting::onFixSpinBoxValueChanged},
        {R0Group, 99.0, 1010.0, 4, 100.0, &AdvancedSetting::onRtdRoSpinBoxValueChanged, "R0"},
        {GaugeFactorGroup, 0.5, 5.0, 3, 2.0, &AdvancedSetting::onInstCoeSpinBoxValueChanged},
        {StrainResistanceGroup, 80.0, 1100.0, 3, 120.0,
         &AdvancedSetting::onStrResSpinBoxValueChanged},
        {PoissonRatioGroup, -0.999, 0.5, 3, 0.3,
         &AdvancedSetting::onPoissonRatioSpinBoxValueChanged},
        {DriveVoltageGroup, 0.9, 12.0, 3, 5.0, &AdvancedSetting::onDrivVoltSpinBoxValueChanged},
        {DbReferenceGroup, -200.0, 200.0, 3, 0.0, &AdvancedSetting::ondBReferSpinBoxValueChanged},
        {PercentReferenceGroup, -1e15, 1e15, 3, 0.0, &AdvancedSetting::onReferSpinBoxValueChanged},
    }};

quint32 AdvancedSetting::groupsOfFunction(int functionIndex)
{
    constexpr quint32 frequency = groupSet(LowFrequencyGroup, DelayGroup);
    constexpr quint32 integration = groupSet(NplcGroup, DelayGroup);
    constexpr quint32 bending = integration | groupSet(GaugeFactorGroup, DriveVoltageGroup);
    constexpr quint32 poisson = bending | groupSet(PoissonRatioGroup);
    constexpr std::array<FunctionGroups, 14> table = {{
        {0, 0, integration | groupSet(InputResistanceGroup)},
        {1, 3, frequency},
        {4, 5, integration | groupSet(OffsetGroup)},
        {6, 13, integration | groupSet(AutoCheckGroup, RefJunctionGroup)},
        {14, 15, integration | groupSet(SetReferenceGroup, R0Group)},
        {16, 21, integration | groupSet(SetReferenceGroup)},
        {22, 23, groupSet(DelayGroup)},
        {24, 25, integration | groupSet(GaugeFactorGroup, StrainResistanceGroup)},
        {26, 27, bending},
        {28, 28, poisson},
        {29, 29, bending},
        {30, 31, poisson},
        {32, 32, integration},
        {33, 33, frequency},
    }};
    const auto* const row = std::find_if(
        table.cbegin(), table.cend(), [functionIndex](const FunctionGroups& candidate) {
            return candidate.first <= functionIndex && functionIndex <= candidate.last;
        });
    return row != table.cend() ? row->groups : 0;
}

quint32 AdvancedSetting::groupsOfScaleFunction(const QString& scaleFunction)
{
    struct ScaleGroups
    {
        const char* scaleFunction;
        quint32 groups;
    };
    constexpr std::array<ScaleGroups, 3> table = {{
        {"PCT", groupSet(PercentReferenceGroup)},
        {"DB", groupSet(ReferenceResistanceGroup, DbReferenceGroup)},
        {"DBM", groupSet(ReferenceResistanceGroup)},
    }};
    const auto* const row =
        std::find_if(table.cbegin(), table.cend(), [&scaleFunction](const ScaleGroups& candidate) {
            return scaleFunction == QLatin1String(candidate.scaleFunction);
        });
    return row != table.cend() ? row->groups : 0;
}

void AdvancedSetting::showFunctionOptions(const QString& name, int functionIndex, int channel)
{
    assertGuiThread();
    m_functionIndex = functionIndex;
    m_channel = channel;
    m_functionGroups = groupsOfFunction(functionIndex);
    setTitle(QStringLiteral("%1 %2-%3").arg(tr("高级设置"), name, QString::number(channel)));
    showOfferedGroups();
}

void AdvancedSetting::showScaleOptions(const QString& scaleFunction, int channel)
{
    assertGuiThread();
    m_scaleFunction = scaleFunction;
    m_channel = channel;
    m_scaleGroups = groupsOfScaleFunction(m_scaleFunction);
    setTitle(QStringLiteral("%1-%2").arg(scaleFunction, QString::number(channel)));
    showOfferedGroups();
}

void AdvancedSetting::setTitle(const QString& title)
{
    m_title = title;
    if (m_titleLabel) {
        m_titleLabel->setText(title);
    }
}

bool AdvancedSetting::isOffered(Group group) const
{
    return ((m_functionGroups | m_scaleGroups) & bit(group)) != 0;
}

void AdvancedSetting::showOfferedGroups()
{
    for (int group = 0; group < GroupCount; ++group) {
        if (QGroupBox* box = m_groups[static_cast<std::size_t>(group)]) {
            box->setVisible(isOffered(static_cast<Group>(group)));
        }
    }
    // A panel that is opened again has no use for the room of the groups that it has lost.
    if (m_titleBar) {
        adjustSize();
    }
}

/// Opening a panel for the first time makes its controls.
void AdvancedSetting::setVisible(bool visible)
{
    if (visible && !m_titleBar) {
        assertGuiThread();
        buildPanel();
    }
    QWidget::setVisible(visible);
}

void AdvancedSetting::buildPanel()
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    buildTitleBar(layout);

    auto* body = new QVBoxLayout;
    layout->addLayout(body);
    buildGroups(body);

    auto* restore = new QPushButton(tr("恢复默认值"), this);
    connect(restore, &QPushButton::clicked, this, &AdvancedSetting::onReDefSetBtnClicked);
    layout->addWidget(restore);
    showOfferedGroups();
}

void AdvancedSetting::buildTitleBar(QVBoxLayout* layout)
{
    m_titleBar = new QWidget(this);
    m_titleBar->setAttribute(Qt::WA_StyledBackground);
    m_titleBar->setStyleSheet(QStringLiteral("background: #2a2a2a;"));
    m_titleLabel = new QLabel(m_title, m_titleBar);
    m_titleLabel->setTextFormat(Qt::PlainText);
    m_titleLabel->setStyleSheet(QStringLiteral("color: white; font-weight: bold;"));
    auto* close = new QPushButton(QStringLiteral("X"), m_titleBar);
    connect(close, &QPushButton::clicked, this, &QWidget::hide);

    auto* bar = new QHBoxLayout(m_titleBar);
    bar->addWidget(m_titleLabel);
    bar->addStretch();
    bar->addWidget(close);
    layout->addWidget(m_titleBar);
}

void AdvancedSetting::buildGroups(QVBoxLayout* body)
{
    for (std::size_t group = 0; group < GroupCount; ++group) {
        m_groups[group] = new QGroupBox(tr(s_groupTitles[group]), this);
        m_groups[group]->setLayout(new QHBoxLayout);
        body->addWidget(m_groups[group]);
    }
    for (int list = 0; list < ListCount; ++list) {
        buildList(static_cast<List>(list));
    }
    for (int choice = 0; choice < ChoiceCount; ++choice) {
        buildChoice(static_cast<Choice>(choice));
    }
    for (int check = 0; check < CheckCount; ++check) {
        buildCheck(static_cast<Check>(check));
    }
    for (int spin = 0; spin < SpinCount; ++spin) {
        buildSpin(static_cast<Spin>(spin));
    }
    enableDependentSpins();
}

void AdvancedSetting::buildList(List list)
{
    const ListFacts& facts = s_lists[list];
    auto* box = new CustomComboBox(m_groups[facts.group]);
    box->setStyleSheet(QStringLiteral("background: #171717;"));
    box->setMinimumWidth(kListMinimumWidth);
    WheelGuard::install(box);
    QStringList texts;
    for (int row = 0; row < facts.rowCount; ++row) {
        texts.append(QString::fromUtf8(facts.texts[static_cast<std::size_t>(row)]));
    }
    box->addFunctionItems(texts);
    box->setCurrentIndex(m_rows[list]);
    m_groups[facts.group]->layout()->addWidget(box);
    m_lists[list] = box;
    connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, facts.slot);
}

void AdvancedSetting::buildChoice(Choice choice)
{
    const ChoiceFacts& facts = s_choices[choice];
    auto* buttons = new QButtonGroup(m_groups[facts.group]);
    for (int number = 0; number < facts.buttonCount; ++number) {
        const ChoiceButton& row = facts.buttons[static_cast<std::size_t>(number)];
        auto* button = new QRadioButton(QString::fromUtf8(row.text), m_groups[facts.group]);
        buttons->addButton(button, row.id);
        button->setChecked(row.id == m_chosen[choice]);
        m_groups[facts.group]->layout()->addWidget(button);
    }
    m_choices[choice] = buttons;
    connect(buttons, qOverload<QAbstractButton*, bool>(&QButtonGroup::buttonToggled), this,
            facts.slot);
}

void AdvancedSetting::buildCheck(Check check)
{
    const CheckFacts& facts = s_checks[check];
    m_checks[check] = new QCheckBox(QString::fromUtf8(facts.text), m_groups[facts.group]);
    m_groups[facts.group]->layout()->addWidget(m_checks[check]);
    connect(m_checks[check], &QCheckBox::toggled, this, facts.slot);
}

void AdvancedSetting::buildSpin(Spin spin)
{
    const SpinFacts& facts = s_spins[spin];
    if (facts.label) {
        auto* label = new QLabel(QString::fromUtf8(facts.label), m_groups[facts.group]);
        label->setStyleSheet(QStringLiteral("background: #444444;"));
        m_groups[facts.group]->layout()->addWidget(label);
    }
    auto* box = new QDoubleSpinBox(m_groups[facts.group]);
    box->setAlignment(Qt::AlignCenter);
    box->setDecimals(facts.decimals);
    box->setRange(facts.minimum, facts.maximum);
    box->setKeyboardTracking(false);
    WheelGuard::install(box);
    box->setValue(m_values[spin]);
    m_groups[facts.group]->layout()->addWidget(box);
    m_spins[spin] = box;
    connect(box, qOverload<double>(&QDoubleSpinBox::valueChanged), this, facts.slot);
}

bool AdvancedSetting::event(QEvent* event)
{
    const bool pressedOutside = event->type() == QEvent::MouseButtonPress &&
                                !rect().contains(static_cast<QMouseEvent*>(event)->pos());
    if (pressedOutside || event->type() == QEvent::WindowDeactivate) {
        hide();
        return true;
    }
    if (event->type() == QEvent::Close) {
        dropTypedNumber();
    }
    return QWidget::event(event);
}

/// A box that still has a number to take would report it on its way out.
void AdvancedSetting::dropTypedNumber()
{
    for (QDoubleSpinBox* box : m_spins) {
        if (box) {
            box->setValue(box->value());
        }
    }
}
