#include "app/mainwidget.h"
#include "overlay/loadingview.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/timepicker.h"
#include "windowbench.h"

#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QSpinBox>
#include <QtTest>

#include <initializer_list>

namespace {

const QString kStartGroup = QStringLiteral("开始数据记录");
const QString kIntervalGroup = QStringLiteral("扫描时间间隔");
const QString kStopGroup = QStringLiteral("停止数据记录");

/// The trigger, interval and stop groups of a window with two channels.
struct TriggerForm : WindowBench
{
    TriggerForm() { instrument().putModule(2, QStringLiteral("SCN4005A")); }

    QGroupBox* group(const QString& title) const
    {
        for (QGroupBox* box : window().findChildren<QGroupBox*>()) {
            if (box->title() == title) {
                return box;
            }
        }
        qFatal("no group %s", qPrintable(title));
    }
    QComboBox* alarm() const { return group(kStartGroup)->findChild<QComboBox*>(); }
    TimePicker* interval() const { return group(kIntervalGroup)->findChild<TimePicker*>(); }
    TimePicker* elapsed() const { return group(kStopGroup)->findChild<TimePicker*>(); }
    QSpinBox* count() const { return group(kStopGroup)->findChild<QSpinBox*>(); }
    QString checkedIn(const QString& title) const
    {
        for (const QRadioButton* radio : group(title)->findChildren<QRadioButton*>()) {
            if (radio->isChecked()) {
                return radio->text();
            }
        }
        return {};
    }
    QStringList takeLines() { return instrument().takeLines(); }

    /// The lines of the start from the trigger source to just before the clock.
    QStringList settingLines() const
    {
        const int first = startUpLines().indexOf(QStringLiteral("TRIG:SOUR?"));
        const int clock =
            startUpLines().indexOf(QRegularExpression(QStringLiteral("SYST:DATE .*")));
        return startUpLines().mid(first, clock - first);
    }
};

} // namespace

/// The commands of the trigger, interval and stop settings, and their read-back.
class TestTriggerSettings : public QObject
{
    Q_OBJECT

private slots:
    void radioSendsItsCommand_data();
    void radioSendsItsCommand();
    void radioOpensItsControls_data();
    void radioOpensItsControls();
    void slotsIgnoreOtherSenders_data();
    void slotsIgnoreOtherSenders();
    void alarmIsReadWhenItsRadioTurnsOn();
    void intervalIsSentInSeconds_data();
    void intervalIsSentInSeconds();
    void stopCountIsSent();

    void sourceIsReadBack_data();
    void sourceIsReadBack();
    void intervalIsReadBackSilently();
    void countIsReadBack_data();
    void countIsReadBack();
    void infiniteCountTurnsTheManualStopOn();
    void usbSettingsAreReadBack_data();
    void usbSettingsAreReadBack();
    void runningInstrumentIsStopped_data();
    void runningInstrumentIsStopped();
    void lostInstrumentIsNotAskedForItsSettings();
};

void TestTriggerSettings::radioSendsItsCommand_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("other");
    QTest::addColumn<QString>("radio");
    QTest::addColumn<QString>("command");
    const auto add = [](const QString& group, const char* other, const char* radio,
                        const char* command) {
        QTest::newRow(radio) << group << QString::fromUtf8(other) << QString::fromUtf8(radio)
                             << QString::fromUtf8(command);
    };
    const char* const now = "使用\"开始\"按钮立即开始";
    add(kStartGroup, "警报时:", now, "TRIG:SOUR IMM");
    add(kStartGroup, now, "在特定时间:", "TRIG:SOUR IMM");
    add(kStartGroup, now, "警报时:", "TRIG:SOUR ALAR1");
    add(kIntervalGroup, "自定义:", "最小值", "TRIG:SOUR IMM");
    add(kIntervalGroup, "最小值", "自定义:", "TRIG:SOUR TIM");
    add(kIntervalGroup, "最小值", "外部触发时", "TRIG:SOUR EXT");
    add(kIntervalGroup, "最小值", "手动触发", "TRIG:SOUR BUS");
    const char* const manual = "使用“停止”按钮立即停止";
    add(kStopGroup, "N次扫描后:", manual, "TRIG:COUN INF");
    add(kStopGroup, manual, "已用时间之后:", "TRIG:COUN INF");
    add(kStopGroup, manual, "N次扫描后:", "TRIG:COUN 1");
}

