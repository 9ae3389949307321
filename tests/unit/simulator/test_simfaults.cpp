#include "faults/spoil.h"
#include "service/controlservice.h"
#include "service/instrumentservice.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

#include <set>

using namespace scnsim;

namespace {

constexpr const char* kNoError = "+0,\"No error\"";

/// The instrument with its faults and both its ports, on a clock that only the test moves.
class FaultBench
{
public:
    FaultBench()
        : m_service(m_bench.instrument(), m_bench.dialogue(), m_faults, clock(), 1)
        , m_control(m_bench.instrument(), m_faults, clock())
    {
    }

    /// The reply to a line: its text, and in angle brackets what is unusual about it.
    QString ask(const QString& line)
    {
        const Reply reply = m_service.answer(line.toStdString());
        QString text = shown(reply.text);
        if (reply.delay.count() > 0) {
            text.prepend(QStringLiteral("<after %1 ms>").arg(reply.delay.count()));
        }
        if (!reply.isComplete) {
            text.append(QStringLiteral("<no end>"));
        }
        if (reply.breaksLink) {
            text.append(QStringLiteral("<break>"));
        }
        return text;
    }
    QString ask(const char* line) { return ask(QString::fromUtf8(line)); }

    QString order(const QString& line) { return shown(m_control.answer(line.toStdString()).text); }
    QString order(const char* line) { return order(QString::fromUtf8(line)); }

    InstrumentService& service() { return m_service; }

    void pass(std::chrono::nanoseconds time) { m_bench.pass(time); }

private:
    InstrumentService::Clock clock()
    {
        return [this] { return m_bench.now(); };
    }

    SimBench m_bench;
    FaultPlan m_faults;
    InstrumentService m_service;
    ControlService m_control;
};

void addTranscript(const char* name, std::initializer_list<const char*> lines)
{
    QStringList all;
    for (const char* line : lines) {
        all << QString::fromUtf8(line);
    }
    QTest::newRow(name) << all;
}

} // namespace

class TestSimFaults : public QObject
{
    Q_OBJECT

private slots:
    void faultIsReadAndTold_data();
    void faultIsReadAndTold();
    void badFaultIsRefused_data();
    void badFaultIsRefused();
    void patternFits_data();
    void patternFits();
    void lineIsNormalized_data();
    void lineIsNormalized();
    void transcript_data();
    void transcript();
    void garbageIsTheSameEverywhere();
    void oversizedReplyRepeatsItself();
    void oneRecordIsDamaged_data();
    void oneRecordIsDamaged();
    void onlyBatchesHaveBadRecords_data();
    void onlyBatchesHaveBadRecords();
    void badRecordWaitsForABatch();
    void refusalShutsTheDoor();
    void actingFaultsAreNoted();
    void readingsCarryTheAlarm();
    void outsideTriggersStartSweeps();
    void readingsFollowTheJumpingClock();
    void clockStopsShortAtItsEnds();
};

void TestSimFaults::faultIsReadAndTold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("told");
    const auto row = [](const char* text, const char* told) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(told);
    };
    row("silence", "silence");
    row("  silence   for  stat:oper:even?  times 3 ", "silence for STAT:OPER:EVEN? times 3");
    row("delay 6000 for R? * times 1", "delay 6000 for R? * times 1");
    row("drop times 2", "drop times 2");
    row("refuse", "refuse");
    row("refuse times 4", "refuse times 4");
    row("garbage", "garbage 64");
    row("garbage 100 for *IDN?", "garbage 100 for *IDN?");
    row("truncate", "truncate 10");
    row("shorten 70 for R?*", "shorten 70 for R?*");
    row("oversize", "oversize 50000");
    row("badrecord", "badrecord month");
    row("badrecord unit", "badrecord unit");
    row("badrecord field times 1", "badrecord field times 1");
    row("reject", "reject -221");
    row("reject -222 for :VOLT:DC:RANG 10,(@101)", "reject -222 for VOLT:DC:RANG 10,(@101)");
    row("elsewhere for STAT:OPER:EVEN? times 1", "elsewhere for STAT:OPER:EVEN? times 1");
    row("clock -3600", "clock -3600 times 1");
    row("clock 0.25 times 2", "clock 0.25 times 2");
    row("clock 1e9", "clock 1000000000 times 1");
    row("silence for *", "silence");
}

