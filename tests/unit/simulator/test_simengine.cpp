#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

#include <cmath>

using namespace scnsim;
using namespace std::chrono_literals;

namespace {

constexpr const char* kNoError = "+0,\"No error\"";
constexpr const char* kAllFields = "FORM:READ:ALAR ON;CHAN ON;TIME ON;UNIT ON;TIME:TYPE ABS";
constexpr int kFieldsOfARecord = 9;

/// Content of a definite-length block; a null text if its length is wrong.
QString blockContent(const QString& block)
{
    const int digits = block.mid(1, 1).toInt();
    const int length = block.mid(2, digits).toInt();
    const QString content = block.mid(2 + digits);
    return block.startsWith(QLatin1Char('#')) && content.size() == length ? content : QString();
}

struct Record
{
    double value;
    QString unit;
    qint64 stampMs;
    int channel;
    int alarm;
};

/// Fetches all readings with all fields.
QList<Record> fetch(SimBench& bench)
{
    bench.ask(kAllFields);
    QList<Record> records;
    const QString content = blockContent(bench.ask("R?"));
    if (content.isEmpty()) {
        return records;
    }
    const QStringList fields = content.split(QLatin1Char(','));
    for (int i = 0; i + kFieldsOfARecord <= fields.size(); i += kFieldsOfARecord) {
        const DateTime stamp{fields[i + 1].toInt(),
                             fields[i + 2].toInt(),
                             fields[i + 3].toInt(),
                             fields[i + 4].toInt(),
                             fields[i + 5].toInt(),
                             fields[i + 6].section(QLatin1Char('.'), 0, 0).toInt(),
                             fields[i + 6].section(QLatin1Char('.'), 1, 1).toInt()};
        records.append({fields[i].section(QLatin1Char(' '), 0, 0).toDouble(),
                        fields[i].section(QLatin1Char(' '), 1, 1), toMilliseconds(stamp),
                        fields[i + 7].toInt(), fields[i + 8].toInt()});
    }
    return records;
}

InstrumentSetup setupAtRate(const SimBench::Slots& modules, double readingsPerSecond)
{
    InstrumentSetup setup = SimBench::setupWith(modules);
    setup.readingsPerSecond = readingsPerSecond;
    return setup;
}

} // namespace

/// The scan engine on the test's own clock: exact times, exact counts.
class TestSimEngine : public QObject
{
    Q_OBJECT

private slots:
    void readingIsThereWhenItsTimeIsOver();
    void recordsCarryTheFieldsThatTheFormatAsksFor();
    void recordIsAboutFiftyBytesAndSigned();
    void immediateSweepsFollowEachOther();
    void endlessScanRunsUntilAborted();
    void rateIsTheTotalOverAllChannels();
    void stampsOfAChannelDifferAtAnyRate();
    void timerStartsSweepsAtItsTicks();
    void timerTicksWithinASweepAreLeftOut();
    void timerOfZeroSweepsWithoutPause();
    void busTriggerStartsOneSweep();
    void externalAndAlarmTriggersStartOneSweep();
    void secondInitIsRefused();
    void initEmptiesTheMemory();
    void fetchingRemovesTheOldest();
    void fullMemoryDropsTheOldestAndTellsOnce();
    void memoryHoldsAHundredThousand();
    void scanListChangesWithTheNextScan();
    void channelSettingsChangeWithTheNextSweep();
    void measuringTimeFollowsTheSettings_data();
    void measuringTimeFollowsTheSettings();
    void thousandChannelsAtTenThousandReadings();
    void seedDecidesTheValues();
    void openChannelReadsOverload();
    void valueBeyondTheRangeReadsOverload();
    void fixedRangeReadsAFifthBeyondItsEnd();
    void negativeValueBeyondTheRangeReadsNegativeOverload();
    void linearScalingIsApplied();
    void percentReferenceIsTheFirstReadingUnlessSet();
    void percentOfZeroIsOverload();
    void decibelsAreApplied_data();
    void decibelsAreApplied();
    void emptyScaledUnitLeavesTheFunctionsUnit();
    void temperatureUnitIsApplied();
    void everyFunctionHasASignal();
    void wholeLineCyclesCancelTheHum_data();
    void wholeLineCyclesCancelTheHum();
    void noiseFallsWithTheAperture();
    void thermocoupleWarmsUpAndCoolsDown();
    void capacitorDischargesAndIsChargedAnew();
    void levelsDriftSlowly();
};

