#include "instrument/cdevicevisa.h"
#include "instrument/visabinding.h"
#include "support/fakevisa.h"
#include "support/testprogram.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextCodec>

#include <algorithm>
#include <memory>
#include <thread>

using scn::ExchangeResult;

namespace {

const QString kTcpResource = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");

/// Statuses that a read or a write may end with, beyond those that have tests of their own.
struct NamedStatus
{
    const char* name;
    ViStatus status;
};

constexpr NamedStatus kFailures[] = {
    {"system error", VI_ERROR_SYSTEM_ERROR},
    {"invalid session", VI_ERROR_INV_OBJECT},
    {"locked", VI_ERROR_RSRC_LOCKED},
    {"time-out", VI_ERROR_TMO},
    {"aborted", VI_ERROR_ABORT},
    {"allocation", VI_ERROR_ALLOC},
    {"input or output", VI_ERROR_IO},
    {"no such operation", VI_ERROR_NSUP_OPER},
    {"parity", VI_ERROR_ASRL_PARITY},
    {"framing", VI_ERROR_ASRL_FRAMING},
    {"overrun", VI_ERROR_ASRL_OVERRUN},
    {"invalid parameter", VI_ERROR_INV_PARAMETER},
    {"connection lost", VI_ERROR_CONN_LOST},
    {"buffer filled", VI_SUCCESS_MAX_CNT},
    {"unknown warning", VI_WARN_UNKNOWN_STATUS},
    {"unknown positive", 1},
    {"unknown negative", -1},
};

QString statusName(ViStatus status)
{
    return QLatin1String("status 0x") + QString::number(static_cast<quint32>(status), 16)
                                            .toUpper()
                                            .rightJustified(8, QLatin1Char('0'));
}

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

/// Succeeds with an invalid handle.
ViStatus SCN_VISA_CALL openNothing(ViSession, const ViChar*, ViAccessMode, ViUInt32,
                                   ViSession* session)
{
    *session = VI_NULL;
    return VI_SUCCESS;
}

/// Changes the locale's encoding for the lifetime of the object.
class LocaleCodec
{
public:
    explicit LocaleCodec(const char* name)
        : m_before(QTextCodec::codecForLocale())
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocaleCodec() { QTextCodec::setCodecForLocale(m_before); }
    LocaleCodec(const LocaleCodec&) = delete;
    LocaleCodec& operator=(const LocaleCodec&) = delete;

private:
    QTextCodec* const m_before;
};

} // namespace

class TestCDeviceVisa : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void instanceIsOneObjectWithoutParent();
    void constructionOpensTheResourceManager();
    void failedConstructionKeepsTheReason();
    void failedConstructionDecodesInTheLocalEncoding();
    void resourceManagerThatCameWithAWarningIsUsed();
    void destructionClosesSessionThenResourceManager();
    void destructionWithoutResourceManagerClosesNothing();

    void connectSetsUpASocket();
    void connectSetsUpASerialPort_data();
    void connectSetsUpASerialPort();
    void connectIgnoresTheResultsOfTheSettings();
    void connectWhileConnectedClosesTheOldSessionFirst();
    void connectSendsTheResourceInTheLocalEncoding();
    void failedConnectTellsTheReason();
    void failedConnect_data();
    void failedConnect();
    void failedConnectWhileConnectedLeavesNothingOpen();
    void sessionThatCameWithAWarningIsNotUsed();
    void disconnectClosesTheSessionOnly();
    void disconnectWhileDisconnectedDoesNothing();
    void failedCloseDisconnectsAllTheSame();
    void sessionWithoutHandleIsNotUsed();

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

private:
    std::unique_ptr<FakeVisa> m_fake;
    std::unique_ptr<CDeviceVisa> m_device;

    void connectDevice();
};

void TestCDeviceVisa::init()
{
    m_fake = std::make_unique<FakeVisa>();
    m_device = std::make_unique<CDeviceVisa>(nullptr);
}

void TestCDeviceVisa::cleanup()
{
    m_device.reset();
    m_fake.reset();
}

/// An open session, with the calls of its opening removed from the record.
void TestCDeviceVisa::connectDevice()
{
    QVERIFY(m_device->connectDevice(kTcpResource));
    m_fake->clearCalls();
}

void TestCDeviceVisa::instanceIsOneObjectWithoutParent()
{
    CDeviceVisa* const device = CDeviceVisa::instance();
    QVERIFY(device);
    QVERIFY(!device->parent());
    QCOMPARE(CDeviceVisa::instance(), device);
    CDeviceVisa* elsewhere = nullptr;
    std::thread([&] { elsewhere = CDeviceVisa::instance(); }).join();
    QCOMPARE(elsewhere, device);
}

