#include "devicefixture.h"
#include "instrument/visabinding.h"
#include "support/testprogram.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace scn::visa;

using scn::ExchangeResult;

namespace {

/// Fills the buffer and reports a much larger count.
ViStatus SCN_VISA_CALL readMoreThanThereIs(ViSession, ViByte* buffer, ViUInt32 count,
                                           ViUInt32* received)
{
    std::fill_n(buffer, count, ViByte('r'));
    *received = 0xFFFFFFFF;
    return VI_SUCCESS;
}

/// Leaves other bytes after the reply, like a buffer that is not cleared.
ViStatus SCN_VISA_CALL readIntoDirt(ViSession, ViByte* buffer, ViUInt32 count, ViUInt32* received)
{
    std::fill_n(buffer, count, ViByte('d'));
    std::fill_n(buffer, 3, ViByte('r'));
    *received = 3;
    return VI_SUCCESS;
}

} // namespace

/// Commands and queries, and the messages of their failures.
class TestCDeviceVisaExchange : public QObject, protected DeviceFixture
{
    Q_OBJECT

private slots:
    void init() { makeDevice(); }
    void cleanup() { removeDevice(); }

    void plainCommandReadsNothing();
    void queryReadsOnce();
    void anyQuestionMarkMakesAQuery_data();
    void anyQuestionMarkMakesAQuery();
    void eachExchangeSetsItsTimeout_data();
    void eachExchangeSetsItsTimeout();
    void commandIsSentInUtf8();
    void replyIsTrimmed_data();
    void replyIsTrimmed();
    void longestReplyFits();
    void replyThatFillsTheBufferFails();
    void onlyAReplyThatFillsTheBufferOverflows();
    void restOfALongReplyStaysWithTheInstrument();
    void lateReplyIsTakenForTheNextOne();
    void countBeyondTheBufferIsNotBelieved();
    void replyEndsAtItsCount();

    void sendWhileDisconnectedFailsEveryTime();
    void failedWrite_data();
    void failedWrite();
    void terminationCharacterIsNoSuccessOfAWrite();
    void failedRead_data();
    void failedRead();
    void successOfAReadWithoutTerminationCharacter();
    void exchangeDecodesStatusTextsAsUtf8();
    void statusTextOfAnyLengthIsSafe();
    void statusWithoutTextLeavesItEmpty();
    void lostInstrumentIsNotNoticedHere();
    void successKeepsTheLastError();

    void commandsAreSentInOrder();
    void commandsGoOnBehindAFailure();
    void noCommandsAreCompletedToo();
};

void TestCDeviceVisaExchange::plainCommandReadsNothing()
{
    connectDevice();
    m_fake->pushOutput("not for this one\n");
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    QCOMPARE(m_device->sendCommand(QStringLiteral("*CLS"), 5000), QString());
    QCOMPARE(m_fake->calls(), (QStringList{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"),
                                           QStringLiteral("viWrite(100, \"*CLS\\n\")")}));
    QCOMPARE(completed.count(), 1);
    QCOMPARE(completed.at(0).at(0).toString(), QStringLiteral("*CLS"));
    QVERIFY(completed.at(0).at(1).toString().isEmpty());
    QCOMPARE(errors.count(), 0);
    QCOMPARE(m_fake->pendingOutput(), QByteArray("not for this one\n"));
}

void TestCDeviceVisaExchange::queryReadsOnce()
{
    connectDevice();
    m_fake->setReply("*IDN?", "maker,model,serial,1.0");
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000),
             QStringLiteral("maker,model,serial,1.0"));
    QCOMPARE(m_fake->calls(), (QStringList{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"),
                                           QStringLiteral("viWrite(100, \"*IDN?\\n\")"),
                                           QStringLiteral("viRead(100, 40959)")}));
    QCOMPARE(completed.count(), 1);
    QCOMPARE(completed.at(0).at(0).toString(), QStringLiteral("*IDN?"));
    QCOMPARE(completed.at(0).at(1).toString(), QStringLiteral("maker,model,serial,1.0"));
}

