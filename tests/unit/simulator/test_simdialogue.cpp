#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

/// Literal transcripts: every line in and every answer out is written here.
class TestSimDialogue : public QObject
{
    Q_OBJECT

private slots:
    void transcript_data();
    void transcript();
    void identityHasItsSerialNumberInTheThirdField();
    void clockRunsOnItsOwn();
    void refusedQueryAnswersNothing();
    void usedElsewhereIsLatchedOnce();
    void longLinesAreReported();
    void switchMeasuresNothing();
    void channelListHasAnEnd();
};

namespace {

/// Alternately a line and its answer; an empty answer is none. "! pass 23" lets 23 ms pass instead.
using Lines = QStringList;

void addTranscript(const char* name, std::initializer_list<const char*> lines)
{
    Lines all;
    for (const char* line : lines) {
        all << QString::fromUtf8(line);
    }
    QTest::newRow(name) << all;
}

constexpr const char* kNoError = "+0,\"No error\"";

} // namespace

void TestSimDialogue::transcript_data()
{
    QTest::addColumn<QStringList>("lines");

    // One source line per line and answer.
    // clang-format off
    addTranscript("start-up", {
        "*CLS", "",
        "*IDN?", "SCN,SCN4070A,MY00000042,01.02-sim",
        "SYST:CTYP? 1", "SCN,SCN4001A,0,01.02",
        "SYST:CTYP? 2", "SCN,SCN4002A,0,01.02",
        "SYST:CTYP? 3", "SCN,SCN4008A,0,01.02",
        "SYST:CTYP? 4", "SCN,0,0,0",
        "SYST:CTYP? 15", "SCN,0,0,0",
        "FUNC? (@101)", "\"VOLT\"",
        "FUNC? (@121)", "\"CURR\"",
        "STAT:OPER:EVEN?", "+0",
        "ROUT:SCAN?", "#13(@)",
        "TRIG:SOUR?", "IMM",
        "TRIG:COUN?", "+9.90000000E+37",
        "MMEM:LOG:ENAB?", "0",
        "MMEM:FORM:READ:RLIM?", "1",
        "MMEM:FORM:READ:RLIM:COUN?", "+6.55360000E+04",
        "ROUT:MON:STAT?", "0",
        "STAT:OPER:COND?", "+256",
        "SYST:DATE 2026,01,12", "",
        "SYST:TIME 07,30,00.125", "",
        "SYST:DATE?", "2026,01,12",
        "SYST:TIME?", "07,30,00.125",
        "SYST:PERS:MOD:DEF?", "\"SCN4070A\"",
        "SYST:PERS:MOD?", "\"SCN4070A\"",
        "MEM:STAT:NAME? 1", "\"\"",
        "MEM:STAT:VAL? 5", "0",
        "SYST:ERR?", kNoError,
    });

    addTranscript("scan list", {
        "ROUT:SCAN (@101:103,105)", "",
        "ROUT:SCAN?", "#218(@101,102,103,105)",
        "ROUT:SCAN (@103,101,102,101)", "",
        "ROUT:SCAN?", "#214(@101,102,103)",
        "ROUT:SCAN (@122:202)", "",
        "ROUT:SCAN?", "#214(@122,201,202)",
        "ROUT:SCAN (@101,102)", "",
        "ROUT:SCAN?", "#210(@101,102)",
        "ROUT:SCAN (@)", "",
        "ROUT:SCAN?", "#13(@)",
        "SYST:ERR?", kNoError,
    });

    addTranscript("wrong channels change nothing", {
        "ROUT:SCAN (@101)", "",
        "ROUT:SCAN (@123)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "ROUT:SCAN (@401)", "",
        "SYST:ERR?", "-241,\"Hardware missing\"",
        "ROUT:SCAN (@101:130)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "ROUT:SCAN @101", "",
        "SYST:ERR?", "-101,\"Invalid character\"",
        "ROUT:SCAN", "",
        "SYST:ERR?", "-109,\"Missing parameter\"",
        "ROUT:SCAN 101", "",
        "SYST:ERR?", "-104,\"Data type error\"",
        "VOLT:RANG 1,(@)", "",
        "SYST:ERR?", "-171,\"Invalid expression\"",
        "ROUT:SCAN?", "#16(@101)",
        "SYST:ERR?", kNoError,
    });

    addTranscript("functions", {
        "FUNC \"TEMP:TC\",(@101)", "",
        "TEMP:TRAN:TC:TYPE K,(@101)", "",
        "FUNC? (@101)", "\"TEMP:TC\"",
        "TEMP:TRAN:TYPE? (@101)", "TC",
        "TEMP:TRAN:TC:TYPE? (@101)", "K",
        "FUNC \"TEMP:THER\",(@102)", "",
        "TEMP:TRAN:THER:TYPE +2252,(@102)", "",
        "TEMP:TRAN:TYPE? (@102)", "THER",
        "TEMP:TRAN:THER:TYPE? (@102)", "+2252",
        "FUNC \"TEMP:FTH\",(@103)", "",
        "TEMP:TRAN:FTH:TYPE +10000,(@103)", "",
        "TEMP:TRAN:TYPE? (@103)", "THER",
        "TEMP:TRAN:fth:TYPE? (@103)", "+10000",
        "FUNC \"TEMP:RTD\",(@104)", "",
        "TEMP:TRAN:TYPE? (@104)", "RTD",
        "FUNC \"TEMP:FRTD\",(@104)", "",
        "TEMP:TRAN:TYPE? (@104)", "RTD",
        "FUNC \"STR:FULL:BEND:POIS\",(@105)", "",
        "FUNC? (@105)", "\"STR:FULL:BEND:POIS\"",
        "FUNC \"VOLT:DC\",(@105)", "",
        "FUNC? (@105)", "\"VOLT\"",
        "FUNC \"CURR:AC\",(@121)", "",
        "FUNC? (@121,122)", "\"CURR:AC\",\"CURR\"",
        "SYST:ERR?", kNoError,
    });

    addTranscript("a function that the channel does not offer", {
        "FUNC \"CURR\",(@101)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC \"FRES\",(@111)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC \"FRES\",(@101,111)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC \"VOLTS\",(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "FUNC VOLT,(@101)", "",
        "SYST:ERR?", "-104,\"Data type error\"",
        "FUNC? (@101,111)", "\"VOLT\",\"VOLT\"",
    });

    addTranscript("a four-wire function takes its partner", {
        "ROUT:SCAN (@105,115)", "",
        "FUNC \"RES\",(@115)", "",
        "FUNC \"FRES\",(@105)", "",
        "ROUT:SCAN?", "#16(@105)",
        "FUNC? (@105,115)", "\"FRES\",\"VOLT\"",
        "ROUT:SCAN (@105,115)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC \"RES\",(@115)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC \"RES\",(@105)", "",
        "ROUT:SCAN (@105,115)", "",
        "ROUT:SCAN?", "#210(@105,115)",
        "FUNC \"FRES\",(@105)", "",
        "FUNC \"RES\",(@104,115)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "FUNC? (@104,105,115)", "\"VOLT\",\"FRES\",\"VOLT\"",
        "FUNC \"RES\",(@105,115)", "",
        "FUNC? (@105,115)", "\"RES\",\"RES\"",
        "FUNC \"FRES\",(@105)", "",
        "FUNC \"VOLT:AC\",(@115,105)", "",
        "FUNC? (@105,115)", "\"VOLT:AC\",\"VOLT:AC\"",
        "FUNC \"TEMP:FRTD\",(@208)", "",
        "ROUT:SCAN (@216)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "ROUT:SCAN (@121,122)", "",
        "ROUT:SCAN?", "#210(@121,122)",
        "SYST:ERR?", kNoError,
    });

    addTranscript("ranges", {
        "VOLT:DC:RANG? (@101)", "+1.000000E+01",
        "VOLT:DC:RANG:AUTO? (@101)", "1",
        "VOLT:DC:RANG 300,(@101)", "",
        "VOLT:DC:RANG? (@101)", "+3.000000E+02",
        "VOLT:DC:RANG:AUTO? (@101)", "0",
        "VOLT:AC:RANG:AUTO? (@101)", "1",
        "VOLT:DC:RANG 2,(@101:103)", "",
        "VOLT:DC:RANG? (@101:103)", "+1.000000E+01,+1.000000E+01,+1.000000E+01",
        "VOLT:DC:RANG 301,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "VOLT:DC:RANG? (@101)", "+1.000000E+01",
        "VOLT:DC:RANG:AUTO ON,(@101)", "",
        "VOLT:DC:RANG:AUTO? (@101)", "1",
        "CAP:RANG 1e-09,(@101)", "",
        "CAP:RANG? (@101)", "+1.000000E-09",
        "RES:RANG 1e+08,(@101)", "",
        "RES:RANG? (@101)", "+1.000000E+08",
        "FRES:RANG:AUTO? (@101)", "1",
        "CURR:DC:RANG 1e-06,(@121)", "",
        "CURR:RANG? (@121)", "+1.000000E-06",
        "STR:VOLT:RANG MAX,(@101)", "",
        "STR:VOLT:RANG? (@101)", "+3.000000E+02",
        "SYST:ERR?", kNoError,
    });

    addTranscript("integration times and lowest frequencies", {
        "VOLT:NPLC? (@101)", "+1.000000E+00",
        "VOLT:NPLC 10,(@101:103)", "",
        "VOLT:DC:NPLC? (@101:104)", "+1.000000E+01,+1.000000E+01,+1.000000E+01,+1.000000E+00",
        "RES:NPLC 0.2,(@101)", "",
        "RES:NPLC? (@101);:FRES:NPLC? (@101)", "+2.000000E-01;+1.000000E+00",
        "FRES:NPLC 0.02,(@101)", "",
        "FRES:NPLC? (@101)", "+2.000000E-02",
        "TEMP:NPLC 100,(@101)", "",
        "TEMP:NPLC? (@101)", "+1.000000E+02",
        "STR:NPLC 50,(@101)", "",
        "STR:NPLC? (@101)", "+1.000000E+02",
        "CURR:NPLC 0.02,(@121)", "",
        "CURR:DC:NPLC? (@121,122)", "+2.000000E-02,+1.000000E+00",
        "DIDD:NPLC 0.2,(@101)", "",
        "DIOD:NPLC? (@101)", "+2.000000E-01",
        "VOLT:NPLC 101,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "VOLT:NPLC? (@101)", "+1.000000E+01",
        "VOLT:AC:BAND? (@101)", "+2.000000E+01",
        "VOLT:AC:BAND 200,(@101)", "",
        "VOLT:AC:BAND? (@101)", "+2.000000E+02",
        "CURR:AC:BAND 3,(@121)", "",
        "CURR:AC:BAND? (@121)", "+3.000000E+00",
        "PER:VOLT:BAND 3,(@101)", "",
        "PER:RANG:LOW? (@101)", "+3.000000E+00",
        "FREQ:RANG:LOW 199,(@101)", "",
        "FREQ:VOLT:BAND? (@101)", "+2.000000E+01",
        "FREQ:VOLT:BAND 2,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "FREQ:RANG:LOW? (@101)", "+2.000000E+01",
        "SYST:ERR?", kNoError,
    });

    addTranscript("delay, impedance, compensation and reference", {
        "ROUT:CHAN:DEL:AUTO? (@101);:ROUT:CHAN:DEL? (@101)", "1;+0.000000E+00",
        "ROUT:CHAN:DEL 1.5,(@101)", "",
        "ROUT:CHAN:DEL:AUTO? (@101);:ROUT:CHAN:DEL? (@101)", "0;+1.500000E+00",
        "ROUT:CHAN:DEL:AUTO ON,(@101)", "",
        "ROUT:CHAN:DEL 60.1,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "ROUT:CHAN:DEL:AUTO? (@101);:ROUT:CHAN:DEL? (@101)", "1;+1.500000E+00",
        "INP:IMP:AUTO? (@101)", "0",
        "INP:IMP:AUTO ON,(@101)", "",
        "INP:IMP:AUTO? (@101,102)", "1,0",
        "RES:OCOM ON,(@101)", "",
        "RES:OCOM? (@101);:FRES:OCOM? (@101)", "1;0",
        "FRES:OCOM 1,(@101)", "",
        "FRES:OCOM? (@101)", "1",
        "VOLT:REF? (@101)", "+0.000000E+00",
        "VOLT:DC:REF -2.5,(@101)", "",
        "VOLT:REF? (@101)", "-2.500000E+00",
        "INP:IMP:AUTO HIGH,(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "INP:IMP:AUTO? (@101)", "1",
        "SYST:ERR?", kNoError,
    });

    addTranscript("temperature sensors", {
        "UNIT:TEMP? (@101)", "C",
        "UNIT:TEMP F,(@101,103)", "",
        "UNIT:TEMP? (@101:103)", "F,C,F",
        "UNIT:TEMP R,(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "TEMP:TRAN:TC:TYPE? (@101)", "J",
        "TEMP:TRAN:TC:RJUN:TYPE? (@101);:TEMP:TRAN:TC:RJUN? (@101)", "INT;+2.000000E+01",
        "TEMP:TRAN:TC:RJUN:TYPE FIX,(@101)", "",
        "TEMP:TRAN:TC:RJUN 37.25,(@101)", "",
        "TEMP:TRAN:TC:RJUN 81,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TEMP:TRAN:TC:RJUN:TYPE? (@101);:TEMP:TRAN:TC:RJUN? (@101)", "FIX;+3.725000E+01",
        "TEMP:TRAN:TC:CHEC ON,(@101)", "",
        "TEMP:TRAN:TC:CHEC? (@101);REF? (@101)", "1;0",
        "TEMP:TRAN:RTD:REF ON,(@101)", "",
        "TEMP:TRAN:RTD:REF? (@101);:TEMP:TRAN:FRTD:REF? (@101)", "1;0",
        "TEMP:TRAN:FTH:REF ON,(@101)", "",
        "TEMP:TRAN:FTH:REF? (@101);:TEMP:TRAN:THER:REF? (@101)", "1;0",
        "TEMP:TRAN:RTD:RES? (@101);TYPE? (@101)", "+1.000000E+02;+85",
        "TEMP:TRAN:RTD:RES 1000,(@101)", "",
        "TEMP:TRAN:FRTD:RES 100.5,(@101)", "",
        "TEMP:TRAN:FRTD:TYPE 91,(@101)", "",
        "TEMP:TRAN:RTD:RES? (@101);TYPE? (@101)", "+1.000000E+03;+85",
        "TEMP:TRAN:FRTD:RES? (@101);TYPE? (@101)", "+1.005000E+02;+91",
        "TEMP:TRAN:RTD:RES 98.9,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TEMP:TRAN:RTD:TYPE 90,(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "TEMP:TRAN:THER:TYPE? (@101);:TEMP:TRAN:FTH:TYPE? (@101)", "+5000;+5000",
        "TEMP:TRAN:THER:TYPE 2200,(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "SYST:ERR?", kNoError,
    });

    addTranscript("bridges", {
        "STR:GFAC? (@101);RES? (@101)", "+2.000000E+00;+1.200000E+02",
        "STR:EXC? (@101);POIS? (@101)", "+5.000000E+00;+3.000000E-01",
        "STR:GFAC 2.125,(@101)", "",
        "STR:RES 350,(@101)", "",
        "STR:EXC 0.9,(@101)", "",
        "STR:POIS -0.999,(@101)", "",
        "STR:GFAC? (@101);RES? (@101)", "+2.125000E+00;+3.500000E+02",
        "STR:EXC? (@101);POIS? (@101)", "+9.000000E-01;-9.990000E-01",
        "STR:GFAC 5.1,(@101);RES 79,(@101)", "",
        "SYST:ERR?;:SYST:ERR?", "-222,\"Data out of range\";-222,\"Data out of range\"",
        "STR:EXC 12.5,(@101);POIS 0.6,(@101)", "",
        "SYST:ERR?;:SYST:ERR?", "-222,\"Data out of range\";-222,\"Data out of range\"",
        "STR:GFAC? (@101);RES? (@101)", "+2.125000E+00;+3.500000E+02",
        "STR:EXC? (@101);POIS? (@101)", "+9.000000E-01;-9.990000E-01",
        "SYST:ERR?", kNoError,
    });

    addTranscript("headers are refused", {
        "FOO", "",
        "SYST:ERR?", "-113,\"Undefined header\"",
        "FOO?", "",
        "SYST:ERR?", "-113,\"Undefined header\"",
        "STR::NPLC 10,(@101)", "",
        "SYST:ERR?", "-110,\"Command header error\"",
        "STR:NPLC? (@101)", "+1.000000E+00",
        "SYST:CTYP 1", "",
        "SYST:ERR?", "-113,\"Undefined header\"",
        "*CLS?", "",
        "SYST:ERR?", "-113,\"Undefined header\"",
        "*RST 1", "",
        "SYST:ERR?", "-108,\"Parameter not allowed\"",
        "SYST:CTYP? 100", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TRIG:SOUR ALAR5", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "TRIG:COUN 0", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TRIG:COUN SOON", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "SYST:DATE 2023,02,29", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "SYST:DATE?", "2024,01,02",
        "SYST:TIME 24,00,00", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "SYST:TIME?", "03,04,05.000",
        "SYST:ERR?", kNoError,
    });

    addTranscript("several on a line", {
        "*IDN?;*OPC?", "SCN,SCN4070A,MY00000042,01.02-sim;1",
        "TRIG:SOUR TIM;TIM 2.5;SOUR?;TIM?", "TIM;+2.50000000E+00",
        "trigger:source bus;:trig:sour?", "BUS",
        "TRIG:SOUR?;TRIG:COUN?;*OPC?;COUN?", "BUS;+9.90000000E+37;1;+9.90000000E+37",
        "TRIG:COUN 7;FOO;:TRIG:COUN?", "+7.00000000E+00",
        "SYST:ERR?", "-113,\"Undefined header\"",
        "FOO?;*OPC?", "1",
        "SYST:ERR:COUN?;:SYST:ERR?", "+1;-113,\"Undefined header\"",
        ";", "",
        "SYST:ERR?", kNoError,
    });

    addTranscript("triggers", {
        "TRIG:SOUR ALAR3", "",
        "TRIG:SOUR?", "ALAR3",
        "TRIG:SOUR EXT", "",
        "TRIG:SOUR?", "EXT",
        "TRIG:COUN 1000000", "",
        "TRIG:COUN?", "+1.00000000E+06",
        "TRIG:COUN INF", "",
        "TRIG:COUN?", "+9.90000000E+37",
        "TRIG:COUN MIN;COUN?", "+1.00000000E+00",
        "TRIG:COUN 9.9E37", "",
        "TRIG:COUN?", "+9.90000000E+37",
        "TRIG:COUN MAXIMUM;COUN?", "+1.00000000E+06",
        "TRIG:COUN DEF;COUN?", "+9.90000000E+37",
        "TRIG:COUN 1000001", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TRIG:TIM 360000", "",
        "TRIG:TIM?", "+3.60000000E+05",
        "TRIG:TIM 360001", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "TRIG:TIM?", "+3.60000000E+05",
        "INIT", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "*TRG", "",
        "SYST:ERR?", "-211,\"Trigger ignored\"",
        "ABOR", "",
        "SYST:ERR?", kNoError,
    });

    addTranscript("a scan", {
        "SYST:TIME:SCAN?", "2024,01,02,03,04,05.000",
        "VOLT:RANG 0.1,(@103)", "",
        "CALC:SCAL:GAIN 0,(@102);OFFS -2.5,(@102);UNIT \"bar\",(@102);STAT ON,(@102)", "",
        "ROUT:SCAN (@101:103)", "",
        "TRIG:COUN 2", "",
        "! pass 1000", "",
        "INIT", "",
        "FORM:READ:ALAR ON", "",
        "FORM:READ:CHAN ON", "",
        "FORM:READ:TIME ON", "",
        "FORM:READ:TIME:TYPE ABS", "",
        "FORM:READ:UNIT ON", "",
        "SYST:TIME:SCAN?", "2024,01,02,03,04,06.000",
        "DATA:POIN?;:STAT:OPER:COND?", "+0;+16",
        "R? 3", "#10",
        "! pass 69", "",
        "DATA:POIN?;:STAT:OPER:COND?", "+3;+16",
        "R? 1", "#249+1.01361483E+00 Vdc,2024,01,02,03,04,06.000,101,0",
        "R? 5", "#299-2.50000000E+00 bar,2024,01,02,03,04,06.023,102,0,+9.90000000E+37 Vdc,2024,01,02,03,04,06.046,103,0",
        "DATA:POIN?;:STAT:OPER:COND?", "+0;+16",
        "INIT", "",
        "SYST:ERR?", "-213,\"Init ignored\"",
        "! pass 69", "",
        "DATA:POIN?;:STAT:OPER:COND?", "+3;+256",
        "FORM:READ:UNIT OFF;TIME:TYPE REL", "",
        "R? 1", "#237+1.01361332E+00,+6.90000000E-02,101,0",
        "FORM:READ:TIME OFF;CHAN OFF;ALAR OFF", "",
        "R?", "#231-2.50000000E+00,+9.90000000E+37",
        "R? 1", "#10",
        "SYST:ERR?", kNoError,
    });

    addTranscript("what ends a scan", {
        "ROUT:SCAN (@101)", "",
        "TRIG:SOUR BUS;COUN 3;:INIT", "",
        "STAT:OPER:COND?", "+32",
        "*TRG", "",
        "STAT:OPER:COND?", "+16",
        "! pass 23", "",
        "DATA:POIN?;:STAT:OPER:COND?", "+1;+32",
        "ABOR", "",
        "DATA:POIN?;:STAT:OPER:COND?", "+1;+256",
        "*SAV 1;:INIT;:STAT:OPER:COND?", "+32",
        "*RCL 1;:STAT:OPER:COND?;:ROUT:SCAN?", "+256;#16(@101)",
        "TRIG:SOUR TIM;TIM 2;:INIT;:STAT:OPER:COND?", "+16",
        "! pass 23", "",
        "STAT:OPER:COND?", "+32",
        "*RST;:STAT:OPER:COND?;:ROUT:SCAN?", "+256;#13(@)",
        "DATA:POIN?", "+1",
        "SYST:ERR?", kNoError,
    });

    addTranscript("stored states", {
        "TRIG:COUN 3;*SAV 2", "",
        "MEM:STAT:NAME 2,\"before lunch\"", "",
        "MEM:STAT:VAL? 2", "1",
        "MEM:STAT:VAL? 1", "0",
        "MEM:STAT:NAME? 2", "\"before lunch\"",
        "TRIG:COUN 5;*RCL 2;:TRIG:COUN?", "+3.00000000E+00",
        "*RST", "",
        "TRIG:COUN?", "+9.90000000E+37",
        "MEM:STAT:VAL? 2", "1",
        "*RCL 1", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "*SAV 6", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "SYST:ERR?", kNoError,
    });

    addTranscript("scaling", {
        "CALC:SCAL:UNIT? (@101)", "\"Vdc\"",
        "CALC:SCAL:UNIT \"#C\",(@101)", "",
        "CALC:SCAL:UNIT? (@101)", "\"#C\"",
        "CALC:SCAL:UNIT \"\",(@101)", "",
        "CALC:SCAL:UNIT? (@101)", "\"\"",
        "CALC:SCAL:UNIT \"a b\",(@101)", "",
        "SYST:ERR?", "-151,\"Invalid string data\"",
        "CALC:SCAL:UNIT \"ninechars\",(@101)", "",
        "SYST:ERR?", "-223,\"Too much data\"",
        "CALC:SCAL:FUNC DBM,(@101)", "",
        "CALC:SCAL:FUNC? (@101)", "DBM",
        "CALC:SCAL:FUNC SCAL,(@101)", "",
        "CALC:SCAL:FUNC? (@101)", "SCAL",
        "FUNC \"RES\",(@101)", "",
        "CALC:SCAL:UNIT? (@101)", "\"Ohm\"",
        "CALC:SCAL:FUNC DB,(@101)", "",
        "SYST:ERR?", "-221,\"Settings conflict\"",
        "CALC:SCAL:FUNC PCT,(@101)", "",
        "CALC:SCAL:REF:AUTO? (@101)", "1",
        "CALC:SCAL:REF 2.5,(@101)", "",
        "CALC:SCAL:REF? (@101)", "+2.500000E+00",
        "CALC:SCAL:REF:AUTO? (@101)", "0",
        "CALC:SCAL:GAIN? (@101);OFFS? (@101)", "+1.000000E+00;+0.000000E+00",
        "CALC:SCAL:GAIN -1.5e3,(@101);OFFS 0.25,(@101)", "",
        "CALC:SCAL:GAIN 1e16,(@101)", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "CALC:SCAL:GAIN? (@101);OFFS? (@101)", "-1.500000E+03;+2.500000E-01",
        "CALC:SCAL:DB:REF? (@101);:CALC:SCAL:DBM:REF? (@101)", "+0.000000E+00;+600",
        "CALC:SCAL:DB:REF -200,(@101);:CALC:SCAL:DBM:REF 8000,(@101)", "",
        "CALC:SCAL:DB:REF? (@101);:CALC:SCAL:DBM:REF? (@101)", "-2.000000E+02;+8000",
        "CALC:SCAL:DBM:REF 610,(@101)", "",
        "SYST:ERR?", "-224,\"Illegal parameter value\"",
        "CALC:SCAL:STAT ON,(@101)", "",
        "CALC:SCAL:STAT? (@101)", "1",
        "FUNC \"VOLT\",(@101)", "",
        "CALC:SCAL:STAT? (@101)", "0",
        "SYST:ERR?", kNoError,
    });

    addTranscript("labels", {
        "ROUT:CHAN:LAB? (@101)", "\"\"",
        "ROUT:CHAN:LAB \"oven \"\"2\"\"\",(@101)", "",
        "ROUT:CHAN:LAB? (@101)", "\"oven \"\"2\"\"\"",
        "ROUT:CHAN:LAB \"12345678901234567890123456789012345678901\",(@101)", "",
        "SYST:ERR?", "-223,\"Too much data\"",
        "SYST:ERR?", kNoError,
    });

    addTranscript("status registers", {
        "*ESE 32;*ESE?", "+32",
        "*STB?", "+0",
        "FOO", "",
        "*SRE 32;*SRE?", "+32",
        "*STB?", "+100",
        "*ESR?", "+32",
        "*ESR?", "+0",
        "*STB?", "+4",
        "*OPC", "",
        "*ESR?", "+1",
        "*CLS;*STB?", "+0",
        "*TST?", "+0",
        "*WAI", "",
        "SYST:ERR?", kNoError,
    });

    addTranscript("format and log settings", {
        "FORM:READ:ALAR?;CHAN?;TIME?;TIME:TYPE?;:FORM:READ:UNIT?", "0;0;0;REL;0",
        "FORM:READ:ALAR ON", "",
        "FORM:READ:CHAN 1", "",
        "FORM:READ:TIME ON", "",
        "FORM:READ:TIME:TYPE ABS", "",
        "FORM:READ:UNIT ON", "",
        "FORM:READ:ALAR?;CHAN?;TIME?;TIME:TYPE?;:FORM:READ:UNIT?", "1;1;1;ABS;1",
        "MMEM:LOG:ENAB ON;ENAB?", "1",
        "MMEM:FORM:READ:RLIM OFF;RLIM?", "0",
        "MMEM:FORM:READ:RLIM:COUN 100000;COUN?", "+1.00000000E+05",
        "MMEM:FORM:READ:RLIM:COUN 65535", "",
        "SYST:ERR?", "-222,\"Data out of range\"",
        "ROUT:MON:STAT ON;STAT?", "1",
        "SYST:ERR?", kNoError,
    });
    // clang-format on
}

