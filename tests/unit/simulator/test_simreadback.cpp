#include "model/channelnumber.h"
#include "model/module.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace scnsim;

namespace {

/// All channel queries that a client's read-back may send; %1 is the channel.
constexpr const char* kChannelQueries[] = {
    "ROUT:CHAN:LAB? (@%1)",
    "FUNC? (@%1)",
    "TEMP:TRAN:TYPE? (@%1)",
    "TEMP:TRAN:TC:TYPE? (@%1)",
    "TEMP:TRAN:THER:TYPE? (@%1)",
    "TEMP:TRAN:fth:TYPE? (@%1)",
    "VOLT:DC:RANG:AUTO? (@%1)",
    "VOLT:DC:RANG? (@%1)",
    "VOLT:AC:RANG:AUTO? (@%1)",
    "VOLT:AC:RANG? (@%1)",
    "PER:VOLT:RANG:AUTO? (@%1)",
    "PER:VOLT:RANG? (@%1)",
    "FREQ:VOLT:RANG:AUTO? (@%1)",
    "FREQ:VOLT:RANG? (@%1)",
    "RES:RANG:AUTO? (@%1)",
    "RES:RANG? (@%1)",
    "FRES:RANG:AUTO? (@%1)",
    "FRES:RANG? (@%1)",
    "CAP:RANG:AUTO? (@%1)",
    "CAP:RANG? (@%1)",
    "STR:VOLT:RANG:AUTO? (@%1)",
    "STR:VOLT:RANG? (@%1)",
    "CURR:DC:RANG:AUTO? (@%1)",
    "CURR:DC:RANG? (@%1)",
    "CURR:AC:RANG:AUTO? (@%1)",
    "CURR:AC:RANG? (@%1)",
    "ROUT:CHAN:DEL:AUTO? (@%1)",
    "ROUT:CHAN:DEL? (@%1)",
    "VOLT:DC:NPLC? (@%1)",
    "INP:IMP:AUTO? (@%1)",
    "VOLT:REF? (@%1)",
    "VOLT:AC:BAND? (@%1)",
    "CURR:AC:BAND? (@%1)",
    "PER:RANG:LOW? (@%1)",
    "FREQ:RANG:LOW? (@%1)",
    "RES:NPLC? (@%1)",
    "RES:OCOM? (@%1)",
    "FRES:NPLC? (@%1)",
    "FRES:OCOM? (@%1)",
    "TEMP:NPLC? (@%1)",
    "UNIT:TEMP? (@%1)",
    "TEMP:TRAN:TC:RJUN:TYPE? (@%1)",
    "TEMP:TRAN:TC:RJUN? (@%1)",
    "TEMP:TRAN:RTD:REF? (@%1)",
    "TEMP:TRAN:RTD:RES? (@%1)",
    "TEMP:TRAN:FRTD:REF? (@%1)",
    "TEMP:TRAN:FRTD:RES? (@%1)",
    "TEMP:TRAN:RTD:TYPE? (@%1)",
    "STR:NPLC? (@%1)",
    "STR:GFAC? (@%1)",
    "STR:RES? (@%1)",
    "STR:EXC? (@%1)",
    "STR:POIS? (@%1)",
    "CURR:DC:NPLC? (@%1)",
    "DIDD:NPLC? (@%1)",
    "CALC:SCAL:GAIN? (@%1)",
    "CALC:SCAL:OFFS? (@%1)",
    "CALC:SCAL:STAT? (@%1)",
    "CALC:SCAL:UNIT? (@%1)",
    "CALC:SCAL:FUNC? (@%1)",
    "CALC:SCAL:REF:AUTO? (@%1)",
    "CALC:SCAL:REF? (@%1)",
    "CALC:SCAL:DBM:REF? (@%1)",
    "CALC:SCAL:DB:REF? (@%1)",
};

constexpr const char* kNoError = "+0,\"No error\"";

/// A mainframe with a module of each type from 0 to 16 in slot type + 1, and an unknown one.
SimBench::Slots allModules()
{
    SimBench::Slots modules;
    for (int type = 0; type <= 16; ++type) {
        modules[type + 1] = type;
    }
    modules[18] = 21;
    return modules;
}

/// What an option with a number as its value refuses; `errorOf` sets a value and gives the error.
void checkNumbersRefused(const OptionInfo& info,
                         const std::function<QString(const QString& value)>& errorOf)
{
    const QString wrong = info.kind == OptionKind::Listed
                              ? QStringLiteral("-224,\"Illegal parameter value\"")
                              : QStringLiteral("-222,\"Data out of range\"");
    const double step = std::max(std::fabs(info.minimum), std::fabs(info.maximum)) * 1e-6;
    QCOMPARE(errorOf(QString::number(info.minimum - step, 'g', 15)), wrong);
    QCOMPARE(errorOf(QString::number(info.maximum + step, 'g', 15)), wrong);
    QCOMPARE(errorOf(QStringLiteral("1 V")), QStringLiteral("-138,\"Suffix not allowed\""));
    QCOMPARE(errorOf(QStringLiteral("1E999")), QStringLiteral("-123,\"Exponent too large\""));
}

} // namespace

