#include "model/meter.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

#include <iterator>

using namespace scnsim;
using namespace std::chrono_literals;

namespace {

constexpr const char* kNoError = "+0,\"No error\"";
constexpr const char* kConflict = "-221,\"Settings conflict\"";

/// What a client sees of one function. %1 and %2 stand for channel and partner.
struct FunctionRow
{
    const char* name;
    const char* scaledUnit;
    const char* unit;
    /// A setting of this function only, visible in its measuring time.
    const char* option;
    int milliseconds;
    bool takesPartner;
};

// 3 ms for switching, then ten power line cycles of 20 ms (twice with offset compensation), five
// cycles of 200 Hz, or the 100 ms of capacitance. Any other setting's own time is 20 or 250 ms.
// clang-format off
constexpr FunctionRow kFunctionRows[] = {
    {"VOLT", "Vdc", "Vdc", "VOLT:NPLC 10,(@%1)", 203, false},
    {"VOLT:AC", "Vac", "Vac", "VOLT:AC:BAND 200,(@%1)", 28, false},
    {"PER", "s", "s", "PER:RANG:LOW 200,(@%1)", 28, false},
    {"FREQ", "Hz", "Hz", "FREQ:RANG:LOW 200,(@%1)", 28, false},
    {"RES", "Ohm", "Ohm", "RES:NPLC 10,(@%1);OCOM ON,(@%1)", 403, false},
    {"FRES", "Ohm", "Ohm", "FRES:NPLC 10,(@%1);OCOM ON,(@%1)", 403, true},
    {"TEMP:TC", "#C", "C", "TEMP:NPLC 10,(@%1)", 203, false},
    {"TEMP:RTD", "#C", "C", "TEMP:NPLC 10,(@%1)", 203, false},
    {"TEMP:FRTD", "#C", "C", "TEMP:NPLC 10,(@%1)", 203, true},
    {"TEMP:THER", "#C", "C", "TEMP:NPLC 10,(@%1)", 203, false},
    {"TEMP:FTH", "#C", "C", "TEMP:NPLC 10,(@%1)", 203, true},
    {"CAP", "F", "F", "CAP:RANG 1e-4,(@%1)", 103, false},
    {"DIOD", "Vdc", "Vdc", "DIOD:NPLC 10,(@%1)", 203, false},
    {"STR:DIR", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:FDIR", "e", "e", "STR:NPLC 10,(@%1)", 203, true},
    {"STR:QUAR", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:HALF:BEND", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:HALF:POIS", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:FULL:BEND", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:FULL:POIS", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"STR:FULL:BEND:POIS", "e", "e", "STR:NPLC 10,(@%1)", 203, false},
    {"CURR", "Adc", "Adc", "CURR:NPLC 10,(@%1)", 203, false},
    {"CURR:AC", "Aac", "Aac", "CURR:AC:BAND 200,(@%1)", 28, false},
};
// clang-format on

} // namespace

/// The table of functions, row by row.
class TestSimFunctions : public QObject
{
    Q_OBJECT

private slots:
    void everyFunctionHasARow();
    void functionIsWhatTheTableTells_data();
    void functionIsWhatTheTableTells();
    void switchHasNoUnit();
    void rangeLimitsTheMeasuredQuantityOnly_data();
    void rangeLimitsTheMeasuredQuantityOnly();
};

void TestSimFunctions::everyFunctionHasARow()
{
    QStringList named;
    for (const FunctionRow& row : kFunctionRows) {
        named << QString::fromLatin1(row.name);
    }
    QStringList known;
    for (const FunctionInfo& function : functions()) {
        known << shortNameOf(function);
    }
    QCOMPARE(named, known);
}

void TestSimFunctions::functionIsWhatTheTableTells_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < std::size(kFunctionRows); ++i) {
        QTest::newRow(kFunctionRows[i].name) << static_cast<int>(i);
    }
}

