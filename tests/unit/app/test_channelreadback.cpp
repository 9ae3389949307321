#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QtTest>

#include <initializer_list>

using namespace scn;

namespace {

using Replies = QMap<QString, QString>;

Replies replies(std::initializer_list<std::pair<const char*, const char*>> pairs)
{
    Replies map;
    for (const auto& [query, reply] : pairs) {
        map.insert(QString::fromUtf8(query), QString::fromUtf8(reply));
    }
    return map;
}

/// All functions: voltages, resistances and sensors on channel 101, currents on 201.
struct AllFunctions : WindowBench
{
    AllFunctions()
    {
        instrument().putModule(1, QStringLiteral("SCN4002A"));
        instrument().putModule(2, QStringLiteral("SCN4014A"));
        open();
    }

    /// Reads a channel back, with everything else in the instrument in its initial state.
    void readBackWith(int channel, const Replies& answers)
    {
        instrument().resetReplies();
        for (auto answer = answers.cbegin(); answer != answers.cend(); ++answer) {
            instrument().setReply(answer.key(), answer.value());
        }
        instrument().takeLines();
        readBack(channel);
    }
};

} // namespace

/// Reading one channel's state back into its row and its panels.
class TestChannelReadBack : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_bench = std::make_unique<AllFunctions>(); }
    void cleanupTestCase() { m_bench.reset(); }
    /// Each test starts with channels 101 and 201 in their initial state.
    void init()
    {
        m_bench->readBackWith(101, {});
        m_bench->readBackWith(201, replies({{"FUNC?", "\"CURR\""}}));
    }
    void cleanup()
    {
        while (QWidget* popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    }

    void functionDecidesWhatIsAsked_data();
    void functionDecidesWhatIsAsked();
    void instrumentLabelsAreNotShown();
    void rangeShowsInItsRow_data();
    void rangeShowsInItsRow();
    void listsFollowTheReportedFunction();
    void optionsShowInThePanel_data();
    void optionsShowInThePanel();
    void numbersShowInThePanel_data();
    void numbersShowInThePanel();
    void fixedDelayLeavesTheModeAlone();
    void temperatureUnitShows_data();
    void temperatureUnitShows();
    void scalingShowsInTheRow_data();
    void scalingShowsInTheRow();
    void reportedScaleFunctionDecidesWhatCanBeEdited_data();
    void reportedScaleFunctionDecidesWhatCanBeEdited();
    void referencesShowInTheScalePanel_data();
    void referencesShowInTheScalePanel();

private:
    std::unique_ptr<AllFunctions> m_bench;
};

