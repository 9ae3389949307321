#include "app/instrumentreadback.h"
#include "app/linkwatch.h"
#include "common/guigate.h"
#include "fakedisplay.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "support/fakeinstrument.h"
#include "support/testprogram.h"
#include "support/texts.h"

#include <QThread>
#include <QtTest>

#include <atomic>
#include <initializer_list>
#include <memory>

namespace {

/// The same lines for another channel than 101.
QStringList forChannel(QStringList lines, int channel)
{
    return lines.replaceInStrings(QStringLiteral("101"), QString::number(channel));
}

QStringList slotQueries(int first, int last)
{
    QStringList lines;
    for (int slot = first; slot <= last; ++slot) {
        lines.append(QStringLiteral("SYST:CTYP? %1").arg(slot));
    }
    return lines;
}

const QStringList kScalingQueries =
    texts({"CALC:SCAL:GAIN? (@101)", "CALC:SCAL:OFFS? (@101)", "CALC:SCAL:STAT? (@101)",
           "CALC:SCAL:UNIT? (@101)", "CALC:SCAL:FUNC? (@101)", "CALC:SCAL:REF:AUTO? (@101)",
           "CALC:SCAL:REF? (@101)", "CALC:SCAL:DBM:REF? (@101)", "CALC:SCAL:DB:REF? (@101)"});

const QStringList kVoltageQueries =
    texts({"ROUT:CHAN:LAB? (@101)", "FUNC? (@101)", "VOLT:DC:RANG:AUTO? (@101)",
           "ROUT:CHAN:DEL:AUTO? (@101)", "VOLT:DC:NPLC? (@101)", "INP:IMP:AUTO? (@101)",
           "VOLT:REF? (@101)"}) +
    kScalingQueries;

const QStringList kTriggerQueries =
    texts({"TRIG:SOUR?", "TRIG:COUN?", "MMEM:LOG:ENAB?", "MMEM:FORM:READ:RLIM?",
           "MMEM:FORM:READ:RLIM:COUN?", "ROUT:MON:STAT?", "STAT:OPER:COND?"});

const QStringList kStateQueries =
    texts({"SYST:PERS:MOD:DEF?", "SYST:PERS:MOD?", "MEM:STAT:NAME? 1", "MEM:STAT:VAL? 1",
           "MEM:STAT:NAME? 2", "MEM:STAT:VAL? 2", "MEM:STAT:NAME? 3", "MEM:STAT:VAL? 3",
           "MEM:STAT:NAME? 4", "MEM:STAT:VAL? 4", "MEM:STAT:NAME? 5", "MEM:STAT:VAL? 5"});

const QStringList kTriggerShown =
    texts({"trigger immediate", "sweeps without end", "usb off", "limit on", "rows 65536"});

/// What the scaling of the instrument at rest shows.
const QStringList kScalingShown =
    texts({"option 101 Gain 1", "option 101 Offset 0", "option 101 ScalingOn false",
           "option 101 Unit ", "option 101 ScaleFunctionList [4]", "option 101 ScaleFunctionRow 0",
           "option 101 PercentReference 0", "option 101 DbmReferenceResistance 600",
           "option 101 DbReference 0"});

const QStringList kVoltageShown =
    texts({"function 101 '直流电压'", "option 101 RangeList [6]", "option 101 RangeRow 0",
           "option 101 DelayAutomatic true", "option 101 TemperatureUnitList [0]",
           "option 101 Nplc 1", "option 101 InputImpedanceAuto false"}) +
    kScalingShown;

} // namespace

/// The dialogue of the read-back, and what is shown of it, without a window.
class TestInstrumentReadBack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void searchAsksEverySlot();
    void searchEndsWithoutIdentity();
    void searchEndsWithoutConnection();
    void moduleWithSilentChannelsIsForgotten();
    void moduleThatLosesTheLinkIsForgotten();
    void moduleWithRowsStaysWhenSilent();
    void searchThatLosesTheLinkFails();

    void everythingIsReadInThisOrder();
    void scanListIsShownUnlessEmpty();
    void runningInstrumentIsStopped();
    void triggerSettings_data();
    void triggerSettings();

    void optionsOfAFunction_data();
    void optionsOfAFunction();
    void scalingIsShown();
    void garbageReadsAsDefaults();
    void missingReplyReadsAsADefault();
    void channelWithoutARowIsNotAskedForOptions();

    void lostLinkEndsTheDialogue();
    void aMinuteOfSilenceEndsTheDialogue();
    void helperShowsOnTheGuiThread();
    void closedGateShowsNothing();

