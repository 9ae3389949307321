// How the panel is built, opened and closed.
#include "channels/advancedsetting.h"

#include "common/threadassert.h"
#include "widgets/customcombobox.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

using scn::OptionCheck;
using scn::OptionChoice;
using scn::OptionList;
using scn::OptionSpin;

namespace {

constexpr int kOutline = 1;
constexpr int kBodyMargin = 6;

} // namespace

void AdvancedSetting::setTitle(const QString& title)
{
    m_title = title;
    if (m_titleLabel) {
        m_titleLabel->setText(title);
    }
}

void AdvancedSetting::showOfferedGroups()
{
    m_controls.showGroups(m_functionGroups | m_scaleGroups);
    // Hidden groups must not leave empty space in a panel that is opened again.
    if (m_titleBar) {
        adjustSize();
    }
}

/// Creates the controls when the panel is first opened.
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
    // An outline, since it opens over a table of its own colour. The table's boxes around check marks would
    // look like edits here.
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral(
        "AdvancedSetting { background: #171717; border: 1px solid #455364; border-radius: 0; }"
        "AdvancedSetting QCheckBox { border: none; }"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kOutline, kOutline, kOutline, kOutline);
    buildTitleBar(layout);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(kBodyMargin, 0, kBodyMargin, kBodyMargin);
    layout->addLayout(body);
    m_controls.build(this, body);
    connectControls();

    auto* restore = new QPushButton(tr("恢复默认值"), this);
    connect(restore, &QPushButton::clicked, this, &AdvancedSetting::onReDefSetBtnClicked);
    body->addWidget(restore);
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

void AdvancedSetting::connectControls()
{
    const auto list = [this](OptionList which, void (AdvancedSetting::*slot)(int)) {
        connect(m_controls.box(which), qOverload<int>(&QComboBox::currentIndexChanged), this, slot);
    };
    list(OptionList::Nplc, &AdvancedSetting::onPlcComboCurrentIndexChanged);
    list(OptionList::Delay, &AdvancedSetting::onDelayComboCurrentIndexChanged);
    list(OptionList::ReferenceResistance, &AdvancedSetting::onReferResComboCurrentIndexChanged);

    const auto choice = [this](OptionChoice which,
                               void (AdvancedSetting::*slot)(QAbstractButton*, bool)) {
        connect(m_controls.buttons(which),
                qOverload<QAbstractButton*, bool>(&QButtonGroup::buttonToggled), this, slot);
    };
    choice(OptionChoice::LowFrequency, &AdvancedSetting::onFreqRadioBtnToggled);
    choice(OptionChoice::Offset, &AdvancedSetting::onOffsetRadioBtnToggled);
    choice(OptionChoice::InputResistance, &AdvancedSetting::onVoltInResRadioBtnToggled);
    choice(OptionChoice::RefJunction, &AdvancedSetting::onRefJuncRadioBtnToggled);

    connect(m_controls.check(OptionCheck::AutoCheck), &QCheckBox::toggled, this,
            &AdvancedSetting::onAutoCheckToggled);
    connect(m_controls.check(OptionCheck::SetReference), &QCheckBox::toggled, this,
            &AdvancedSetting::onSetRefToggled);

    const auto number = [this](OptionSpin which, void (AdvancedSetting::*slot)(double)) {
        connect(m_controls.spin(which), qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                slot);
    };
    number(OptionSpin::Delay, &AdvancedSetting::onDelaySpinBoxValueChanged);
    number(OptionSpin::FixedTemperature, &AdvancedSetting::onFixSpinBoxValueChanged);
    number(OptionSpin::R0, &AdvancedSetting::onRtdRoSpinBoxValueChanged);
    number(OptionSpin::GaugeFactor, &AdvancedSetting::onInstCoeSpinBoxValueChanged);
    number(OptionSpin::StrainResistance, &AdvancedSetting::onStrResSpinBoxValueChanged);
    number(OptionSpin::PoissonRatio, &AdvancedSetting::onPoissonRatioSpinBoxValueChanged);
    number(OptionSpin::DriveVoltage, &AdvancedSetting::onDrivVoltSpinBoxValueChanged);
    number(OptionSpin::DbReference, &AdvancedSetting::ondBReferSpinBoxValueChanged);
    number(OptionSpin::PercentReference, &AdvancedSetting::onReferSpinBoxValueChanged);
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
        m_controls.dropTypedNumbers();
    }
    return QWidget::event(event);
}