void TestCDeviceVisa::constructionOpensTheResourceManager()
{
    QCOMPARE(m_fake->calls(), QStringList{QStringLiteral("viOpenDefaultRM()")});
    QVERIFY(!m_device->isConnected());
    QCOMPARE(m_device->lastError(), QString());
    QObject parent;
    QCOMPARE((new CDeviceVisa(&parent))->parent(), &parent);
}

void TestCDeviceVisa::failedConstructionKeepsTheReason()
{
    m_fake->clearCalls();
    m_fake->fail(FakeVisa::Operation::OpenDefaultRM, VI_ERROR_ALLOC);
    CDeviceVisa device(nullptr);
    QCOMPARE(device.lastError(), QStringLiteral("VISA 初始化失败: status 0xBFFF003C"));
    m_fake->fail(FakeVisa::Operation::Open, VI_ERROR_INV_OBJECT);
    QVERIFY(!device.connectDevice(kTcpResource));
    QCOMPARE(m_fake->calls().mid(0, 3),
             (QStringList{QStringLiteral("viOpenDefaultRM()"),
                          QStringLiteral("viStatusDesc(0, 0xBFFF003C)"),
                          QStringLiteral("viOpen(0, \"TCPIP0::127.0.0.1::5025::SOCKET\", 0, 0)")}));
}

void TestCDeviceVisa::failedConstructionDecodesInTheLocalEncoding()
{
    const LocaleCodec latin1("ISO-8859-1");
    m_fake->setStatusText(VI_ERROR_SYSTEM_ERROR, "\xC3\xA9");
    m_fake->fail(FakeVisa::Operation::OpenDefaultRM, VI_ERROR_SYSTEM_ERROR);
    CDeviceVisa device(nullptr);
    QCOMPARE(device.lastError(), QStringLiteral("VISA 初始化失败: Ã©"));
}

void TestCDeviceVisa::resourceManagerThatCameWithAWarningIsUsed()
{
    m_fake->fail(FakeVisa::Operation::OpenDefaultRM, VI_WARN_CONFIG_NLOADED);
    {
        CDeviceVisa device(nullptr);
        QCOMPARE(device.lastError(), QStringLiteral("VISA 初始化失败: status 0x3FFF0077"));
        m_fake->clearCalls();
        QVERIFY(device.connectDevice(kTcpResource));
        QVERIFY(m_fake->calls().constFirst().startsWith(QLatin1String("viOpen(1, ")));
    }
    QCOMPARE(m_fake->calls().constLast(), QStringLiteral("viClose(1)"));
}

void TestCDeviceVisa::destructionClosesSessionThenResourceManager()
{
    connectDevice();
    m_device.reset();
    QCOMPARE(m_fake->calls(),
             (QStringList{QStringLiteral("viClose(100)"), QStringLiteral("viClose(1)")}));
}

void TestCDeviceVisa::destructionWithoutResourceManagerClosesNothing()
{
    m_fake->fail(FakeVisa::Operation::OpenDefaultRM, VI_ERROR_ALLOC);
    auto device = std::make_unique<CDeviceVisa>(nullptr);
    m_fake->clearCalls();
    device.reset();
    QCOMPARE(m_fake->calls(), QStringList());
}

void TestCDeviceVisa::connectSetsUpASocket()
{
    m_fake->clearCalls();
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    QVERIFY(m_device->connectDevice(kTcpResource));
    QVERIFY(m_device->isConnected());
    QCOMPARE(m_fake->calls(),
             (QStringList{QStringLiteral("viOpen(1, \"TCPIP0::127.0.0.1::5025::SOCKET\", 0, 0)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF001A, 2000)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0018, 10)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0038, 1)")}));
    QCOMPARE(errors.count(), 0);
    QCOMPARE(m_device->lastError(), QString());
}

void TestCDeviceVisa::connectSetsUpASerialPort_data()
{
    QTest::addColumn<QString>("resource");
    QTest::newRow("upper case") << QStringLiteral("ASRL1::INSTR");
    QTest::newRow("lower case") << QStringLiteral("asrl/dev/ttyUSB0::instr");
    QTest::newRow("mixed case") << QStringLiteral("AsRl3::INSTR");
    QTest::newRow("anywhere in the text") << QStringLiteral("TCPIP0::host-asrl-1::5025::SOCKET");
}