private:
    scn::InstrumentReadBack readBack() { return {*m_link, *m_display}; }
    void expectClock(QStringList& lines) const;

    std::unique_ptr<FakeInstrument> m_instrument;
    std::unique_ptr<FakeDisplay> m_display;
    std::shared_ptr<scn::GuiGate> m_gate;
    std::unique_ptr<scn::LinkWatch> m_link;
};

void TestInstrumentReadBack::init()
{
    m_instrument = std::make_unique<FakeInstrument>();
    m_display = std::make_unique<FakeDisplay>();
    m_gate = std::make_shared<scn::GuiGate>();
    m_link = std::make_unique<scn::LinkWatch>(m_gate);
    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");
    QVERIFY(g_visa->connectDevice(g_resourceName));
    g_instrumentId.clear();
    g_instrumentConnected = true;
    for (int slot = 0; slot <= kSlotCount; ++slot) {
        slotPresent[slot] = false;
        slotModuleType[slot] = 0;
        slotLastChannel[slot] = 0;
    }
}

void TestInstrumentReadBack::cleanup()
{
    m_gate->close();
    m_link.reset();
    m_gate.reset();
    m_display.reset();
    m_instrument.reset();
    g_instrumentConnected = false;
}

void TestInstrumentReadBack::searchAsksEverySlot()
{
    g_instrumentConnected = false;
    m_instrument->putModule(3, QStringLiteral("SCN4005A"));
    QVERIFY(readBack().discover());
    QCOMPARE(m_instrument->takeLines(), texts({"*CLS", "*IDN?"}) + slotQueries(1, 3) +
                                            texts({"FUNC? (@301)", "FUNC? (@302)"}) +
                                            slotQueries(4, kSlotCount));
    QCOMPARE(m_display->takeShown(), texts({"found"}));
    QCOMPARE(g_instrumentId, QStringLiteral("MAKER SCN4070A SN0001 1.00"));
    QVERIFY(g_instrumentConnected);
    for (int slot = 1; slot <= kSlotCount; ++slot) {
        QCOMPARE(slotPresent[slot], slot == 3);
    }
    QCOMPARE(slotLastChannel[3], 1);
}

void TestInstrumentReadBack::searchEndsWithoutIdentity()
{
    g_instrumentConnected = false;
    m_instrument->setReply(QStringLiteral("*IDN?"), QString());
    QVERIFY(!readBack().discover());
    QCOMPARE(m_instrument->takeLines(), texts({"*CLS", "*IDN?"}));
    QCOMPARE(m_display->takeShown(), QStringList());
    QVERIFY(!g_instrumentConnected);
}

void TestInstrumentReadBack::searchEndsWithoutConnection()
{
    g_instrumentConnected = false;
    m_instrument->visa().fail(FakeVisa::Operation::Open, scn::visa::VI_ERROR_CONN_LOST);
    QVERIFY(!readBack().discover());
    QCOMPARE(m_instrument->takeLines(), QStringList());
    QCOMPARE(m_display->takeShown(), QStringList());
    QVERIFY(!g_instrumentConnected);
}

void TestInstrumentReadBack::moduleWithSilentChannelsIsForgotten()
{
    m_instrument->putModule(3, QStringLiteral("SCN4005A"));
    m_instrument->whenAsked(QStringLiteral("FUNC? (@301)"),
                            [this] { m_instrument->setSilent(true); });
    m_instrument->whenAsked(QStringLiteral("SYST:CTYP? 4"),
                            [this] { m_instrument->setSilent(false); });
    slotModuleType[3] = 7;
    slotLastChannel[3] = 11;
    QVERIFY(readBack().discover());
    QVERIFY(!slotPresent[3]);
    QCOMPARE(slotModuleType[3], 7);
    QCOMPARE(slotLastChannel[3], 11);
    QCOMPARE(m_instrument->takeLines().last(), QStringLiteral("SYST:CTYP? 15"));
}

