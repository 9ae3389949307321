#pragma once

class QCheckBox;
class QComboBox;
class QGroupBox;
class QRadioButton;
class QSpinBox;
class TimePicker;

namespace scn {

/// The controls of the recording page that act on a run; the others on that page do nothing. Null until the page
/// is built. MainWidget derives from it, so these are its members.
struct LoggingForm
{
    QCheckBox* m_usbLogCheck = nullptr;
    QCheckBox* m_rowLimitCheck = nullptr;
    QSpinBox* m_rowLimitSpin = nullptr;
    QRadioButton* m_startNowRadio = nullptr;
    QRadioButton* m_startAtTimeRadio = nullptr;
    QRadioButton* m_startOnAlarmRadio = nullptr;
    QComboBox* m_alarmCombo = nullptr;
    QGroupBox* m_intervalGroup = nullptr;
    QRadioButton* m_intervalMinimumRadio = nullptr;
    QRadioButton* m_intervalCustomRadio = nullptr;
    TimePicker* m_intervalPicker = nullptr;
    QRadioButton* m_intervalExternalRadio = nullptr;
    QRadioButton* m_intervalManualRadio = nullptr;
    QRadioButton* m_stopManualRadio = nullptr;
    QRadioButton* m_stopElapsedRadio = nullptr;
    TimePicker* m_stopElapsedPicker = nullptr;
    QRadioButton* m_stopCountRadio = nullptr;
    QSpinBox* m_stopCountBox = nullptr;
};

} // namespace scn