/// What was set reads back, on each channel, and what was refused changes nothing.
class TestSimReadBack : public QObject
{
    Q_OBJECT

private slots:
    void everyQueryIsAnsweredOnEveryChannel();
    void modulesOfferTheirFunctions_data();
    void modulesOfferTheirFunctions();
    void optionIsSetAndReadBack_data();
    void optionIsSetAndReadBack();
    void refusedValueChangesNothing_data();
    void refusedValueChangesNothing();
    void everyOptionRefusesWhatItCannotTake_data();
    void everyOptionRefusesWhatItCannotTake();
    void everyOptionHasAHeader();
    void everyHeaderStandsInTheDocumentation();
    void settingsBelongToOneChannelAndFunction();
    void resetPutsTheFactorySettingsBack();
};

void TestSimReadBack::everyQueryIsAnsweredOnEveryChannel()
{
    SimBench bench(allModules());
    int channels = 0;
    for (int slot = 1; slot <= 18; ++slot) {
        const int type = *bench.instrument().moduleType(slot);
        for (int position = 1; position <= module::channelCount(type); ++position) {
            ++channels;
            for (const char* query : kChannelQueries) {
                const QString line = QString::fromLatin1(query).arg(channelAt(slot, position));
                QVERIFY2(!bench.ask(line).isEmpty(), qPrintable(line));
            }
        }
    }
    QCOMPARE(channels,
             20 + 22 + 16 + 20 + 32 + 2 + 4 + 4 + 40 + 4 + 12 + 24 + 24 + 1 + 8 + 8 + 8 + 1);
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimReadBack::modulesOfferTheirFunctions_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("position");
    QTest::addColumn<QStringList>("functions");

    const QStringList bridges = {
        QStringLiteral("STR:QUAR"),      QStringLiteral("STR:HALF:BEND"),
        QStringLiteral("STR:HALF:POIS"), QStringLiteral("STR:FULL:BEND"),
        QStringLiteral("STR:FULL:POIS"), QStringLiteral("STR:FULL:BEND:POIS")};
    const QStringList basics = {QStringLiteral("VOLT"), QStringLiteral("VOLT:AC"),
                                QStringLiteral("PER"), QStringLiteral("FREQ"),
                                QStringLiteral("RES")};
    const QStringList sensors = {QStringLiteral("TEMP:RTD"), QStringLiteral("TEMP:THER"),
                                 QStringLiteral("CAP"), QStringLiteral("DIOD"),
                                 QStringLiteral("STR:DIR")};
    const QStringList fourWire = {QStringLiteral("FRES"), QStringLiteral("TEMP:FRTD"),
                                  QStringLiteral("TEMP:FTH"), QStringLiteral("STR:FDIR")};
    const QStringList thermocouple = {QStringLiteral("TEMP:TC")};
    const QStringList current = {QStringLiteral("CURR"), QStringLiteral("CURR:AC")};
    const QStringList voltage = {QStringLiteral("VOLT"), QStringLiteral("VOLT:AC")};
    const QStringList listA = basics + thermocouple + bridges + QStringList{QStringLiteral("FRES")};
    const QStringList listB = basics + thermocouple + bridges;
    const QStringList listC = basics + thermocouple + sensors + fourWire + bridges;
    const QStringList listD = basics + thermocouple + sensors + bridges;
    const QStringList listG = basics + sensors + bridges;

    const auto row = [](int type, int position, const QStringList& functions) {
        QTest::addRow("type %d position %d", type, position) << type << position << functions;
    };
    row(0, 1, listA);
    row(0, 10, listA);
    row(0, 11, listB);
    row(0, 20, listB);
    row(1, 10, listC);
    row(1, 11, listD);
    row(1, 20, listD);
    row(1, 21, current);
    row(1, 22, current);
    row(2, 8, listC);
    row(2, 9, listD);
    row(2, 16, listD);
    for (const int switches : {3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 21}) {
        row(switches, 1, {});
    }
    row(8, 1, listG);
    row(8, 40, listG);
    row(14, 8, current);
    row(15, 8, voltage);
    row(16, 1, voltage);
}