void TestSimEngine::readingIsThereWhenItsTimeIsOver()
{
    // 3 ms to switch and one cycle of 20 ms to integrate.
    SimBench bench;
    bench.ask("ROUT:SCAN (@101:103);:TRIG:COUN 1;:INIT");
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+0;+16"));
    bench.pass(23ms - 1ns);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+0"));
    bench.pass(1ns);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+1"));
    bench.pass(46ms - 1ns);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+2;+16"));
    bench.pass(1ns);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+3;+256"));
    bench.pass(10s);
    QCOMPARE(bench.ask("DATA:POIN?;:SYST:ERR?"), QStringLiteral("+3;+0,\"No error\""));
}

void TestSimEngine::recordsCarryTheFieldsThatTheFormatAsksFor()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101,102);:TRIG:COUN 4");
    bench.pass(1s);
    bench.ask("INIT");
    bench.pass(1s);
    const auto matches = [&bench](const char* pattern) {
        const QString content = blockContent(bench.ask("R? 1"));
        const QString whole = QStringLiteral("^%1$").arg(QString::fromLatin1(pattern));
        const bool fits = QRegularExpression(whole).match(content).hasMatch();
        return fits ? QString() : content;
    };
    constexpr const char* kOk = "";
    QCOMPARE(matches("\\+\\d\\.\\d{8}E[+-]\\d\\d"), QString::fromLatin1(kOk));
    bench.ask("FORM:READ:UNIT ON");
    QCOMPARE(matches("\\+\\S+ Vdc"), QString::fromLatin1(kOk));
    bench.ask("FORM:READ:TIME ON");
    QCOMPARE(matches("\\+\\S+ Vdc,\\+4\\.60000000E-02"), QString::fromLatin1(kOk));
    bench.ask("FORM:READ:TIME:TYPE ABS");
    QCOMPARE(matches("\\+\\S+ Vdc,2024,01,02,03,04,06\\.069"), QString::fromLatin1(kOk));
    bench.ask("FORM:READ:CHAN ON");
    QCOMPARE(matches("\\+\\S+ Vdc,2024,01,02,03,04,06\\.092,101"), QString::fromLatin1(kOk));
    bench.ask("FORM:READ:ALAR ON");
    QCOMPARE(matches("\\+\\S+ Vdc,2024,01,02,03,04,06\\.115,102,0"), QString::fromLatin1(kOk));
    QCOMPARE(bench.ask("SYST:TIME:SCAN?"), QStringLiteral("2024,01,02,03,04,06.000"));
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimEngine::recordIsAboutFiftyBytesAndSigned()
{
    SimBench bench;
    bench.ask(kAllFields);
    bench.ask("ROUT:SCAN (@101:120);:TRIG:COUN 5;:INIT");
    bench.pass(10s);
    const QString content = blockContent(bench.ask("R? 100"));
    // A comma follows each record but the last.
    QCOMPARE(content.size() + 1, 100 * 50);
    QVERIFY(content.startsWith(QLatin1Char('+')));
}

void TestSimEngine::immediateSweepsFollowEachOther()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101:110);:TRIG:COUN 3;:INIT");
    bench.pass(3 * 230ms - 1ns);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+29;+16"));
    bench.pass(1ns);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+30;+256"));
    const QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 30);
    for (int i = 0; i < records.size(); ++i) {
        QCOMPARE(records[i].channel, 101 + i % 10);
        QCOMPARE(records[i].stampMs, toMilliseconds({2024, 1, 2, 3, 4, 5, 0}) + i * 23);
    }
}

void TestSimEngine::endlessScanRunsUntilAborted()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN INF;:INIT");
    bench.pass(230s);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+10000;+16"));
    bench.ask("ABOR");
    bench.pass(10s);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+10000;+256"));
}