void TestSimFaults::faultIsReadAndTold()
{
    QFETCH(QString, text);
    Fault fault;
    std::string error;
    QVERIFY2(parseFault(text.toStdString(), fault, error), error.c_str());
    QTEST(shown(faultText(fault)), "told");
    Fault again;
    QVERIFY2(parseFault(faultText(fault), again, error), error.c_str());
    QCOMPARE(shown(faultText(again)), shown(faultText(fault)));
}

void TestSimFaults::badFaultIsRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error");
    const auto row = [](const char* text, const char* error) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(error);
    };
    constexpr const char* kBytes = "wants a number of bytes from 1 to 10000000";
    const QByteArray garbage = QByteArray("garbage ") + kBytes;
    row("", "no fault is named");
    row("times 3", "no fault is named");
    row("noise", "unknown fault noise");
    row("Silence", "unknown fault Silence");
    row("silence 5", "silence takes no value");
    row("delay", "delay wants milliseconds from 1 to 3600000");
    row("delay 0", "delay wants milliseconds from 1 to 3600000");
    row("delay 1.5", "delay wants milliseconds from 1 to 3600000");
    row("delay 3600001", "delay wants milliseconds from 1 to 3600000");
    row("delay soon", "delay wants milliseconds from 1 to 3600000");
    row("delay 5 6", "delay wants milliseconds from 1 to 3600000");
    row("garbage 0", garbage.constData());
    row("garbage 10000001", garbage.constData());
    row("badrecord year", "badrecord wants one of month, unit, field");
    row("reject -114", "reject wants the number of an error");
    row("reject 0", "reject wants the number of an error");
    row("clock", "clock wants seconds from -1e9 to 1e9");
    row("clock nan", "clock wants seconds from -1e9 to 1e9");
    row("clock -2e9", "clock wants seconds from -1e9 to 1e9");
    row("drop for", "for wants a pattern");
    row("drop times 0", "times wants a whole number from 1");
    row("drop times x", "times wants a whole number from 1");
    row("refuse for *IDN?", "refuse takes no pattern");
}

void TestSimFaults::badFaultIsRefused()
{
    QFETCH(QString, text);
    Fault fault;
    fault.pattern = "untouched";
    std::string error;
    QVERIFY(!parseFault(text.toStdString(), fault, error));
    QTEST(shown(error), "error");
    QCOMPARE(shown(fault.pattern), QStringLiteral("untouched"));
}

void TestSimFaults::patternFits_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("fits");
    const auto row = [](const char* pattern, const char* text, bool fits) {
        QTest::addRow("%s on %s", pattern, text)
            << QString::fromLatin1(pattern) << QString::fromLatin1(text) << fits;
    };
    row("*", "", true);
    row("*", "R? 5", true);
    row("R?", "R?", true);
    row("R?", "R? 5", false);
    row("R?", "RX", false);
    row("R?*", "R? 5", true);
    row("*IDN?", "*IDN?", true);
    row("*RANG*", "VOLT:DC:RANG 10,(@101)", true);
    row("*RANG*(@102)", "VOLT:DC:RANG 10,(@101)", false);
    row("A*B*C", "ABCBC", true);
    row("A*B*C", "ABCB", false);
    row("A**", "A", true);
    row("", "", true);
    row("", "A", false);
}

void TestSimFaults::patternFits()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QTEST(matchesPattern(pattern.toStdString(), text.toStdString()), "fits");
}

void TestSimFaults::lineIsNormalized_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("normalized");
    QTest::newRow("case") << QStringLiteral("syst:err?") << QStringLiteral("SYST:ERR?");
    QTest::newRow("blanks") << QStringLiteral("  R?\t  5 ") << QStringLiteral("R? 5");
    QTest::newRow("colon") << QStringLiteral(" :ROUT:SCAN?") << QStringLiteral("ROUT:SCAN?");
    QTest::newRow("nothing") << QString() << QString();
}

void TestSimFaults::lineIsNormalized()
{
    QFETCH(QString, line);
    QTEST(shown(normalizedLine(line.toStdString())), "normalized");
}

