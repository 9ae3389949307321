#include "app/mainwidget.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/timecolumn.h"
#include "widgets/timepicker.h"
#include "windowbench.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextEdit>
#include <QVBoxLayout>
#include <QtTest>

#include <initializer_list>

namespace {

const QString kLight = QStringLiteral("color:  #D3D3D3;");
const QString kInput = QStringLiteral("background: #2D2D2D;");

/// The page of a window with two channels, once the start is over.
struct LoggingPage : WindowBench
{
    LoggingPage()
    {
        instrument().putModule(2, QStringLiteral("SCN4005A"));
        open();
        const auto* tabs = window().findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
        page = qobject_cast<QScrollArea*>(tabs->widget(1));
        content = page->widget();
    }

    QGroupBox* group(const QString& title) const
    {
        for (QGroupBox* box : content->findChildren<QGroupBox*>()) {
            if (box->title() == title) {
                return box;
            }
        }
        qFatal("no group %s", qPrintable(title));
    }

    QScrollArea* page;
    QWidget* content;
};

/// What a control shows, with its class.
QString described(const QWidget* widget)
{
    QString text;
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
        text = button->text();
    } else if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        text = label->text();
    } else if (const auto* edit = qobject_cast<const QLineEdit*>(widget)) {
        text = edit->text();
    } else if (const auto* spin = qobject_cast<const QSpinBox*>(widget)) {
        text = spin->text();
    }
    return QString::fromLatin1(widget->metaObject()->className()) + QStringLiteral(": ") + text;
}

/// The controls of a layout from the top, one line for each row.
QStringList rowsOf(const QLayout* layout)
{
    QStringList rows;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget()) {
            rows.append(described(item->widget()));
        } else if (const QLayout* row = item->layout()) {
            rows.append(rowsOf(row).join(QStringLiteral(" | ")));
        }
    }
    return rows;
}

QRadioButton* radio(const QGroupBox* group, const QString& text)
{
    for (QRadioButton* button : group->findChildren<QRadioButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    qFatal("no button %s", qPrintable(text));
}

/// The state of every control on the page, to detect changes.
QStringList stateOf(const QWidget* content)
{
    QStringList state;
    for (const QWidget* widget : content->findChildren<QWidget*>()) {
        QString text = described(widget) + QString::number(widget->isEnabled());
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            text += QString::number(button->isChecked());
        }
        state.append(text);
    }
    return state;
}

/// How many entries of two states differ.
int changes(const QStringList& before, const QStringList& after)
{
    int count = 0;
    for (int i = 0; i < before.size(); ++i) {
        count += before.at(i) != after.value(i) ? 1 : 0;
    }
    return count;
}

} // namespace

/// The recording page: what it shows, which of it acts, and that the rest does not.
class TestLoggingPage : public QObject
{
    Q_OBJECT

private slots:
    void groupsStandInThisOrder();
    void groupsHoldTheseRows();
    void fileGroupStartsLikeThis();
    void startGroupStartsLikeThis();
    void intervalGroupStartsLikeThis();
    void stopGroupStartsLikeThis();
    void digitizingGroupStartsLikeThis();
    void controlsAreStyledLikeThis();
    void buildingSendsNothing();
    void managersFileNameStaysAsComposed();
    void passiveControlsChangeNothingElse();
    void usbLogOpensTheRowLimit();
    void rowLimitKeepsItsRange();
};

void TestLoggingPage::groupsStandInThisOrder()
{
    LoggingPage bench;
    QCOMPARE(bench.content->styleSheet(), QStringLiteral("background:rgb(63,63,63);"));
    const auto* layout = qobject_cast<QVBoxLayout*>(bench.content->layout());
    QVERIFY(layout);
    QCOMPARE(layout->spacing(), 5);
    QCOMPARE(layout->contentsMargins(), QMargins(10, 10, 10, 10));
    QStringList titles;
    for (int i = 0; i < layout->count(); ++i) {
        const auto* group = qobject_cast<QGroupBox*>(layout->itemAt(i)->widget());
        QVERIFY(group);
        titles.append(group->title());
        QCOMPARE(group->styleSheet(),
                 QStringLiteral("QGroupBox { color:  #D3D3D3; border: 1px solid gray; "
                                "border-radius: 5px; margin-top: 10px; } QGroupBox::title { "
                                "subcontrol-origin: margin; left: 10px; padding: 0 3px; }"));
    }
    QCOMPARE(titles, texts({"数据记录", "开始数据记录", "扫描时间间隔", "停止数据记录",
                            "Start Digitizing"}));
}