void TestCDeviceVisaExchange::anyQuestionMarkMakesAQuery_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("reads");
    QTest::newRow("at the end") << QStringLiteral("SYST:ERR?") << true;
    QTest::newRow("with an argument") << QStringLiteral("FUNC? (@101)") << true;
    QTest::newRow("at the start") << QStringLiteral("?x") << true;
    QTest::newRow("alone") << QStringLiteral("?") << true;
    QTest::newRow("inside an argument") << QStringLiteral("DISP \"why? well\"") << true;
    QTest::newRow("none") << QStringLiteral("INIT") << false;
    QTest::newRow("another character that looks like it") << QStringLiteral("INIT？") << false;
    QTest::newRow("empty") << QString() << false;
}

void TestCDeviceVisaExchange::anyQuestionMarkMakesAQuery()
{
    QFETCH(QString, command);
    QFETCH(bool, reads);
    connectDevice();
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    QCOMPARE(m_device->sendCommand(command, 5000), QString());
    QCOMPARE(m_fake->calls().contains(QStringLiteral("viRead(100, 40959)")), reads);
    // An unanswered query ends with its time-out.
    QCOMPARE(errors.count(), reads ? 1 : 0);
    QCOMPARE(m_fake->writtenLines(), QStringList{command});
}

void TestCDeviceVisaExchange::eachExchangeSetsItsTimeout_data()
{
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<QString>("value");
    QTest::newRow("usual") << 5000 << QStringLiteral("5000");
    QTest::newRow("none") << 0 << QStringLiteral("0");
    QTest::newRow("long") << 2147483647 << QStringLiteral("2147483647");
    QTest::newRow("negative is none, not for ever") << -1 << QStringLiteral("0");
}

void TestCDeviceVisaExchange::eachExchangeSetsItsTimeout()
{
    QFETCH(int, timeoutMs);
    QFETCH(QString, value);
    connectDevice();
    m_device->sendCommand(QStringLiteral("*CLS"), timeoutMs);
    QCOMPARE(m_fake->calls().constFirst(),
             QStringLiteral("viSetAttribute(100, 0x3FFF001A, %1)").arg(value));
}

void TestCDeviceVisaExchange::commandIsSentInUtf8()
{
    const LocaleCodec latin1("ISO-8859-1");
    connectDevice();
    m_fake->setReply("UNIT \xE2\x84\x83?", "\xE6\xB8\xA9");
    QCOMPARE(m_device->sendCommand(QStringLiteral("UNIT ℃?"), 5000), QStringLiteral("温"));
}

void TestCDeviceVisaExchange::replyIsTrimmed_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("text");
    QTest::newRow("line feed") << QByteArray("1\n") << QStringLiteral("1");
    QTest::newRow("blanks and line feed") << QByteArray(" a b \t \n") << QStringLiteral("a b");
    QTest::newRow("carriage return") << QByteArray("x\r\n") << QStringLiteral("x");
    QTest::newRow("line feed only") << QByteArray("\n") << QString();
    QTest::newRow("blanks only") << QByteArray("  \n") << QString();
    QTest::newRow("up to a zero byte") << QByteArray(" ab\0cd\n", 7) << QStringLiteral("ab");
    QTest::newRow("zero byte first") << QByteArray("\0cd\n", 4) << QString();
    QTest::newRow("UTF-8") << QByteArray("\xE2\x84\x83\n") << QStringLiteral("℃");
    QTest::newRow("no UTF-8") << QByteArray("a\xFF\n") << QStringLiteral("a\uFFFD");
}

void TestCDeviceVisaExchange::replyIsTrimmed()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, text);
    connectDevice();
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    m_fake->scriptRead(VI_SUCCESS_TERM_CHAR, reply);
    QCOMPARE(m_device->sendCommand(QStringLiteral("X?"), 5000), text);
    QCOMPARE(completed.count(), 1);
    QCOMPARE(completed.at(0).at(1).toString(), text);
}

