#include "scpi/errorqueue.h"
#include "scpi/headerpattern.h"
#include "scpi/message.h"
#include "scpi/response.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace scnsim;

Q_DECLARE_METATYPE(scnsim::ErrorCode)

class TestSimGrammar : public QObject
{
    Q_OBJECT

private slots:
    void headerMatches_data();
    void headerMatches();
    void spellingsAreAllThatMatches_data();
    void spellingsAreAllThatMatches();
    void unitIsRefused_data();
    void unitIsRefused();
    void lineIsSplitAtSemicolonsOutsideQuotes();
    void blankUnitsAreLeftOut();
    void parametersAreClassified();
    void numbersAreRead_data();
    void numbersAreRead();
    void channelListIsRead();
    void channelListIsRefused_data();
    void channelListIsRefused();
    void answersHaveTheirForm();
    void errorQueueIsFirstInFirstOut();
    void fullErrorQueueEndsWithOverflow();
    void errorsSetTheBitOfTheirClass();
};

void TestSimGrammar::headerMatches_data()
{
    QTest::addColumn<QString>("spelling");
    QTest::addColumn<QString>("header");
    QTest::addColumn<bool>("matches");

    const auto row = [](const char* spelling, const char* header, bool matches) {
        QTest::addRow("%s %s", spelling, header)
            << QString::fromLatin1(spelling) << QString::fromLatin1(header) << matches;
    };
    row("SYSTem:ERRor[:NEXT]", "SYST:ERR", true);
    row("SYSTem:ERRor[:NEXT]", "system:error:next", true);
    row("SYSTem:ERRor[:NEXT]", "SysT:Error", true);
    row("SYSTem:ERRor[:NEXT]", "SYSTE:ERR", false);
    row("SYSTem:ERRor[:NEXT]", "SYST:ERR:NEXT:NEXT", false);
    row("SYSTem:ERRor[:NEXT]", "SYST", false);
    row("[SENSe:]VOLTage[:DC]:NPLC", "VOLT:NPLC", true);
    row("[SENSe:]VOLTage[:DC]:NPLC", "VOLT:DC:NPLC", true);
    row("[SENSe:]VOLTage[:DC]:NPLC", "SENS:VOLT:NPLC", true);
    row("[SENSe:]VOLTage[:DC]:NPLC", "VOLT:AC:NPLC", false);
    row("TEMPerature:TRANsducer:FTHermistor:TYPE", "TEMP:TRAN:fth:TYPE", true);
    row("*IDN", "*idn", true);
}

void TestSimGrammar::headerMatches()
{
    QFETCH(QString, spelling);
    QFETCH(QString, header);
    const HeaderPattern pattern(spelling.toStdString());
    QTEST(pattern.matches(headerNodes(header.toStdString())), "matches");
}

void TestSimGrammar::spellingsAreAllThatMatches_data()
{
    QTest::addColumn<QString>("spelling");
    QTest::addColumn<QStringList>("headers");
    QTest::newRow("common") << QStringLiteral("*IDN") << QStringList{QStringLiteral("*IDN")};
    QTest::newRow("optional behind")
        << QStringLiteral("SYSTem:ERRor[:NEXT]")
        << QStringLiteral("SYST:ERR SYST:ERROR SYSTEM:ERR SYSTEM:ERROR SYST:ERR:NEXT "
                          "SYST:ERROR:NEXT SYSTEM:ERR:NEXT SYSTEM:ERROR:NEXT")
               .split(QLatin1Char(' '));
    QTest::newRow("optional in front")
        << QStringLiteral("[SENSe:]FUNC")
        << QStringLiteral("FUNC SENS:FUNC SENSE:FUNC").split(QLatin1Char(' '));
}

void TestSimGrammar::spellingsAreAllThatMatches()
{
    QFETCH(QString, spelling);
    QFETCH(QStringList, headers);
    const HeaderPattern pattern(spelling.toStdString());
    QStringList spellings;
    for (const std::string& header : pattern.spellings()) {
        QVERIFY(pattern.matches(headerNodes(header)));
        QCOMPARE(shown(joinedHeader(headerNodes(header))), shown(header));
        spellings << shown(header);
    }
    QCOMPARE(spellings.size(), headers.size());
    QCOMPARE(QSet<QString>(spellings.begin(), spellings.end()),
             QSet<QString>(headers.begin(), headers.end()));
}