void TestLoggingPage::groupsHoldTheseRows()
{
    LoggingPage bench;
    QStringList rows = rowsOf(bench.group(QStringLiteral("数据记录"))->layout());
    // The start time is checked elsewhere.
    rows.replaceInStrings(QRegularExpression(QStringLiteral("\\d{4}-\\d\\d-\\d\\d")),
                          QStringLiteral("DATE"));
    rows.replaceInStrings(QRegularExpression(QStringLiteral("\\d\\d-\\d\\d-\\d\\d")),
                          QStringLiteral("TIME"));
    QCOMPARE(rows, texts({"QLabel: 文件名: | QLineEdit: SCN4070A Data Log",
                          "QCheckBox: 附加日期 | QLabel: DATE",
                          "QCheckBox: 附加时间 | QLabel: TIME", "QCheckBox: 附加数字 | QLabel: 0",
                          "QCheckBox: 记录到 USB", "QCheckBox: 行限制 | QSpinBox: 65536",
                          "QLabel: 数据管理器文件名:", "QLabel: SCN4070A Data Log DATE TIME 0",
                          "QLabel: 注释文本:", "QTextEdit: "}));
    QCOMPARE(rowsOf(bench.group(QStringLiteral("开始数据记录"))->layout()),
             texts({"QRadioButton: 使用\"开始\"按钮立即开始",
                    "QRadioButton: 在特定时间: | QDateTimeEdit: ",
                    "QRadioButton: 警报时: | QComboBox: "}));
    QCOMPARE(rowsOf(bench.group(QStringLiteral("扫描时间间隔"))->layout()),
             texts({"QRadioButton: 最小值", "QRadioButton: 自定义: | TimePicker: ",
                    "QRadioButton: 外部触发时", "QRadioButton: 手动触发"}));
    QCOMPARE(
        rowsOf(bench.group(QStringLiteral("停止数据记录"))->layout()),
        texts({"QRadioButton: 使用“停止”按钮立即停止", "QRadioButton: 已用时间之后: | TimePicker: ",
               "QRadioButton: N次扫描后: | QSpinBox: 1"}));
    QCOMPARE(rowsOf(bench.group(QStringLiteral("Start Digitizing"))->layout()),
             texts({"QRadioButton: Immediately with Data Logger Start Button",
                    "QRadioButton: Immediately with Digitizer Start Button",
                    "QRadioButton: 在特定时间: | QDateTimeEdit: "}));
}

void TestLoggingPage::fileGroupStartsLikeThis()
{
    const QDateTime before = QDateTime::currentDateTime();
    LoggingPage bench;
    const QGroupBox* group = bench.group(QStringLiteral("数据记录"));
    const auto labels = group->findChildren<QLabel*>();
    const auto* fileName = group->findChild<QLineEdit*>();
    QCOMPARE(fileName->minimumWidth(), 150);
    for (const char* text : {"附加日期", "附加时间", "附加数字"}) {
        QVERIFY(bench.button(QString::fromUtf8(text))->isChecked());
    }
    QVERIFY(!bench.button(QStringLiteral("记录到 USB"))->isChecked());
    const QAbstractButton* limit = bench.button(QStringLiteral("行限制"));
    QVERIFY(limit->isChecked() && !limit->isEnabled());
    const auto* limitSpin = group->findChild<QSpinBox*>();
    QVERIFY(!limitSpin->isEnabled());
    QCOMPARE(limitSpin->minimum(), 65536);
    QCOMPARE(limitSpin->maximum(), 100000);
    QCOMPARE(limitSpin->value(), 65536);

    const QString moment = labels.at(1)->text() + QLatin1Char(' ') + labels.at(2)->text();
    const QDateTime shown = QDateTime::fromString(moment, QStringLiteral("yyyy-MM-dd HH-mm-ss"));
    QVERIFY2(shown.isValid(), qPrintable(moment));
    QVERIFY(before.addSecs(-1) <= shown && shown <= QDateTime::currentDateTime());
    const QLabel* managerName = labels.at(5);
    QCOMPARE(managerName->text(), QStringLiteral("SCN4070A Data Log %1 0").arg(moment));
    QCOMPARE(managerName->minimumHeight(), 30);
    const auto* comment = group->findChild<QTextEdit*>();
    QCOMPARE(comment->placeholderText(), QStringLiteral("自由格式的文本最多包含500个字符"));
    QCOMPARE(comment->minimumHeight(), 80);
    QVERIFY(comment->toPlainText().isEmpty());
    // The 500 is no limit.
    const QString longText(600, QLatin1Char('x'));
    group->findChild<QTextEdit*>()->setPlainText(longText);
    QCOMPARE(comment->toPlainText(), longText);
}