void TestSimDialogue::transcript()
{
    QFETCH(QStringList, lines);
    SimBench bench;
    const QString pass = QStringLiteral("! pass ");
    QCOMPARE(lines.size() % 2, 0);
    for (int i = 0; i < lines.size(); i += 2) {
        if (lines[i].startsWith(pass)) {
            bench.pass(std::chrono::milliseconds(lines[i].mid(pass.size()).toInt()));
            continue;
        }
        // Both texts contain the line, so that a failure shows where it happened.
        QCOMPARE(QStringList({lines[i], bench.ask(lines[i])}),
                 QStringList({lines[i], lines[i + 1]}));
    }
}

void TestSimDialogue::identityHasItsSerialNumberInTheThirdField()
{
    SimBench bench;
    const QString identity = bench.ask("*IDN?");
    QCOMPARE(identity.split(QLatin1Char(',')).size(), 4);
    QCOMPARE(identity.section(QLatin1Char(','), 2, 2), QStringLiteral("MY00000042"));
    QVERIFY(!identity.contains(QLatin1Char(' ')));
}

void TestSimDialogue::clockRunsOnItsOwn()
{
    SimBench bench;
    bench.ask("SYST:DATE 2024,02,28");
    bench.ask("SYST:TIME 23,59,59.500");
    bench.pass(std::chrono::milliseconds(750));
    QCOMPARE(bench.ask("SYST:DATE?"), QStringLiteral("2024,02,29"));
    QCOMPARE(bench.ask("SYST:TIME?"), QStringLiteral("00,00,00.250"));
    bench.pass(std::chrono::hours(24));
    QCOMPARE(bench.ask("SYST:DATE?"), QStringLiteral("2024,03,01"));
}