void TestSimReadBack::modulesOfferTheirFunctions()
{
    QFETCH(int, type);
    QFETCH(int, position);
    QFETCH(QStringList, functions);
    SimBench bench(SimBench::Slots{{1, type}});
    const QString channel = QString::number(100 + position);
    QStringList offered;
    for (const FunctionInfo& function : scnsim::functions()) {
        const QString name = shortNameOf(function);
        bench.ask(QStringLiteral("FUNC \"%1\",(@%2)").arg(name, channel));
        if (bench.ask("SYST:ERR?") == QLatin1String(kNoError)) {
            QCOMPARE(bench.ask(QStringLiteral("FUNC? (@%1)").arg(channel)),
                     QStringLiteral("\"%1\"").arg(name));
            offered << name;
        }
    }
    QStringList wanted = functions;
    std::sort(wanted.begin(), wanted.end());
    std::sort(offered.begin(), offered.end());
    QCOMPARE(offered, wanted);
}

void TestSimReadBack::optionIsSetAndReadBack_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("answer");

    const auto row = [](const char* command, const char* query, const char* answer) {
        QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(query)
                               << QString::fromLatin1(answer);
    };
    row("VOLT:DC:RANG 0.1", "VOLT:DC:RANG?", "+1.000000E-01");
    row("VOLT:DC:RANG:AUTO OFF", "VOLT:DC:RANG:AUTO?", "0");
    row("VOLT:AC:RANG 300", "VOLT:AC:RANG?", "+3.000000E+02");
    row("VOLT:AC:RANG:AUTO OFF", "VOLT:AC:RANG:AUTO?", "0");
    row("PER:VOLT:RANG 1", "PER:VOLT:RANG?", "+1.000000E+00");
    row("PER:VOLT:RANG:AUTO OFF", "PER:VOLT:RANG:AUTO?", "0");
    row("FREQ:VOLT:RANG 100", "FREQ:VOLT:RANG?", "+1.000000E+02");
    row("FREQ:VOLT:RANG:AUTO OFF", "FREQ:VOLT:RANG:AUTO?", "0");
    row("RES:RANG 100", "RES:RANG?", "+1.000000E+02");
    row("RES:RANG:AUTO OFF", "RES:RANG:AUTO?", "0");
    row("FRES:RANG 1e+09", "FRES:RANG?", "+1.000000E+09");
    row("FRES:RANG:AUTO OFF", "FRES:RANG:AUTO?", "0");
    row("CAP:RANG 0.0001", "CAP:RANG?", "+1.000000E-04");
    row("CAP:RANG:AUTO OFF", "CAP:RANG:AUTO?", "0");
    row("CURR:DC:RANG 1", "CURR:DC:RANG?", "+1.000000E+00");
    row("CURR:DC:RANG:AUTO OFF", "CURR:DC:RANG:AUTO?", "0");
    row("CURR:AC:RANG 1e-06", "CURR:AC:RANG?", "+1.000000E-06");
    row("CURR:AC:RANG:AUTO OFF", "CURR:AC:RANG:AUTO?", "0");
    row("STR:VOLT:RANG 10", "STR:VOLT:RANG?", "+1.000000E+01");
    row("STR:VOLT:RANG:AUTO OFF", "STR:VOLT:RANG:AUTO?", "0");
    row("VOLT:NPLC 0.02", "VOLT:DC:NPLC?", "+2.000000E-02");
    row("RES:NPLC 0.2", "RES:NPLC?", "+2.000000E-01");
    row("FRES:NPLC 10", "FRES:NPLC?", "+1.000000E+01");
    row("TEMP:NPLC 100", "TEMP:NPLC?", "+1.000000E+02");
    row("STR:NPLC 10", "STR:NPLC?", "+1.000000E+01");
    row("CURR:NPLC 10", "CURR:DC:NPLC?", "+1.000000E+01");
    row("DIDD:NPLC 10", "DIOD:NPLC?", "+1.000000E+01");
    row("VOLT:AC:BAND 3", "VOLT:AC:BAND?", "+3.000000E+00");
    row("CURR:AC:BAND 200", "CURR:AC:BAND?", "+2.000000E+02");
    row("PER:VOLT:BAND 200", "PER:RANG:LOW?", "+2.000000E+02");
    row("FREQ:VOLT:BAND 3", "FREQ:RANG:LOW?", "+3.000000E+00");
    row("RES:OCOM ON", "RES:OCOM?", "1");
    row("FRES:OCOM ON", "FRES:OCOM?", "1");
    row("ROUT:CHAN:DEL 1.5", "ROUT:CHAN:DEL?", "+1.500000E+00");
    row("ROUT:CHAN:DEL 60", "ROUT:CHAN:DEL:AUTO?", "0");
    row("ROUT:CHAN:DEL:AUTO OFF", "ROUT:CHAN:DEL:AUTO?", "0");
    row("INP:IMP:AUTO ON", "INP:IMP:AUTO?", "1");
    row("VOLT:REF -2.5", "VOLT:REF?", "-2.500000E+00");
    row("TEMP:TRAN:TC:TYPE T", "TEMP:TRAN:TC:TYPE?", "T");
    row("TEMP:TRAN:TC:RJUN:TYPE FIX", "TEMP:TRAN:TC:RJUN:TYPE?", "FIX");
    row("TEMP:TRAN:TC:RJUN -20", "TEMP:TRAN:TC:RJUN?", "-2.000000E+01");
    row("TEMP:TRAN:TC:CHEC ON", "TEMP:TRAN:TC:CHEC?", "1");
    row("TEMP:TRAN:TC:REF ON", "TEMP:TRAN:TC:REF?", "1");
    row("TEMP:TRAN:RTD:REF ON", "TEMP:TRAN:RTD:REF?", "1");
    row("TEMP:TRAN:FRTD:REF ON", "TEMP:TRAN:FRTD:REF?", "1");
    row("TEMP:TRAN:THER:REF ON", "TEMP:TRAN:THER:REF?", "1");
    row("TEMP:TRAN:FTH:REF ON", "TEMP:TRAN:FTH:REF?", "1");
    row("TEMP:TRAN:RTD:RES 100.5", "TEMP:TRAN:RTD:RES?", "+1.005000E+02");
    row("TEMP:TRAN:FRTD:RES 1000", "TEMP:TRAN:FRTD:RES?", "+1.000000E+03");
    row("TEMP:TRAN:RTD:TYPE 91", "TEMP:TRAN:RTD:TYPE?", "+91");
    row("TEMP:TRAN:FRTD:TYPE 91", "TEMP:TRAN:FRTD:TYPE?", "+91");
    row("TEMP:TRAN:THER:TYPE +2252", "TEMP:TRAN:THER:TYPE?", "+2252");
    row("TEMP:TRAN:FTH:TYPE +10000", "TEMP:TRAN:fth:TYPE?", "+10000");
    row("UNIT:TEMP K", "UNIT:TEMP?", "K");
    row("UNIT:TEMP F", "UNIT:TEMP?", "F");
    row("STR:GFAC 2.1", "STR:GFAC?", "+2.100000E+00");
    row("STR:RES 350", "STR:RES?", "+3.500000E+02");
    row("STR:EXC 12", "STR:EXC?", "+1.200000E+01");
    row("STR:POIS -0.999", "STR:POIS?", "-9.990000E-01");
    row("CALC:SCAL:GAIN -1.5e3", "CALC:SCAL:GAIN?", "-1.500000E+03");
    row("CALC:SCAL:OFFS 0.25", "CALC:SCAL:OFFS?", "+2.500000E-01");
    row("CALC:SCAL:STAT ON", "CALC:SCAL:STAT?", "1");
    row("CALC:SCAL:FUNC PCT", "CALC:SCAL:FUNC?", "PCT");
    row("CALC:SCAL:FUNC DB", "CALC:SCAL:FUNC?", "DB");
    row("CALC:SCAL:REF 1e+15", "CALC:SCAL:REF?", "+1.000000E+15");
    row("CALC:SCAL:REF:AUTO OFF", "CALC:SCAL:REF:AUTO?", "0");
    row("CALC:SCAL:DBM:REF 8000", "CALC:SCAL:DBM:REF?", "+8000");
    row("CALC:SCAL:DB:REF -200", "CALC:SCAL:DB:REF?", "-2.000000E+02");
    row("CALC:SCAL:UNIT \"Ohm\"", "CALC:SCAL:UNIT?", "\"Ohm\"");
    row("ROUT:CHAN:LAB \"x\"", "ROUT:CHAN:LAB?", "\"x\"");
    row("VOLT:NPLC 3", "VOLT:NPLC?", "+1.000000E+01");
    row("VOLT:AC:BAND 250", "VOLT:AC:BAND?", "+2.000000E+02");
    row("VOLT:AC:BAND 19", "VOLT:AC:BAND?", "+3.000000E+00");
    row("VOLT:NPLC MIN", "VOLT:NPLC?", "+2.000000E-02");
    row("sense:voltage:dc:nplc maximum", "volt:nplc?", "+1.000000E+02");
    row("STR:GFAC DEF", "STR:GFAC?", "+2.000000E+00");
}

