#include "app/loggingpagebuilder.h"

#include "common/threadassert.h"
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
#include <QTextEdit>
#include <QVBoxLayout>

namespace scn {

namespace {

constexpr int kMinRowLimit = 65536;
constexpr int kMaxRowLimit = 100000;
constexpr int kMaxSweeps = 1000000;
constexpr int kGroupMargin = 4; ///< left and right; the longest line then fits the page

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

/// Adds a row: the widgets from the left, then an expanding spacer.
void addRow(QVBoxLayout* layout, std::initializer_list<QWidget*> widgets)
{
    auto* row = new QHBoxLayout;
    for (QWidget* widget : widgets) {
        row->addWidget(widget);
    }
    row->addItem(new QSpacerItem(20, 0, QSizePolicy::Expanding, QSizePolicy::Minimum));
    layout->addLayout(row);
}

struct PickerSetup
{
    bool showsMilliseconds;
    int width;
    double maximumS;
};

constexpr PickerSetup kIntervalPicker{true, 180, 360000};  // 100 hours
constexpr PickerSetup kElapsedPicker{false, 136, 1987200}; // 23 days

/// A disabled picker of a duration.
TimePicker* makePicker(const PickerSetup& setup, QWidget* parent)
{
    auto* picker = new TimePicker(parent);
    picker->setMillisecondsVisible(setup.showsMilliseconds);
    picker->setMaximumWidth(setup.width);
    picker->setMaximum(setup.maximumS);
    picker->setEnabled(false);
    return picker;
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

LoggingPage LoggingPageBuilder::build(QWidget* parent)
{
    assertGuiThread();
    m_page = {};
    m_page.page = new QScrollArea(parent);
    m_page.page->setWidgetResizable(true);
    m_page.content = new QWidget(m_page.page);
    m_page.content->setStyleSheet(QStringLiteral("background:rgb(63,63,63);"));
    auto* layout = new QVBoxLayout;
    layout->setSpacing(5);
    layout->setContentsMargins(10, 10, 10, 10);
    for (QGroupBox* group : {buildFileGroup(), buildStartGroup(), buildIntervalGroup(),
                             buildStopGroup(), buildDigitizingGroup()}) {
        layout->addWidget(group);
    }
    m_page.content->setLayout(layout);
    m_page.page->setWidget(m_page.content);
    return m_page;
}

QGroupBox* LoggingPageBuilder::buildFileGroup()
{
    LoggingForm& form = m_page.form;
    QGroupBox* group = makeGroup(tr("数据记录"), m_page.content);
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

    form.m_usbLogCheck = makeButton<QCheckBox>(tr("记录到 USB"), group);
    addRow(rows, {form.m_usbLogCheck});
    form.m_rowLimitCheck = makeButton<QCheckBox>(tr("行限制"), group);
    form.m_rowLimitCheck->setChecked(true);
    form.m_rowLimitCheck->setEnabled(false);
    form.m_rowLimitSpin = new QSpinBox(group);
    form.m_rowLimitSpin->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    form.m_rowLimitSpin->setRange(kMinRowLimit, kMaxRowLimit);
    form.m_rowLimitSpin->setValue(kMinRowLimit);
    form.m_rowLimitSpin->setEnabled(false);
    WheelGuard::install(form.m_rowLimitSpin);
    addRow(rows, {form.m_rowLimitCheck, form.m_rowLimitSpin});

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

QGroupBox* LoggingPageBuilder::buildStartGroup()
{
    LoggingForm& form = m_page.form;
    QGroupBox* group = makeGroup(tr("开始数据记录"), m_page.content);
    QVBoxLayout* rows = rowsOf(group);
    form.m_startNowRadio = makeButton<QRadioButton>(tr("使用\"开始\"按钮立即开始"), group);
    form.m_startNowRadio->setChecked(true);
    addRow(rows, {form.m_startNowRadio});
    form.m_startAtTimeRadio = makeButton<QRadioButton>(tr("在特定时间:"), group);
    const QDateTime now = QDateTime::currentDateTime();
    QDateTimeEdit* time = makeDateTimeEdit(now, group);
    time->setMinimumDateTime(now);
    addRow(rows, {form.m_startAtTimeRadio, time});
    form.m_startOnAlarmRadio = makeButton<QRadioButton>(tr("警报时:"), group);
    form.m_alarmCombo = new QComboBox(group);
    form.m_alarmCombo->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    form.m_alarmCombo->addItems({QStringLiteral("Alarm1"), QStringLiteral("Alarm2"),
                                 QStringLiteral("Alarm3"), QStringLiteral("Alarm4")});
    form.m_alarmCombo->setEnabled(false);
    WheelGuard::install(form.m_alarmCombo);
    addRow(rows, {form.m_startOnAlarmRadio, form.m_alarmCombo});
    return group;
}

QGroupBox* LoggingPageBuilder::buildIntervalGroup()
{
    LoggingForm& form = m_page.form;
    form.m_intervalGroup = makeGroup(tr("扫描时间间隔"), m_page.content);
    QVBoxLayout* rows = rowsOf(form.m_intervalGroup);
    form.m_intervalMinimumRadio = makeButton<QRadioButton>(tr("最小值"), form.m_intervalGroup);
    form.m_intervalMinimumRadio->setChecked(true);
    addRow(rows, {form.m_intervalMinimumRadio});
    form.m_intervalCustomRadio = makeButton<QRadioButton>(tr("自定义:"), form.m_intervalGroup);
    form.m_intervalPicker = makePicker(kIntervalPicker, form.m_intervalGroup);
    addRow(rows, {form.m_intervalCustomRadio, form.m_intervalPicker});
    form.m_intervalExternalRadio = makeButton<QRadioButton>(tr("外部触发时"), form.m_intervalGroup);
    addRow(rows, {form.m_intervalExternalRadio});
    form.m_intervalManualRadio = makeButton<QRadioButton>(tr("手动触发"), form.m_intervalGroup);
    addRow(rows, {form.m_intervalManualRadio});
    return form.m_intervalGroup;
}

QGroupBox* LoggingPageBuilder::buildStopGroup()
{
    LoggingForm& form = m_page.form;
    QGroupBox* group = makeGroup(tr("停止数据记录"), m_page.content);
    QVBoxLayout* rows = rowsOf(group);
    form.m_stopManualRadio = makeButton<QRadioButton>(tr("使用“停止”按钮立即停止"), group);
    form.m_stopManualRadio->setChecked(true);
    addRow(rows, {form.m_stopManualRadio});
    form.m_stopElapsedRadio = makeButton<QRadioButton>(tr("已用时间之后:"), group);
    form.m_stopElapsedPicker = makePicker(kElapsedPicker, group);
    addRow(rows, {form.m_stopElapsedRadio, form.m_stopElapsedPicker});
    form.m_stopCountRadio = makeButton<QRadioButton>(tr("N次扫描后:"), group);
    form.m_stopCountBox = new QSpinBox(group);
    form.m_stopCountBox->setStyleSheet(QStringLiteral("background: #2D2D2D;"));
    form.m_stopCountBox->setRange(1, kMaxSweeps);
    form.m_stopCountBox->setKeyboardTracking(false);
    WheelGuard::install(form.m_stopCountBox);
    addRow(rows, {form.m_stopCountRadio, form.m_stopCountBox});
    return group;
}

QGroupBox* LoggingPageBuilder::buildDigitizingGroup()
{
    QGroupBox* group = makeGroup(QStringLiteral("Start Digitizing"), m_page.content);
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

} // namespace scn
