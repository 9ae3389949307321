#include "app/mainwidget.h"

#include "app/globals.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "widgets/timepicker.h"
#include "widgets/wheelguard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextEdit>
#include <QVBoxLayout>

// The form of a logging run. Only the controls that are members act; the others are laid out and
// shown, and have no link to the rest of the program.

namespace {

constexpr int kExchangeTimeoutMs = 5000;
constexpr double kMaxIntervalS = 360000; ///< 100 hours
constexpr double kMaxElapsedS = 1987200; ///< 23 days
constexpr int kMinRowLimit = 65536;
constexpr int kMaxRowLimit = 100000;
constexpr int kMaxSweeps = 1000000;
constexpr int kGroupMargin = 4; ///< Left and right: the longest line fits the page's width.

/// Nothing goes out between a loss and its recovery, which reads all of it back.
void send(const QString& command)
{
    if (g_instrumentConnected) {
        g_visa->sendCommand(command, kExchangeTimeoutMs);
    }
}

QLabel* makeLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setStyleSheet(QStringLiteral("color:  #D3D3D3;"));
    return label;
}

template <typename Button>
Button* makeButton(const QString& text, QWidget* parent)
{
    auto* button = new Button(text, parent);
    button->setStyleSheet(QStringLiteral("color:  #D3D3D3;"));
    return button;
}

/// A row of the form: the widgets from the left, then a spacer that takes the rest.
void addRow(QVBoxLayout* layout, std::initializer_list<QWidget*> widgets)
{
    auto* row = new QHBoxLayout;
    for (QWidget* widget : widgets) {
        row->addWidget(widget);
    }
    row->addItem(new QSpacerItem(20, 0, QSizePolicy::Expanding, QSizePolicy::Minimum));
    layout->addLayout(row);
}

QGroupBox* makeGroup(const QString& title, QWidget* parent)
{
    auto* group = new QGroupBox(title, parent);
    group->setStyleSheet(QStringLiteral(
        "QGroupBox { color:  #D3D3D3; border: 1px solid gray; border-radius: 5px; margin-top: "
        "10px; }"
        " QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 3px; }"));
    auto* rows = new QVBoxLayout(group);
    QMargins margins = rows->contentsMargins();
    margins.setLeft(kGroupMargin);
    margins.setRight(kGroupMargin);
    rows->setContentsMargins(margins);
    return group;
}

QVBoxLayout* rowsOf(QGroupBox* group)
{
    return static_cast<QVBoxLayout*>(group->layout());
}

QDateTimeEdit* makeDateTimeEdit(const QDateTime& time, QWidget* parent)
{
    auto* edit = new QDateTimeEdit(time, parent);
    edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    edit->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    WheelGuard::install(edit);
    return edit;
}

} // namespace

QWidget* MainWidget::buildLoggingPage()
{
    if (m_loggingPage) {
        return m_loggingPage;
    }
    m_loggingPage = new QScrollArea(m_settingsTabs);
    m_loggingPage->setWidgetResizable(true);
    m_loggingPageContent = new QWidget(m_loggingPage);
    m_loggingPageContent->setStyleSheet(QStringLiteral("background:rgb(63,63,63);"));
    auto* layout = new QVBoxLayout;
    layout->setSpacing(5);
    layout->setContentsMargins(10, 10, 10, 10);
    for (QGroupBox* group : {buildFileGroup(), buildStartGroup(), buildIntervalGroup(),
                             buildStopGroup(), buildDigitizingGroup()}) {
        layout->addWidget(group);
    }
    m_loggingPageContent->setLayout(layout);
    m_loggingPage->setWidget(m_loggingPageContent);
    return m_loggingPage;
}