void TestSimReadBack::optionIsSetAndReadBack()
{
    QFETCH(QString, command);
    QFETCH(QString, query);
    QFETCH(QString, answer);
    SimBench bench;
    const bool isDefault = command.endsWith(QLatin1String("DEF"));
    const QString before = bench.ask(query + QStringLiteral(" (@101)"));
    QCOMPARE(before == answer, isDefault);
    QCOMPARE(bench.ask(command + QStringLiteral(",(@101)")), QString());
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
    QCOMPARE(bench.ask(query + QStringLiteral(" (@101)")), answer);
    // The neighbour keeps what it had.
    QCOMPARE(bench.ask(query + QStringLiteral(" (@102)")), before);
}

void TestSimReadBack::refusedValueChangesNothing_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("error");

    const auto row = [](const char* command, const char* query, const char* error) {
        QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(query)
                               << QString::fromLatin1(error);
    };
    constexpr const char* kOutOfRange = "-222,\"Data out of range\"";
    constexpr const char* kIllegal = "-224,\"Illegal parameter value\"";
    constexpr const char* kWrongType = "-104,\"Data type error\"";
    row("VOLT:DC:RANG 300.1,(@101)", "VOLT:DC:RANG:AUTO?", kOutOfRange);
    row("VOLT:DC:RANG -1,(@101)", "VOLT:DC:RANG?", kOutOfRange);
    row("RES:RANG 1.1e9,(@101)", "RES:RANG?", kOutOfRange);
    row("CAP:RANG 1e-3,(@101)", "CAP:RANG?", kOutOfRange);
    row("CURR:RANG 2,(@101)", "CURR:RANG?", kOutOfRange);
    row("VOLT:NPLC 0.01,(@101)", "VOLT:NPLC?", kOutOfRange);
    row("VOLT:NPLC 101,(@101)", "VOLT:NPLC?", kOutOfRange);
    row("VOLT:NPLC SLOW,(@101)", "VOLT:NPLC?", kIllegal);
    row("VOLT:AC:BAND 2,(@101)", "VOLT:AC:BAND?", kOutOfRange);
    row("ROUT:CHAN:DEL 60.001,(@101)", "ROUT:CHAN:DEL:AUTO?", kOutOfRange);
    row("INP:IMP:AUTO MAYBE,(@101)", "INP:IMP:AUTO?", kIllegal);
    row("INP:IMP:AUTO \"ON\",(@101)", "INP:IMP:AUTO?", kWrongType);
    row("TEMP:TRAN:TC:TYPE X,(@101)", "TEMP:TRAN:TC:TYPE?", kIllegal);
    row("TEMP:TRAN:TC:TYPE 1,(@101)", "TEMP:TRAN:TC:TYPE?", kWrongType);
    row("TEMP:TRAN:TC:RJUN 80.01,(@101)", "TEMP:TRAN:TC:RJUN?", kOutOfRange);
    row("TEMP:TRAN:RTD:RES 98.9,(@101)", "TEMP:TRAN:RTD:RES?", kOutOfRange);
    row("TEMP:TRAN:RTD:TYPE 90,(@101)", "TEMP:TRAN:RTD:TYPE?", kIllegal);
    row("TEMP:TRAN:THER:TYPE 2200,(@101)", "TEMP:TRAN:THER:TYPE?", kIllegal);
    row("UNIT:TEMP R,(@101)", "UNIT:TEMP?", kIllegal);
    row("STR:GFAC 0.4,(@101)", "STR:GFAC?", kOutOfRange);
    row("STR:RES 1101,(@101)", "STR:RES?", kOutOfRange);
    row("STR:EXC 0.8,(@101)", "STR:EXC?", kOutOfRange);
    row("STR:POIS 0.51,(@101)", "STR:POIS?", kOutOfRange);
    row("CALC:SCAL:GAIN 1e16,(@101)", "CALC:SCAL:GAIN?", kOutOfRange);
    row("CALC:SCAL:FUNC SQRT,(@101)", "CALC:SCAL:FUNC?", kIllegal);
    row("CALC:SCAL:DBM:REF 51,(@101)", "CALC:SCAL:DBM:REF?", kIllegal);
    row("CALC:SCAL:DB:REF 201,(@101)", "CALC:SCAL:DB:REF?", kOutOfRange);
    row("STR::NPLC 10,(@101)", "STR:NPLC?", "-110,\"Command header error\"");
    row("STR:GFAC 2.1,(@101:123)", "STR:GFAC?", kOutOfRange);
    row("STR:GFAC 2.1,(@101,901)", "STR:GFAC?", "-241,\"Hardware missing\"");
    row("ROUT:CHAN:LAB \"x\",(@101,901)", "ROUT:CHAN:LAB?", "-241,\"Hardware missing\"");
    row("CALC:SCAL:UNIT \"bar\",(@101:123)", "CALC:SCAL:UNIT?", kOutOfRange);
    row("STR:GFAC 2.1", "STR:GFAC?", "-109,\"Missing parameter\"");
    row("STR:GFAC 2.1,(@101),1", "STR:GFAC?", "-108,\"Parameter not allowed\"");
}