void TestTriggerSettings::radioSendsItsCommand()
{
    QFETCH(QString, group);
    QFETCH(QString, other);
    QFETCH(QString, radio);
    QFETCH(QString, command);
    TriggerForm bench;
    bench.open();
    bench.button(other, group)->setChecked(true);
    bench.takeLines();
    bench.button(radio, group)->click();
    // The one being turned off is silent.
    QCOMPARE(bench.takeLines(), QStringList(command));
    // And so is a click on the one that is on.
    bench.button(radio, group)->click();
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestTriggerSettings::radioOpensItsControls_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("radio");
    QTest::addColumn<QString>("open");
    const auto add = [](const QString& group, const char* radio, const char* open) {
        QTest::newRow(radio) << group << QString::fromUtf8(radio) << QString::fromUtf8(open);
    };
    // Before each, its group's other settings are opened.
    add(kStartGroup, "使用\"开始\"按钮立即开始", "interval group");
    add(kStartGroup, "在特定时间:", "interval group");
    add(kStartGroup, "警报时:", "alarm");
    add(kIntervalGroup, "最小值", "interval group");
    add(kIntervalGroup, "自定义:", "interval group, interval");
    add(kIntervalGroup, "外部触发时", "interval group");
    add(kIntervalGroup, "手动触发", "interval group");
    add(kStopGroup, "使用“停止”按钮立即停止", "");
    add(kStopGroup, "已用时间之后:", "elapsed");
    add(kStopGroup, "N次扫描后:", "count");
}

void TestTriggerSettings::radioOpensItsControls()
{
    QFETCH(QString, group);
    QFETCH(QString, radio);
    QFETCH(QString, open);
    TriggerForm bench;
    bench.open();
    // All the others of the group have been on before.
    for (QRadioButton* button : bench.group(group)->findChildren<QRadioButton*>()) {
        if (button->text() != radio) {
            button->setChecked(true);
        }
    }
    bench.button(radio, group)->setChecked(true);
    QStringList opened;
    if (group == kStopGroup) {
        if (bench.elapsed()->isEnabled()) {
            opened.append(QStringLiteral("elapsed"));
        }
        if (bench.count()->isEnabled()) {
            opened.append(QStringLiteral("count"));
        }
    } else {
        if (bench.group(kIntervalGroup)->isEnabled()) {
            opened.append(QStringLiteral("interval group"));
        }
        if (bench.interval()->isEnabled()) {
            opened.append(QStringLiteral("interval"));
        }
        if (bench.alarm()->isEnabled()) {
            opened.append(QStringLiteral("alarm"));
        }
    }
    QCOMPARE(opened.join(QStringLiteral(", ")), open);
}

void TestTriggerSettings::slotsIgnoreOtherSenders_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char* slot : {"recvStartSlot", "recvIntervalSlot", "recvStopSlot"}) {
        QTest::newRow(slot) << QByteArray(slot);
    }
}

void TestTriggerSettings::slotsIgnoreOtherSenders()
{
    QFETCH(QByteArray, slot);
    TriggerForm bench;
    MainWidget& window = bench.open();
    QVERIFY(QMetaObject::invokeMethod(&window, slot.constData(), Q_ARG(bool, true)));
    QRadioButton stranger;
    QVERIFY(QObject::connect(&stranger, SIGNAL(toggled(bool)), &window,
                             QByteArray("1" + slot + "(bool)").constData()));
    stranger.setChecked(true);
    QCOMPARE(bench.takeLines(), QStringList());
    QVERIFY(bench.count()->isEnabled() && !bench.elapsed()->isEnabled());
}