void TestSimFunctions::functionIsWhatTheTableTells()
{
    QFETCH(int, index);
    const FunctionRow& row = kFunctionRows[index];
    // A module of 22 channels for voltages, resistances and sensors, and one of 8 for currents. The
    // partner is in the second half: ten and four positions further.
    SimBench bench(SimBench::Slots{{1, 1}, {2, 14}});
    const QString name = QString::fromLatin1(row.name);
    const bool isCurrent = name.startsWith(QLatin1String("CURR"));
    const QString channel = isCurrent ? QStringLiteral("201") : QStringLiteral("101");
    const QString partner = isCurrent ? QStringLiteral("205") : QStringLiteral("111");

    bench.ask(QStringLiteral("FUNC \"%1\",(@%2)").arg(name, channel));
    QCOMPARE(bench.ask(QStringLiteral("FUNC? (@%1)").arg(channel)),
             QStringLiteral("\"%1\"").arg(name));
    QCOMPARE(bench.ask(QStringLiteral("CALC:SCAL:UNIT? (@%1)").arg(channel)),
             QStringLiteral("\"%1\"").arg(QString::fromLatin1(row.scaledUnit)));

    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
    bench.ask(QStringLiteral("ROUT:SCAN (@%1)").arg(partner));
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(row.takesPartner ? kConflict : kNoError));
    bench.ask(QStringLiteral("FUNC \"%1\",(@%2)")
                  .arg(isCurrent ? QStringLiteral("CURR") : QStringLiteral("RES"), partner));
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(row.takesPartner ? kConflict : kNoError));

    bench.ask(QString::fromLatin1(row.option).replace(QLatin1String("%1"), channel));
    bench.ask(QStringLiteral("FORM:READ:UNIT ON;:TRIG:COUN 1;:ROUT:SCAN (@%1);:INIT").arg(channel));
    bench.pass(std::chrono::milliseconds(row.milliseconds) - 1ns);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+0"));
    bench.pass(1ns);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+1"));
    QCOMPARE(bench.ask("R? 1").section(QLatin1Char(' '), 1), QString::fromLatin1(row.unit));
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimFunctions::switchHasNoUnit()
{
    SimBench bench(SimBench::Slots{{1, 3}});
    QCOMPARE(bench.ask("FUNC? (@101);:CALC:SCAL:UNIT? (@101)"), QStringLiteral("\"NONE\";\"\""));
}

void TestSimFunctions::rangeLimitsTheMeasuredQuantityOnly_data()
{
    QTest::addColumn<int>("range");
    QTest::addColumn<int>("rangeAuto");
    QTest::addColumn<bool>("overloads");

    const auto row = [](const char* name, Option range, Option rangeAuto, bool overloads) {
        QTest::newRow(name) << static_cast<int>(range) << static_cast<int>(rangeAuto) << overloads;
    };
    using O = Option;
    row("VOLT", O::VoltDcRange, O::VoltDcRangeAuto, true);
    row("VOLT:AC", O::VoltAcRange, O::VoltAcRangeAuto, true);
    row("RES", O::ResRange, O::ResRangeAuto, true);
    row("FRES", O::FresRange, O::FresRangeAuto, true);
    row("CAP", O::CapRange, O::CapRangeAuto, true);
    row("CURR", O::CurrDcRange, O::CurrDcRangeAuto, true);
    row("CURR:AC", O::CurrAcRange, O::CurrAcRangeAuto, true);
    row("PER", O::PeriodRange, O::PeriodRangeAuto, false);
    row("FREQ", O::FreqRange, O::FreqRangeAuto, false);
    row("STR:QUAR", O::StrainRange, O::StrainRangeAuto, false);
    row("STR:HALF:BEND", O::StrainRange, O::StrainRangeAuto, false);
    row("STR:HALF:POIS", O::StrainRange, O::StrainRangeAuto, false);
    row("STR:FULL:BEND", O::StrainRange, O::StrainRangeAuto, false);
    row("STR:FULL:POIS", O::StrainRange, O::StrainRangeAuto, false);
    row("STR:FULL:BEND:POIS", O::StrainRange, O::StrainRangeAuto, false);
}

void TestSimFunctions::rangeLimitsTheMeasuredQuantityOnly()
{
    QFETCH(int, range);
    QFETCH(int, rangeAuto);
    QFETCH(bool, overloads);
    ChannelSettings settings(functionCalled(QString::fromLatin1(QTest::currentDataTag())));
    // Smaller than any signal, and not settable by a command: periods and strains are far below the
    // ends of the real ranges.
    settings.set(static_cast<Option>(range), 1e-12);

    Meter meter(1, {});
    QVERIFY(meter.measure(101, settings, 1s).value < 200);
    settings.set(static_cast<Option>(rangeAuto), 0);
    const double value = meter.measure(101, settings, 1s).value;
    QCOMPARE(value == 9.9e37, overloads);
    QVERIFY(overloads || (value > 0 && value < 200));
}

SCN_TEST(TestSimFunctions, testprogram::NoApplication)
#include "test_simfunctions.moc"