void TestCDeviceVisa::connectSetsUpASerialPort()
{
    QFETCH(QString, resource);
    m_fake->clearCalls();
    QVERIFY(!m_device->isSerial());
    QVERIFY(m_device->connectDevice(resource));
    QVERIFY(m_device->isSerial());
    const QString open = QStringLiteral("viOpen(1, \"%1\", 0, 0)").arg(resource);
    QCOMPARE(m_fake->calls(),
             (QStringList{open, QStringLiteral("viSetAttribute(100, 0x3FFF0021, 57600)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0022, 8)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0023, 0)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0024, 10)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0018, 10)"),
                          QStringLiteral("viSetAttribute(100, 0x3FFF0038, 1)")}));
}

void TestCDeviceVisa::connectIgnoresTheResultsOfTheSettings()
{
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->fail(FakeVisa::Operation::SetAttribute, VI_ERROR_NSUP_ATTR);
    m_fake->clearCalls();
    QVERIFY(m_device->connectDevice(QStringLiteral("ASRL1::INSTR")));
    QCOMPARE(m_fake->calls().size(), 8);
    QCOMPARE(errors.count(), 0);
    m_fake->setReply("*IDN?", "x");
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QStringLiteral("x"));
}

void TestCDeviceVisa::connectWhileConnectedClosesTheOldSessionFirst()
{
    connectDevice();
    QVERIFY(m_device->connectDevice(QStringLiteral("TCPIP0::other::1::SOCKET")));
    QCOMPARE(m_fake->calls().mid(0, 2),
             (QStringList{QStringLiteral("viClose(100)"),
                          QStringLiteral("viOpen(1, \"TCPIP0::other::1::SOCKET\", 0, 0)")}));
    QCOMPARE(m_fake->openSessions(), QList<ViSession>{101});
    QVERIFY(m_device->isConnected());
}

void TestCDeviceVisa::connectSendsTheResourceInTheLocalEncoding()
{
    const LocaleCodec latin1("ISO-8859-1");
    m_fake->clearCalls();
    QVERIFY(m_device->connectDevice(QStringLiteral("é")));
    // The record shows the bytes as UTF-8, in which a lone E9 is no character.
    QCOMPARE(m_fake->calls().constFirst(), QStringLiteral("viOpen(1, \"\uFFFD\", 0, 0)"));
}

void TestCDeviceVisa::failedConnectTellsTheReason()
{
    const LocaleCodec latin1("ISO-8859-1");
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->setStatusText(VI_ERROR_RSRC_NFOUND, "\xC3\xA9");
    m_fake->fail(FakeVisa::Operation::Open, VI_ERROR_RSRC_NFOUND);
    m_fake->clearCalls();
    QVERIFY(!m_device->connectDevice(kTcpResource));
    QVERIFY(!m_device->isConnected());
    QCOMPARE(m_device->lastError(), QStringLiteral("连接失败: Ã©"));
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("连接失败: Ã©"));
    QCOMPARE(m_fake->calls(),
             (QStringList{QStringLiteral("viOpen(1, \"TCPIP0::127.0.0.1::5025::SOCKET\", 0, 0)"),
                          QStringLiteral("viStatusDesc(0, 0xBFFF0011)")}));
}

void TestCDeviceVisa::failedConnect_data()
{
    failedWrite_data();
}

void TestCDeviceVisa::failedConnect()
{
    QFETCH(ViStatus, status);
    m_fake->fail(FakeVisa::Operation::Open, status);
    QVERIFY(!m_device->connectDevice(kTcpResource));
    QVERIFY(!m_device->isConnected());
    QCOMPARE(m_device->lastError(), QStringLiteral("连接失败: %1").arg(statusName(status)));
    QCOMPARE(m_fake->openSessions(), QList<ViSession>());
    m_fake->fail(FakeVisa::Operation::StatusDesc, VI_ERROR_INV_OBJECT);
    QVERIFY(!m_device->connectDevice(kTcpResource));
    QCOMPARE(m_device->lastError(), QStringLiteral("连接失败: "));
}

void TestCDeviceVisa::failedConnectWhileConnectedLeavesNothingOpen()
{
    connectDevice();
    m_fake->fail(FakeVisa::Operation::Open, VI_ERROR_TMO);
    QVERIFY(!m_device->connectDevice(kTcpResource));
    QVERIFY(!m_device->isConnected());
    QCOMPARE(m_fake->openSessions(), QList<ViSession>());
    m_fake->recover(FakeVisa::Operation::Open);
    QVERIFY(m_device->connectDevice(kTcpResource));
    QVERIFY(m_device->isConnected());
}

