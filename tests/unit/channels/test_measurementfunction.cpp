#include "channels/measurementfunction.h"
#include "support/testprogram.h"

#include <QtTest>

#include <iterator>
#include <limits>

using scn::MeasurementFunction;

namespace {

struct ExpectedFunction
{
    const char* displayName;
    const char* scpiName;
    const char* header;
    const char* baseUnit;
    int defaultUnit;
    int panel;
    char ranges; ///< v, r, c, i; '-' for none
    bool fourWire;
    bool decibels;
    const char* lists;
    const char* sensorType;
    bool ownsBareName;
};

// clang-format off
constexpr ExpectedFunction kExpected[] = {
    {"直流电压", "VOLT", "VOLT:DC", "Vdc", 2, 0, 'v', false, true, "ABCDGV", "", true},
    {"交流电压", "VOLT:AC", "VOLT:AC", "Vac", 3, 1, 'v', false, false, "ABCDGV", "", true},
    {"周期", "PER", "PER:VOLT", "s", 6, 2, 'v', false, false, "ABCDG", "", true},
    {"频率", "FREQ", "FREQ:VOLT", "Hz", 5, 2, 'v', false, false, "ABCDG", "", true},
    {"双线ohm", "RES", "RES", "Ohm", 4, 3, 'r', false, false, "ABCDG", "", true},
    {"四线ohm", "FRES", "FRES", "Ohm", 4, 3, 'r', true, false, "AC", "", true},
    {"热电偶(类型B)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "B", true},
    {"热电偶(类型E)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "E", false},
    {"热电偶(类型J)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "J", false},
    {"热电偶(类型K)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "K", false},
    {"热电偶(类型N)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "N", false},
    {"热电偶(类型R)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "R", false},
    {"热电偶(类型S)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "S", false},
    {"热电偶(类型T)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, '-', false, false, "ABCD", "T", false},
    {"温度二线制RTD", "TEMP:RTD", "TEMP:RTD", "°C", 1, 5, '-', false, false, "CDG", "", true},
    {"温度四线制RTD", "TEMP:FRTD", "TEMP:FRTD", "°C", 1, 5, '-', true, false, "C", "", true},
    {"热敏电阻(2.2K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', false, false, "CDG", "+2252", false},
    {"热敏电阻(5K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', false, false, "CDG", "+5000", false},
    {"热敏电阻(10K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, '-', false, false, "CDG", "+10000", true},
    {"4线制热敏电阻(2.2K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', true, false, "C", "+2252", false},
    {"4线制热敏电阻(5K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', true, false, "C", "+5000", false},
    {"4线制热敏电阻(10K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, '-', true, false, "C", "+10000", true},
    {"电容", "CAP", "CAP", "F", 9, 8, 'c', false, false, "CDG", "", true},
    {"二极管", "DIOD", "DIDD", "Vdc", 2, 9, '-', false, false, "CDG", "", true},
    {"直接应变", "STR:DIR", "STR:VOLT", "e", 14, 7, '-', false, false, "CDG", "", true},
    {"4线直接应变", "STR:FDIR", "STR:VOLT", "e", 14, 7, '-', true, false, "C", "", true},
    {"四分之一(弯曲)", "STR:QUAR", "STR:VOLT", "e", 14, 10, 'v', false, false, "ABCDG", "", true},
    {"半桥(弯曲)", "STR:HALF:BEND", "STR:VOLT", "e", 14, 10, 'v', false, false, "ABCDG", "", true},
    {"半桥(柏松)", "STR:HALF:POIS", "STR:VOLT", "e", 14, 11, 'v', false, false, "ABCDG", "", true},
    {"全桥(弯曲)", "STR:FULL:BEND", "STR:VOLT", "e", 14, 10, 'v', false, false, "ABCDG", "", true},
    {"全桥(柏松)", "STR:FULL:POIS", "STR:VOLT", "e", 14, 11, 'v', false, false, "ABCDG", "", true},
    {"全桥(弯曲柏松)", "STR:FULL:BEND:POIS", "STR:VOLT", "e", 14, 11, 'v', false, false, "ABCDG", "", true},
    {"直流电流", "CURR", "CURR:DC", "Adc", 7, 12, 'i', false, true, "I", "", true},
    {"交流电流", "CURR:AC", "CURR:AC", "Aac", 8, 1, 'i', false, false, "I", "", true},
};
// clang-format on

char letterOf(scn::RangeFamily family)
{
    switch (family) {
    case scn::RangeFamily::Voltage:
        return 'v';
    case scn::RangeFamily::Resistance:
        return 'r';
    case scn::RangeFamily::Capacitance:
        return 'c';
    case scn::RangeFamily::Current:
        return 'i';
    case scn::RangeFamily::None:
        break;
    }
    return '-';
}

QString lettersOf(scn::FunctionLists lists)
{
    using L = scn::FunctionList;
    const QVector<QPair<L, char>> letters{{L::A, 'A'}, {L::B, 'B'}, {L::C, 'C'}, {L::D, 'D'},
                                          {L::G, 'G'}, {L::I, 'I'}, {L::V, 'V'}};
    QString text;
    for (const auto& [list, letter] : letters) {
        if ((lists & bitOf(list)) != 0) {
            text.append(QLatin1Char(letter));
            lists &= ~bitOf(list);
        }
    }
    return lists == 0 ? text : QStringLiteral("a bit without a letter");
}

} // namespace

class TestMeasurementFunction : public QObject
{
    Q_OBJECT

private slots:
    void tableHasItsRows();
    void rowHoldsItsFacts_data();
    void rowHoldsItsFacts();
    void familyHoldsItsFacts_data();
    void familyHoldsItsFacts();
    void indexOutsideTheTableHasNoFunction();
};

void TestMeasurementFunction::tableHasItsRows()
{
    QCOMPARE(scn::measurementFunctions().size(), static_cast<int>(std::size(kExpected)));
}

void TestMeasurementFunction::rowHoldsItsFacts_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < static_cast<int>(std::size(kExpected)); ++index) {
        QTest::addRow("function %d", index) << index;
    }
}

void TestMeasurementFunction::rowHoldsItsFacts()
{
    QFETCH(const int, index);
    const ExpectedFunction& expected = kExpected[index];
    const MeasurementFunction* function = scn::functionAt(index);
    QVERIFY(function);
    QCOMPARE(function->displayName, expected.displayName);
    QCOMPARE(function->scpiName, expected.scpiName);
    QCOMPARE(function->header, expected.header);
    QCOMPARE(function->baseUnit, expected.baseUnit);
    QCOMPARE(static_cast<int>(function->defaultUnit), expected.defaultUnit);
    QCOMPARE(static_cast<int>(function->panel), expected.panel);
    QCOMPARE(letterOf(function->ranges), expected.ranges);
    QCOMPARE(function->wiring == scn::Wiring::FourWire, expected.fourWire);
    QCOMPARE(function->decibels == scn::Decibels::Yes, expected.decibels);
    QCOMPARE(lettersOf(function->lists), QString::fromLatin1(expected.lists));
    QCOMPARE(function->sensorType, expected.sensorType);
    QCOMPARE(function->sensor != nullptr, expected.sensorType[0] != '\0');
    QCOMPARE(ownsBareName(*function), expected.ownsBareName);
    QCOMPARE(isTemperature(*function), index >= 6 && index <= 21);
}

void TestMeasurementFunction::familyHoldsItsFacts_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<bool>("isLetter");
    const auto texts = [](std::initializer_list<const char*> list) {
        QStringList result;
        for (const char* text : list) {
            result.append(QString::fromUtf8(text));
        }
        return result;
    };
    QTest::newRow("thermocouples")
        << 6 << 13
        << texts({"TEMP:TRAN:TC:TYPE %1,(@%2)", "TEMP:TRAN:TC:TYPE? (@%1)", "TC", "B", "B",
                  "热电偶(类型%1)"})
        << true;
    QTest::newRow("thermistors") << 16 << 18
                                 << texts({"TEMP:TRAN:THER:TYPE %1,(@%2)",
                                           "TEMP:TRAN:THER:TYPE? (@%1)", "THER", "+5000", "+10000",
                                           ""})
                                 << false;
    QTest::newRow("four-wire thermistors")
        << 19 << 21
        << texts({"TEMP:TRAN:FTH:TYPE %1,(@%2)", "TEMP:TRAN:fth:TYPE? (@%1)", "THER", "+5000",
                  "+10000", ""})
        << false;
}

void TestMeasurementFunction::familyHoldsItsFacts()
{
    QFETCH(const int, first);
    QFETCH(const int, last);
    QFETCH(const QStringList, texts);
    QFETCH(const bool, isLetter);
    const scn::SensorFamily* family = scn::functionAt(first)->sensor;
    QVERIFY(family);
    const QStringList found{
        QString::fromUtf8(family->typeCommand),  QString::fromUtf8(family->typeQuery),
        QString::fromUtf8(family->transducer),   QString::fromUtf8(family->fallbackType),
        QString::fromUtf8(family->bareNameType), QString::fromUtf8(family->otherName)};
    QCOMPARE(found, texts);
    QCOMPARE(family->reply == scn::SensorReply::Letter, isLetter);
    for (int index = 0; index < scn::measurementFunctions().size(); ++index) {
        QCOMPARE(scn::functionAt(index)->sensor == family, index >= first && index <= last);
    }
}

void TestMeasurementFunction::indexOutsideTheTableHasNoFunction()
{
    QVERIFY(!scn::functionAt(-1));
    QVERIFY(!scn::functionAt(static_cast<int>(std::size(kExpected))));
    QVERIFY(!scn::functionAt(std::numeric_limits<int>::min()));
    QVERIFY(!scn::functionAt(std::numeric_limits<int>::max()));
}

SCN_TEST(TestMeasurementFunction, testprogram::NoApplication)
#include "test_measurementfunction.moc"