QGroupBox* MainWidget::buildFileGroup()
{
    QGroupBox* group = makeGroup(tr("数据记录"), m_loggingPageContent);
    QVBoxLayout* rows = rowsOf(group);

    auto* fileName = new QLineEdit(QStringLiteral("SCN4070A Data Log"), group);
    fileName->setMinimumWidth(150);
    fileName->setStyleSheet(QStringLiteral("background: black;"));
    addRow(rows, {makeLabel(tr("文件名:"), group), fileName});

    const QDateTime now = QDateTime::currentDateTime();
    const auto addPart = [group, rows](const QString& text, const QString& value) {
        auto* check = makeButton<QCheckBox>(text, group);
        check->setChecked(true);
        auto* label = new QLabel(value, group);
        label->setStyleSheet(QStringLiteral("background: #2D2D2D; color: #FFFFFF; padding: 2px;"));
        addRow(rows, {check, label});
        return label;
    };
    const QLabel* date = addPart(tr("附加日期"), now.toString(QStringLiteral("yyyy-MM-dd")));
    const QLabel* time = addPart(tr("附加时间"), now.toString(QStringLiteral("HH-mm-ss")));
    const QLabel* number = addPart(tr("附加数字"), QStringLiteral("0"));

    m_usbLogCheck = makeButton<QCheckBox>(tr("记录到 USB"), group);
    addRow(rows, {m_usbLogCheck});
    m_rowLimitCheck = makeButton<QCheckBox>(tr("行限制"), group);
    m_rowLimitCheck->setChecked(true);
    m_rowLimitCheck->setEnabled(false);
    m_rowLimitSpin = new QSpinBox(group);
    m_rowLimitSpin->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    m_rowLimitSpin->setRange(kMinRowLimit, kMaxRowLimit);
    m_rowLimitSpin->setValue(kMinRowLimit);
    m_rowLimitSpin->setEnabled(false);
    WheelGuard::install(m_rowLimitSpin);
    addRow(rows, {m_rowLimitCheck, m_rowLimitSpin});

    rows->addWidget(makeLabel(tr("数据管理器文件名:"), group));
    auto* managerName =
        new QLabel(QStringLiteral("%1 %2 %3 %4")
                       .arg(fileName->text(), date->text(), time->text(), number->text()),
                   group);
    managerName->setStyleSheet(QStringLiteral(
        "background:  #2D2D2D; color: #A9A9A9; padding: 3px; border: 1px solid gray;"));
    managerName->setMinimumHeight(30);
    rows->addWidget(managerName);

    rows->addWidget(makeLabel(tr("注释文本:"), group));
    auto* comment = new QTextEdit(group);
    comment->setPlaceholderText(tr("自由格式的文本最多包含500个字符"));
    comment->setMinimumHeight(80);
    comment->setTabChangesFocus(true);
    comment->setStyleSheet(QStringLiteral("background: #000000; color: #A9A9A9;"));
    rows->addWidget(comment);
    return group;
}

QGroupBox* MainWidget::buildStartGroup()
{
    QGroupBox* group = makeGroup(tr("开始数据记录"), m_loggingPageContent);
    QVBoxLayout* rows = rowsOf(group);
    m_startNowRadio = makeButton<QRadioButton>(tr("使用\"开始\"按钮立即开始"), group);
    m_startNowRadio->setChecked(true);
    addRow(rows, {m_startNowRadio});
    m_startAtTimeRadio = makeButton<QRadioButton>(tr("在特定时间:"), group);
    const QDateTime now = QDateTime::currentDateTime();
    QDateTimeEdit* time = makeDateTimeEdit(now, group);
    time->setMinimumDateTime(now);
    addRow(rows, {m_startAtTimeRadio, time});
    m_startOnAlarmRadio = makeButton<QRadioButton>(tr("警报时:"), group);
    m_alarmCombo = new QComboBox(group);
    m_alarmCombo->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    m_alarmCombo->addItems({QStringLiteral("Alarm1"), QStringLiteral("Alarm2"),
                            QStringLiteral("Alarm3"), QStringLiteral("Alarm4")});
    m_alarmCombo->setEnabled(false);
    WheelGuard::install(m_alarmCombo);
    addRow(rows, {m_startOnAlarmRadio, m_alarmCombo});
    return group;
}

QGroupBox* MainWidget::buildIntervalGroup()
{
    m_intervalGroup = makeGroup(tr("扫描时间间隔"), m_loggingPageContent);
    QVBoxLayout* rows = rowsOf(m_intervalGroup);
    m_intervalMinimumRadio = makeButton<QRadioButton>(tr("最小值"), m_intervalGroup);
    m_intervalMinimumRadio->setChecked(true);
    addRow(rows, {m_intervalMinimumRadio});
    m_intervalCustomRadio = makeButton<QRadioButton>(tr("自定义:"), m_intervalGroup);
    m_intervalPicker = new TimePicker(this);
    m_intervalPicker->setMillisecondsVisible(true);
    m_intervalPicker->setMaximumWidth(180);
    m_intervalPicker->setMaximum(kMaxIntervalS);
    m_intervalPicker->setEnabled(false);
    addRow(rows, {m_intervalCustomRadio, m_intervalPicker});
    m_intervalExternalRadio = makeButton<QRadioButton>(tr("外部触发时"), m_intervalGroup);
    addRow(rows, {m_intervalExternalRadio});
    m_intervalManualRadio = makeButton<QRadioButton>(tr("手动触发"), m_intervalGroup);
    addRow(rows, {m_intervalManualRadio});
    return m_intervalGroup;
}