void TestTriggerSettings::alarmIsReadWhenItsRadioTurnsOn()
{
    TriggerForm bench;
    bench.open();
    bench.alarm()->setCurrentIndex(2);
    QCOMPARE(bench.takeLines(), QStringList());
    bench.button(QStringLiteral("警报时:"), kStartGroup)->click();
    QCOMPARE(bench.takeLines(), texts({"TRIG:SOUR ALAR3"}));
    bench.alarm()->setCurrentIndex(3);
    QCOMPARE(bench.takeLines(), QStringList());

    // Its slot is connected to nothing.
    QMetaObject::invokeMethod(&bench.window(), "recvAlarmComboSlot", Q_ARG(int, 1));
    QMetaObject::invokeMethod(&bench.window(), "recvAlarmComboSlot", Q_ARG(int, -1));
    QCOMPARE(bench.takeLines(), texts({"TRIG:SOUR ALAR2"}));
}

void TestTriggerSettings::intervalIsSentInSeconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("command");
    QTest::newRow("whole") << 30.0 << QStringLiteral("TRIG:TIM 30");
    QTest::newRow("with milliseconds") << 0.25 << QStringLiteral("TRIG:TIM 0.25");
    QTest::newRow("six digits") << 86400.5 << QStringLiteral("TRIG:TIM 86400.5");
    QTest::newRow("more than six digits") << 86401.234 << QStringLiteral("TRIG:TIM 86401.2");
}

void TestTriggerSettings::intervalIsSentInSeconds()
{
    QFETCH(double, seconds);
    QFETCH(QString, command);
    TriggerForm bench;
    bench.open();
    emit bench.interval()->sigTimePickerValueChanged(seconds);
    QCOMPARE(bench.takeLines(), QStringList(command));
    // The other picker sends nothing.
    emit bench.elapsed()->sigTimePickerValueChanged(seconds);
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestTriggerSettings::stopCountIsSent()
{
    TriggerForm bench;
    bench.open();
    bench.count()->setValue(12);
    QCOMPARE(bench.takeLines(), texts({"TRIG:COUN 12", "SYST:ERR?"}));
    bench.button(QStringLiteral("N次扫描后:"), kStopGroup)->click();
    QCOMPARE(bench.takeLines(), texts({"TRIG:COUN 12"}));
}

void TestTriggerSettings::sourceIsReadBack_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("interval");
    QTest::addColumn<QStringList>("lines");
    const QString now = QStringLiteral("使用\"开始\"按钮立即开始");
    const QString atTime = QStringLiteral("在特定时间:");
    const QString alarm = QStringLiteral("警报时:");
    const QString external = QStringLiteral("外部触发时");
    const QString custom = QStringLiteral("自定义:");
    const QStringList none = texts({"TRIG:SOUR?"});
    // Before it, the second start button and the external trigger are on.
    QTest::newRow("immediate") << QStringLiteral("IMM") << now << external << none;
    QTest::newRow("alarm") << QStringLiteral("ALAR2") << alarm << external << none;
    QTest::newRow("alarm without a number") << QStringLiteral("ALAR") << alarm << external << none;
    QTest::newRow("timer") << QStringLiteral("TIM") << atTime << custom
                           << texts({"TRIG:SOUR?", "TRIG:TIM?"});
    QTest::newRow("external") << QStringLiteral("EXT") << atTime << external << none;
    QTest::newRow("bus") << QStringLiteral("BUS") << atTime << external << none;
    QTest::newRow("another") << QStringLiteral("TIMER") << atTime << external << none;
}

void TestTriggerSettings::sourceIsReadBack()
{
    QFETCH(QString, reply);
    QFETCH(QString, start);
    QFETCH(QString, interval);
    QFETCH(QStringList, lines);
    TriggerForm bench;
    bench.open();
    bench.button(QStringLiteral("在特定时间:"), kStartGroup)->click();
    bench.button(QStringLiteral("外部触发时"), kIntervalGroup)->click();
    bench.takeLines();
    bench.instrument().setReply(QStringLiteral("TRIG:SOUR?"), reply);
    bench.loseAndRecover();
    QCOMPARE(bench.checkedIn(kStartGroup), start);
    QCOMPARE(bench.checkedIn(kIntervalGroup), interval);
    // No command follows from it.
    const QStringList all = bench.takeLines();
    const int first = all.indexOf(QStringLiteral("TRIG:SOUR?"));
    QCOMPARE(all.mid(first, lines.size() + 1), lines + texts({"TRIG:COUN?"}));
    QCOMPARE(bench.alarm()->isEnabled(), false);
}