/// Alternately a line and its reply. A line that starts with "! " goes to the control port.
void TestSimFaults::transcript_data()
{
    QTest::addColumn<QStringList>("lines");

    // One source line per line and reply.
    // clang-format off
    addTranscript("silence", {
        "! fault silence for STAT:OPER:EVEN? times 2", "ok 1",
        "STAT:OPER:EVEN?", "",
        "STAT:OPER:COND?", "+256",
        "stat:oper:even?", "",
        "STAT:OPER:EVEN?", "+0",
        "! list", "ok",
    });

    addTranscript("silence swallows commands too", {
        "! fault silence for TRIG:COUN *", "ok 1",
        "TRIG:COUN 5", "",
        "! clear", "ok",
        "TRIG:COUN?", "+9.90000000E+37",
        "SYST:ERR?", kNoError,
    });

    addTranscript("delay", {
        "! fault delay 6000 for *IDN? times 1", "ok 1",
        "*IDN?", "<after 6000 ms>SCN,SCN4070A,MY00000042,01.02-sim",
        "*IDN?", "SCN,SCN4070A,MY00000042,01.02-sim",
    });

    addTranscript("a command without an answer uses up no delay", {
        "! fault delay 10 times 1", "ok 1",
        "*CLS", "",
        "*OPC?", "<after 10 ms>1",
        "*OPC?", "1",
    });

    addTranscript("dropped link", {
        "! fault drop for TRIG:COUN *", "ok 1",
        "TRIG:COUN 5", "<break>",
        "TRIG:COUN?", "+9.90000000E+37",
        "! clear 1", "ok",
        "TRIG:COUN 5", "",
        "TRIG:COUN?", "+5.00000000E+00",
    });

    addTranscript("truncated reply", {
        "! fault truncate 3 times 1", "ok 1",
        "STAT:OPER:COND?", "+25<no end>",
        "STAT:OPER:COND?", "+256",
        "! fault truncate times 1", "ok 2",
        "STAT:OPER:COND?", "+256<no end>",
    });

    addTranscript("shortened reply", {
        "! fault shorten for *IDN? times 1", "ok 1",
        "*IDN?", "SCN,SCN407",
        "*IDN?", "SCN,SCN4070A,MY00000042,01.02-sim",
    });

    addTranscript("oversized reply", {
        "! fault oversize 10 for STAT:OPER:COND?", "ok 1",
        "STAT:OPER:COND?", "+256+256+2",
        "*OPC?", "1",
        "! clear", "ok",
        "STAT:OPER:COND?", "+256",
    });

    addTranscript("refused setting", {
        "! fault reject for VOLT:DC:RANG * times 1", "ok 1",
        "VOLT:DC:RANG 100,(@101)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "VOLT:DC:RANG? (@101)", "+1.000000E+01",
        "VOLT:DC:RANG 100,(@101)", "",
        "VOLT:DC:RANG? (@101)", "+1.000000E+02",
        "! fault reject -222 for FUNC *", "ok 2",
        "FUNC \"RES\",(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "FUNC? (@101)", "\"VOLT\"",
        "*ESR?", "+16",
    });

    addTranscript("a query is refused without an answer", {
        "! fault reject -410 for ROUT:SCAN? times 1", "ok 1",
        "ROUT:SCAN?", "",
        "SYST:ERR?", "-410,\"Query INTERRUPTED\"",
    });

    addTranscript("in use elsewhere", {
        "! fault elsewhere for STAT:OPER:EVEN? times 1", "ok 1",
        "STAT:OPER:COND?", "+256",
        "STAT:OPER:EVEN?", "+2048",
        "STAT:OPER:EVEN?", "+0",
        "! fault elsewhere", "ok 2",
        "STAT:OPER:EVEN?", "+2048",
        "STAT:OPER:EVEN?", "+2048",
        "STAT:OPER:COND?", "+2304",
        "! clear 2", "ok",
        "STAT:OPER:COND?", "+256",
        "STAT:OPER:EVEN?", "+2048",
        "STAT:OPER:EVEN?", "+0",
    });

    addTranscript("clock jump", {
        "SYST:TIME?", "03,04,05.000",
        "! fault clock 3600.5 for SYST:TIME?", "ok 1",
        "SYST:DATE?", "2024,01,02",
        "SYST:TIME?", "04,04,05.500",
        "SYST:TIME?", "04,04,05.500",
        "! fault clock -86400", "ok 2",
        "SYST:DATE?", "2024,01,01",
        "! jump 86400", "ok",
        "SYST:DATE?", "2024,01,02",
        "SYST:DATE 2026,05,06", "",
        "SYST:DATE?;:SYST:TIME?", "2026,05,06;04,04,05.500",
    });

    addTranscript("several faults on one line", {
        "! fault delay 7 for *IDN?", "ok 1",
        "! fault truncate 4 for *IDN?", "ok 2",
        "! fault oversize 100 for *IDN?", "ok 3",
        "! fault silence for *OPC?", "ok 4",
        "! list", "ok 1: delay 7 for *IDN?; 2: truncate 4 for *IDN?; 3: oversize 100 for *IDN?; 4: silence for *OPC?",
        "*IDN?", "<after 7 ms>SCN,<no end>",
        "! clear 2", "ok",
        "! clear 1", "ok",
        "! list", "ok 3: oversize 100 for *IDN?; 4: silence for *OPC?",
        "*IDN?", "SCN,SCN4070A,MY00000042,01.02-simSCN,SCN4070A,MY00000042,01.02-simSCN,SCN4070A,MY00000042,01.02-simS",
    });

    addTranscript("the same fault twice acts one after the other", {
        "! fault delay 7 times 1", "ok 1",
        "! fault delay 8 times 2", "ok 2",
        "*OPC?", "<after 7 ms>1",
        "! list", "ok 2: delay 8 times 2",
        "*OPC?", "<after 8 ms>1",
        "! list", "ok 2: delay 8 times 1",
        "*OPC?", "<after 8 ms>1",
        "*OPC?", "1",
        "! fault drop", "ok 3",
    });

    addTranscript("orders that make no sense", {
        "! ", "error unknown order ",
        "! Fault drop", "error unknown order Fault",
        "! fault", "error no fault is named",
        "! fault delay", "error delay wants milliseconds from 1 to 3600000",
        "! clear 1", "error no fault 1",
        "! clear all", "error no fault all",
        "! list all", "error list takes nothing",
        "! trigger", "error trigger wants external or alarm 1 to 4",
        "! trigger alarm 5", "error trigger wants external or alarm 1 to 4",
        "! trigger external 1", "error trigger wants external or alarm 1 to 4",
        "! trigger external", "error not waiting for this trigger",
        "! trigger alarm 4", "error not waiting for this trigger",
        "! alarm 101", "error alarm wants a channel and a number from 0 to 9",
        "! alarm 101 10", "error alarm wants a channel and a number from 0 to 9",
        "! alarm 123 1", "error no channel 123",
        "! alarm 401 1", "error no channel 401",
        "! jump", "error jump wants seconds from -1e9 to 1e9",
        "! jump 2e9", "error jump wants seconds from -1e9 to 1e9",
        "! list", "ok",
        "SYST:ERR?", kNoError,
    });
    // clang-format on
}