void TestSimEngine::rateIsTheTotalOverAllChannels()
{
    SimBench bench(setupAtRate({{1, 1}}, 100));
    bench.ask("ROUT:SCAN (@101:104);:INIT");
    bench.pass(1s);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+100"));
    const QList<Record> records = fetch(bench);
    QCOMPARE(records[99].channel, 104);
    QCOMPARE(records[99].stampMs - records[0].stampMs, qint64{990});
}

void TestSimEngine::stampsOfAChannelDifferAtAnyRate()
{
    // Ten readings a millisecond are requested; a single channel gives at most one.
    SimBench bench(setupAtRate({{1, 1}}, 10000));
    bench.ask("ROUT:SCAN (@101);:INIT");
    bench.pass(1s);
    const QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 1000);
    for (int i = 1; i < records.size(); ++i) {
        QCOMPARE(records[i].stampMs, records[i - 1].stampMs + 1);
    }
}

void TestSimEngine::timerStartsSweepsAtItsTicks()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101,102);:TRIG:SOUR TIM;TIM 2;COUN 3;:INIT");
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+16"));
    bench.pass(46ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+2;+32"));
    bench.pass(1954ms - 1ns);
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+32"));
    bench.pass(1ns);
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+16"));
    bench.pass(2046ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+6;+256"));
    const QList<Record> records = fetch(bench);
    const qint64 start = records[0].stampMs;
    QCOMPARE(records[2].stampMs - start, qint64{2000});
    QCOMPARE(records[4].stampMs - start, qint64{4000});
    QCOMPARE(records[5].stampMs - start, qint64{4023});
}

void TestSimEngine::timerTicksWithinASweepAreLeftOut()
{
    // A sweep of 230 ms on a timer of 100 ms starts at every third tick.
    SimBench bench;
    bench.ask("ROUT:SCAN (@101:110);:TRIG:SOUR TIM;TIM 0.1;COUN 2;:INIT");
    bench.pass(10s);
    const QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 20);
    QCOMPARE(records[10].stampMs - records[0].stampMs, qint64{300});
}

void TestSimEngine::timerOfZeroSweepsWithoutPause()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:SOUR TIM;TIM 0;COUN 3;:INIT");
    bench.pass(69ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+3;+256"));
}

void TestSimEngine::busTriggerStartsOneSweep()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:SOUR BUS;COUN 2;:INIT");
    bench.pass(10s);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+0;+32"));
    bench.ask("*TRG");
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+16"));
    bench.ask("*TRG");
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-211,\"Trigger ignored\""));
    bench.pass(23ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+1;+32"));
    bench.ask("*TRG");
    bench.pass(23ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+2;+256"));
}

void TestSimEngine::externalAndAlarmTriggersStartOneSweep()
{
    SimBench bench;
    ScanEngine& scan = bench.instrument().scan();
    bench.ask("ROUT:SCAN (@101);:TRIG:SOUR EXT;COUN 1;:INIT");
    QVERIFY(scan.trigger(TriggerSource::Bus, 0, bench.now()) == Refusal::NotWaiting);
    QVERIFY(scan.trigger(TriggerSource::External, 0, bench.now()) == Refusal::None);
    bench.pass(23ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+1;+256"));

    bench.ask("TRIG:SOUR ALAR2;:INIT");
    QVERIFY(scan.trigger(TriggerSource::Alarm, 1, bench.now()) == Refusal::NotWaiting);
    QVERIFY(scan.trigger(TriggerSource::Alarm, 2, bench.now()) == Refusal::None);
    bench.pass(23ms);
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+1;+256"));
}

void TestSimEngine::secondInitIsRefused()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:INIT;:INIT");
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-213,\"Init ignored\""));
    bench.pass(23ms);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+1"));
}

void TestSimEngine::initEmptiesTheMemory()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101:103);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+3"));
    bench.ask("INIT");
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+0"));
}

void TestSimEngine::fetchingRemovesTheOldest()
{
    SimBench bench;
    QCOMPARE(bench.ask("R? 5"), QStringLiteral("#10"));
    bench.ask("ROUT:SCAN (@101:110);:TRIG:COUN 1;:FORM:READ:CHAN ON;:INIT");
    bench.pass(1s);
    const QStringList first = blockContent(bench.ask("R? 3")).split(QLatin1Char(','));
    QCOMPARE(first.size(), 6);
    QCOMPARE(first[1], QStringLiteral("101"));
    QCOMPARE(first[5], QStringLiteral("103"));
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+7"));
    const QStringList rest = blockContent(bench.ask("r? 100")).split(QLatin1Char(','));
    QCOMPARE(rest.size(), 14);
    QCOMPARE(rest[1], QStringLiteral("104"));
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+0"));
    QCOMPARE(bench.ask("R? 0"), QString());
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-222,\"Data out of range\""));
}