QGroupBox* MainWidget::buildStopGroup()
{
    QGroupBox* group = makeGroup(tr("停止数据记录"), m_loggingPageContent);
    QVBoxLayout* rows = rowsOf(group);
    m_stopManualRadio = makeButton<QRadioButton>(tr("使用“停止”按钮立即停止"), group);
    m_stopManualRadio->setChecked(true);
    addRow(rows, {m_stopManualRadio});
    m_stopElapsedRadio = makeButton<QRadioButton>(tr("已用时间之后:"), group);
    m_stopElapsedPicker = new TimePicker(group);
    m_stopElapsedPicker->setMillisecondsVisible(false);
    m_stopElapsedPicker->setMaximumWidth(136);
    m_stopElapsedPicker->setMaximum(kMaxElapsedS);
    m_stopElapsedPicker->setEnabled(false);
    addRow(rows, {m_stopElapsedRadio, m_stopElapsedPicker});
    m_stopCountRadio = makeButton<QRadioButton>(tr("N次扫描后:"), group);
    m_stopCountBox = new QSpinBox(group);
    m_stopCountBox->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    m_stopCountBox->setRange(1, kMaxSweeps);
    m_stopCountBox->setKeyboardTracking(false);
    WheelGuard::install(m_stopCountBox);
    addRow(rows, {m_stopCountRadio, m_stopCountBox});
    return group;
}

QGroupBox* MainWidget::buildDigitizingGroup()
{
    QGroupBox* group = makeGroup(QStringLiteral("Start Digitizing"), m_loggingPageContent);
    QVBoxLayout* rows = rowsOf(group);
    auto* withLogger = makeButton<QRadioButton>(
        QStringLiteral("Immediately with Data Logger Start Button"), group);
    withLogger->setChecked(true);
    addRow(rows, {withLogger});
    addRow(rows, {makeButton<QRadioButton>(
                     QStringLiteral("Immediately with Digitizer Start Button"), group)});
    addRow(rows, {makeButton<QRadioButton>(tr("在特定时间:"), group),
                  makeDateTimeEdit(QDateTime(QDate(2025, 6, 19), QTime(7, 59, 1)), group)});
    return group;
}

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
        // The date beside the second button has no effect: both start at once.
        send(QStringLiteral("TRIG:SOUR IMM"));
        m_intervalGroup->setEnabled(true);
        m_alarmCombo->setEnabled(false);
    } else if (button == m_startOnAlarmRadio) {
        send(QStringLiteral("TRIG:SOUR ALAR%1").arg(m_alarmCombo->currentIndex() + 1));
        m_intervalGroup->setEnabled(false);
        m_alarmCombo->setEnabled(true);
    }
}

/// Connected to nothing: a changed alarm takes effect when its button is turned on again.
void MainWidget::recvAlarmComboSlot(int index)
{
    assertGuiThread();
    if (index >= 0) {
        send(QStringLiteral("TRIG:SOUR ALAR%1").arg(index + 1));
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
            send(QStringLiteral("TRIG:SOUR %1").arg(QLatin1String(row.source)));
            m_intervalPicker->setEnabled(button == m_intervalCustomRadio);
        }
    }
}

void MainWidget::recvIntervalPickerSlot(double value)
{
    assertGuiThread();
    send(QStringLiteral("TRIG:TIM %1").arg(value));
}

void MainWidget::recvStopSlot(bool isChecked)
{
    assertGuiThread();
    const auto* button = qobject_cast<QRadioButton*>(sender());
    if (!isChecked || !button) {
        return;
    }
    if (button == m_stopManualRadio || button == m_stopElapsedRadio) {
        send(QStringLiteral("TRIG:COUN INF"));
    } else if (button == m_stopCountRadio) {
        send(QStringLiteral("TRIG:COUN %1").arg(m_stopCountBox->value()));
    } else {
        return;
    }
    m_stopCountBox->setEnabled(button == m_stopCountRadio);
    m_stopElapsedPicker->setEnabled(button == m_stopElapsedRadio);
}

void MainWidget::recvStopCountSlot(int count)
{
    assertGuiThread();
    send(QStringLiteral("TRIG:COUN %1").arg(count));
    send(QStringLiteral("SYST:ERR?"));
}