void TestSimFaults::transcript()
{
    QFETCH(QStringList, lines);
    FaultBench bench;
    QCOMPARE(lines.size() % 2, 0);
    for (int i = 0; i < lines.size(); i += 2) {
        const bool isOrder = lines[i].startsWith(QLatin1String("! "));
        const QString answer = isOrder ? bench.order(lines[i].mid(2)) : bench.ask(lines[i]);
        // Both texts contain the line, so that a failure shows where it happened.
        QCOMPARE(QStringList({lines[i], answer}), QStringList({lines[i], lines[i + 1]}));
    }
}

void TestSimFaults::garbageIsTheSameEverywhere()
{
    const auto bytes = [](std::size_t count, std::uint64_t seed) {
        return QByteArray::fromStdString(garbage(count, seed));
    };
    QCOMPARE(bytes(8, 1).toHex(), QByteArray("bc571f51f8c1baf0"));
    QVERIFY(bytes(8, 1) != bytes(8, 2));
    const QByteArray many = bytes(100000, 3);
    QCOMPARE(many.size(), 100000);
    QVERIFY(!many.contains('\n'));
    // All other bytes are there.
    QCOMPARE(std::set<char>(many.begin(), many.end()).size(), std::size_t{255});
}

void TestSimFaults::oversizedReplyRepeatsItself()
{
    QCOMPARE(shown(oversized("abc", 7)), QStringLiteral("abcabca"));
    QCOMPARE(shown(oversized("abc", 2)), QStringLiteral("abc"));
    QCOMPARE(shown(oversized("", 7)), QString());
}

