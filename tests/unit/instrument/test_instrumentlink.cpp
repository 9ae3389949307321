#include "instrument/cdevicevisa.h"
#include "instrument/visabinding.h"
#include "support/testprogram.h"
#include "unit/visa/backgroundwork_posix.h"
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

/// What the gate makes of a reply that comes once the whole command has arrived.
template <class Peer>
QString replyTo(const QByteArray& command, const QByteArray& reply, CDeviceVisa& device, Peer& peer)
{
    std::thread instrument([&] {
        if (peer.receive(command.size() + 1) == command + '\n') {
            peer.send(reply);
        }
    });
    const QString shown = device.sendCommand(QString::fromLatin1(command), 5000);
    instrument.join();
    return shown;
}

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
    QString reply;
    BackgroundWork asker([&] { reply = device.sendCommand(QStringLiteral("*IDN?"), 5000); });
    QCOMPARE(peer.receive(6), QByteArray("*IDN?\n"));
    peer.send("maker,model,");
    // It has taken this much, and waits for the rest.
    QVERIFY(asker.waitUntilInPoll());
    peer.send("serial,1.0\r\n");
    asker.join();
    QCOMPARE(reply, QStringLiteral("maker,model,serial,1.0"));
    QCOMPARE(device.lastError(), QString());
}

void TestInstrumentLink::exchangeOverASerialPort()
{
    PtyPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QCOMPARE(replyTo("*IDN?", "maker,model,serial,1.0\n", device, peer),
             QStringLiteral("maker,model,serial,1.0"));
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
    QVERIFY(peer.waitUntilArrived());
    QCOMPARE(replyTo("NEXT?", "next\n", device, peer), QStringLiteral("next"));
}

void TestInstrumentLink::replyThatFillsTheBufferFails()
{
    TcpPeer peer;
    CDeviceVisa device(nullptr);
    QVERIFY(device.connectDevice(QString::fromLatin1(peer.resource())));
    QVERIFY(peer.accept());
    QCOMPARE(replyTo("R?", QByteArray(40959, 'r'), device, peer), QString());
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
    QVERIFY(peer.finishSending());
    peer.close();
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
    QCOMPARE(replyTo("*IDN?", "back\n", device, peer), QStringLiteral("back"));
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
    QCOMPARE(replyTo("*IDN?", "still here\n", device, peer), QStringLiteral("still here"));
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