void TestCDeviceVisa::sessionThatCameWithAWarningIsNotUsed()
{
    m_fake->fail(FakeVisa::Operation::Open, VI_SUCCESS_DEV_NPRESENT);
    QVERIFY(!m_device->connectDevice(kTcpResource));
    QCOMPARE(m_device->lastError(), QStringLiteral("连接失败: status 0x3FFF007D"));
    QVERIFY(!m_device->isConnected());
    QCOMPARE(m_fake->openSessions(), QList<ViSession>());
}

void TestCDeviceVisa::disconnectClosesTheSessionOnly()
{
    connectDevice();
    m_device->disconnectDevice();
    QCOMPARE(m_fake->calls(), QStringList{QStringLiteral("viClose(100)")});
    QVERIFY(!m_device->isConnected());
    QVERIFY(m_device->connectDevice(kTcpResource));
    QVERIFY(m_fake->calls().at(1).startsWith(QLatin1String("viOpen(1, ")));
}

void TestCDeviceVisa::disconnectWhileDisconnectedDoesNothing()
{
    m_fake->clearCalls();
    m_device->disconnectDevice();
    connectDevice();
    m_device->disconnectDevice();
    m_device->disconnectDevice();
    QCOMPARE(m_fake->calls(), QStringList{QStringLiteral("viClose(100)")});
}

void TestCDeviceVisa::failedCloseDisconnectsAllTheSame()
{
    connectDevice();
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_fake->fail(FakeVisa::Operation::Close, VI_ERROR_CLOSING_FAILED);
    m_device->disconnectDevice();
    QVERIFY(!m_device->isConnected());
    QCOMPARE(errors.count(), 0);
    QVERIFY(m_device->connectDevice(kTcpResource));
}

void TestCDeviceVisa::sessionWithoutHandleIsNotUsed()
{
    scn::visa::VisaTable lying = VisaBinding::table();
    lying.viOpen = openNothing;
    VisaBinding::setTable(&lying);
    m_device->connectDevice(kTcpResource);
    m_fake->clearCalls();
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
    QCOMPARE(m_device->lastError(), QStringLiteral("仪器未连接"));
    m_device->disconnectDevice();
    QCOMPARE(m_fake->calls(), QStringList());
    m_device.reset();
}

void TestCDeviceVisa::plainCommandReadsNothing()
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

void TestCDeviceVisa::queryReadsOnce()
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

void TestCDeviceVisa::anyQuestionMarkMakesAQuery_data()
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

void TestCDeviceVisa::anyQuestionMarkMakesAQuery()
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

void TestCDeviceVisa::eachExchangeSetsItsTimeout_data()
{
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<QString>("value");
    QTest::newRow("usual") << 5000 << QStringLiteral("5000");
    QTest::newRow("none") << 0 << QStringLiteral("0");
    QTest::newRow("long") << 2147483647 << QStringLiteral("2147483647");
    QTest::newRow("negative is none, not for ever") << -1 << QStringLiteral("0");
}

void TestCDeviceVisa::eachExchangeSetsItsTimeout()
{
    QFETCH(int, timeoutMs);
    QFETCH(QString, value);
    connectDevice();
    m_device->sendCommand(QStringLiteral("*CLS"), timeoutMs);
    QCOMPARE(m_fake->calls().constFirst(),
             QStringLiteral("viSetAttribute(100, 0x3FFF001A, %1)").arg(value));
}

void TestCDeviceVisa::commandIsSentInUtf8()
{
    const LocaleCodec latin1("ISO-8859-1");
    connectDevice();
    m_fake->setReply("UNIT \xE2\x84\x83?", "\xE6\xB8\xA9");
    QCOMPARE(m_device->sendCommand(QStringLiteral("UNIT ℃?"), 5000), QStringLiteral("温"));
}

void TestCDeviceVisa::replyIsTrimmed_data()
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

void TestCDeviceVisa::replyIsTrimmed()
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

void TestCDeviceVisa::longestReplyFits()
{
    connectDevice();
    m_fake->setReply("R? 1000", QByteArray(40958, 'r'));
    QCOMPARE(m_device->sendCommand(QStringLiteral("R? 1000"), 5000),
             QString(40958, QLatin1Char('r')));
}

void TestCDeviceVisa::replyThatFillsTheBufferFails()
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

void TestCDeviceVisa::onlyAReplyThatFillsTheBufferOverflows()
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