/// Its channels alone are silent for more than the minute.
void TestInstrumentReadBack::moduleThatLosesTheLinkIsForgotten()
{
    m_instrument->putModule(3, QStringLiteral("SCN4000A"));
    m_instrument->whenAsked(QStringLiteral("FUNC? (@301)"),
                            [this] { m_instrument->setSilent(true); });
    QVERIFY(!readBack().discover());
    QVERIFY(m_link->isLost());
    QVERIFY(!slotPresent[3]);
}

void TestInstrumentReadBack::moduleWithRowsStaysWhenSilent()
{
    m_display->builtSlots.insert(3);
    m_instrument->putModule(3, QStringLiteral("SCN4005A"));
    m_instrument->whenAsked(QStringLiteral("FUNC? (@301)"),
                            [this] { m_instrument->setSilent(true); });
    m_instrument->whenAsked(QStringLiteral("SYST:CTYP? 4"),
                            [this] { m_instrument->setSilent(false); });
    QVERIFY(readBack().discover());
    QVERIFY(slotPresent[3]);
    QCOMPARE(slotLastChannel[3], 1);
}

void TestInstrumentReadBack::searchThatLosesTheLinkFails()
{
    m_instrument->whenAsked(QStringLiteral("SYST:CTYP? 5"),
                            [this] { m_instrument->visa().dropConnection(); });
    QVERIFY(!readBack().discover());
    QCOMPARE(m_instrument->takeLines(), texts({"*CLS", "*IDN?"}) + slotQueries(1, 5));
    QCOMPARE(m_display->takeShown(), texts({"found"}));
    QVERIFY(!g_instrumentConnected);
}

/// Checks the two lines that set the clock and takes them out.
void TestInstrumentReadBack::expectClock(QStringList& lines) const
{
    const int place = lines.indexOf(QStringLiteral("STAT:OPER:COND?")) + 1;
    QVERIFY(lines.size() > place + 1);
    QVERIFY(lines.at(place).startsWith(QStringLiteral("SYST:DATE ")));
    QVERIFY(lines.at(place + 1).startsWith(QStringLiteral("SYST:TIME ")));
    lines.erase(lines.begin() + place, lines.begin() + place + 2);
}

void TestInstrumentReadBack::everythingIsReadInThisOrder()
{
    slotPresent[1] = true;
    slotPresent[2] = true; // a module without channels
    slotLastChannel[2] = -1;
    slotPresent[4] = true;
    m_instrument->setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#210(@101,401)"));
    readBack().readAll();
    QStringList lines = m_instrument->takeLines();
    expectClock(lines);
    QCOMPARE(lines, texts({"STAT:OPER:EVEN?", "ROUT:SCAN?"}) + kVoltageQueries +
                        forChannel(kVoltageQueries, 401) + kTriggerQueries + kStateQueries);
    QCOMPARE(m_display->takeShown(), texts({"scan 101 401"}) + kVoltageShown +
                                         forChannel(kVoltageShown, 401) + kTriggerShown +
                                         texts({"done"}));
}

void TestInstrumentReadBack::scanListIsShownUnlessEmpty()
{
    readBack().readAll();
    QCOMPARE(m_display->takeShown(), kTriggerShown + texts({"done"}));
    m_instrument->setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("(@)"));
    readBack().readAll();
    QVERIFY(m_display->takeShown().first().startsWith(QStringLiteral("scan")));
}

void TestInstrumentReadBack::runningInstrumentIsStopped()
{
    m_instrument->setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+272"));
    readBack().readAll();
    const QStringList lines = m_instrument->takeLines();
    QCOMPARE(lines.count(QStringLiteral("ABOR")), 1);
    QCOMPARE(lines.indexOf(QStringLiteral("ABOR")),
             lines.indexOf(QStringLiteral("STAT:OPER:COND?")) + 1);
}

