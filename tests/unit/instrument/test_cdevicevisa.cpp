#include "devicefixture.h"
#include "instrument/visabinding.h"
#include "support/testprogram.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <thread>

using namespace scn::visa;

namespace {

/// Succeeds with an invalid handle.
ViStatus SCN_VISA_CALL openNothing(ViSession, const ViChar*, ViAccessMode, ViUInt32,
                                   ViSession* session)
{
    *session = VI_NULL;
    return VI_SUCCESS;
}

} // namespace

/// Construction, connecting and disconnecting.
class TestCDeviceVisa : public QObject, protected DeviceFixture
{
    Q_OBJECT

private slots:
    void init() { makeDevice(); }
    void cleanup() { removeDevice(); }

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
};

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
    addFailures();
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
    VisaTable lying = scn::visabinding::table();
    lying.viOpen = openNothing;
    scn::visabinding::setTable(&lying);
    m_device->connectDevice(kTcpResource);
    m_fake->clearCalls();
    QCOMPARE(m_device->sendCommand(QStringLiteral("*IDN?"), 5000), QString());
    QCOMPARE(m_device->lastError(), QStringLiteral("仪器未连接"));
    m_device->disconnectDevice();
    QCOMPARE(m_fake->calls(), QStringList());
    m_device.reset();
}

SCN_TEST(TestCDeviceVisa, QCoreApplication)
#include "test_cdevicevisa.moc"
