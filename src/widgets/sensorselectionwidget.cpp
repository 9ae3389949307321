#include "widgets/sensorselectionwidget.h"

#include "common/threadassert.h"

#include <QComboBox>
#include <QDebug>
#include <QMenu>
#include <QVBoxLayout>

#include <array>

namespace {

constexpr std::array<const char*, 15> kSensors = {
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "直流电压"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "交流电压"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "周期"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "频率"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "双线 Ohm"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "四线 Ohm"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "热电偶"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度二线制 RTD"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度四线制 RTD"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "热敏电阻"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "4线制热敏电阻"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "电容"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "二极管"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "应变"),
};

/// Row of kSensors that opens the menu of thermocouple types.
constexpr int kTemperatureRow = 6;

constexpr std::array<const char*, 8> kThermocouples = {
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 B)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 E)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 J)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 K)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 N)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 R)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 S)"),
    QT_TRANSLATE_NOOP("SensorSelectionWidget", "温度(类型 T)"),
};

} // namespace

SensorSelectionWidget::SensorSelectionWidget(QWidget* parent)
    : QWidget(parent)
    , m_mainCombo(new QComboBox(this))
{
    assertGuiThread();
    for (const char* sensor : kSensors) {
        m_mainCombo->addItem(tr(sensor));
    }
    m_mainCombo->setItemData(kTemperatureRow, QVariant::fromValue(buildThermocoupleMenu()),
                             Qt::UserRole);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_mainCombo);
    connect(m_mainCombo, qOverload<int>(&QComboBox::activated), this,
            &SensorSelectionWidget::onMainComboActivated);
}

QMenu* SensorSelectionWidget::buildThermocoupleMenu()
{
    auto* menu = new QMenu(this);
    for (const char* type : kThermocouples) {
        menu->addAction(tr(type));
    }
    return menu;
}

void SensorSelectionWidget::onMainComboActivated(int index)
{
    assertGuiThread();
    if (auto* menu = m_mainCombo->itemData(index, Qt::UserRole).value<QMenu*>()) {
        menu->exec(m_mainCombo->mapToGlobal(QPoint(0, m_mainCombo->height())));
        return;
    }
    qDebug() << "Selected:" << m_mainCombo->itemText(index);
}