void TestInstrumentReadBack::triggerSettings_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QStringList>("shown");
    const auto row = [](const char* name, const char* query, const char* reply,
                        std::initializer_list<const char*> shown) {
        QTest::newRow(name) << QString::fromLatin1(query) << QString::fromLatin1(reply)
                            << texts(shown);
    };
    row("alarm", "TRIG:SOUR?", "ALAR3", {"trigger alarm", "sweeps without end"});
    row("timer", "TRIG:SOUR?", "TIM", {"trigger timer", "interval 0", "sweeps without end"});
    row("external", "TRIG:SOUR?", "EXT", {"sweeps without end"});
    row("no source", "TRIG:SOUR?", "", {"sweeps without end"});
    row("lower case", "TRIG:SOUR?", "imm", {"sweeps without end"});
    row("count", "TRIG:COUN?", "+1.20000000E+01", {"trigger immediate", "sweeps 12"});
    row("cut count", "TRIG:COUN?", "2.9", {"trigger immediate", "sweeps 2"});
    row("huge count", "TRIG:COUN?", "8E+37", {"trigger immediate", "sweeps 2147483647"});
    row("low count", "TRIG:COUN?", "-8E+37", {"trigger immediate", "sweeps -2147483648"});
    row("no number", "TRIG:COUN?", "nan", {"trigger immediate", "sweeps 0"});
    row("garbage count", "TRIG:COUN?", "twelve", {"trigger immediate", "sweeps 0"});
}

void TestInstrumentReadBack::triggerSettings()
{
    QFETCH(QString, query);
    QFETCH(QString, reply);
    QFETCH(QStringList, shown);
    m_instrument->setReply(query, reply);
    readBack().readAll();
    QCOMPARE(m_display->takeShown(), shown + texts({"usb off", "limit on", "rows 65536", "done"}));
}

void TestInstrumentReadBack::optionsOfAFunction_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QStringList>("queries");
    QTest::addColumn<QStringList>("shown");
    const auto row = [](const char* reply, std::initializer_list<const char*> queries,
                        std::initializer_list<const char*> shown) {
        QTest::newRow(reply) << QString::fromLatin1(reply) << texts(queries) << texts(shown);
    };
    const char* const delay = "ROUT:CHAN:DEL:AUTO? (@101)";
    const char* const automatic = "option 101 DelayAutomatic true";
    row("\"VOLT:AC\"",
        {"VOLT:AC:RANG:AUTO? (@101)", "VOLT:AC:RANG? (@101)", delay, "VOLT:AC:BAND? (@101)"},
        {"option 101 RangeRow 0", automatic, "option 101 LowFrequency 0"});
    row("\"FREQ\"",
        {"FREQ:VOLT:RANG:AUTO? (@101)", "FREQ:VOLT:RANG? (@101)", delay, "FREQ:RANG:LOW? (@101)"},
        {"option 101 RangeRow 0", automatic, "option 101 LowFrequency 0"});
    row("\"FRES\"",
        {"FRES:RANG:AUTO? (@101)", "FRES:RANG? (@101)", delay, "FRES:NPLC? (@101)",
         "FRES:OCOM? (@101)"},
        {"option 101 RangeRow 0", automatic, "option 101 Nplc 0",
         "option 101 OffsetCompensation false"});
    row("\"TEMP:TC\"",
        {"TEMP:TRAN:TYPE? (@101)", "TEMP:TRAN:TC:TYPE? (@101)", delay, "TEMP:NPLC? (@101)",
         "UNIT:TEMP? (@101)", "TEMP:TRAN:TC:RJUN:TYPE? (@101)", "TEMP:TRAN:TC:RJUN? (@101)"},
        {automatic, "option 101 Nplc 0", "option 101 TemperatureUnit C",
         "option 101 RefJunctionFixed true", "option 101 FixedJunctionTemp 0"});
    row("\"TEMP:FRTD\"",
        {"TEMP:TRAN:TYPE? (@101)", delay, "TEMP:NPLC? (@101)", "UNIT:TEMP? (@101)",
         "TEMP:TRAN:FRTD:REF? (@101)", "TEMP:TRAN:FRTD:RES? (@101)", "TEMP:TRAN:RTD:TYPE? (@101)"},
        {automatic, "option 101 Nplc 0", "option 101 TemperatureUnit C", "option 101 RtdR0 0"});
    row("\"STR:DIR\"", {delay, "STR:NPLC? (@101)", "STR:GFAC? (@101)", "STR:RES? (@101)"},
        {automatic, "option 101 Nplc 0", "option 101 GaugeFactor 0",
         "option 101 StrainResistance 0"});
    row("\"DIOD\"", {delay}, {automatic});
    row("\"CURR\"",
        {"CURR:DC:RANG:AUTO? (@101)", "CURR:DC:RANG? (@101)", delay, "CURR:DC:NPLC? (@101)"},
        {"option 101 RangeRow 0", automatic, "option 101 Nplc 0"});
}