void TestSimGrammar::unitIsRefused_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<ErrorCode>("error");

    const auto row = [](const char* line, ErrorCode error) {
        QTest::newRow(line) << QByteArray(line) << error;
    };
    row("STR::NPLC 1,(@101)", ErrorCode::CommandHeaderError);
    row("::STR", ErrorCode::CommandHeaderError);
    row("STR:", ErrorCode::CommandHeaderError);
    row("?", ErrorCode::CommandHeaderError);
    row("*", ErrorCode::CommandHeaderError);
    row("1VOLT", ErrorCode::CommandHeaderError);
    row("FUNC?(@101)", ErrorCode::HeaderSeparatorError);
    row("VOLT,1", ErrorCode::HeaderSeparatorError);
    row("ABCDEFGHIJKLM", ErrorCode::MnemonicTooLong);
    row("V\xC3\xB6LT", ErrorCode::InvalidCharacter);
    row("VOLT\x01", ErrorCode::InvalidCharacter);
    row("VOLT %", ErrorCode::InvalidCharacter);
    row("VOLT 1,,2", ErrorCode::SyntaxError);
    row("VOLT 1,", ErrorCode::SyntaxError);
    row("VOLT +-1", ErrorCode::InvalidCharacterInNumber);
    row("VOLT 1.2.3", ErrorCode::InvalidCharacterInNumber);
    row("VOLT -", ErrorCode::InvalidCharacterInNumber);
    row("VOLT .", ErrorCode::InvalidCharacterInNumber);
    row("VOLT -inf", ErrorCode::InvalidCharacterInNumber);
    row("VOLT 1e999", ErrorCode::ExponentTooLarge);
    row("VOLT 10 V", ErrorCode::SuffixNotAllowed);
    row("VOLT 10mV", ErrorCode::SuffixNotAllowed);
    row("VOLT A-B", ErrorCode::InvalidCharacterData);
    row("FUNC \"VOLT", ErrorCode::InvalidStringData);
    row("FUNC \"VOLT\"x", ErrorCode::InvalidStringData);
    row("FUNC \"\xC2\xB0\"", ErrorCode::InvalidStringData);
    row("FUNC \"", ErrorCode::InvalidStringData);
    row("DATA #15hello", ErrorCode::BlockDataNotAllowed);
    row("ROUT:SCAN (@101", ErrorCode::InvalidExpression);
    row("ROUT:SCAN (", ErrorCode::InvalidExpression);
}

void TestSimGrammar::unitIsRefused()
{
    QFETCH(QByteArray, line);
    QFETCH(ErrorCode, error);
    const std::vector<MessageUnit> units = parseMessage(line.toStdString());
    QCOMPARE(units.size(), std::size_t{1});
    QCOMPARE(static_cast<int>(units.front().error), static_cast<int>(error));
}

void TestSimGrammar::lineIsSplitAtSemicolonsOutsideQuotes()
{
    const auto units = parseMessage(":syst:date?;ROUT:CHAN:LAB \"a;b\",(@101) ; *IDN?");
    QCOMPARE(units.size(), std::size_t{3});
    QVERIFY(units[0].rooted);
    QVERIFY(units[0].query);
    QCOMPARE(shown(units[0].header[1]), QStringLiteral("DATE"));
    QVERIFY(!units[1].rooted);
    QVERIFY(!units[1].query);
    QCOMPARE(shown(units[1].parameters[0].text), QStringLiteral("a;b"));
    QCOMPARE(shown(units[2].header[0]), QStringLiteral("*IDN"));
}

void TestSimGrammar::blankUnitsAreLeftOut()
{
    QCOMPARE(parseMessage("").size(), std::size_t{0});
    QCOMPARE(parseMessage(" \t ").size(), std::size_t{0});
    QCOMPARE(parseMessage(";; *CLS;").size(), std::size_t{1});
}

void TestSimGrammar::parametersAreClassified()
{
    const auto units = parseMessage("X -1.5e3 , on,'it''s \"it\"',(@101:103,105)");
    QCOMPARE(static_cast<int>(units[0].error), 0);
    const std::vector<Parameter>& p = units[0].parameters;
    QCOMPARE(p.size(), std::size_t{4});
    QVERIFY(p[0].type == Parameter::Type::Number);
    QCOMPARE(p[0].number, -1500.0);
    QVERIFY(p[1].type == Parameter::Type::Word);
    QCOMPARE(shown(p[1].text), QStringLiteral("ON"));
    QVERIFY(p[2].type == Parameter::Type::String);
    QCOMPARE(shown(p[2].text), QStringLiteral("it's \"it\""));
    QVERIFY(p[3].type == Parameter::Type::Expression);
    QCOMPARE(shown(p[3].text), QStringLiteral("@101:103,105"));
}

void TestSimGrammar::numbersAreRead_data()
{
    QTest::addColumn<double>("number");
    QTest::newRow("1") << 1.0;
    QTest::newRow("+0.02") << 0.02;
    QTest::newRow(".5") << 0.5;
    QTest::newRow("5.") << 5.0;
    QTest::newRow("1e+08") << 1e8;
    QTest::newRow("1E-06") << 1e-6;
    QTest::newRow("-0.999") << -0.999;
}

