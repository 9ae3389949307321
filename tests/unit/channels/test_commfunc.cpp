#include "channels/commfunc.h"
#include "common/channelnumber.h"
#include "starred.h"
#include "state/globals.h"
#include "support/testprogram.h"

#include <QtTest>

#include <cmath>
#include <iterator>
#include <limits>

namespace {

/// Rows of the catalogue as a user and the instrument see them.
struct ExpectedFunction
{
    const char* displayName;
    const char* funcArgument;
    const char* scpiHeader;
    const char* baseUnit;
    int defaultUnit;
    int panelKind;
    char ranges; // v, r, c, i or none: -
    const char* typeCommand;
    const char* typeArgument;
};

constexpr char kTc[] = "TEMP:TRAN:TC:TYPE %1,(@%2)";
constexpr char kTher[] = "TEMP:TRAN:THER:TYPE %1,(@%2)";
constexpr char kFth[] = "TEMP:TRAN:FTH:TYPE %1,(@%2)";

constexpr ExpectedFunction kExpected[] = {
    {"直流电压", "VOLT", "VOLT:DC", "Vdc", 2, 0, 'v', "", ""},
    {"交流电压", "VOLT:AC", "VOLT:AC", "Vac", 3, 1, 'v', "", ""},
    {"周期", "PER", "PER:VOLT", "s", 6, 2, 'v', "", ""},
    {"频率", "FREQ", "FREQ:VOLT", "Hz", 5, 2, 'v', "", ""},
    {"双线ohm", "RES", "RES", "Ohm", 4, 3, 'r', "", ""},
    {"四线ohm", "FRES", "FRES", "Ohm", 4, 3, 'r', "", ""},
    {"热电偶(类型B)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "B"},
    {"热电偶(类型E)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "E"},
    {"热电偶(类型J)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "J"},
    {"热电偶(类型K)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "K"},
    {"热电偶(类型N)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "N"},
    {"热电偶(类型R)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "R"},
    {"热电偶(类型S)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "S"},
    {"热电偶(类型T)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', kTc, "T"},
    {"温度二线制RTD", "TEMP:RTD", "TEMP:RTD", "°C", 1, 5, '-', "", ""},
    {"温度四线制RTD", "TEMP:FRTD", "TEMP:FRTD", "°C", 1, 5, '-', "", ""},
    {"热敏电阻(2.2K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', kTher, "+2252"},
    {"热敏电阻(5K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', kTher, "+5000"},
    {"热敏电阻(10K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', kTher, "+10000"},
    {"4线制热敏电阻(2.2K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', kFth, "+2252"},
    {"4线制热敏电阻(5K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', kFth, "+5000"},
    {"4线制热敏电阻(10K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', kFth, "+10000"},
    {"电容", "CAP", "CAP", "F", 9, 8, 'c', "", ""},
    {"二极管", "DIOD", "DIDD", "Vdc", 2, 9, '-', "", ""},
    {"直接应变", "STR:DIR", "STR:VOLT", "e", 14, 7, '-', "", ""},
    {"4线直接应变", "STR:FDIR", "STR:VOLT", "e", 14, 7, '-', "", ""},
    {"四分之一(弯曲)", "STR:QUAR", "STR:VOLT", "e", 14, 10, 'v', "", ""},
    {"半桥(弯曲)", "STR:HALF:BEND", "STR:VOLT", "e", 14, 10, 'v', "", ""},
    {"半桥(柏松)", "STR:HALF:POIS", "STR:VOLT", "e", 14, 11, 'v', "", ""},
    {"全桥(弯曲)", "STR:FULL:BEND", "STR:VOLT", "e", 14, 10, 'v', "", ""},
    {"全桥(柏松)", "STR:FULL:POIS", "STR:VOLT", "e", 14, 11, 'v', "", ""},
    {"全桥(弯曲柏松)", "STR:FULL:BEND:POIS", "STR:VOLT", "e", 14, 11, 'v', "", ""},
    {"直流电流", "CURR", "CURR:DC", "Adc", 7, 12, 'i', "", ""},
    {"交流电流", "CURR:AC", "CURR:AC", "Aac", 8, 1, 'i', "", ""},
};

constexpr int kFunctionCount = std::size(kExpected);

const QStringList kListA{QStringLiteral("直流电压"),       QStringLiteral("交流电压"),
                         QStringLiteral("周期"),           QStringLiteral("频率"),
                         QStringLiteral("双线ohm"),        QStringLiteral("四线ohm"),
                         QStringLiteral("热电偶(类型B)"),  QStringLiteral("热电偶(类型E)"),
                         QStringLiteral("热电偶(类型J)"),  QStringLiteral("热电偶(类型K)"),
                         QStringLiteral("热电偶(类型N)"),  QStringLiteral("热电偶(类型R)"),
                         QStringLiteral("热电偶(类型S)"),  QStringLiteral("热电偶(类型T)"),
                         QStringLiteral("四分之一(弯曲)"), QStringLiteral("半桥(弯曲)"),
                         QStringLiteral("半桥(柏松)"),     QStringLiteral("全桥(弯曲)"),
                         QStringLiteral("全桥(柏松)"),     QStringLiteral("全桥(弯曲柏松)")};

const QStringList kListB{QStringLiteral("直流电压"),      QStringLiteral("交流电压"),
                         QStringLiteral("周期"),          QStringLiteral("频率"),
                         QStringLiteral("双线ohm"),       QStringLiteral("热电偶(类型B)"),
                         QStringLiteral("热电偶(类型E)"), QStringLiteral("热电偶(类型J)"),
                         QStringLiteral("热电偶(类型K)"), QStringLiteral("热电偶(类型N)"),
                         QStringLiteral("热电偶(类型R)"), QStringLiteral("热电偶(类型S)"),
                         QStringLiteral("热电偶(类型T)"), QStringLiteral("四分之一(弯曲)"),
                         QStringLiteral("半桥(弯曲)"),    QStringLiteral("半桥(柏松)"),
                         QStringLiteral("全桥(弯曲)"),    QStringLiteral("全桥(柏松)"),
                         QStringLiteral("全桥(弯曲柏松)")};

const QStringList kListD{QStringLiteral("直流电压"),       QStringLiteral("交流电压"),
                         QStringLiteral("周期"),           QStringLiteral("频率"),
                         QStringLiteral("双线ohm"),        QStringLiteral("热电偶(类型B)"),
                         QStringLiteral("热电偶(类型E)"),  QStringLiteral("热电偶(类型J)"),
                         QStringLiteral("热电偶(类型K)"),  QStringLiteral("热电偶(类型N)"),
                         QStringLiteral("热电偶(类型R)"),  QStringLiteral("热电偶(类型S)"),
                         QStringLiteral("热电偶(类型T)"),  QStringLiteral("温度二线制RTD"),
                         QStringLiteral("热敏电阻(2.2K)"), QStringLiteral("热敏电阻(5K)"),
                         QStringLiteral("热敏电阻(10K)"),  QStringLiteral("电容"),
                         QStringLiteral("二极管"),         QStringLiteral("直接应变"),
                         QStringLiteral("四分之一(弯曲)"), QStringLiteral("半桥(弯曲)"),
                         QStringLiteral("半桥(柏松)"),     QStringLiteral("全桥(弯曲)"),
                         QStringLiteral("全桥(柏松)"),     QStringLiteral("全桥(弯曲柏松)")};

const QStringList kListG{QStringLiteral("直流电压"),       QStringLiteral("交流电压"),
                         QStringLiteral("周期"),           QStringLiteral("频率"),
                         QStringLiteral("双线ohm"),        QStringLiteral("温度二线制RTD"),
                         QStringLiteral("热敏电阻(2.2K)"), QStringLiteral("热敏电阻(5K)"),
                         QStringLiteral("热敏电阻(10K)"),  QStringLiteral("电容"),
                         QStringLiteral("二极管"),         QStringLiteral("直接应变"),
                         QStringLiteral("四分之一(弯曲)"), QStringLiteral("半桥(弯曲)"),
                         QStringLiteral("半桥(柏松)"),     QStringLiteral("全桥(弯曲)"),
                         QStringLiteral("全桥(柏松)"),     QStringLiteral("全桥(弯曲柏松)")};

const QStringList kListI{QStringLiteral("直流电流"), QStringLiteral("交流电流")};
const QStringList kListV{QStringLiteral("直流电压"), QStringLiteral("交流电压")};
const QStringList kNoneEntry{QStringLiteral("无")};
const QStringList kNothing;

QStringList listC()
{
    QStringList names;
    for (int index = 0; index <= 31; ++index) {
        names << QString::fromUtf8(kExpected[index].displayName);
    }
    return names;
}

QStringList rangesOf(char family)
{
    switch (family) {
    case 'v':
        return {QStringLiteral("自动"),   QStringLiteral("+/-100mV"), QStringLiteral("+/-1V"),
                QStringLiteral("+/-10V"), QStringLiteral("+/-100V"),  QStringLiteral("+/-300V")};
    case 'r':
        return {QStringLiteral("自动"), QStringLiteral("100"),  QStringLiteral("1K"),
                QStringLiteral("10K"),  QStringLiteral("100K"), QStringLiteral("1M"),
                QStringLiteral("10M"),  QStringLiteral("100M"), QStringLiteral("1G")};
    case 'c':
        return {QStringLiteral("自动"),  QStringLiteral("1nF"), QStringLiteral("10nF"),
                QStringLiteral("100nF"), QStringLiteral("1μF"), QStringLiteral("10μF"),
                QStringLiteral("100μF")};
    case 'i':
        return {QStringLiteral("自动"),  QStringLiteral("1μA"), QStringLiteral("10μA"),
                QStringLiteral("100μA"), QStringLiteral("1mA"), QStringLiteral("10mA"),
                QStringLiteral("100mA"), QStringLiteral("1A")};
    default:
        return {};
    }
}

void clearSlots()
{
    for (int slot = 0; slot <= kSlotCount; ++slot) {
        slotPresent[slot] = false;
        slotModuleType[slot] = 0;
        slotLastChannel[slot] = 0;
    }
}

} // namespace

class TestCommFunc : public QObject
{
    Q_OBJECT

private slots:
    void init() { clearSlots(); }

    void catalogueRow_data();
    void catalogueRow();
    void everyFunctionHasACommand();
    void unknownIndexGivesTheDefaults_data();
    void unknownIndexGivesTheDefaults();
    void reportedNameStandsForOneFunction_data();
    void reportedNameStandsForOneFunction();
    void unknownNameReadsAsDcVoltage();
    void rangeRowHasAValue_data();
    void rangeRowHasAValue();
    void functionWithoutRangesHasNoValue();
    void rangeReplySelectsARow_data();
    void rangeReplySelectsARow();
    void fourWireFunctionsAreSix();
    void displayUnits();
    void temperatureUnitsOnlyForTemperatures();
    void decibelsOnlyForDirectVoltageAndCurrent();
    void moduleOfAType_data();
    void moduleOfAType();
    void channelOffersTheListOfItsPosition_data();
    void channelOffersTheListOfItsPosition();
    void channelOutsideTheMainframeOffersNothing();
    void typeOfAModel_data();
    void typeOfAModel();
    void bankOfASlot_data();
    void bankOfASlot();
    void slotWithoutModuleHasNoBank();
    void textsOfTheUserAreTranslated();
    void styleSheetsHoldTheirColours_data();
    void styleSheetsHoldTheirColours();
};

void TestCommFunc::catalogueRow_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < kFunctionCount; ++index) {
        QTest::addRow("function %d", index) << index;
    }
}

void TestCommFunc::catalogueRow()
{
    QFETCH(const int, index);
    const ExpectedFunction& expected = kExpected[index];
    CommFunc catalogue;
    QCOMPARE(catalogue.functionIndex(QString::fromUtf8(expected.displayName)), index);
    QCOMPARE(catalogue.scpiHeader(index), QString::fromUtf8(expected.scpiHeader));
    QCOMPARE(catalogue.baseUnit(index), QString::fromUtf8(expected.baseUnit));
    QCOMPARE(catalogue.defaultUnitIndex(index), expected.defaultUnit);
    QCOMPARE(int{catalogue.optionPanelKind(index)}, expected.panelKind);
    QCOMPARE(catalogue.rangeList(index), rangesOf(expected.ranges));
    const FuncCommand command = funcCommands.value(index);
    QCOMPARE(command.function, QString::fromUtf8(expected.funcArgument));
    QCOMPARE(command.typeCommand, QString::fromUtf8(expected.typeCommand));
    QCOMPARE(command.typeArgument, QString::fromUtf8(expected.typeArgument));
}

void TestCommFunc::everyFunctionHasACommand()
{
    QCOMPARE(funcCommands.size(), kFunctionCount);
    QCOMPARE(funcCommands.firstKey(), 0);
    QCOMPARE(funcCommands.lastKey(), kFunctionCount - 1);
}

void TestCommFunc::unknownIndexGivesTheDefaults_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("below") << -1;
    QTest::newRow("above") << kFunctionCount;
    QTest::newRow("far below") << std::numeric_limits<int>::min();
    QTest::newRow("far above") << std::numeric_limits<int>::max();
}

void TestCommFunc::unknownIndexGivesTheDefaults()
{
    QFETCH(const int, index);
    const CommFunc catalogue;
    QCOMPARE(catalogue.scpiHeader(index), QStringLiteral("VOLT:DC"));
    QCOMPARE(catalogue.baseUnit(index), QStringLiteral("Vdc"));
    QCOMPARE(int{catalogue.optionPanelKind(index)}, 0);
    QCOMPARE(catalogue.defaultUnitIndex(index), 0);
    QVERIFY(!catalogue.isFourWire(index));
    QCOMPARE(catalogue.rangeValue(index, 3), 0.0);
    QCOMPARE(catalogue.rangeRowForValue(index, 1.0), -1);
    QCOMPARE(catalogue.rangeList(index), QStringList());
    QCOMPARE(catalogue.temperatureUnitList(index), QStringList());
    QCOMPARE(catalogue.scaleFunctionList(index),
             (QStringList{QStringLiteral("SCAL"), QStringLiteral("PCT")}));
}

void TestCommFunc::reportedNameStandsForOneFunction_data()
{
    QTest::addColumn<int>("index");
    const QVector<QPair<const char*, int>> names{{"VOLT", 0},
                                                 {"VOLT:AC", 1},
                                                 {"PER", 2},
                                                 {"FREQ", 3},
                                                 {"RES", 4},
                                                 {"FRES", 5},
                                                 {"TEMP:TC", 6},
                                                 {"TEMP:RTD", 14},
                                                 {"TEMP:FRTD", 15},
                                                 {"TEMP:THER", 18},
                                                 {"TEMP:FTH", 21},
                                                 {"CAP", 22},
                                                 {"DIOD", 23},
                                                 {"STR:DIR", 24},
                                                 {"STR:FDIR", 25},
                                                 {"STR:QUAR", 26},
                                                 {"STR:HALF:BEND", 27},
                                                 {"STR:HALF:POIS", 28},
                                                 {"STR:FULL:BEND", 29},
                                                 {"STR:FULL:POIS", 30},
                                                 {"STR:FULL:BEND:POIS", 31},
                                                 {"CURR", 32},
                                                 {"CURR:AC", 33}};
    for (const auto& [name, index] : names) {
        QTest::newRow(name) << index;
    }
}

void TestCommFunc::reportedNameStandsForOneFunction()
{
    QFETCH(const int, index);
    CommFunc catalogue;
    QCOMPARE(catalogue.functionIndex(QString::fromLatin1(QTest::currentDataTag())), index);
}

void TestCommFunc::unknownNameReadsAsDcVoltage()
{
    CommFunc catalogue;
    QCOMPARE(catalogue.functionIndex(QStringLiteral("no such function")), 0);
    QCOMPARE(catalogue.functionIndex(QStringLiteral("no such function")), 0);
    QCOMPARE(catalogue.functionIndex(QString()), 0);
    QCOMPARE(catalogue.functionIndex(QStringLiteral("volt:ac")), 0);
}

void TestCommFunc::rangeRowHasAValue_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QVector<double>>("values");
    QTest::newRow("voltage") << 0 << QVector<double>{0.01, 0.1, 1.0, 10.0, 100.0, 300.0};
    QTest::newRow("bridge") << 31 << QVector<double>{0.01, 0.1, 1.0, 10.0, 100.0, 300.0};
    QTest::newRow("resistance") << 4
                                << QVector<double>{10.0, 100.0, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    QTest::newRow("capacitance") << 22
                                 << QVector<double>{1e-10, 1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4};
    QTest::newRow("current") << 33 << QVector<double>{1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 0.1, 1.0};
}

void TestCommFunc::rangeRowHasAValue()
{
    QFETCH(const int, index);
    QFETCH(const QVector<double>, values);
    const CommFunc catalogue;
    QCOMPARE(catalogue.rangeList(index).size(), values.size());
    for (int row = 0; row < values.size(); ++row) {
        QVERIFY2(std::abs(catalogue.rangeValue(index, row) - values[row]) <= 1e-12 * values[row],
                 qPrintable(QString::number(row)));
        if (row > 0) {
            QCOMPARE(catalogue.rangeRowForValue(index, values[row]), row);
        }
    }
    QCOMPARE(catalogue.rangeValue(index, -1), 0.0);
    QCOMPARE(catalogue.rangeValue(index, 10), 0.0);
    // The command spells the value out.
    QCOMPARE(QStringLiteral("%1").arg(catalogue.rangeValue(0, 1)), QStringLiteral("0.1"));
    QCOMPARE(QStringLiteral("%1").arg(catalogue.rangeValue(0, 5)), QStringLiteral("300"));
}

void TestCommFunc::functionWithoutRangesHasNoValue()
{
    const CommFunc catalogue;
    for (const int index : {6, 13, 14, 16, 21, 23, 24, 25}) {
        QCOMPARE(catalogue.rangeValue(index, 1), 0.0);
        QCOMPARE(catalogue.rangeRowForValue(index, 1.0), -1);
    }
}

void TestCommFunc::rangeReplySelectsARow_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<int>("row");
    const auto add = [](const char* name, int index, const char* reply, int row) {
        QTest::newRow(name) << index << QString::fromLatin1(reply) << row;
    };
    add("100 mV", 0, "+1.000000E-01", 1);
    add("1 V", 0, "+1.000000E+00", 2);
    add("10 V", 0, "+1.000000E+01", 3);
    add("100 V", 0, "+1.000000E+02", 4);
    add("300 V", 0, "+3.000000E+02", 5);
    add("nearly 300 V", 0, "+3.000001E+02", -1);
    add("10 mV is the automatic row", 0, "+1.000000E-02", 0);
    add("1000 V is a decade all the same", 0, "+1.000000E+03", 5);
    add("the last decade lies behind the list", 0, "+1.000000E+07", 9);
    add("past the decades", 0, "+1.000000E+08", -1);
    add("between", 0, "+2.000000E+00", -1);
    add("zero", 0, "+0.000000E+00", -1);
    add("negative", 0, "-1.000000E+01", -1);
    add("no number", 0, "nan", -1);
    add("close enough", 0, "1.0000000000005", 2);
    add("not close enough", 0, "1.000000000002", -1);
    add("300 is no resistance", 4, "+3.000000E+02", -1);
    add("100 Ohm", 4, "+1.000000E+02", 1);
    add("1 GOhm", 5, "+1.000000E+09", 8);
    add("1 nF", 22, "+1.000000E-09", 1);
    add("100 uF", 22, "+1.000000E-04", 6);
    add("1 uA", 32, "+1.000000E-06", 1);
    add("1 A", 33, "+1.000000E+00", 7);
    add("thermocouple", 6, "+1.000000E+00", -1);
    add("diode", 23, "+1.000000E+00", -1);
}

void TestCommFunc::rangeReplySelectsARow()
{
    QFETCH(const int, index);
    QFETCH(const QString, reply);
    QFETCH(const int, row);
    const CommFunc catalogue;
    QCOMPARE(catalogue.rangeRowForValue(index, reply.toDouble()), row);
}

void TestCommFunc::fourWireFunctionsAreSix()
{
    const CommFunc catalogue;
    QList<int> fourWire;
    for (int index = -1; index <= kFunctionCount; ++index) {
        if (catalogue.isFourWire(index)) {
            fourWire << index;
        }
    }
    QCOMPARE(fourWire, (QList<int>{5, 15, 19, 20, 21, 25}));
}

void TestCommFunc::displayUnits()
{
    const CommFunc catalogue;
    QCOMPARE(catalogue.unitList(),
             (QStringList{QStringLiteral("无"), QStringLiteral("°C"), QStringLiteral("Vdc"),
                          QStringLiteral("Vac"), QStringLiteral("Ohm"), QStringLiteral("Hz"),
                          QStringLiteral("s"), QStringLiteral("Adc"), QStringLiteral("Aac"),
                          QStringLiteral("°F"), QStringLiteral("K"), QStringLiteral("dB"),
                          QStringLiteral("dBm"), QStringLiteral("W"), QStringLiteral("e")}));
    // Capacitance starts with a temperature unit: farads have no row.
    QCOMPARE(catalogue.unitList().at(catalogue.defaultUnitIndex(22)), QStringLiteral("°F"));
    QVERIFY(!catalogue.unitList().contains(catalogue.baseUnit(22)));
}

void TestCommFunc::temperatureUnitsOnlyForTemperatures()
{
    const CommFunc catalogue;
    const QStringList units{QStringLiteral("C"), QStringLiteral("F"), QStringLiteral("K")};
    for (int index = 0; index < kFunctionCount; ++index) {
        const bool temperature = index >= 6 && index <= 21;
        QCOMPARE(catalogue.temperatureUnitList(index), temperature ? units : QStringList());
    }
}

void TestCommFunc::decibelsOnlyForDirectVoltageAndCurrent()
{
    const CommFunc catalogue;
    const QStringList plain{QStringLiteral("SCAL"), QStringLiteral("PCT")};
    const QStringList all{QStringLiteral("SCAL"), QStringLiteral("PCT"), QStringLiteral("DBM"),
                          QStringLiteral("DB")};
    for (int index = 0; index < kFunctionCount; ++index) {
        QCOMPARE(catalogue.scaleFunctionList(index), index == 0 || index == 32 ? all : plain);
    }
}

void TestCommFunc::moduleOfAType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("lastChannel");
    QTest::addColumn<QString>("name");
    const auto add = [](int type, int lastChannel, const char* name) {
        QTest::addRow("type %d", type) << type << lastChannel << QString::fromLatin1(name);
    };
    add(-1, -1, "SCN40-1:00-Channel Armature Multiplexer");
    add(0, 19, "SCN4000:20-Channel Armature Multiplexer");
    add(1, 21, "SCN4001:22-Channel Armature Multiplexer");
    add(2, 15, "SCN4002:16-Channel Armature Multiplexer");
    add(3, 19, "SCN4003:20-Channel Armature Multiplexer");
    add(4, 31, "SCN4004:32-Channel Armature Multiplexer");
    add(5, 1, "SCN4005:02-Channel Armature Multiplexer");
    add(6, 3, "SCN4006:04-Channel Armature Multiplexer");
    add(7, 3, "SCN4007:04-Channel Armature Multiplexer");
    add(8, 39, "SCN4008:40-Channel Armature Multiplexer");
    add(9, 3, "SCN4009:04-Channel Armature Multiplexer");
    add(10, 11, "SCN4010:12-Channel Armature Multiplexer");
    add(11, 23, "SCN4011:24-Channel Armature Multiplexer");
    add(12, 23, "SCN4012:24-Channel Armature Multiplexer");
    add(13, 0, "SCN4013:01-Channel Armature Multiplexer");
    add(14, 7, "SCN4014:08-Channel Armature Multiplexer");
    add(15, 7, "SCN4015:08-Channel Armature Multiplexer");
    add(16, 7, "SCN4016:08-Channel Armature Multiplexer");
    add(17, 0, "SCN4017:01-Channel Armature Multiplexer");
    add(21, 0, "SCN4021:01-Channel Armature Multiplexer");
    add(999, 0, "SCN40999:01-Channel Armature Multiplexer");
    add(-2, 0, "SCN40-2:01-Channel Armature Multiplexer");
}

void TestCommFunc::moduleOfAType()
{
    QFETCH(const int, type);
    QFETCH(const int, lastChannel);
    QFETCH(const QString, name);
    const CommFunc catalogue;
    QCOMPARE(catalogue.lastChannelIndex(type), lastChannel);
    QCOMPARE(catalogue.moduleName(type), name);
}

void TestCommFunc::channelOffersTheListOfItsPosition_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("position");
    QTest::addColumn<QStringList>("functions");
    const auto add = [](int type, int position, const QStringList& functions) {
        QTest::addRow("type %d position %d", type, position) << type << position << functions;
    };
    QCOMPARE(kListA.size(), 20);
    QCOMPARE(kListB.size(), 19);
    QCOMPARE(listC().size(), 32);
    QCOMPARE(kListD.size(), 26);
    QCOMPARE(kListG.size(), 18);
    add(-1, 1, kNoneEntry);
    add(0, 1, kListA);
    add(0, 10, kListA);
    add(0, 11, kListB);
    add(0, 20, kListB);
    add(0, 21, kNothing);
    add(1, 1, listC());
    add(1, 10, listC());
    add(1, 11, kListD);
    add(1, 20, kListD);
    add(1, 21, kListI);
    add(1, 22, kListI);
    add(1, 23, kNothing);
    add(2, 1, listC());
    add(2, 8, listC());
    add(2, 9, kListD);
    add(2, 16, kListD);
    add(2, 17, kNothing);
    for (const int type : {3, 4, 5, 6, 7, 9, 10, 13}) {
        add(type, 1, kNoneEntry);
    }
    add(8, 1, kListG);
    add(8, 40, kListG);
    add(11, 1, kNothing);
    add(12, 24, kNothing);
    add(14, 1, kListI);
    add(14, 8, kListI);
    add(15, 1, kListV);
    add(16, 8, kListV);
    add(17, 1, kNoneEntry);
    add(999, 1, kNoneEntry);
    add(-2, 1, kNoneEntry);
}

void TestCommFunc::channelOffersTheListOfItsPosition()
{
    QFETCH(const int, type);
    QFETCH(const int, position);
    QFETCH(const QStringList, functions);
    constexpr int kSlot = 15;
    slotModuleType[kSlot] = type;
    slotPresent[kSlot] = true;
    const CommFunc catalogue;
    QCOMPARE(catalogue.functionList(scn::ChannelNumber(kSlot, position).label()), functions);
}

void TestCommFunc::channelOutsideTheMainframeOffersNothing()
{
    const CommFunc catalogue;
    for (const int channel : {-101, 0, 1, 99, 1601, 123456}) {
        QCOMPARE(catalogue.functionList(channel), kNoneEntry);
    }
}

void TestCommFunc::typeOfAModel_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("type");
    QTest::newRow("empty") << QString() << -1;
    QTest::newRow("no digit") << QStringLiteral("SCN") << -1;
    QTest::newRow("letter behind") << QStringLiteral("SCN4001A") << 1;
    QTest::newRow("type 0") << QStringLiteral("SCN4000") << 0;
    QTest::newRow("three digits are kept") << QStringLiteral("4021") << 21;
    QTest::newRow("first run only") << QStringLiteral("SCN40B08") << 40;
    QTest::newRow("many digits") << QStringLiteral("2000004016") << 16;
    QTest::newRow("too large") << QStringLiteral("SCN2147483648") << -1;
    QTest::newRow("largest") << QStringLiteral("SCN2147483647") << 647;
    QTest::newRow("a sign is no digit") << QStringLiteral("SCN-4002") << 2;
}

void TestCommFunc::typeOfAModel()
{
    QFETCH(const QString, model);
    QFETCH(const int, type);
    const CommFunc catalogue;
    QCOMPARE(catalogue.moduleTypeFromModel(model), type);
}

void TestCommFunc::bankOfASlot_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("bank");
    const QVector<QPair<int, int>> banks{{-1, 1},  {0, 10},  {1, 10}, {2, 8},  {3, 10}, {4, 16},
                                         {5, 1},   {6, 2},   {7, 2},  {8, 20}, {9, 2},  {10, 6},
                                         {11, 12}, {12, 12}, {13, 1}, {14, 4}, {15, 4}, {16, 4},
                                         {17, 1},  {21, 1},  {-2, 1}};
    for (const auto& [type, bank] : banks) {
        QTest::addRow("type %d", type) << type << bank;
    }
}

void TestCommFunc::bankOfASlot()
{
    QFETCH(const int, type);
    QFETCH(const int, bank);
    slotPresent[2] = true;
    slotModuleType[2] = type;
    const CommFunc catalogue;
    QCOMPARE(catalogue.bankSize(2), bank);
    QCOMPARE(catalogue.bankSize(3), 0);
}

void TestCommFunc::slotWithoutModuleHasNoBank()
{
    const CommFunc catalogue;
    slotModuleType[1] = 8;
    QCOMPARE(catalogue.bankSize(1), 0);
    QCOMPARE(catalogue.bankSize(0), 0);
    QCOMPARE(catalogue.bankSize(16), 0);
    QCOMPARE(catalogue.bankSize(255), 0);
}

void TestCommFunc::textsOfTheUserAreTranslated()
{
    const Starred language("CommFunc");
    CommFunc catalogue;
    QCOMPARE(catalogue.functionIndex(QStringLiteral("*交流电流")), 33);
    QCOMPARE(catalogue.functionIndex(QStringLiteral("CURR:AC")), 33);
    slotPresent[1] = true;
    slotModuleType[1] = 14;
    QCOMPARE(catalogue.functionList(101),
             (QStringList{QStringLiteral("*直流电流"), QStringLiteral("*交流电流")}));
    slotModuleType[1] = 3;
    QCOMPARE(catalogue.functionList(101), QStringList{QStringLiteral("*无")});
    slotModuleType[1] = 17;
    QCOMPARE(catalogue.functionList(101), QStringList{QStringLiteral("*无")});
    // The entry for an empty slot is the same in every language.
    slotModuleType[1] = -1;
    QCOMPARE(catalogue.functionList(101), QStringList{QStringLiteral("无")});
    QCOMPARE(catalogue.unitList().mid(0, 2),
             (QStringList{QStringLiteral("*无"), QStringLiteral("°C")}));
    QCOMPARE(catalogue.rangeList(4).mid(0, 2),
             (QStringList{QStringLiteral("*自动"), QStringLiteral("100")}));
}

void TestCommFunc::styleSheetsHoldTheirColours_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QStringList>("pieces");
    const CommFunc catalogue;
    QTest::newRow("tabs") << catalogue.tabStyle()
                          << QStringList{
                                 QStringLiteral("QTabWidget#myTabWidget"),
                                 QStringLiteral("rgb(23,23,23)"),
                                 QStringLiteral("top: -5px"),
                                 QStringLiteral("border: none"),
                                 QStringLiteral("rgb(37,37,37)"),
                                 QStringLiteral("color: white"),
                                 QStringLiteral("padding: 8px 16px"),
                                 QStringLiteral("min-width: 80px"),
                                 QStringLiteral("background: rgb(51,51,51); font-weight: bold")};
    QTest::newRow("workspace tabs")
        << catalogue.workspaceTabStyle()
        << QStringList{QStringLiteral("QTabWidget#myTabWidget1"),
                       QStringLiteral("background: #000000"),
                       QStringLiteral("#171717"),
                       QStringLiteral("top: -1px"),
                       QStringLiteral("background: #13C4FF; font-weight: bold"),
                       QStringLiteral("min-width: 80px"),
                       QStringLiteral("min-height: 20px"),
                       QStringLiteral("qproperty-drawBase: false")};
    QTest::newRow("tree") << catalogue.treeStyle()
                          << QStringList{QStringLiteral("background: #171717"),
                                         QStringLiteral("alternate-background-color: #2B2B2B"),
                                         QStringLiteral("height: 20px"),
                                         QStringLiteral("rgb(60, 120, 216)"),
                                         QStringLiteral("border-top: 1px solid rgb(19,196,255)"),
                                         QStringLiteral("border-bottom: 1px solid rgb(19,196,255)"),
                                         QStringLiteral("margin-top: 1px"),
                                         QStringLiteral("margin-bottom: 1px"),
                                         QStringLiteral("height: 21px"),
                                         QStringLiteral("background: transparent"),
                                         QStringLiteral("border: 1px solid rgb(60, 60, 60)"),
                                         QStringLiteral("border-radius: 3px"),
                                         QStringLiteral("combobox-popup: 0"),
                                         QStringLiteral(":/dark/arrow_down.png")};
    QTest::newRow("buttons") << catalogue.buttonStyle()
                             << QStringList{QStringLiteral("#232323"),
                                            QStringLiteral("#E0E1E3"),
                                            QStringLiteral("border-radius: 4px"),
                                            QStringLiteral("checked { background: #60798B"),
                                            QStringLiteral("hover { background: #54687A"),
                                            QStringLiteral("disabled { color: #9DA9B5")};
}

void TestCommFunc::styleSheetsHoldTheirColours()
{
    QFETCH(const QString, style);
    QFETCH(const QStringList, pieces);
    for (const QString& piece : pieces) {
        QVERIFY2(style.contains(piece), qPrintable(piece));
    }
    QCOMPARE(style.count(QLatin1Char('{')), style.count(QLatin1Char('}')));
}

SCN_TEST(TestCommFunc, QCoreApplication)
#include "test_commfunc.moc"