void TestSimReadBack::refusedValueChangesNothing()
{
    QFETCH(QString, command);
    QFETCH(QString, query);
    SimBench bench;
    const QString channel = QStringLiteral(" (@101)");
    const QString before = bench.ask(query + channel);
    QCOMPARE(bench.ask(command), QString());
    QTEST(bench.ask("SYST:ERR?"), "error");
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
    QVERIFY(!before.isEmpty());
    QCOMPARE(bench.ask(query + channel), before);
}

void TestSimReadBack::everyOptionRefusesWhatItCannotTake_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<int>("option");
    for (const OptionHeader& row : optionHeaders()) {
        // The short form, with the optional parts.
        QString header = QString::fromLatin1(row.spelling);
        header.remove(QRegularExpression(QStringLiteral("[][a-z]")));
        QTest::newRow(row.spelling) << header << static_cast<int>(row.option);
    }
}

void TestSimReadBack::everyOptionRefusesWhatItCannotTake()
{
    QFETCH(QString, header);
    QFETCH(int, option);
    const OptionInfo& info = optionInfo(static_cast<Option>(option));
    SimBench bench;
    const QString query = QStringLiteral("%1? (@101:122)").arg(header);
    const QString before = bench.ask(query);
    QCOMPARE(before.count(QLatin1Char(',')), 21);

    const auto errorOf = [&](const QString& line) {
        const QString answer = bench.ask(line);
        const QString error = bench.ask("SYST:ERR?");
        const bool unchanged = bench.ask(query) == before;
        const bool alone = bench.ask("SYST:ERR?") == QLatin1String(kNoError);
        return answer.isEmpty() && unchanged && alone ? error : QStringLiteral("more than that");
    };
    const auto set = [&header](const QString& value) {
        return QStringLiteral("%1 %2").arg(header, value);
    };
    const QString good = info.kind == OptionKind::Switch   ? QStringLiteral("ON")
                         : info.kind == OptionKind::Choice ? QString::fromLatin1(info.words.data[1])
                                                           : QStringLiteral("MAX");
    const bool isWord = info.kind == OptionKind::Switch || info.kind == OptionKind::Choice;

    if (!isWord) {
        checkNumbersRefused(info, [&](const QString& value) {
            return errorOf(set(value + QStringLiteral(",(@101)")));
        });
    }
    QCOMPARE(errorOf(set(QStringLiteral("NOWORD,(@101)"))),
             QStringLiteral("-224,\"Illegal parameter value\""));
    QCOMPARE(errorOf(set(QStringLiteral("\"1\",(@101)"))),
             QStringLiteral("-104,\"Data type error\""));
    QCOMPARE(errorOf(set(QStringLiteral("#11,(@101)"))),
             QStringLiteral("-168,\"Block data not allowed\""));
    QCOMPARE(errorOf(set(QStringLiteral(",(@101)"))), QStringLiteral("-102,\"Syntax error\""));
    QCOMPARE(errorOf(set(good)), QStringLiteral("-109,\"Missing parameter\""));
    QCOMPARE(errorOf(set(good + QStringLiteral(",(@)"))),
             QStringLiteral("-171,\"Invalid expression\""));
    QCOMPARE(errorOf(set(good + QStringLiteral(",(101)"))),
             QStringLiteral("-171,\"Invalid expression\""));
    QCOMPARE(errorOf(set(good + QStringLiteral(",(@101:123)"))),
             QStringLiteral("-222,\"Data out of range\""));
    QCOMPARE(errorOf(set(good + QStringLiteral(",(@101,401)"))),
             QStringLiteral("-241,\"Hardware missing\""));
    QCOMPARE(errorOf(set(good + QStringLiteral(",(@101),1"))),
             QStringLiteral("-108,\"Parameter not allowed\""));
    QCOMPARE(errorOf(QString(header).replace(QLatin1Char(':'), QLatin1String("::")) +
                     QStringLiteral(" %1,(@101)").arg(good)),
             QStringLiteral("-110,\"Command header error\""));
    QCOMPARE(errorOf(QStringLiteral("%1:FOO %2,(@101)").arg(header, good)),
             QStringLiteral("-113,\"Undefined header\""));
    QCOMPARE(errorOf(QStringLiteral("%1. %2,(@101)").arg(header, good)),
             QStringLiteral("-111,\"Header separator error\""));
}