void TestCDeviceVisa::restOfALongReplyStaysWithTheInstrument()
{
    connectDevice();
    m_fake->setReply("LONG?", QByteArray(40959, 'r') + "rest");
    m_fake->setReply("NEXT?", "next");
    QCOMPARE(m_device->sendCommand(QStringLiteral("LONG?"), 5000), QString());
    QCOMPARE(m_fake->pendingOutput(), QByteArray("rest\n"));
    QCOMPARE(m_device->sendCommand(QStringLiteral("NEXT?"), 5000), QStringLiteral("rest"));
}

void TestCDeviceVisa::lateReplyIsTakenForTheNextOne()
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

void TestCDeviceVisa::countBeyondTheBufferIsNotBelieved()
{
    connectDevice();
    scn::visa::VisaTable lying = VisaBinding::table();
    lying.viRead = readMoreThanThereIs;
    VisaBinding::setTable(&lying);
    QCOMPARE(m_device->sendCommand(QStringLiteral("R?"), 5000), QString(40959, QLatin1Char('r')));
    m_device.reset();
}

void TestCDeviceVisa::replyEndsAtItsCount()
{
    connectDevice();
    scn::visa::VisaTable dirty = VisaBinding::table();
    dirty.viRead = readIntoDirt;
    VisaBinding::setTable(&dirty);
    QCOMPARE(m_device->sendCommand(QStringLiteral("R?"), 5000), QStringLiteral("rrr"));
    m_device.reset();
}

void TestCDeviceVisa::sendWhileDisconnectedFailsEveryTime()
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

void TestCDeviceVisa::failedWrite_data()
{
    QTest::addColumn<ViStatus>("status");
    for (const NamedStatus& row : kFailures) {
        QTest::newRow(row.name) << row.status;
    }
}

void TestCDeviceVisa::failedWrite()
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

void TestCDeviceVisa::terminationCharacterIsNoSuccessOfAWrite()
{
    connectDevice();
    m_fake->fail(FakeVisa::Operation::Write, VI_SUCCESS_TERM_CHAR);
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    QCOMPARE(errors.count(), 1);
    QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: status 0x3FFF0005"));
}

void TestCDeviceVisa::failedRead_data()
{
    failedWrite_data();
}

void TestCDeviceVisa::failedRead()
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

void TestCDeviceVisa::successOfAReadWithoutTerminationCharacter()
{
    connectDevice();
    m_fake->scriptRead(VI_SUCCESS, "whole");
    QSignalSpy errors(m_device.get(), &CDeviceVisa::errorOccurred);
    QCOMPARE(m_device->sendCommand(QStringLiteral("X?"), 5000), QStringLiteral("whole"));
    QCOMPARE(errors.count(), 0);
}

void TestCDeviceVisa::exchangeDecodesStatusTextsAsUtf8()
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

void TestCDeviceVisa::statusTextOfAnyLengthIsSafe()
{
    connectDevice();
    m_fake->setStatusText(VI_ERROR_IO, QByteArray(400, 't'));
    m_fake->scriptRead(VI_ERROR_IO, QByteArray());
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    const QString text(255, QLatin1Char('t'));
    QCOMPARE(m_device->lastError(), QStringLiteral("读取响应失败: %1").arg(text));
}

void TestCDeviceVisa::statusWithoutTextLeavesItEmpty()
{
    connectDevice();
    m_fake->fail(FakeVisa::Operation::StatusDesc, VI_ERROR_INV_OBJECT);
    m_fake->fail(FakeVisa::Operation::Write, VI_ERROR_IO);
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("发送命令失败: "));
}

void TestCDeviceVisa::lostInstrumentIsNotNoticedHere()
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

void TestCDeviceVisa::successKeepsTheLastError()
{
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    connectDevice();
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    QCOMPARE(m_device->lastError(), QStringLiteral("仪器未连接"));
}

void TestCDeviceVisa::commandsAreSentInOrder()
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

void TestCDeviceVisa::commandsGoOnBehindAFailure()
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

void TestCDeviceVisa::noCommandsAreCompletedToo()
{
    m_fake->clearCalls();
    QSignalSpy all(m_device.get(), &CDeviceVisa::commandsCompleted);
    QVERIFY(m_device->sendCommands({}, 5000).isEmpty());
    QCOMPARE(all.count(), 1);
    QCOMPARE(m_fake->calls(), QStringList());
}

SCN_TEST(TestCDeviceVisa, QCoreApplication)
#include "test_cdevicevisa.moc"