void TestTriggerSettings::intervalIsReadBackSilently()
{
    TriggerForm bench;
    bench.instrument().setReply(QStringLiteral("TRIG:SOUR?"), QStringLiteral("TIM"));
    bench.instrument().setReply(QStringLiteral("TRIG:TIM?"), QStringLiteral("+9.37849E+04"));
    bench.open();
    QVERIFY(bench.interval()->isEnabled());
    // A day, two hours, three minutes and four seconds; the fraction of a second is cut.
    QCOMPARE(bench.interval()->value(), 93784.0);
    QCOMPARE(bench.settingLines().mid(0, 3), texts({"TRIG:SOUR?", "TRIG:TIM?", "TRIG:COUN?"}));
    // From now on the picker is connected again.
    emit bench.interval()->sigTimePickerValueChanged(5);
    QCOMPARE(bench.takeLines(), texts({"TRIG:TIM 5"}));
}

void TestTriggerSettings::countIsReadBack_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("radio");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("sent");
    const QString manual = QStringLiteral("使用“停止”按钮立即停止");
    const QString counted = QStringLiteral("N次扫描后:");
    QTest::newRow("infinite") << QStringLiteral("+9.9E+37") << manual << 1 << QStringList();
    QTest::newRow("more than infinite")
        << QStringLiteral("+9.90000001E+37") << manual << 1 << QStringList();
    // The radio sends the count that the box still shows, then the box the new one.
    QTest::newRow("five") << QStringLiteral("+5.00000000E+00") << counted << 5
                          << texts({"TRIG:COUN 1", "TRIG:COUN 5", "SYST:ERR?"});
    QTest::newRow("one") << QStringLiteral("+1") << counted << 1 << texts({"TRIG:COUN 1"});
    QTest::newRow("cut") << QStringLiteral("+2.9") << counted << 2
                         << texts({"TRIG:COUN 1", "TRIG:COUN 2", "SYST:ERR?"});
    QTest::newRow("beyond every integer")
        << QStringLiteral("+9.8E+37") << counted << 1000000
        << texts({"TRIG:COUN 1", "TRIG:COUN 1000000", "SYST:ERR?"});
    QTest::newRow("no number") << QStringLiteral("NAN") << counted << 1 << texts({"TRIG:COUN 1"});
}

void TestTriggerSettings::countIsReadBack()
{
    QFETCH(QString, reply);
    QFETCH(QString, radio);
    QFETCH(int, count);
    QFETCH(QStringList, sent);
    TriggerForm bench;
    bench.instrument().setReply(QStringLiteral("TRIG:COUN?"), reply);
    bench.open();
    QCOMPARE(bench.checkedIn(kStopGroup), radio);
    QCOMPARE(bench.count()->value(), count);
    QCOMPARE(bench.settingLines(),
             texts({"TRIG:SOUR?", "TRIG:COUN?"}) + sent +
                 texts({"MMEM:LOG:ENAB?", "MMEM:FORM:READ:RLIM?", "MMEM:FORM:READ:RLIM:COUN?",
                        "ROUT:MON:STAT?", "STAT:OPER:COND?"}));
}

void TestTriggerSettings::infiniteCountTurnsTheManualStopOn()
{
    TriggerForm bench;
    bench.instrument().setReply(QStringLiteral("TRIG:COUN?"), QStringLiteral("+5"));
    bench.open();
    bench.instrument().setReply(QStringLiteral("TRIG:COUN?"), QStringLiteral("+9.9E+37"));
    bench.loseAndRecover();
    QCOMPARE(bench.checkedIn(kStopGroup), QStringLiteral("使用“停止”按钮立即停止"));
    QVERIFY(bench.takeLines().contains(QStringLiteral("TRIG:COUN INF")));
    QVERIFY(!bench.count()->isEnabled());
}