void TestCDeviceVisaExchange::longestReplyFits()
{
    connectDevice();
    m_fake->setReply("R? 1000", QByteArray(40958, 'r'));
    QCOMPARE(m_device->sendCommand(QStringLiteral("R? 1000"), 5000),
             QString(40958, QLatin1Char('r')));
}

void TestCDeviceVisaExchange::replyThatFillsTheBufferFails()
{
    connectDevice();
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->setResponder([](const QByteArray&) { return QByteArray(40959, 'r'); });
    QCOMPARE(m_device->sendCommand(QStringLiteral("R? 1000"), 5000), QString());
    QCOMPARE(m_device->lastError(), QStringLiteral("读取响应失败: status 0x3FFF0006"));
    QCOMPARE(errors.count(), 1);
    QCOMPARE(completed.count(), 0);
    QCOMPARE(m_fake->calls().filter(QStringLiteral("viRead")).size(), 1);
}

void TestCDeviceVisaExchange::onlyAReplyThatFillsTheBufferOverflows()
{
    connectDevice();
    ExchangeResult result{};
    m_fake->scriptRead(VI_SUCCESS_MAX_CNT, QByteArray(40959, 'r'));
    m_device->sendCommand(QStringLiteral("R? 1000"), 5000, result);
    QCOMPARE(result, ExchangeResult::Overflowed);
    m_fake->setReply("R? 2", "rr");
    QCOMPARE(m_device->sendCommand(QStringLiteral("R? 2"), 5000, result), QStringLiteral("rr"));
    QCOMPARE(result, ExchangeResult::Done);
    m_fake->scriptRead(VI_ERROR_TMO, QByteArray());
    m_device->sendCommand(QStringLiteral("R? 3"), 5000, result);
    QCOMPARE(result, ExchangeResult::TimedOut);
    m_fake->scriptRead(VI_ERROR_CONN_LOST, QByteArray());
    m_device->sendCommand(QStringLiteral("R? 3"), 5000, result);
    QCOMPARE(result, ExchangeResult::Lost);
    m_device->sendCommand(QStringLiteral("ABOR"), 5000, result);
    QCOMPARE(result, ExchangeResult::Done);
    m_device->disconnectDevice();
    m_device->sendCommand(QStringLiteral("R? 3"), 5000, result);
    QCOMPARE(result, ExchangeResult::Lost);
}

void TestCDeviceVisaExchange::restOfALongReplyStaysWithTheInstrument()
{
    connectDevice();
    m_fake->setReply("LONG?", QByteArray(40959, 'r') + "rest");
    m_fake->setReply("NEXT?", "next");
    QCOMPARE(m_device->sendCommand(QStringLiteral("LONG?"), 5000), QString());
    QCOMPARE(m_fake->pendingOutput(), QByteArray("rest\n"));
    QCOMPARE(m_device->sendCommand(QStringLiteral("NEXT?"), 5000), QStringLiteral("rest"));
}

void TestCDeviceVisaExchange::lateReplyIsTakenForTheNextOne()
{
    connectDevice();
    m_fake->setReply("SLOW?", "slow");
    m_fake->setReply("NEXT?", "next");
    m_fake->delayNextReply("SLOW?");
    QCOMPARE(m_device->sendCommand(QStringLiteral("SLOW?"), 5000), QString());
    QCOMPARE(m_device->lastError(), QStringLiteral("读取响应失败: status 0xBFFF0015"));
    QCOMPARE(m_device->sendCommand(QStringLiteral("NEXT?"), 5000), QStringLiteral("slow"));
    QCOMPARE(m_device->sendCommand(QStringLiteral("SLOW?"), 5000), QStringLiteral("next"));
}