void TestInstrumentReadBack::optionsOfAFunction()
{
    QFETCH(QString, reply);
    QFETCH(QStringList, queries);
    QFETCH(QStringList, shown);
    m_instrument->setReply(QStringLiteral("FUNC?"), reply);
    readBack().readChannel(101);
    QCOMPARE(m_instrument->takeLines(),
             texts({"ROUT:CHAN:LAB? (@101)", "FUNC? (@101)"}) + queries + kScalingQueries);
    const QStringList lines = m_display->takeShown();
    QVERIFY(lines.first().startsWith(QStringLiteral("function 101 '")));
    QVERIFY(lines.first() != QStringLiteral("function 101 ''"));
    // The lists are the catalogue's: they come first, and before the options and the scale function.
    QStringList values = lines.mid(1);
    values = values.filter(QRegularExpression(QStringLiteral("^(?!.*List)")));
    QCOMPARE(values.mid(0, shown.size()), shown);
    QVERIFY(lines.at(1).startsWith(QStringLiteral("option 101 RangeList")));
}

void TestInstrumentReadBack::scalingIsShown()
{
    m_instrument->setReply(QStringLiteral("CALC:SCAL:GAIN?"), QStringLiteral("+2.5E+00"));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:OFFS?"), QStringLiteral("-1.0E-01"));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:STAT?"), QStringLiteral("1"));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:UNIT?"), QStringLiteral("\"#F\""));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:FUNC?"), QStringLiteral("DBM"));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:REF?"), QStringLiteral("3"));
    m_instrument->setReply(QStringLiteral("CALC:SCAL:DB:REF?"), QStringLiteral("4"));
    readBack().readOptions(0, 101);
    QCOMPARE(m_display->takeShown().mid(kVoltageShown.size() - kScalingShown.size() - 1),
             texts({"option 101 Gain 2.5", "option 101 Offset -0.1", "option 101 ScalingOn true",
                    "option 101 Unit °F", "option 101 ScaleFunctionList [4]",
                    "option 101 ScaleFunctionRow 2", "option 101 PercentReference 3",
                    "option 101 DbmReferenceResistance 600", "option 101 DbReference 4"}));
}

void TestInstrumentReadBack::garbageReadsAsDefaults()
{
    for (const char* query :
         {"FUNC?", "VOLT:DC:RANG:AUTO?", "VOLT:DC:RANG?", "ROUT:CHAN:DEL:AUTO?", "ROUT:CHAN:DEL?",
          "VOLT:DC:NPLC?", "INP:IMP:AUTO?", "CALC:SCAL:GAIN?", "CALC:SCAL:OFFS?", "CALC:SCAL:STAT?",
          "CALC:SCAL:UNIT?", "CALC:SCAL:FUNC?", "CALC:SCAL:REF?", "CALC:SCAL:DBM:REF?",
          "CALC:SCAL:DB:REF?"}) {
        m_instrument->setReply(QString::fromLatin1(query), QStringLiteral("\"gar;bage\x01\""));
    }
    readBack().readChannel(101);
    QCOMPARE(m_instrument->takeLines(),
             texts({"ROUT:CHAN:LAB? (@101)", "FUNC? (@101)", "VOLT:DC:RANG:AUTO? (@101)",
                    "VOLT:DC:RANG? (@101)", "ROUT:CHAN:DEL:AUTO? (@101)", "ROUT:CHAN:DEL? (@101)",
                    "VOLT:DC:NPLC? (@101)", "INP:IMP:AUTO? (@101)", "VOLT:REF? (@101)"}) +
                 kScalingQueries);
    QCOMPARE(m_display->takeShown(),
             texts({"function 101 ''", "option 101 RangeList [6]", "option 101 RangeRow 0",
                    "option 101 DelaySeconds 0", "option 101 TemperatureUnitList [0]",
                    "option 101 Nplc 0", "option 101 InputImpedanceAuto false", "option 101 Gain 0",
                    "option 101 Offset 0", "option 101 ScalingOn false",
                    "option 101 Unit gar;bage\x01", "option 101 ScaleFunctionList [4]",
                    "option 101 ScaleFunctionRow 0", "option 101 PercentReference 0",
                    "option 101 DbmReferenceResistance 0", "option 101 DbReference 0"}));
}

