#include "app/mainwidget.h"

#include "app/instrumentlink.h"
#include "common/threadassert.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QSpinBox>

void MainWidget::recvUsbSlot(bool isChecked)
{
    assertGuiThread();
    m_usbLogCheck->setChecked(isChecked);
    m_rowLimitCheck->setEnabled(isChecked);
    m_rowLimitSpin->setEnabled(isChecked);
}

void MainWidget::recvStartSlot(bool isChecked)
{
    assertGuiThread();
    const auto* button = qobject_cast<QRadioButton*>(sender());
    if (!isChecked || !button) {
        return;
    }
    if (button == m_startNowRadio || button == m_startAtTimeRadio) {
        // The date beside the second button has no effect.
        scn::InstrumentLink::send(QStringLiteral("TRIG:SOUR IMM"));
        m_intervalGroup->setEnabled(true);
        m_alarmCombo->setEnabled(false);
    } else if (button == m_startOnAlarmRadio) {
        scn::InstrumentLink::send(
            QStringLiteral("TRIG:SOUR ALAR%1").arg(m_alarmCombo->currentIndex() + 1));
        m_intervalGroup->setEnabled(false);
        m_alarmCombo->setEnabled(true);
    }
}

/// Not connected: a new alarm takes effect the next time its button is turned on.
void MainWidget::recvAlarmComboSlot(int index)
{
    assertGuiThread();
    if (index >= 0) {
        scn::InstrumentLink::send(QStringLiteral("TRIG:SOUR ALAR%1").arg(index + 1));
    }
}

void MainWidget::recvIntervalSlot(bool isChecked)
{
    assertGuiThread();
    const auto* button = qobject_cast<QRadioButton*>(sender());
    if (!isChecked || !button) {
        return;
    }
    const struct
    {
        const QRadioButton* button;
        const char* source;
    } sources[] = {{m_intervalMinimumRadio, "IMM"},
                   {m_intervalCustomRadio, "TIM"},
                   {m_intervalExternalRadio, "EXT"},
                   {m_intervalManualRadio, "BUS"}};
    for (const auto& row : sources) {
        if (row.button == button) {
            scn::InstrumentLink::send(
                QStringLiteral("TRIG:SOUR %1").arg(QLatin1String(row.source)));
            m_intervalPicker->setEnabled(button == m_intervalCustomRadio);
        }
    }
}

void MainWidget::recvIntervalPickerSlot(double value)
{
    assertGuiThread();
    scn::InstrumentLink::send(QStringLiteral("TRIG:TIM %1").arg(value));
}

void MainWidget::recvStopSlot(bool isChecked)
{
    assertGuiThread();
    const auto* button = qobject_cast<QRadioButton*>(sender());
    if (!isChecked || !button) {
        return;
    }
    if (button == m_stopManualRadio || button == m_stopElapsedRadio) {
        scn::InstrumentLink::send(QStringLiteral("TRIG:COUN INF"));
    } else if (button == m_stopCountRadio) {
        scn::InstrumentLink::send(QStringLiteral("TRIG:COUN %1").arg(m_stopCountBox->value()));
    } else {
        return;
    }
    m_stopCountBox->setEnabled(button == m_stopCountRadio);
    m_stopElapsedPicker->setEnabled(button == m_stopElapsedRadio);
}

void MainWidget::recvStopCountSlot(int count)
{
    assertGuiThread();
    scn::InstrumentLink::send(QStringLiteral("TRIG:COUN %1").arg(count));
    scn::InstrumentLink::send(QStringLiteral("SYST:ERR?"));
}