void TestSimReadBack::everyOptionHasAHeader()
{
    for (unsigned i = 0; i < kOptionCount; ++i) {
        const auto named = [i](const OptionHeader& row) {
            return static_cast<unsigned>(row.option) == i;
        };
        const Facts<OptionHeader> rows = optionHeaders();
        QVERIFY2(std::any_of(rows.begin(), rows.end(), named), qPrintable(QString::number(i)));
    }
}

void TestSimReadBack::everyHeaderStandsInTheDocumentation()
{
    QFile file(QStringLiteral(SCN_SOURCE_DIR "/docs/scpi.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    const auto isThere = [&text](const char* spelling) {
        return text.contains(QByteArray("`") + spelling + '`');
    };
    for (const Facts<CommandRow> table :
         {commonCommands(), systemCommands(), channelCommands(), scanCommands()}) {
        for (const CommandRow& row : table) {
            QVERIFY2(isThere(row.spelling), row.spelling);
        }
    }
    for (const OptionHeader& row : optionHeaders()) {
        QVERIFY2(isThere(row.spelling), row.spelling);
    }
}

void TestSimReadBack::settingsBelongToOneChannelAndFunction()
{
    SimBench bench;
    bench.ask("RES:NPLC 10,(@101)");
    bench.ask("VOLT:NPLC 100,(@101)");
    bench.ask("FUNC \"RES\",(@101)");
    QCOMPARE(bench.ask("VOLT:NPLC? (@101)"), QStringLiteral("+1.000000E+02"));
    QCOMPARE(bench.ask("RES:NPLC? (@101)"), QStringLiteral("+1.000000E+01"));
    QCOMPARE(bench.ask("FRES:NPLC? (@101)"), QStringLiteral("+1.000000E+00"));
    QCOMPARE(bench.ask("RES:NPLC? (@102)"), QStringLiteral("+1.000000E+00"));
}

void TestSimReadBack::resetPutsTheFactorySettingsBack()
{
    SimBench bench;
    bench.ask("FUNC \"RES\",(@101);:RES:NPLC 10,(@101);:ROUT:SCAN (@101);:TRIG:COUN 3");
    bench.ask("ROUT:CHAN:LAB \"x\",(@101);:FORM:READ:UNIT ON;:MMEM:LOG ON");
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
    bench.ask("*RST");
    QCOMPARE(bench.ask("FUNC? (@101);:RES:NPLC? (@101);:ROUT:SCAN?;:TRIG:COUN?"),
             QStringLiteral("\"VOLT\";+1.000000E+00;#13(@);+9.90000000E+37"));
    QCOMPARE(bench.ask("ROUT:CHAN:LAB? (@101);:FORM:READ:UNIT?;:MMEM:LOG?"),
             QStringLiteral("\"\";0;0"));
}

SCN_TEST(TestSimReadBack, testprogram::NoApplication)
#include "test_simreadback.moc"