void TestSimEngine::fullMemoryDropsTheOldestAndTellsOnce()
{
    InstrumentSetup setup = setupAtRate({{1, 1}}, 10);
    setup.memoryCapacity = 10;
    SimBench bench(setup);
    bench.ask("ROUT:SCAN (@101);:INIT");
    bench.pass(1s);
    QCOMPARE(bench.ask("DATA:POIN?;:SYST:ERR?"), QStringLiteral("+10;+0,\"No error\""));
    bench.pass(500ms);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+10"));
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-321,\"Out of memory\""));
    bench.pass(500ms);
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
    const QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 10);
    QCOMPARE(records[0].stampMs, toMilliseconds({2024, 1, 2, 3, 4, 6, 0}));
    bench.pass(2s);
    QCOMPARE(bench.ask("SYST:ERR?;:SYST:ERR?"),
             QStringLiteral("-321,\"Out of memory\";+0,\"No error\""));
    // A new scan begins with an empty memory.
    bench.ask("ABOR;:INIT");
    bench.pass(1s);
    QCOMPARE(bench.ask("DATA:POIN?;:SYST:ERR?"), QStringLiteral("+10;+0,\"No error\""));
    bench.pass(500ms);
    QCOMPARE(bench.ask("SYST:ERR?;:SYST:ERR?"),
             QStringLiteral("-321,\"Out of memory\";+0,\"No error\""));
}

void TestSimEngine::memoryHoldsAHundredThousand()
{
    SimBench bench(setupAtRate({{1, 8}}, 10000));
    bench.ask("ROUT:SCAN (@101:140);:INIT");
    bench.pass(10s);
    QCOMPARE(bench.ask("DATA:POIN?;:SYST:ERR?"), QStringLiteral("+100000;+0,\"No error\""));
    bench.pass(100us);
    QCOMPARE(bench.ask("DATA:POIN?;:SYST:ERR?"), QStringLiteral("+100000;-321,\"Out of memory\""));
}

void TestSimEngine::scanListChangesWithTheNextScan()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN 2;:INIT");
    bench.ask("ROUT:SCAN (@102);:TRIG:COUN 1");
    bench.pass(1s);
    QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 2);
    QCOMPARE(records[1].channel, 101);
    bench.ask("INIT");
    bench.pass(1s);
    records = fetch(bench);
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].channel, 102);
}

void TestSimEngine::channelSettingsChangeWithTheNextSweep()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN 3;:INIT");
    bench.pass(10ms);
    bench.ask("VOLT:NPLC 10,(@101)");
    bench.pass(10s);
    const QList<Record> records = fetch(bench);
    QCOMPARE(records[1].stampMs - records[0].stampMs, qint64{23});
    QCOMPARE(records[2].stampMs - records[1].stampMs, qint64{203});
}

void TestSimEngine::measuringTimeFollowsTheSettings_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<qint64>("milliseconds");

    const auto row = [](const char* settings, qint64 milliseconds) {
        QTest::newRow(settings) << QString::fromLatin1(settings) << milliseconds;
    };
    row("VOLT:NPLC 0.2,(@101)", 3 + 4);
    row("VOLT:NPLC 100,(@101)", 3 + 2000);
    row("ROUT:CHAN:DEL 1.5,(@101)", 3 + 20 + 1500);
    row("ROUT:CHAN:DEL 1.5,(@101);DEL:AUTO ON,(@101)", 3 + 20);
    row("FUNC \"RES\",(@101);:RES:OCOM ON,(@101)", 3 + 40);
    row("FUNC \"VOLT:AC\",(@101)", 3 + 250);
    row("FUNC \"VOLT:AC\",(@101);:VOLT:AC:BAND 200,(@101)", 3 + 25);
    row("FUNC \"FREQ\",(@101);:FREQ:VOLT:BAND 200,(@101)", 3 + 25);
    row("FUNC \"CAP\",(@101)", 3 + 100);
    row("FUNC \"TEMP:TC\",(@101);:TEMP:NPLC 10,(@101)", 3 + 200);
}