void TestCDeviceVisaExchange::countBeyondTheBufferIsNotBelieved()
{
    connectDevice();
    VisaTable lying = scn::visabinding::table();
    lying.viRead = readMoreThanThereIs;
    scn::visabinding::setTable(&lying);
    QCOMPARE(m_device->sendCommand(QStringLiteral("R?"), 5000), QString(40959, QLatin1Char('r')));
    m_device.reset();
}

void TestCDeviceVisaExchange::replyEndsAtItsCount()
{
    connectDevice();
    VisaTable dirty = scn::visabinding::table();
    dirty.viRead = readIntoDirt;
    scn::visabinding::setTable(&dirty);
    QCOMPARE(m_device->sendCommand(QStringLiteral("R?"), 5000), QStringLiteral("rrr"));
    m_device.reset();
}

void TestCDeviceVisaExchange::sendWhileDisconnectedFailsEveryTime()
{
    m_fake->clearCalls();
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    for (int i = 1; i <= 3; ++i) {
        QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
        QCOMPARE(errors.count(), i);
        QCOMPARE(errors.constLast().at(0).toString(), QStringLiteral("仪器未连接"));
        QCOMPARE(m_device->lastError(), QStringLiteral("仪器未连接"));
    }
    QCOMPARE(completed.count(), 0);
    QCOMPARE(m_fake->calls(), QStringList());
}

void TestCDeviceVisaExchange::failedWrite_data()
{
    addFailures();
}

void TestCDeviceVisaExchange::failedWrite()
{
    QFETCH(ViStatus, status);
    connectDevice();
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->fail(FakeVisa::Operation::Write, status);
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
    const QString message = QStringLiteral("发送命令失败: %1").arg(statusName(status));
    QCOMPARE(m_device->lastError(), message);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.at(0).at(0).toString(), message);
    QCOMPARE(completed.count(), 0);
    const QString description =
        QStringLiteral("viStatusDesc(100, %1)").arg(statusName(status).mid(7));
    QCOMPARE(m_fake->calls(),
             (QStringList{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"),
                          QStringLiteral("viWrite(100, \"*IDN?\\n\")"), description}));
    QVERIFY(m_device->isConnected());
}

void TestCDeviceVisaExchange::terminationCharacterIsNoSuccessOfAWrite()
{
    connectDevice();
    m_fake->fail(FakeVisa::Operation::Write, VI_SUCCESS_TERM_CHAR);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: status 0x3FFF0005"));
}

void TestCDeviceVisaExchange::failedRead_data()
{
    addFailures();
}

void TestCDeviceVisaExchange::failedRead()
{
    QFETCH(ViStatus, status);
    connectDevice();
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->scriptRead(status, "half a rep");
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
    const QString message = QStringLiteral("读取响应失败: %1").arg(statusName(status));
    QCOMPARE(m_device->lastError(), message);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.at(0).at(0).toString(), message);
    QCOMPARE(completed.count(), 0);
    const QString description =
        QStringLiteral("viStatusDesc(100, %1)").arg(statusName(status).mid(7));
    QCOMPARE(m_fake->calls().mid(2),
             (QStringList{QStringLiteral("viRead(100, 40959)"), description}));
    QVERIFY(m_device->isConnected());
}

void TestCDeviceVisaExchange::successOfAReadWithoutTerminationCharacter()
{
    connectDevice();
    m_fake->scriptRead(VI_SUCCESS, "whole");
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    QCOMPARE(m_device->sendCommand(QStringLiteral("X?"), 5000), QStringLiteral("whole"));
    QCOMPARE(errors.count(), 0);
}

void TestCDeviceVisaExchange::exchangeDecodesStatusTextsAsUtf8()
{
    const LocaleCodec latin1("ISO-8859-1");
    connectDevice();
    m_fake->setStatusText(VI_ERROR_IO, "\xC3\xA9");
    m_fake->fail(FakeVisa::Operation::Write, VI_ERROR_IO, 0, 1);
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: é"));
    m_fake->scriptRead(VI_ERROR_IO, QByteArray());
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("读取响应失败: é"));
}