void TestChannelReadBack::functionDecidesWhatIsAsked_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<QString>("shownFunction");
    QTest::addColumn<QStringList>("lines");

    const auto add = [](const char* name, int channel,
                        std::initializer_list<std::pair<const char*, const char*>> answers,
                        const char* shown, std::initializer_list<const char*> lines) {
        QTest::newRow(name) << channel << replies(answers) << QString::fromUtf8(shown)
                            << texts(lines);
    };
    add("DC voltage, automatic range", 101, {{"FUNC?", "\"VOLT\""}}, "直流电压",
        {"VOLT:DC:RANG:AUTO? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "VOLT:DC:NPLC? (@101)",
         "INP:IMP:AUTO? (@101)", "VOLT:REF? (@101)"});
    add("DC voltage, fixed range and delay", 101,
        {{"FUNC?", "\"VOLT\""}, {"VOLT:DC:RANG:AUTO?", "0"}, {"ROUT:CHAN:DEL:AUTO?", "0"}},
        "直流电压",
        {"VOLT:DC:RANG:AUTO? (@101)", "VOLT:DC:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "ROUT:CHAN:DEL? (@101)", "VOLT:DC:NPLC? (@101)", "INP:IMP:AUTO? (@101)",
         "VOLT:REF? (@101)"});
    add("AC voltage", 101, {{"FUNC?", "\"VOLT:AC\""}}, "交流电压",
        {"VOLT:AC:RANG:AUTO? (@101)", "VOLT:AC:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "VOLT:AC:BAND? (@101)"});
    add("period", 101, {{"FUNC?", "\"PER\""}}, "周期",
        {"PER:VOLT:RANG:AUTO? (@101)", "PER:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "PER:RANG:LOW? (@101)"});
    add("frequency", 101, {{"FUNC?", "\"FREQ\""}}, "频率",
        {"FREQ:VOLT:RANG:AUTO? (@101)", "FREQ:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "FREQ:RANG:LOW? (@101)"});
    add("resistance", 101, {{"FUNC?", "\"RES\""}}, "双线ohm",
        {"RES:RANG:AUTO? (@101)", "RES:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "RES:NPLC? (@101)", "RES:OCOM? (@101)"});
    add("four-wire resistance", 101, {{"FUNC?", "\"FRES\""}}, "四线ohm",
        {"FRES:RANG:AUTO? (@101)", "FRES:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "FRES:NPLC? (@101)", "FRES:OCOM? (@101)"});
    add("thermocouple", 101,
        {{"FUNC?", "\"TEMP:TC\""}, {"TEMP:TRAN:TYPE?", "TC"}, {"TEMP:TRAN:TC:TYPE?", "K"}},
        "热电偶(类型K)",
        {"TEMP:TRAN:TYPE? (@101)", "TEMP:TRAN:TC:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "TEMP:NPLC? (@101)", "UNIT:TEMP? (@101)", "TEMP:TRAN:TC:RJUN:TYPE? (@101)",
         "TEMP:TRAN:TC:RJUN? (@101)"});
    add("thermocouple of another transducer", 101,
        {{"FUNC?", "\"TEMP:TC\""}, {"TEMP:TRAN:TYPE?", "RTD"}}, "热电偶(类型B)",
        {"TEMP:TRAN:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
         "UNIT:TEMP? (@101)", "TEMP:TRAN:TC:RJUN:TYPE? (@101)", "TEMP:TRAN:TC:RJUN? (@101)"});
    add("RTD", 101, {{"FUNC?", "\"TEMP:RTD\""}}, "温度二线制RTD",
        {"TEMP:TRAN:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
         "UNIT:TEMP? (@101)", "TEMP:TRAN:RTD:REF? (@101)", "TEMP:TRAN:RTD:RES? (@101)",
         "TEMP:TRAN:RTD:TYPE? (@101)"});
    add("four-wire RTD", 101, {{"FUNC?", "\"TEMP:FRTD\""}}, "温度四线制RTD",
        {"TEMP:TRAN:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
         "UNIT:TEMP? (@101)", "TEMP:TRAN:FRTD:REF? (@101)", "TEMP:TRAN:FRTD:RES? (@101)",
         "TEMP:TRAN:RTD:TYPE? (@101)"});
    add("thermistor", 101,
        {{"FUNC?", "\"TEMP:THER\""},
         {"TEMP:TRAN:TYPE?", "THER"},
         {"TEMP:TRAN:THER:TYPE?", "+2.252E+03"}},
        "热敏电阻(2.2K)",
        {"TEMP:TRAN:TYPE? (@101)", "TEMP:TRAN:THER:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "TEMP:NPLC? (@101)", "UNIT:TEMP? (@101)"});
    add("thermistor of another resistance", 101,
        {{"FUNC?", "\"TEMP:THER\""},
         {"TEMP:TRAN:TYPE?", "THER"},
         {"TEMP:TRAN:THER:TYPE?", "+3.0E+03"}},
        "直流电压",
        {"TEMP:TRAN:TYPE? (@101)", "TEMP:TRAN:THER:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "TEMP:NPLC? (@101)", "UNIT:TEMP? (@101)"});
    add("four-wire thermistor", 101,
        {{"FUNC?", "\"TEMP:FTH\""},
         {"TEMP:TRAN:TYPE?", "THER"},
         {"TEMP:TRAN:fth:TYPE?", "+1.0E+04"}},
        "4线制热敏电阻(10K)",
        {"TEMP:TRAN:TYPE? (@101)", "TEMP:TRAN:fth:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "TEMP:NPLC? (@101)", "UNIT:TEMP? (@101)"});
    add("four-wire thermistor of another transducer", 101,
        {{"FUNC?", "\"TEMP:FTH\""}, {"TEMP:TRAN:TYPE?", "FTH"}}, "4线制热敏电阻(5K)",
        {"TEMP:TRAN:TYPE? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
         "UNIT:TEMP? (@101)"});
    add("capacitance", 101, {{"FUNC?", "\"CAP\""}}, "电容",
        {"CAP:RANG:AUTO? (@101)", "CAP:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)"});
    add("diode", 101, {{"FUNC?", "\"DIOD\""}}, "二极管", {"ROUT:CHAN:DEL:AUTO? (@101)"});
    add("direct strain", 101, {{"FUNC?", "\"STR:DIR\""}}, "直接应变",
        {"ROUT:CHAN:DEL:AUTO? (@101)", "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:RES? (@101)"});
    add("four-wire direct strain", 101, {{"FUNC?", "\"STR:FDIR\""}}, "4线直接应变",
        {"ROUT:CHAN:DEL:AUTO? (@101)", "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:RES? (@101)"});
    add("quarter bridge", 101, {{"FUNC?", "\"STR:QUAR\""}}, "四分之一(弯曲)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)"});
    add("bending half bridge", 101, {{"FUNC?", "\"STR:HALF:BEND\""}}, "半桥(弯曲)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)"});
    add("Poisson half bridge", 101, {{"FUNC?", "\"STR:HALF:POIS\""}}, "半桥(柏松)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)", "STR:POIS? (@101)"});
    add("bending full bridge", 101, {{"FUNC?", "\"STR:FULL:BEND\""}}, "全桥(弯曲)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)"});
    add("Poisson full bridge", 101, {{"FUNC?", "\"STR:FULL:POIS\""}}, "全桥(柏松)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)", "STR:POIS? (@101)"});
    add("bending Poisson full bridge", 101, {{"FUNC?", "\"STR:FULL:BEND:POIS\""}}, "全桥(弯曲柏松)",
        {"STR:VOLT:RANG:AUTO? (@101)", "STR:VOLT:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)",
         "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:EXC? (@101)", "STR:POIS? (@101)"});
    add("DC current", 201, {{"FUNC?", "\"CURR\""}}, "直流电流",
        {"CURR:DC:RANG:AUTO? (@201)", "CURR:DC:RANG? (@201)", "ROUT:CHAN:DEL:AUTO? (@201)",
         "CURR:DC:NPLC? (@201)"});
    add("AC current", 201, {{"FUNC?", "\"CURR:AC\""}}, "交流电流",
        {"CURR:AC:RANG:AUTO? (@201)", "CURR:AC:RANG? (@201)", "ROUT:CHAN:DEL:AUTO? (@201)",
         "CURR:AC:BAND? (@201)"});
    // The box keeps its function; the options are those of the reported one.
    add("function that the channel does not offer", 201, {{"FUNC?", "\"CAP\""}}, "直流电流",
        {"CAP:RANG:AUTO? (@201)", "CAP:RANG? (@201)", "ROUT:CHAN:DEL:AUTO? (@201)"});
    add("unknown function", 201, {{"FUNC?", "\"CHARGE\""}}, "直流电流",
        {"VOLT:DC:RANG:AUTO? (@201)", "ROUT:CHAN:DEL:AUTO? (@201)", "VOLT:DC:NPLC? (@201)",
         "INP:IMP:AUTO? (@201)", "VOLT:REF? (@201)"});
}

void TestChannelReadBack::functionDecidesWhatIsAsked()
{
    QFETCH(int, channel);
    QFETCH(Replies, answers);
    QFETCH(QString, shownFunction);
    QFETCH(QStringList, lines);
    m_bench->readBackWith(channel, answers);
    QCOMPARE(m_bench->box(channel, FunctionColumn)->currentText(), shownFunction);
    lines.prepend(QStringLiteral("FUNC? (@%1)").arg(channel));
    lines.prepend(QStringLiteral("ROUT:CHAN:LAB? (@%1)").arg(channel));
    QCOMPARE(m_bench->instrument().lines(), lines + scalingQueries(channel));
}

void TestChannelReadBack::instrumentLabelsAreNotShown()
{
    m_bench->readBackWith(101, replies({{"ROUT:CHAN:LAB?", "\"Boiler\""}}));
    QCOMPARE(m_bench->edit(101, NameColumn)->text(), QString());
}

void TestChannelReadBack::rangeShowsInItsRow_data()
{
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    const auto add = [](const char* name, const char* function, const char* isAutomatic,
                        const char* query, const char* range, int row, const char* text) {
        const QByteArray automatic = QByteArray(query).replace("RANG?", "RANG:AUTO?");
        QTest::newRow(name) << replies({{"FUNC?", function},
                                        {automatic.constData(), isAutomatic},
                                        {query, range}})
                            << row << QString::fromUtf8(text);
    };
    add("300 V", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+3.000000E+02", 5, "+/-300V");
    add("10 V", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+1.000000E+01", 3, "+/-10V");
    add("100 mV", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+1.000000E-01", 1, "+/-100mV");
    add("automatic", "\"VOLT\"", "1", "VOLT:DC:RANG?", "+1.000000E+01", 0, "自动");
    add("automatic by any number", "\"VOLT\"", "2", "VOLT:DC:RANG?", "+1.000000E+01", 0, "自动");
    add("no range of the list", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+1.200000E+01", 0, "自动");
    add("decade in front of the list", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+1.0E-02", 0, "自动");
    add("decade behind the list", "\"VOLT\"", "0", "VOLT:DC:RANG?", "+1.0E+06", 0, "自动");
    add("1 GOhm", "\"RES\"", "0", "RES:RANG?", "+1.000000E+09", 8, "1G");
    add("100 uF", "\"CAP\"", "0", "CAP:RANG?", "+1.000000E-04", 6, "100μF");
    add("bridge", "\"STR:QUAR\"", "0", "STR:VOLT:RANG?", "+1.000000E+00", 2, "+/-1V");
}

void TestChannelReadBack::rangeShowsInItsRow()
{
    QFETCH(Replies, answers);
    QFETCH(int, row);
    QFETCH(QString, text);
    m_bench->readBackWith(101, answers);
    QCOMPARE(m_bench->box(101, RangeColumn)->currentIndex(), row);
    QCOMPARE(m_bench->box(101, RangeColumn)->currentText(), text);
}

void TestChannelReadBack::listsFollowTheReportedFunction()
{
    m_bench->readBackWith(101, replies({{"FUNC?", "\"RES\""}}));
    QCOMPARE(WindowBench::itemsOf(m_bench->box(101, RangeColumn)),
             texts({"自动", "100", "1K", "10K", "100K", "1M", "10M", "100M", "1G"}));
    QCOMPARE(m_bench->box(101, ResolutionColumn)->count(), 0);
    QCOMPARE(WindowBench::itemsOf(m_bench->box(101, ScaleFunctionColumn)), texts({"SCAL", "PCT"}));
    m_bench->readBackWith(101, replies({{"FUNC?", "\"TEMP:RTD\""}}));
    QCOMPARE(m_bench->box(101, RangeColumn)->count(), 0);
    QCOMPARE(WindowBench::itemsOf(m_bench->box(101, ResolutionColumn)), texts({"C", "F", "K"}));
    m_bench->readBackWith(101, replies({{"FUNC?", "\"VOLT\""}}));
    QCOMPARE(WindowBench::itemsOf(m_bench->box(101, RangeColumn)),
             texts({"自动", "+/-100mV", "+/-1V", "+/-10V", "+/-100V", "+/-300V"}));
    QCOMPARE(WindowBench::itemsOf(m_bench->box(101, ScaleFunctionColumn)),
             texts({"SCAL", "PCT", "DBM", "DB"}));
}

void TestChannelReadBack::optionsShowInThePanel_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("choice");
    const auto add = [](const char* name, int channel, const char* function, const char* query,
                        const char* reply, const char* group, const char* choice) {
        QTest::newRow(name) << channel << replies({{"FUNC?", function}, {query, reply}})
                            << QString::fromUtf8(group) << QString::fromUtf8(choice);
    };
    const char* const nplc = "电源线周期数(NPLC)";
    add("NPLC of DC voltage", 101, "\"VOLT\"", "VOLT:DC:NPLC?", "+1.0E+01", nplc, "10");
    add("NPLC of resistance", 101, "\"RES\"", "RES:NPLC?", "+2.0E-01", nplc, "0.2");
    add("NPLC of thermocouples", 101, "\"TEMP:TC\"", "TEMP:NPLC?", "+1.0E+02", nplc, "100");
    add("NPLC of RTDs", 101, "\"TEMP:RTD\"", "TEMP:NPLC?", "+2.0E-02", nplc, "0.02");
    add("NPLC of strain", 101, "\"STR:DIR\"", "STR:NPLC?", "+1.0E+01", nplc, "10");
    add("NPLC of bridges", 101, "\"STR:QUAR\"", "STR:NPLC?", "+1.0E+01", nplc, "10");
    add("NPLC of Poisson bridges", 101, "\"STR:HALF:POIS\"", "STR:NPLC?", "+1.0E+01", nplc, "10");
    add("NPLC of DC current", 201, "\"CURR\"", "CURR:DC:NPLC?", "+1.0E+01", nplc, "10");
    add("NPLC that no row has", 101, "\"VOLT\"", "VOLT:DC:NPLC?", "+5.0E+00", nplc, "1");
    add("high input resistance", 101, "\"VOLT\"", "INP:IMP:AUTO?", "1", "直流输入电阻", "高");
    add("10 MOhm input resistance", 101, "\"VOLT\"", "INP:IMP:AUTO?", "0", "直流输入电阻", "10M");
    add("band of AC voltage", 101, "\"VOLT:AC\"", "VOLT:AC:BAND?", "+2.0E+01", "频率下限",
        "20Hz(中速)");
    add("band of AC current", 201, "\"CURR:AC\"", "CURR:AC:BAND?", "+3.0E+00", "频率下限",
        "3Hz(低速)");
    add("lower limit of period", 101, "\"PER\"", "PER:RANG:LOW?", "+2.0E+01", "频率下限",
        "20Hz(中速)");
    add("lower limit of frequency", 101, "\"FREQ\"", "FREQ:RANG:LOW?", "+3.0E+00", "频率下限",
        "3Hz(低速)");
    add("offset compensation on", 101, "\"FRES\"", "FRES:OCOM?", "1", "偏移补偿", "开启");
    add("offset compensation off", 101, "\"FRES\"", "FRES:OCOM?", "0", "偏移补偿", "关闭");
    add("fixed junction", 101, "\"TEMP:TC\"", "TEMP:TRAN:TC:RJUN:TYPE?", "FIX", "参考结温度",
        "固定");
    add("internal junction", 101, "\"TEMP:TC\"", "TEMP:TRAN:TC:RJUN:TYPE?", "INT", "参考结温度",
        "内部");
    add("any other junction", 101, "\"TEMP:TC\"", "TEMP:TRAN:TC:RJUN:TYPE?", "EXT", "参考结温度",
        "固定");
}

void TestChannelReadBack::optionsShowInThePanel()
{
    QFETCH(int, channel);
    QFETCH(Replies, answers);
    QFETCH(QString, group);
    QFETCH(QString, choice);
    m_bench->readBackWith(channel, answers);
    const AdvancedSetting* panel = m_bench->openPanel(channel, MoreColumn);
    QVERIFY(panel);
    QCOMPARE(WindowBench::choiceOf(panel, group), choice);
}

void TestChannelReadBack::numbersShowInThePanel_data()
{
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<QString>("group");
    QTest::addColumn<double>("number");
    const auto add = [](const char* name, const char* function, const char* query,
                        const char* reply, const char* group, double number) {
        QTest::newRow(name) << replies({{"FUNC?", function}, {query, reply}})
                            << QString::fromUtf8(group) << number;
    };
    add("junction temperature", "\"TEMP:TC\"", "TEMP:TRAN:TC:RJUN?", "+2.55E+01", "参考结温度",
        25.5);
    add("R0 of RTDs", "\"TEMP:RTD\"", "TEMP:TRAN:RTD:RES?", "+1.0005E+02", "RTD类型", 100.05);
    add("R0 of four-wire RTDs", "\"TEMP:FRTD\"", "TEMP:TRAN:FRTD:RES?", "+1.001E+03", "RTD类型",
        1001);
    add("gauge factor of strain", "\"STR:DIR\"", "STR:GFAC?", "+2.5E+00", "仪器系数", 2.5);
    add("resistance of strain", "\"STR:DIR\"", "STR:RES?", "+3.5E+02", "应变仪电阻", 350);
    add("gauge factor of bridges", "\"STR:QUAR\"", "STR:GFAC?", "+2.5E+00", "仪器系数", 2.5);
    add("voltage of bridges", "\"STR:QUAR\"", "STR:EXC?", "+3.0E+00", "激励电压", 3);
    add("gauge factor of Poisson bridges", "\"STR:FULL:POIS\"", "STR:GFAC?", "+2.5E+00", "仪器系数",
        2.5);
    add("voltage of Poisson bridges", "\"STR:FULL:POIS\"", "STR:EXC?", "+3.0E+00", "激励电压", 3);
    add("ratio of Poisson bridges", "\"STR:FULL:POIS\"", "STR:POIS?", "+2.5E-01", "柏松比", 0.25);
}

void TestChannelReadBack::numbersShowInThePanel()
{
    QFETCH(Replies, answers);
    QFETCH(QString, group);
    QFETCH(double, number);
    m_bench->readBackWith(101, answers);
    const AdvancedSetting* panel = m_bench->openPanel(101, MoreColumn);
    QVERIFY(panel);
    QCOMPARE(WindowBench::numberOf(panel, group), number);
}

void TestChannelReadBack::fixedDelayLeavesTheModeAlone()
{
    const QString delay = QStringLiteral("通道延迟(秒)");
    const AdvancedSetting* panel = m_bench->openPanel(101, MoreColumn);
    QVERIFY(panel);
    QCOMPARE(WindowBench::choiceOf(panel, delay), QStringLiteral("自动"));
    m_bench->readBackWith(101,
                          replies({{"ROUT:CHAN:DEL:AUTO?", "0"}, {"ROUT:CHAN:DEL?", "+1.5E+00"}}));
    QCOMPARE(WindowBench::choiceOf(panel, delay), QStringLiteral("自动"));
    QCOMPARE(WindowBench::numberOf(panel, delay), 1.5);

    // An automatic delay changes the mode back and leaves the time.
    const_cast<AdvancedSetting*>(panel)->setDelayMode(1);
    m_bench->readBackWith(101, replies({{"ROUT:CHAN:DEL:AUTO?", "1"}}));
    QCOMPARE(WindowBench::choiceOf(panel, delay), QStringLiteral("自动"));
    QCOMPARE(WindowBench::numberOf(panel, delay), 1.5);
}

void TestChannelReadBack::temperatureUnitShows_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("unit");
    for (const char* function : {"\"TEMP:TC\"", "\"TEMP:RTD\"", "\"TEMP:THER\""}) {
        for (const char* unit : {"C", "F", "K"}) {
            QTest::addRow("%s in %s", function, unit)
                << QString::fromUtf8(function) << QString::fromUtf8(unit)
                << QString::fromUtf8(unit);
        }
    }
    QTest::newRow("another reply")
        << QStringLiteral("\"TEMP:TC\"") << QStringLiteral("R") << QStringLiteral("C");
}

void TestChannelReadBack::temperatureUnitShows()
{
    QFETCH(QString, function);
    QFETCH(QString, reply);
    QFETCH(QString, unit);
    m_bench->readBackWith(
        101, {{QStringLiteral("FUNC?"), function}, {QStringLiteral("UNIT:TEMP?"), reply}});
    QCOMPARE(m_bench->box(101, ResolutionColumn)->currentText(), unit);
}

void TestChannelReadBack::scalingShowsInTheRow_data()
{
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    const auto add = [](const char* name, const char* query, const char* reply,
                        ChannelColumn column, const char* text) {
        QTest::newRow(name) << replies({{query, reply}}) << int(column) << QString::fromUtf8(text);
    };
    add("gain", "CALC:SCAL:GAIN?", "+1.23456789E+00", GainColumn, "1.23457");
    add("large gain", "CALC:SCAL:GAIN?", "+1.0E+09", GainColumn, "1e+09");
    add("offset", "CALC:SCAL:OFFS?", "-2.50000000E-01", OffsetColumn, "-0.25");
    add("scaling on", "CALC:SCAL:STAT?", "1", ScaleColumn, "on");
    add("scaling on with a sign", "CALC:SCAL:STAT?", "+1", ScaleColumn, "on");
    add("scaling off", "CALC:SCAL:STAT?", "0", ScaleColumn, "off");
    add("scaling of another state", "CALC:SCAL:STAT?", "2", ScaleColumn, "off");
    add("unit", "CALC:SCAL:UNIT?", "\"Vac\"", UnitColumn, "Vac");
    add("degrees Celsius", "CALC:SCAL:UNIT?", "\"#C\"", UnitColumn, "°C");
    add("degrees Fahrenheit", "CALC:SCAL:UNIT?", "\"#F\"", UnitColumn, "°F");
    add("no unit", "CALC:SCAL:UNIT?", "\"\"", UnitColumn, "无");
    add("unit of another name", "CALC:SCAL:UNIT?", "\"bar\"", UnitColumn, "无");
    add("unit in another case", "CALC:SCAL:UNIT?", "\"VAC\"", UnitColumn, "无");
    add("SCAL", "CALC:SCAL:FUNC?", "SCAL", ScaleFunctionColumn, "SCAL");
    add("PCT", "CALC:SCAL:FUNC?", "PCT", ScaleFunctionColumn, "PCT");
    add("DBM", "CALC:SCAL:FUNC?", "DBM", ScaleFunctionColumn, "DBM");
    add("DB", "CALC:SCAL:FUNC?", "DB", ScaleFunctionColumn, "DB");
    add("another scale function", "CALC:SCAL:FUNC?", "LOG", ScaleFunctionColumn, "SCAL");
    QTest::newRow("scale function that is not offered")
        << replies({{"FUNC?", "\"RES\""}, {"CALC:SCAL:FUNC?", "DB"}}) << int(ScaleFunctionColumn)
        << QStringLiteral("SCAL");
}

void TestChannelReadBack::scalingShowsInTheRow()
{
    QFETCH(Replies, answers);
    QFETCH(int, column);
    QFETCH(QString, text);
    // First a state that differs everywhere from the wanted one.
    m_bench->readBackWith(101,
                          replies({{"CALC:SCAL:GAIN?", "+7"},
                                   {"CALC:SCAL:OFFS?", "+7"},
                                   {"CALC:SCAL:STAT?", text == QLatin1String("on") ? "0" : "1"},
                                   {"CALC:SCAL:UNIT?", "\"W\""},
                                   {"CALC:SCAL:FUNC?", "PCT"}}));
    m_bench->readBackWith(101, answers);
    QWidget* control = m_bench->tree()->itemWidget(m_bench->item(101), column);
    if (const auto* edit = qobject_cast<QLineEdit*>(control)) {
        QCOMPARE(edit->text(), text);
    } else if (const auto* box = qobject_cast<QComboBox*>(control)) {
        QCOMPARE(box->currentText(), text);
    } else {
        QCOMPARE(qobject_cast<QCheckBox*>(control)->isChecked(), text == QLatin1String("on"));
    }
}

void TestChannelReadBack::reportedScaleFunctionDecidesWhatCanBeEdited_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("isLinear");
    QTest::newRow("linear") << QStringLiteral("SCAL") << QStringLiteral("SCAL") << true;
    QTest::newRow("percent") << QStringLiteral("PCT") << QStringLiteral("PCT") << false;
    QTest::newRow("decibel") << QStringLiteral("DB") << QStringLiteral("DB") << false;
    QTest::newRow("dBm") << QStringLiteral("DBM") << QStringLiteral("DBM") << false;
    QTest::newRow("unknown") << QStringLiteral("LOG") << QStringLiteral("SCAL") << true;
}

void TestChannelReadBack::reportedScaleFunctionDecidesWhatCanBeEdited()
{
    QFETCH(QString, reply);
    QFETCH(QString, shown);
    QFETCH(bool, isLinear);
    const auto check = [this](bool linear) {
        QCOMPARE(m_bench->edit(101, GainColumn)->isEnabled(), linear);
        QCOMPARE(m_bench->edit(101, OffsetColumn)->isEnabled(), linear);
        QCOMPARE(m_bench->cell<QPushButton>(101, ScaleMoreColumn)->isEnabled(), !linear);
    };
    m_bench->readBackWith(101, {{QStringLiteral("CALC:SCAL:FUNC?"), reply}});
    QCOMPARE(m_bench->box(101, ScaleFunctionColumn)->currentText(), shown);
    check(isLinear);
    m_bench->readBackWith(101, {});
    check(true);
}

void TestChannelReadBack::referencesShowInTheScalePanel_data()
{
    QTest::addColumn<Replies>("answers");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<double>("number");
    QTest::newRow("percent reference")
        << replies({{"CALC:SCAL:FUNC?", "PCT"}, {"CALC:SCAL:REF?", "+5.125E+00"}})
        << QStringLiteral("参考值") << QString() << 5.125;
    QTest::newRow("DBM reference resistance")
        << replies({{"CALC:SCAL:FUNC?", "DBM"}, {"CALC:SCAL:DBM:REF?", "+5.0E+01"}})
        << QStringLiteral("参考电阻") << QStringLiteral("50") << 0.0;
    QTest::newRow("DB reference") << replies({{"CALC:SCAL:FUNC?", "DB"},
                                              {"CALC:SCAL:DB:REF?", "-3.5E+00"}})
                                  << QStringLiteral("dB参考值") << QString() << -3.5;
}

void TestChannelReadBack::referencesShowInTheScalePanel()
{
    QFETCH(Replies, answers);
    QFETCH(QString, group);
    QFETCH(QString, choice);
    QFETCH(double, number);
    m_bench->readBackWith(101, answers);
    m_bench->cell<QPushButton>(101, ScaleMoreColumn)->setEnabled(true);
    const AdvancedSetting* panel = m_bench->openPanel(101, ScaleMoreColumn);
    QVERIFY(panel);
    if (choice.isEmpty()) {
        QCOMPARE(WindowBench::numberOf(panel, group), number);
    } else {
        QCOMPARE(WindowBench::choiceOf(panel, group), choice);
    }
}

SCN_TEST(TestChannelReadBack, QApplication)
#include "test_channelreadback.moc"