void TestTriggerSettings::usbSettingsAreReadBack_data()
{
    QTest::addColumn<QString>("logs");
    QTest::addColumn<QString>("limits");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<bool>("isLogged");
    QTest::addColumn<bool>("isLimited");
    QTest::addColumn<int>("limit");
    QTest::newRow("all off") << QStringLiteral("0") << QStringLiteral("0")
                             << QStringLiteral("+6.5536E+04") << false << false << 65536;
    QTest::newRow("all on") << QStringLiteral("1") << QStringLiteral("1")
                            << QStringLiteral("+9.0000E+04") << true << true << 90000;
    QTest::newRow("any number is on") << QStringLiteral("+2") << QStringLiteral("-1")
                                      << QStringLiteral("+7.00009E+04") << true << true << 70000;
    QTest::newRow("beyond every integer") << QStringLiteral("0") << QStringLiteral("1")
                                          << QStringLiteral("+9.9E+37") << false << true << 100000;
}

void TestTriggerSettings::usbSettingsAreReadBack()
{
    QFETCH(QString, logs);
    QFETCH(QString, limits);
    QFETCH(QString, rows);
    QFETCH(bool, isLogged);
    QFETCH(bool, isLimited);
    QFETCH(int, limit);
    TriggerForm bench;
    bench.instrument().setReply(QStringLiteral("MMEM:LOG:ENAB?"), logs);
    bench.instrument().setReply(QStringLiteral("MMEM:FORM:READ:RLIM?"), limits);
    bench.instrument().setReply(QStringLiteral("MMEM:FORM:READ:RLIM:COUN?"), rows);
    bench.open();
    const auto* spin = bench.group(QStringLiteral("数据记录"))->findChild<QSpinBox*>();
    QCOMPARE(bench.button(QStringLiteral("记录到 USB"))->isChecked(), isLogged);
    QCOMPARE(bench.button(QStringLiteral("行限制"))->isChecked(), isLimited);
    QCOMPARE(spin->value(), limit);
    QCOMPARE(spin->isEnabled(), isLogged);
}

void TestTriggerSettings::runningInstrumentIsStopped_data()
{
    QTest::addColumn<QString>("condition");
    QTest::addColumn<bool>("isStopped");
    QTest::newRow("idle") << QStringLiteral("+256") << false;
    QTest::newRow("scanning") << QStringLiteral("+16") << true;
    QTest::newRow("idle without a sign") << QStringLiteral("256") << true;
}

void TestTriggerSettings::runningInstrumentIsStopped()
{
    QFETCH(QString, condition);
    QFETCH(bool, isStopped);
    TriggerForm bench;
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), condition);
    bench.open();
    const QStringList end = isStopped ? texts({"STAT:OPER:COND?", "ABOR"})
                                      : texts({"ROUT:MON:STAT?", "STAT:OPER:COND?"});
    QCOMPARE(bench.settingLines().mid(bench.settingLines().size() - 2), end);
}

void TestTriggerSettings::lostInstrumentIsNotAskedForItsSettings()
{
    TriggerForm bench;
    bench.open();
    bench.instrument().whenAsked(QStringLiteral("SYST:CTYP? 15"),
                                 [] { g_instrumentConnected = false; });
    bench.loseAndRecover();
    const QStringList lines = bench.takeLines();
    QCOMPARE(lines.mid(lines.indexOf(QStringLiteral("SYST:CTYP? 15")) + 1),
             texts({"SYST:PERS:MOD:DEF?", "SYST:PERS:MOD?", "MEM:STAT:NAME? 1", "MEM:STAT:VAL? 1",
                    "MEM:STAT:NAME? 2", "MEM:STAT:VAL? 2", "MEM:STAT:NAME? 3", "MEM:STAT:VAL? 3",
                    "MEM:STAT:NAME? 4", "MEM:STAT:VAL? 4", "MEM:STAT:NAME? 5", "MEM:STAT:VAL? 5"}));
}

SCN_TEST(TestTriggerSettings, QApplication)
#include "test_triggersettings.moc"