void TestSimEngine::measuringTimeFollowsTheSettings()
{
    QFETCH(QString, settings);
    SimBench bench;
    bench.ask(settings);
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN 2;:INIT");
    bench.pass(10s);
    const QList<Record> records = fetch(bench);
    QCOMPARE(records.size(), 2);
    QTEST(records[1].stampMs - records[0].stampMs, "milliseconds");
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimEngine::thousandChannelsAtTenThousandReadings()
{
    SimBench::Slots modules;
    for (int slot = 1; slot <= 25; ++slot) {
        modules[slot] = 8;
    }
    SimBench bench(setupAtRate(modules, 10000));
    bench.ask("ROUT:SCAN (@101:2540);:INIT");
    bench.pass(2s);
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+20000"));
    const QList<Record> records = fetch(bench);
    for (int i = 1000; i < records.size(); ++i) {
        QCOMPARE(records[i].channel, records[i - 1000].channel);
        QCOMPARE(records[i].stampMs - records[i - 1000].stampMs, qint64{100});
    }
}

void TestSimEngine::seedDecidesTheValues()
{
    const auto readings = [](std::uint64_t seed) {
        InstrumentSetup setup = SimBench::setupWith({{1, 1}});
        setup.seed = seed;
        SimBench bench(setup);
        bench.ask("ROUT:SCAN (@101:110);:TRIG:COUN 5;:INIT");
        bench.pass(5s);
        return bench.ask("R?");
    };
    QCOMPARE(readings(7), readings(7));
    QVERIFY(readings(7) != readings(8));
}

void TestSimEngine::openChannelReadsOverload()
{
    InstrumentSetup setup = SimBench::setupWith({{1, 1}});
    setup.openChannels = {102};
    SimBench bench(setup);
    bench.ask("CALC:SCAL:GAIN 2,(@102);STAT ON,(@102)");
    bench.ask("ROUT:SCAN (@101,102);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    const QString content = blockContent(bench.ask("R? 2"));
    QCOMPARE(content.section(QLatin1Char(','), 1, 1), QStringLiteral("+9.90000000E+37"));
    QVERIFY(content.section(QLatin1Char(','), 0, 0).toDouble() < 2);
}

void TestSimEngine::valueBeyondTheRangeReadsOverload()
{
    // Position 1 carries about 1 V.
    SimBench bench;
    bench.ask("VOLT:RANG 0.1,(@101);:ROUT:SCAN (@101);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    QCOMPARE(blockContent(bench.ask("R? 1")), QStringLiteral("+9.90000000E+37"));
    bench.ask("VOLT:RANG:AUTO ON,(@101);:INIT");
    bench.pass(1s);
    QVERIFY(std::fabs(blockContent(bench.ask("R? 1")).toDouble() - 1) < 0.05);
    // A frequency's range applies to the voltage: 50 Hz do not exceed 0.1 V.
    bench.ask("FUNC \"FREQ\",(@101);:FREQ:VOLT:RANG 0.1,(@101);:INIT");
    bench.pass(1s);
    QVERIFY(std::fabs(blockContent(bench.ask("R? 1")).toDouble() - 50) < 0.1);
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimEngine::fixedRangeReadsAFifthBeyondItsEnd()
{
    // Position 3 carries 0.12 uF and drifts by 0.3 % to either side within three minutes.
    const auto farads = [](const char* range) {
        SimBench bench;
        bench.ask("FUNC \"CAP\",(@103);:ROUT:SCAN (@103);:TRIG:SOUR TIM;TIM 1;COUN 180");
        bench.ask(QStringLiteral("CAP:%1,(@103);:INIT").arg(QString::fromLatin1(range)));
        bench.pass(180s);
        return fetch(bench);
    };
    const QList<Record> automatic = farads("RANG:AUTO ON");
    const QList<Record> fixed = farads("RANG 1e-7");
    QCOMPARE(automatic.size(), 180);
    QCOMPARE(fixed.size(), 180);
    int beyond = 0;
    for (int i = 0; i < 180; ++i) {
        const double value = automatic[i].value;
        QVERIFY(std::fabs(value - 1.2e-7) < 0.005 * 1.2e-7);
        QCOMPARE(fixed[i].value, value > 1.2e-7 ? 9.9e37 : value);
        beyond += value > 1.2e-7 ? 1 : 0;
    }
    QVERIFY2(beyond > 45 && beyond < 135, qPrintable(QString::number(beyond)));
}

void TestSimEngine::negativeValueBeyondTheRangeReadsNegativeOverload()
{
    // At position 40 nothing is left of the capacitor's charge after 239 s but the hum of 10.75 V:
    // 0.215 V high, and a fiftieth of a cycle does not cancel it.
    const auto volts = [](const char* range) {
        SimBench bench;
        bench.pass(239s);
        bench.ask("VOLT:NPLC 0.02,(@340);:ROUT:SCAN (@340);:TRIG:COUN 50");
        bench.ask(QStringLiteral("VOLT:%1,(@340);:INIT").arg(QString::fromLatin1(range)));
        bench.pass(500ms);
        return fetch(bench);
    };
    const QList<Record> automatic = volts("RANG:AUTO ON");
    const QList<Record> fixed = volts("RANG 0.1");
    QCOMPARE(automatic.size(), 50);
    QCOMPARE(fixed.size(), 50);
    int below = 0;
    for (int i = 0; i < 50; ++i) {
        const double value = automatic[i].value;
        const bool isBeyond = std::fabs(value) > 0.12;
        QCOMPARE(fixed[i].value, isBeyond ? std::copysign(9.9e37, value) : value);
        below += value < -0.12 ? 1 : 0;
    }
    QVERIFY2(below > 5, qPrintable(QString::number(below)));
}

void TestSimEngine::linearScalingIsApplied()
{
    SimBench bench;
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    const double plain = fetch(bench)[0].value;
    SimBench scaled;
    scaled.ask("CALC:SCAL:GAIN -2,(@101);OFFS 10,(@101);UNIT \"bar\",(@101);STAT ON,(@101)");
    scaled.ask("ROUT:SCAN (@101);:TRIG:COUN 1;:INIT");
    scaled.pass(1s);
    const Record record = fetch(scaled)[0];
    QVERIFY(std::fabs(record.value - (10 - 2 * plain)) < 1e-6);
    QCOMPARE(record.unit, QStringLiteral("bar"));
}

void TestSimEngine::percentReferenceIsTheFirstReadingUnlessSet()
{
    SimBench bench;
    bench.ask("CALC:SCAL:FUNC PCT,(@101);STAT ON,(@101);:ROUT:SCAN (@101);:TRIG:COUN 2;:INIT");
    bench.pass(1s);
    QList<Record> records = fetch(bench);
    QCOMPARE(records[0].value, 0.0);
    QVERIFY(records[1].value != 0.0);
    QVERIFY(std::fabs(records[1].value) < 1);
    QCOMPARE(records[0].unit, QStringLiteral("PCT"));
    bench.ask("CALC:SCAL:REF 0.5,(@101);:INIT");
    bench.pass(1s);
    // About 1 V is twice the reference: 100 per cent above it.
    QVERIFY(std::fabs(fetch(bench)[0].value - 100) < 10);
}

void TestSimEngine::percentOfZeroIsOverload()
{
    SimBench bench;
    bench.ask("CALC:SCAL:FUNC PCT,(@101);REF 0,(@101);STAT ON,(@101)");
    bench.ask("ROUT:SCAN (@101);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    QCOMPARE(fetch(bench)[0].value, 9.9e37);
}

void TestSimEngine::decibelsAreApplied_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<double>("level");
    QTest::addColumn<double>("levelInDbm");
    // 1 V at 50 ohms is (1 V)^2 / 50 ohms = 20 mW, and 10 log 20 = 13.0103.
    QTest::newRow("voltage") << QStringLiteral("101") << 1.0 << 13.0102999566;
    // 50 mA through 50 ohms are (0.05 A)^2 * 50 ohms = 125 mW, and 10 log 125 = 20.9691.
    QTest::newRow("current") << QStringLiteral("121") << 0.05 << 20.9691001301;
}

void TestSimEngine::decibelsAreApplied()
{
    QFETCH(QString, channel);
    QFETCH(double, level);
    QFETCH(double, levelInDbm);
    const auto reading = [&channel](const char* settings) {
        SimBench bench;
        bench.ask(QString::fromLatin1(settings).replace(QLatin1Char('#'), channel));
        bench.ask(QStringLiteral("ROUT:SCAN (@%1);:TRIG:COUN 1;:INIT").arg(channel));
        bench.pass(1s);
        return fetch(bench)[0];
    };
    const double plain = reading("CALC:SCAL:STAT OFF,(@#)").value;
    QVERIFY(std::fabs(plain / level - 1) < 0.03);
    // The power grows with the square of either, whatever the resistance.
    const double dbm = levelInDbm + 20 * std::log10(plain / level);

    Record record = reading("CALC:SCAL:FUNC DBM,(@#);STAT ON,(@#);DBM:REF 50,(@#)");
    QVERIFY(std::fabs(record.value - dbm) < 1e-6);
    QCOMPARE(record.unit, QStringLiteral("DBM"));

    record =
        reading("CALC:SCAL:FUNC DB,(@#);STAT ON,(@#);DBM:REF 50,(@#);:CALC:SCAL:DB:REF 3,(@#)");
    QVERIFY(std::fabs(record.value - (dbm - 3)) < 1e-6);
    QCOMPARE(record.unit, QStringLiteral("DB"));
}

void TestSimEngine::emptyScaledUnitLeavesTheFunctionsUnit()
{
    SimBench bench;
    bench.ask("CALC:SCAL:UNIT \"\",(@101);STAT ON,(@101);:ROUT:SCAN (@101);:TRIG:COUN 1;:INIT");
    bench.pass(1s);
    QCOMPARE(fetch(bench)[0].unit, QStringLiteral("Vdc"));
}

void TestSimEngine::temperatureUnitIsApplied()
{
    const auto reading = [](const char* unit) {
        SimBench bench;
        bench.ask("FUNC \"TEMP:TC\",(@101);:ROUT:SCAN (@101);:TRIG:COUN 1");
        bench.ask(QStringLiteral("UNIT:TEMP %1,(@101);:INIT").arg(QString::fromLatin1(unit)));
        bench.pass(1s);
        return fetch(bench)[0];
    };
    const Record celsius = reading("C");
    const Record fahrenheit = reading("F");
    const Record kelvin = reading("K");
    QVERIFY(celsius.value > 15 && celsius.value < 35);
    QVERIFY(std::fabs(fahrenheit.value - (celsius.value * 1.8 + 32)) < 1e-5);
    QVERIFY(std::fabs(kelvin.value - (celsius.value + 273.15)) < 1e-5);
    QCOMPARE(celsius.unit, QStringLiteral("C"));
    QCOMPARE(fahrenheit.unit, QStringLiteral("F"));
    QCOMPARE(kelvin.unit, QStringLiteral("K"));
}

void TestSimEngine::everyFunctionHasASignal()
{
    const SignalSource source(1);
    for (const FunctionInfo& function : functions()) {
        const Signal& signal = function.signal;
        QVERIFY(source.value(101, signal, 1s, 0.02, 1) > 0);
        QVERIFY(source.value(101, signal, 1s, 0.02, 1) != source.value(101, signal, 1s, 0.02, 2));
        QVERIFY(source.value(101, signal, 1s, 0.02, 1) != source.value(102, signal, 1s, 0.02, 1));
    }
    QCOMPARE(source.value(101, noFunction().signal, 1s, 0.02, 1), 0.0);
}

namespace {

const Signal& signalOf(const char* function)
{
    return functionCalled(QString::fromLatin1(function)).signal;
}

/// Standard deviation of a thousand readings of one channel.
double spread(const char* function, double apertureS, Instant step)
{
    const SignalSource source(1);
    const Signal& signal = signalOf(function);
    constexpr int kReadings = 1000;
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < kReadings; ++i) {
        const double value = source.value(101, signal, i * step, apertureS, std::uint64_t(i));
        sum += value;
        squares += value * value;
    }
    const double mean = sum / kReadings;
    return std::sqrt(squares / kReadings - mean * mean);
}

} // namespace

void TestSimEngine::wholeLineCyclesCancelTheHum_data()
{
    QTest::addColumn<double>("cycles");
    QTest::addColumn<bool>("hums");
    QTest::newRow("0.02") << 0.02 << true;
    QTest::newRow("0.2") << 0.2 << true;
    QTest::newRow("1") << 1.0 << false;
    QTest::newRow("10") << 10.0 << false;
}

void TestSimEngine::wholeLineCyclesCancelTheHum()
{
    QFETCH(double, cycles);
    // The hum at 1 V is 20 mV high, the noise of one cycle 0.1 mV.
    QTEST(spread("VOLT", cycles / 50, 1ms) > 5e-3, "hums");
    QVERIFY(spread("VOLT", cycles / 50, 1ms) > 1e-6);
}

void TestSimEngine::noiseFallsWithTheAperture()
{
    // All at the same moment, so that they differ only by noise.
    const double atOneCycle = spread("VOLT:AC", 0.02, 0ms);
    const double atHundred = spread("VOLT:AC", 2, 0ms);
    QVERIFY(atOneCycle > 3e-4 && atOneCycle < 1e-3);
    QVERIFY(std::fabs(atOneCycle / atHundred - 10) < 0.01);
}

void TestSimEngine::thermocoupleWarmsUpAndCoolsDown()
{
    const SignalSource source(1);
    const auto celsius = [&source](std::chrono::seconds at) {
        return source.value(101, signalOf("TEMP:TC"), at, 0.02, 1);
    };
    QVERIFY(std::fabs(celsius(0s) - 21) < 0.1);
    for (int s = 0; s < 100; s += 10) {
        QVERIFY(celsius(std::chrono::seconds(s + 10)) > celsius(std::chrono::seconds(s)) + 0.5);
    }
    // It ends 30 degrees higher, and each position 5 degrees above the one before.
    QVERIFY(std::fabs(celsius(599s) - 51) < 0.1);
    QVERIFY(std::fabs(source.value(103, signalOf("TEMP:TC"), 599s, 0.02, 1) - 61) < 0.1);
    QVERIFY(celsius(650s) < 45);
    QVERIFY(std::fabs(celsius(1199s) - 21) < 0.1);
    QVERIFY(std::fabs(celsius(1260s) - celsius(60s)) < 0.1);
}

void TestSimEngine::capacitorDischargesAndIsChargedAnew()
{
    const SignalSource source(1);
    const auto volts = [&source](std::chrono::seconds at) {
        return source.value(104, signalOf("VOLT"), at, 0.02, 1);
    };
    QVERIFY(std::fabs(volts(0s) - 10) < 0.01);
    // Equal times remove equal fractions.
    const double part = volts(20s) / volts(0s);
    QVERIFY(part > 0.5 && part < 0.75);
    QVERIFY(std::fabs(volts(40s) / volts(20s) - part) < 1e-3);
    QVERIFY(std::fabs(volts(60s) / volts(40s) - part) < 1e-3);
    QVERIFY(volts(239s) < 0.2);
    QVERIFY(std::fabs(volts(240s) - 10) < 0.01);
    // Its neighbours have none.
    QVERIFY(source.value(103, signalOf("VOLT"), 239s, 0.02, 1) > 1.4);
}

void TestSimEngine::levelsDriftSlowly()
{
    const SignalSource source(1);
    double lowest = 2;
    double highest = 0;
    double before = source.value(101, signalOf("VOLT"), 0s, 0.02, 1);
    for (int s = 1; s <= 200; ++s) {
        const double volts = source.value(101, signalOf("VOLT"), std::chrono::seconds(s), 0.02, 1);
        QVERIFY(std::fabs(volts - before) < 2.2e-3);
        before = volts;
        lowest = std::min(lowest, volts);
        highest = std::max(highest, volts);
    }
    QVERIFY(lowest > 0.97 && lowest < 0.985);
    QVERIFY(highest > 1.015 && highest < 1.03);
}

SCN_TEST(TestSimEngine, testprogram::NoApplication)
#include "test_simengine.moc"