void TestSimFaults::oneRecordIsDamaged_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<QString>("damaged");
    QTest::newRow("month") << static_cast<int>(kBadMonth)
                           << QStringLiteral("#289+1 V,2024,01,02,03,04,05.6,101,0,"
                                             "+2 V,2024,13,02,03,04,05.6,102,0,"
                                             "+3 V,24,1,2,3,4,5,103,0");
    QTest::newRow("unit") << static_cast<int>(kMissingUnit)
                          << QStringLiteral("#287+1 V,2024,01,02,03,04,05.6,101,0,"
                                            "+2,2024,01,02,03,04,05.6,102,0,"
                                            "+3 V,24,1,2,3,4,5,103,0");
    QTest::newRow("field") << static_cast<int>(kMissingField)
                           << QStringLiteral("#287+1 V,2024,01,02,03,04,05.6,101,0,"
                                             "+2 V,2024,01,02,03,04,05.6,102,0,"
                                             "+3 V,24,1,2,3,4,5,103");
}

void TestSimFaults::oneRecordIsDamaged()
{
    QFETCH(int, form);
    const std::string batch = "#289+1 V,2024,01,02,03,04,05.6,101,0,"
                              "+2 V,2024,01,02,03,04,05.6,102,0,"
                              "+3 V,24,1,2,3,4,5,103,0";
    const std::optional<std::string> damaged =
        withBadRecord(batch, static_cast<BadRecordForm>(form));
    QVERIFY(damaged);
    QTEST(shown(*damaged), "damaged");
}

void TestSimFaults::onlyBatchesHaveBadRecords_data()
{
    QTest::addColumn<QString>("reply");
    const auto row = [](const char* name, const char* reply) {
        QTest::newRow(name) << QString::fromLatin1(reply);
    };
    row("nothing", "");
    row("number", "+256");
    row("no readings", "#10");
    row("scan list of nine", "#238(@101,102,103,104,105,106,107,108,109)");
    row("values alone", "#15+1,+2");
    row("wrong length", "#234+1 V,2024,01,02,03,04,05.6,101,0");
    row("no length", "#");
    row("length of length missing", "#x");
    row("shorter than its length", "#9123");
}

void TestSimFaults::onlyBatchesHaveBadRecords()
{
    QFETCH(QString, reply);
    for (const BadRecordForm form : {kBadMonth, kMissingUnit, kMissingField}) {
        QVERIFY(!withBadRecord(reply.toStdString(), form));
    }
}

void TestSimFaults::badRecordWaitsForABatch()
{
    FaultBench bench;
    bench.ask("FORM:READ:ALAR ON;CHAN ON;TIME ON;UNIT ON;TIME:TYPE ABS");
    bench.ask("ROUT:SCAN (@101:103);:TRIG:COUN 2;:INIT");
    QCOMPARE(bench.order("fault badrecord times 1"), QStringLiteral("ok 1"));
    QCOMPARE(bench.ask("R? 3"), QStringLiteral("#10"));
    QCOMPARE(bench.ask("ROUT:SCAN?"), QStringLiteral("#214(@101,102,103)"));
    bench.pass(std::chrono::seconds(1));
    const QString damaged = bench.ask("R? 3");
    QVERIFY2(damaged.startsWith(QLatin1String("#3149")), qPrintable(damaged));
    QCOMPARE(damaged.size(), 5 + 149);
    QCOMPARE(damaged.count(QLatin1String("2024,01,02")), 2);
    QCOMPARE(damaged.count(QLatin1String("2024,13,02")), 1);
    QCOMPARE(bench.ask("R? 3").count(QLatin1String("2024,01,02")), 3);
}

void TestSimFaults::refusalShutsTheDoor()
{
    FaultBench bench;
    QVERIFY(bench.service().isReachable());
    QVERIFY(bench.service().admitsClient());
    bench.order("fault refuse times 2");
    QVERIFY(bench.service().isReachable());
    QVERIFY(!bench.service().admitsClient());
    QVERIFY(!bench.service().admitsClient());
    QVERIFY(bench.service().admitsClient());
    bench.order("fault refuse");
    QVERIFY(!bench.service().isReachable());
    // Connected clients continue.
    QCOMPARE(bench.ask("*OPC?"), QStringLiteral("1"));
    bench.order("clear");
    QVERIFY(bench.service().isReachable());
}

void TestSimFaults::actingFaultsAreNoted()
{
    FaultBench bench;
    bench.order("fault delay 5 for *IDN? times 2");
    bench.order("fault garbage 9");
    const Reply reply = bench.service().answer("*IDN?");
    QCOMPARE(reply.notes.size(), std::size_t{2});
    QCOMPARE(shown(reply.notes[0]), QStringLiteral("garbage 9"));
    QCOMPARE(shown(reply.notes[1]), QStringLiteral("delay 5 for *IDN? times 2"));
    QVERIFY(bench.service().answer("*CLS").notes.empty());
}