void TestCDeviceVisaExchange::statusTextOfAnyLengthIsSafe()
{
    connectDevice();
    m_fake->setStatusText(VI_ERROR_IO, QByteArray(400, 't'));
    m_fake->scriptRead(VI_ERROR_IO, QByteArray());
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    const QString text(255, QLatin1Char('t'));
    QCOMPARE(m_device->lastError(), QStringLiteral("读取响应失败: %1").arg(text));
}

void TestCDeviceVisaExchange::statusWithoutTextLeavesItEmpty()
{
    connectDevice();
    m_fake->fail(FakeVisa::Operation::StatusDesc, VI_ERROR_INV_OBJECT);
    m_fake->fail(FakeVisa::Operation::Write, VI_ERROR_IO);
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: "));
}

void TestCDeviceVisaExchange::lostInstrumentIsNotNoticedHere()
{
    connectDevice();
    m_fake->setReply("*IDN?", "x");
    m_fake->dropConnection();
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
        QVERIFY(m_device->isConnected());
        QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: status 0xBFFF00A6"));
    }
    QVERIFY(m_device->connectDevice(kTcpResource));
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QStringLiteral("x"));
}

void TestCDeviceVisaExchange::successKeepsTheLastError()
{
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    connectDevice();
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("仪器未连接"));
}

void TestCDeviceVisaExchange::commandsAreSentInOrder()
{
    connectDevice();
    m_fake->setReply("A?", "1");
    m_fake->setReply("C?", " 3 ");
    QSignalSpy completed(m_device.get(), &CDeviceVisa::commandCompleted);
    QSignalSpy all(m_device.get(), &CDeviceVisa::commandsCompleted);
    const QStringList commands = {QStringLiteral("A?"), QStringLiteral("B"), QStringLiteral("C?")};
    const QVector<QString> expected = {QStringLiteral("1"), QString(), QStringLiteral("3")};
    QCOMPARE(m_device->sendCommands(commands, 777), expected);
    QCOMPARE(m_fake->calls(), (QStringList{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 777)"),
                                           QStringLiteral("viWrite(100, \"A?\\n\")"),
                                           QStringLiteral("viRead(100, 40959)"),
                                           QStringLiteral("viSetAttribute(100, 0x3FFF001A, 777)"),
                                           QStringLiteral("viWrite(100, \"B\\n\")"),
                                           QStringLiteral("viSetAttribute(100, 0x3FFF001A, 777)"),
                                           QStringLiteral("viWrite(100, \"C?\\n\")"),
                                           QStringLiteral("viRead(100, 40959)")}));
    QCOMPARE(completed.count(), 3);
    QCOMPARE(all.count(), 1);
    QCOMPARE(all.at(0).at(0).toStringList(), commands);
    QCOMPARE(all.at(0).at(1).value<QVector<QString>>(), expected);
}

void TestCDeviceVisaExchange::commandsGoOnBehindAFailure()
{
    connectDevice();
    m_fake->setReply("A?", "1");
    m_fake->setReply("C?", "3");
    m_fake->fail(FakeVisa::Operation::Write, VI_ERROR_IO, 1, 1);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    const QVector<QString> expected = {QStringLiteral("1"), QString(), QStringLiteral("3")};
    QCOMPARE(m_device->sendCommands(
                 {QStringLiteral("A?"), QStringLiteral("B?"), QStringLiteral("C?")}, 5000),
             expected);
    QCOMPARE(errors.count(), 1);
}

void TestCDeviceVisaExchange::noCommandsAreCompletedToo()
{
    m_fake->clearCalls();
    QSignalSpy all(m_device.get(), &CDeviceVisa::commandsCompleted);
    QVERIFY(m_device->sendCommands({}, 5000).isEmpty());
    QCOMPARE(all.count(), 1);
    QCOMPARE(m_fake->calls(), QStringList());
}

SCN_TEST(TestCDeviceVisaExchange, QCoreApplication)
#include "test_cdevicevisaexchange.moc"