void TestLoggingPage::startGroupStartsLikeThis()
{
    const QDateTime before = QDateTime::currentDateTime();
    LoggingPage bench;
    const QGroupBox* group = bench.group(QStringLiteral("开始数据记录"));
    QVERIFY(radio(group, QStringLiteral("使用\"开始\"按钮立即开始"))->isChecked());
    const auto* time = group->findChild<QDateTimeEdit*>();
    QCOMPARE(time->displayFormat(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    QVERIFY(before <= time->dateTime() && time->dateTime() <= QDateTime::currentDateTime());
    QCOMPARE(time->minimumDateTime(), time->dateTime());
    const auto* alarm = group->findChild<QComboBox*>();
    QVERIFY(!alarm->isEnabled());
    QStringList alarms;
    for (int row = 0; row < alarm->count(); ++row) {
        alarms.append(alarm->itemText(row));
    }
    QCOMPARE(alarms, texts({"Alarm1", "Alarm2", "Alarm3", "Alarm4"}));
}

void TestLoggingPage::intervalGroupStartsLikeThis()
{
    LoggingPage bench;
    QGroupBox* group = bench.group(QStringLiteral("扫描时间间隔"));
    QVERIFY(group->isEnabled());
    QVERIFY(radio(group, QStringLiteral("最小值"))->isChecked());
    auto* picker = group->findChild<TimePicker*>();
    QVERIFY(!picker->isEnabled());
    QCOMPARE(picker->maximumWidth(), 180);
    // Milliseconds are shown.
    picker->setTime(0, 0, 0, 1, 250);
    QCOMPARE(picker->value(), 1.25);
    // 100 hours are the limit.
    picker->setTime(0, 0, 0, 0, 0);
    QCOMPARE(picker->findChildren<TimeColumn*>().first()->maximum(), 4);
    picker->setTime(2, 0, 0, 0, 0);
    QCOMPARE(picker->value(), 2 * 86400.0);
}

void TestLoggingPage::stopGroupStartsLikeThis()
{
    LoggingPage bench;
    const QGroupBox* group = bench.group(QStringLiteral("停止数据记录"));
    QVERIFY(radio(group, QStringLiteral("使用“停止”按钮立即停止"))->isChecked());
    auto* picker = group->findChild<TimePicker*>();
    QVERIFY(!picker->isEnabled());
    QCOMPARE(picker->maximumWidth(), 136);
    // No milliseconds.
    picker->setTime(0, 0, 0, 2, 250);
    QCOMPARE(picker->value(), 2.0);
    // 23 days are the limit.
    picker->setTime(0, 0, 0, 0, 0);
    QCOMPARE(picker->findChildren<TimeColumn*>().first()->maximum(), 23);
    picker->setTime(10, 0, 0, 0, 0);
    QCOMPARE(picker->value(), 10 * 86400.0);
    const auto* count = group->findChild<QSpinBox*>();
    QVERIFY(count->isEnabled());
    QCOMPARE(count->value(), 1);
    QCOMPARE(count->minimum(), 1);
    QCOMPARE(count->maximum(), 1000000);
}

void TestLoggingPage::digitizingGroupStartsLikeThis()
{
    LoggingPage bench;
    const QGroupBox* group = bench.group(QStringLiteral("Start Digitizing"));
    QVERIFY(radio(group, QStringLiteral("Immediately with Data Logger Start Button"))->isChecked());
    const auto* time = group->findChild<QDateTimeEdit*>();
    QCOMPARE(time->displayFormat(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    QCOMPARE(time->dateTime(), QDateTime(QDate(2025, 6, 19), QTime(7, 59, 1)));
}

void TestLoggingPage::controlsAreStyledLikeThis()
{
    LoggingPage bench;
    const QString value = QStringLiteral("background: #2D2D2D; color: #FFFFFF; padding: 2px;");
    const auto labels = bench.group(QStringLiteral("数据记录"))->findChildren<QLabel*>();
    QStringList styles;
    for (const QLabel* label : labels) {
        styles.append(label->styleSheet());
    }
    QCOMPARE(styles, QStringList({kLight, value, value, value, kLight,
                                  QStringLiteral("background:  #2D2D2D; color: #A9A9A9; padding: "
                                                 "3px; border: 1px solid gray;"),
                                  kLight}));
    QCOMPARE(bench.group(QStringLiteral("数据记录"))->findChild<QLineEdit*>()->styleSheet(),
             QStringLiteral("background: black;"));
    QCOMPARE(bench.content->findChild<QTextEdit*>()->styleSheet(),
             QStringLiteral("background: #000000; color: #A9A9A9;"));
    for (const QWidget* input : bench.content->findChildren<QWidget*>()) {
        const bool isTimePart = input->parentWidget()->inherits("TimeColumn") ||
                                qobject_cast<QAbstractSpinBox*>(input->parentWidget());
        if (isTimePart) {
            continue;
        }
        if (qobject_cast<const QSpinBox*>(input) || qobject_cast<const QDateTimeEdit*>(input) ||
            qobject_cast<const QComboBox*>(input)) {
            QCOMPARE(input->styleSheet(), kInput);
        }
        if (qobject_cast<const QCheckBox*>(input) || qobject_cast<const QRadioButton*>(input)) {
            QCOMPARE(input->styleSheet(), kLight);
        }
    }
}

void TestLoggingPage::buildingSendsNothing()
{
    LoggingPage bench;
    const QStringList lines = bench.startUpLines();
    const int found = lines.indexOf(QStringLiteral("SYST:CTYP? 15"));
    QCOMPARE(lines.value(found + 1), QStringLiteral("STAT:OPER:EVEN?"));
    // For an idle instrument nothing but queries and the clock is sent.
    for (const QString& line : lines) {
        QVERIFY2(line.contains(QLatin1Char('?')) || line == QLatin1String("*CLS") ||
                     line.startsWith(QLatin1String("SYST:")),
                 qPrintable(line));
    }
}

void TestLoggingPage::managersFileNameStaysAsComposed()
{
    LoggingPage bench;
    const QGroupBox* group = bench.group(QStringLiteral("数据记录"));
    const QLabel* managerName = group->findChildren<QLabel*>().at(5);
    const QString composed = managerName->text();
    QTest::keyClicks(group->findChild<QLineEdit*>(), QStringLiteral(" 2"));
    QCOMPARE(group->findChild<QLineEdit*>()->text(), QStringLiteral("SCN4070A Data Log 2"));
    bench.button(QStringLiteral("附加数字"))->click();
    QCOMPARE(managerName->text(), composed);
    QCOMPARE(bench.instrument().lines(), QStringList());
}

void TestLoggingPage::passiveControlsChangeNothingElse()
{
    LoggingPage bench;
    for (const char* text : {"附加日期", "附加时间", "附加数字"}) {
        const QStringList before = stateOf(bench.content);
        bench.button(QString::fromUtf8(text))->click();
        QCOMPARE(changes(before, stateOf(bench.content)), 1);
    }
    const QGroupBox* digitizing = bench.group(QStringLiteral("Start Digitizing"));
    for (const char* text : {"Immediately with Digitizer Start Button", "在特定时间:"}) {
        const QStringList before = stateOf(bench.content);
        radio(digitizing, QString::fromUtf8(text))->click();
        // The button itself and the one that was on before.
        QCOMPARE(changes(before, stateOf(bench.content)), 2);
    }
    for (QDateTimeEdit* edit : bench.content->findChildren<QDateTimeEdit*>()) {
        edit->setDateTime(edit->dateTime().addDays(1));
    }
    bench.content->findChild<QTextEdit*>()->setPlainText(QStringLiteral("comment"));
    QCOMPARE(bench.instrument().lines(), QStringList());
}

void TestLoggingPage::usbLogOpensTheRowLimit()
{
    LoggingPage bench;
    QAbstractButton* usb = bench.button(QStringLiteral("记录到 USB"));
    const QAbstractButton* limit = bench.button(QStringLiteral("行限制"));
    const auto* spin = bench.group(QStringLiteral("数据记录"))->findChild<QSpinBox*>();
    usb->click();
    QVERIFY(usb->isChecked() && limit->isEnabled() && spin->isEnabled());
    usb->click();
    QVERIFY(!usb->isChecked() && !limit->isEnabled() && !spin->isEnabled());
    // The slot also sets the check box.
    QVERIFY(QMetaObject::invokeMethod(&bench.window(), "recvUsbSlot", Q_ARG(bool, true)));
    QVERIFY(usb->isChecked() && limit->isEnabled() && spin->isEnabled());
    QCOMPARE(bench.instrument().lines(), QStringList());
}

void TestLoggingPage::rowLimitKeepsItsRange()
{
    LoggingPage bench;
    auto* spin = bench.group(QStringLiteral("数据记录"))->findChild<QSpinBox*>();
    spin->setValue(65535);
    QCOMPARE(spin->value(), 65536);
    spin->setValue(100001);
    QCOMPARE(spin->value(), 100000);
}

SCN_TEST(TestLoggingPage, QApplication)
#include "test_loggingpage.moc"