void TestSimGrammar::numbersAreRead()
{
    const auto units = parseMessage(std::string("X ") + QTest::currentDataTag());
    QCOMPARE(static_cast<int>(units[0].error), 0);
    QTEST(units[0].parameters[0].number, "number");
}

void TestSimGrammar::channelListIsRead()
{
    std::vector<ChannelSpan> spans;
    QVERIFY(parseChannelList("@", spans) == ErrorCode::None);
    QVERIFY(spans.empty());
    QVERIFY(parseChannelList(" @ 101 : 103 , 105 ", spans) == ErrorCode::None);
    QCOMPARE(spans.size(), std::size_t{2});
    QCOMPARE(spans[0].first, 101);
    QCOMPARE(spans[0].last, 103);
    QCOMPARE(spans[1].first, 105);
    QCOMPARE(spans[1].last, 105);
}

void TestSimGrammar::channelListIsRefused_data()
{
    QTest::addColumn<int>("unused");
    for (const char* list :
         {"", "101", "@101,", "@,101", "@101:", "@:101", "@101 102", "@a", "@101;102", "@123456"}) {
        QTest::newRow(list) << 0;
    }
}

void TestSimGrammar::channelListIsRefused()
{
    std::vector<ChannelSpan> spans;
    QVERIFY(parseChannelList(QTest::currentDataTag(), spans) == ErrorCode::InvalidExpression);
}

void TestSimGrammar::answersHaveTheirForm()
{
    QCOMPARE(shown(settingNumber(10)), QStringLiteral("+1.000000E+01"));
    QCOMPARE(shown(settingNumber(-0.0)), QStringLiteral("+0.000000E+00"));
    QCOMPARE(shown(settingNumber(-0.999)), QStringLiteral("-9.990000E-01"));
    QCOMPARE(shown(longNumber(9.9e37)), QStringLiteral("+9.90000000E+37"));
    QCOMPARE(shown(signedInteger(256)), QStringLiteral("+256"));
    QCOMPARE(shown(signedInteger(0)), QStringLiteral("+0"));
    QCOMPARE(shown(signedInteger(-113)), QStringLiteral("-113"));
    QCOMPARE(shown(switchText(true)), QStringLiteral("1"));
    QCOMPARE(shown(quoted("a\"b")), QStringLiteral("\"a\"\"b\""));
    QCOMPARE(shown(definiteBlock("")), QStringLiteral("#10"));
    QCOMPARE(shown(definiteBlock("(@)")), QStringLiteral("#13(@)"));
    QCOMPARE(shown(definiteBlock(std::string(123, 'x'))).left(5), QStringLiteral("#3123"));
}

void TestSimGrammar::errorQueueIsFirstInFirstOut()
{
    ErrorQueue queue;
    queue.push(ErrorCode::UndefinedHeader);
    queue.push(ErrorCode::DataOutOfRange);
    QCOMPARE(shown(queue.pop()), QStringLiteral("-113,\"Undefined header\""));
    QCOMPARE(shown(queue.pop()), QStringLiteral("-222,\"Data out of range\""));
    QCOMPARE(shown(queue.pop()), QStringLiteral("+0,\"No error\""));
}

void TestSimGrammar::fullErrorQueueEndsWithOverflow()
{
    ErrorQueue queue;
    for (std::size_t i = 0; i < ErrorQueue::kCapacity + 5; ++i) {
        queue.push(ErrorCode::UndefinedHeader);
    }
    QCOMPARE(queue.count(), ErrorQueue::kCapacity);
    for (std::size_t i = 1; i < ErrorQueue::kCapacity; ++i) {
        QCOMPARE(shown(queue.pop()), QStringLiteral("-113,\"Undefined header\""));
    }
    QCOMPARE(shown(queue.pop()), QStringLiteral("-350,\"Queue overflow\""));
    QCOMPARE(queue.count(), std::size_t{0});
}

void TestSimGrammar::errorsSetTheBitOfTheirClass()
{
    QCOMPARE(errorEventBit(ErrorCode::None), 0U);
    QCOMPARE(errorEventBit(ErrorCode::UndefinedHeader), 0x20U);
    QCOMPARE(errorEventBit(ErrorCode::DataOutOfRange), 0x10U);
    QCOMPARE(errorEventBit(ErrorCode::OutOfMemory), 0x08U);
    QCOMPARE(errorEventBit(ErrorCode::QueryInterrupted), 0x04U);
}

SCN_TEST(TestSimGrammar, testprogram::NoApplication)
#include "test_simgrammar.moc"