void TestSimDialogue::refusedQueryAnswersNothing()
{
    SimBench bench;
    QVERIFY(bench.dialogue().handle("FUNC? (@999)", bench.now()).empty());
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-241,\"Hardware missing\""));
}

void TestSimDialogue::usedElsewhereIsLatchedOnce()
{
    SimBench bench;
    bench.instrument().setUsedElsewhere(true);
    bench.instrument().setUsedElsewhere(true);
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+2304"));
    QCOMPARE(bench.ask("STAT:OPER:EVEN?"), QStringLiteral("+2048"));
    QCOMPARE(bench.ask("STAT:OPER:EVEN?"), QStringLiteral("+0"));
    bench.instrument().setUsedElsewhere(false);
    QCOMPARE(bench.ask("STAT:OPER:COND?"), QStringLiteral("+256"));
    bench.instrument().setUsedElsewhere(true);
    QCOMPARE(bench.ask("*CLS;STAT:OPER:EVEN?"), QStringLiteral("+0"));
}

void TestSimDialogue::longLinesAreReported()
{
    SimBench bench;
    bench.dialogue().report(scnsim::ErrorCode::InputBufferOverrun);
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-363,\"Input buffer overrun\""));
}

void TestSimDialogue::switchMeasuresNothing()
{
    SimBench bench(SimBench::Slots{{1, 1}, {2, 3}});
    bench.ask("ROUT:SCAN (@101)");
    QCOMPARE(bench.ask("FUNC? (@101,201)"), QStringLiteral("\"VOLT\",\"NONE\""));
    for (const char* refused : {"ROUT:SCAN (@102,201)", "FUNC \"VOLT\",(@102,201)",
                                "FUNC \"VOLT\",(@201)", "CALC:SCAL:FUNC DB,(@102,201)"}) {
        QCOMPARE(bench.ask(refused), QString());
        QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-221,\"Settings conflict\""));
    }
    QCOMPARE(bench.ask("ROUT:SCAN?;:FUNC? (@201);:CALC:SCAL:FUNC? (@102)"),
             QStringLiteral("#16(@101);\"NONE\";SCAL"));
    QCOMPARE(bench.ask("FUNC \"NONE\",(@101)"), QString());
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-224,\"Illegal parameter value\""));
}

void TestSimDialogue::channelListHasAnEnd()
{
    SimBench bench(SimBench::Slots{{1, 8}});
    const QString forty = QStringLiteral(",101:140");
    const QString most = QStringLiteral("UNIT:TEMP? (@%1)").arg(forty.repeated(250).mid(1));
    QCOMPARE(bench.ask(most), QStringLiteral("C,").repeated(10000).chopped(1));
    const QString more = QStringLiteral("UNIT:TEMP? (@%1,101)").arg(forty.repeated(250).mid(1));
    QCOMPARE(bench.ask(more), QString());
    QCOMPARE(bench.ask("SYST:ERR?"), QStringLiteral("-223,\"Too much data\""));
}

SCN_TEST(TestSimDialogue, testprogram::NoApplication)
#include "test_simdialogue.moc"