void TestSimFaults::readingsCarryTheAlarm()
{
    FaultBench bench;
    bench.ask("FORM:READ:ALAR ON;CHAN ON");
    bench.ask("ROUT:SCAN (@101,102);:TRIG:COUN 2;:INIT");
    bench.pass(std::chrono::milliseconds(46));
    QCOMPARE(bench.order("alarm 102 3"), QStringLiteral("ok"));
    bench.pass(std::chrono::seconds(1));
    const QStringList fields = bench.ask("R?").split(QLatin1Char(','));
    QCOMPARE(fields.size(), 12);
    QCOMPARE(fields.mid(4, 2), (QStringList{QStringLiteral("102"), QStringLiteral("0")}));
    QCOMPARE(fields.mid(7, 2), (QStringList{QStringLiteral("101"), QStringLiteral("0")}));
    QCOMPARE(fields.mid(10, 2), (QStringList{QStringLiteral("102"), QStringLiteral("3")}));
}

void TestSimFaults::outsideTriggersStartSweeps()
{
    FaultBench bench;
    bench.ask("ROUT:SCAN (@101,102);:TRIG:SOUR EXT;COUN 2;:INIT");
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+32"));
    QCOMPARE(bench.order("trigger alarm 1"), QStringLiteral("error not waiting for this trigger"));
    QCOMPARE(bench.order("trigger external"), QStringLiteral("ok"));
    QCOMPARE(bench.order("trigger external"), QStringLiteral("error not waiting for this trigger"));
    bench.pass(std::chrono::seconds(1));
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+2;+32"));
    QCOMPARE(bench.order("trigger external"), QStringLiteral("ok"));
    bench.pass(std::chrono::seconds(1));
    QCOMPARE(bench.ask("DATA:POIN?;:STAT:OPER:COND?"), QStringLiteral("+4;+256"));

    bench.ask("TRIG:SOUR ALAR2;:INIT");
    QCOMPARE(bench.order("trigger external"), QStringLiteral("error not waiting for this trigger"));
    QCOMPARE(bench.order("trigger alarm 2"), QStringLiteral("ok"));
    bench.pass(std::chrono::seconds(1));
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+2"));
    // An external trigger is not a command error.
    QCOMPARE(bench.ask("SYST:ERR?"), QString::fromLatin1(kNoError));
}

void TestSimFaults::readingsFollowTheJumpingClock()
{
    FaultBench bench;
    bench.ask("FORM:READ:TIME ON;TIME:TYPE ABS");
    // One sweep a second, with its reading at the start.
    bench.ask("ROUT:SCAN (@101);:TRIG:SOUR TIM;TIM 1;COUN 4;:INIT");
    bench.pass(std::chrono::milliseconds(1500));
    bench.order("fault clock -7200 for DATA:POIN?");
    QCOMPARE(bench.ask("DATA:POIN?"), QStringLiteral("+2"));
    bench.pass(std::chrono::milliseconds(1000));
    bench.order("jump 86400.25");
    bench.pass(std::chrono::milliseconds(1000));
    QStringList stamps;
    for (const QString& record : bench.ask("R?").split(QStringLiteral("E+00,"))) {
        stamps << record.section(QLatin1Char(','), 0, 5);
    }
    QCOMPARE(stamps.mid(1), (QStringList{QStringLiteral("2024,01,02,03,04,05.000"),
                                         QStringLiteral("2024,01,02,03,04,06.000"),
                                         QStringLiteral("2024,01,02,01,04,07.000"),
                                         QStringLiteral("2024,01,03,01,04,08.250")}));
}

void TestSimFaults::clockStopsShortAtItsEnds()
{
    FaultBench bench;
    bench.order("jump -1e9");
    QCOMPARE(bench.ask("SYST:DATE?;:SYST:TIME?"), QStringLiteral("2000,01,01;00,00,00.000"));
    for (int i = 0; i < 4; ++i) {
        bench.order("jump 1e9");
    }
    QCOMPARE(bench.ask("SYST:DATE?;:SYST:TIME?"), QStringLiteral("2099,12,31;23,59,59.999"));
}

SCN_TEST(TestSimFaults, testprogram::NoApplication)
#include "test_simfaults.moc"
