#include "instrument/cdevicevisa.h"
#include "instrument/visabinding.h"
#include "support/testprogram.h"
#include "unit/visa/peers_posix.h"
#include "visa/visaprovider.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <memory>
#include <thread>

using scn::ExchangeResult;

namespace {

/// A thread that asks the instrument something it never answers.
class AskingThread : public QThread
{
public:
    explicit AskingThread(CDeviceVisa& device)
        : m_device(device)
    {
    }

protected:
    void run() override { m_device.sendCommand(QStringLiteral("ASK?"), 60000); }

private:
    CDeviceVisa& m_device;
};

} // namespace

/// The gate together with the provider, over a real connection.
class TestInstrumentLink : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void exchangeOverTcp();
    void exchangeOverASerialPort();
    void lateReplyIsNotTakenForTheNextOne();
    void replyThatFillsTheBufferFails();
    void lostInstrumentFailsAtOnceUntilConnectedAgain();
    void nobodyListens();
    void terminatedThreadLeavesTheGateFree();
    void interruptedThreadLeavesItsExchange();
};

void TestInstrumentLink::initTestCase()
{
    scn::visabinding::setTable(&scn::visa::providerVisaTable());
}

void TestInstrumentLink::cleanupTestCase()
{
    scn::visabinding::setTable(nullptr);
}

void TestInstrumentLink::exchangeOverTcp()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    QByteArray command;
    std::thread instrument([&] {
        command = peer.receive(6);
        peer.send("maker,model,");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        peer.send("serial,1.0\r\n");
    });
    const QString reply = device.sendCommand(QStringLiteral("*IDN?"), 5000);
    instrument.join();
    QCOMPARE(command, QByteArray("*IDN?\n"));
    QCOMPARE(reply, QStringLiteral("maker,model,serial,1.0"));
    QCOMPARE(device.lastError(), QString());
}

void TestInstrumentLink::exchangeOverASerialPort()
{
    PtyPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QByteArray command;
    std::thread instrument([&] {
        command = peer.receive(6);
        peer.send("maker,model,serial,1.0\n");
    });
    const QString reply = device.sendCommand(QStringLiteral("*IDN?"), 5000);
    instrument.join();
    QCOMPARE(command, QByteArray("*IDN?\n"));
    QCOMPARE(reply, QStringLiteral("maker,model,serial,1.0"));
}

void TestInstrumentLink::lateReplyIsNotTakenForTheNextOne()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    QCOMPARE(device.sendCommand(QStringLiteral("SLOW?"), 50), QString());
    QCOMPARE(
        device.lastError(),
        QStringLiteral("读取响应失败: "
                       "VI_ERROR_TMO: the time-out expired before the operation was complete"));
    QCOMPARE(peer.receive(6), QByteArray("SLOW?\n"));
    QVERIFY(peer.send("slow\n"));
    QTest::qWait(20);
    std::thread instrument([&] {
        peer.receive(6);
        peer.send("next\n");
    });
    const QString reply = device.sendCommand(QStringLiteral("NEXT?"), 5000);
    instrument.join();
    QCOMPARE(reply, QStringLiteral("next"));
}

void TestInstrumentLink::replyThatFillsTheBufferFails()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    std::thread instrument([&] {
        peer.receive(3);
        peer.send(QByteArray(40959, 'r'));
    });
    const QString reply = device.sendCommand(QStringLiteral("R?"), 5000);
    instrument.join();
    QCOMPARE(reply, QString());
    QCOMPARE(device.lastError(),
             QStringLiteral("读取响应失败: "
                            "VI_SUCCESS_MAX_CNT: as many bytes were read as were asked for"));
}

void TestInstrumentLink::lostInstrumentFailsAtOnceUntilConnectedAgain()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    peer.close();
    QTest::qWait(20);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(device.sendCommand(QStringLiteral("*IDN?"), 5000), QString());
        QCOMPARE(device.lastError(),
                 QStringLiteral("发送命令失败: "
                                "VI_ERROR_CONN_LOST: the connection of this session is lost"));
        QVERIFY(device.isConnected());
    }
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    std::thread instrument([&] {
        peer.receive(6);
        peer.send("back\n");
    });
    const QString reply = device.sendCommand(QStringLiteral("*IDN?"), 5000);
    instrument.join();
    QCOMPARE(reply, QStringLiteral("back"));
}

void TestInstrumentLink::nobodyListens()
{
    TcpPeer peer;
    peer.stopListening();
    CDeviceVisa device(nullptr);
    QVERIFY(!device.connectDevice(QString::fromLatin1(peer.resource())));
    QCOMPARE(device.lastError(),
             QStringLiteral("连接失败: VI_ERROR_RSRC_NFOUND: "
                            "the resource is not present or cannot be reached"));
}

void TestInstrumentLink::terminatedThreadLeavesTheGateFree()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    AskingThread thread(device);
    thread.start();
    QCOMPARE(peer.receive(5), QByteArray("ASK?\n"));
    thread.terminate();
    QVERIFY(thread.wait(5000));
    std::thread instrument([&] {
        peer.receive(6);
        peer.send("still here\n");
    });
    const QString reply = device.sendCommand(QStringLiteral("*IDN?"), 5000);
    instrument.join();
    QCOMPARE(reply, QStringLiteral("still here"));
}

void TestInstrumentLink::interruptedThreadLeavesItsExchange()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    AskingThread thread(device);
    thread.start();
    QCOMPARE(peer.receive(5), QByteArray("ASK?\n"));
    device.interrupt();
    QVERIFY(thread.wait(20000));
    // Nothing more until the next connection.
    QVERIFY(!device.isConnected());
    ExchangeResult result{};
    QCOMPARE(device.sendCommand(QStringLiteral("ASK?"), 60000, result), QString());
    QCOMPARE(result, ExchangeResult::Lost);
    device.interrupt();
    device.disconnectDevice();
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(device.isConnected());
}

SCN_TEST(TestInstrumentLink, QCoreApplication)
#include "test_instrumentlink.moc"