void TestInstrumentReadBack::missingReplyReadsAsADefault()
{
    m_instrument->setReply(QStringLiteral("VOLT:DC:RANG:AUTO?"), QStringLiteral("0"));
    m_instrument->setReply(QStringLiteral("VOLT:DC:RANG?"), QStringLiteral("+1.0E+01"));
    m_instrument->whenAsked(QStringLiteral("VOLT:DC:NPLC? (@101)"),
                            [this] { m_instrument->setSilent(true); });
    m_instrument->whenAsked(QStringLiteral("INP:IMP:AUTO? (@101)"),
                            [this] { m_instrument->setSilent(false); });
    m_instrument->setReply(QStringLiteral("INP:IMP:AUTO?"), QStringLiteral("1"));
    readBack().readOptions(0, 101);
    QVERIFY(!m_link->isLost());
    QCOMPARE(m_display->takeShown().mid(0, 6),
             texts({"option 101 RangeList [6]", "option 101 RangeRow 3",
                    "option 101 DelayAutomatic true", "option 101 TemperatureUnitList [0]",
                    "option 101 Nplc 0", "option 101 InputImpedanceAuto true"}));
}

void TestInstrumentReadBack::channelWithoutARowIsNotAskedForOptions()
{
    m_display->hasRows = false;
    readBack().readChannel(101);
    QCOMPARE(m_instrument->takeLines(), texts({"ROUT:CHAN:LAB? (@101)", "FUNC? (@101)"}));
    QCOMPARE(m_display->takeShown(), texts({"function 101 '直流电压'"}));
}

void TestInstrumentReadBack::lostLinkEndsTheDialogue()
{
    slotPresent[1] = true;
    slotLastChannel[1] = 19;
    m_instrument->whenAsked(QStringLiteral("VOLT:DC:NPLC? (@102)"),
                            [this] { m_instrument->visa().dropConnection(); });
    readBack().readAll();
    QVERIFY(m_link->isLost());
    QCOMPARE(m_instrument->takeLines().last(), QStringLiteral("VOLT:DC:NPLC? (@102)"));
    QCOMPARE(m_display->takeShown().last(), QStringLiteral("option 102 TemperatureUnitList [0]"));
}

void TestInstrumentReadBack::aMinuteOfSilenceEndsTheDialogue()
{
    slotPresent[1] = true;
    slotLastChannel[1] = 19;
    m_instrument->setSilent(true);
    readBack().readAll();
    QVERIFY(m_link->isLost());
    // Each missing reply takes its five seconds; the thirteenth is over the minute.
    QCOMPARE(m_instrument->takeLines().size(), 13);
    QCOMPARE(m_display->takeShown().last(), QStringLiteral("option 101 Gain 0"));
}

void TestInstrumentReadBack::helperShowsOnTheGuiThread()
{
    std::unique_ptr<QThread> helper(QThread::create([this] { readBack().readAll(); }));
    helper->start();
    QTRY_VERIFY(helper->isFinished());
    QCOMPARE(m_display->takeShown(), kTriggerShown + texts({"done"}));
}

void TestInstrumentReadBack::closedGateShowsNothing()
{
    m_instrument->whenAsked(QStringLiteral("TRIG:COUN?"), [this] { m_gate->announceEnd(); });
    readBack().readAll();
    QCOMPARE(m_instrument->takeLines().last(), QStringLiteral("TRIG:COUN?"));
    QCOMPARE(m_display->takeShown(), texts({"trigger immediate"}));
}

SCN_TEST(TestInstrumentReadBack, QCoreApplication)
#include "test_instrumentreadback.moc"
