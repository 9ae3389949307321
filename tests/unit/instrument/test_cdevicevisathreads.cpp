#include "instrument/cdevicevisa.h"
#include "support/fakevisa.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

const QString kTcpResource = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");

} // namespace

Q_DECLARE_METATYPE(std::function<void(CDeviceVisa&)>)

/// The gate used by several threads, and the mutex that keeps exchanges whole.
class TestCDeviceVisaThreads : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void signalsComeUnderTheMutexOnTheCallingThread();
    void otherOperationsWaitForAnExchange_data();
    void otherOperationsWaitForAnExchange();
    void commandsCompletedComesWithoutTheMutex();
    void receiverOfASignalMaySend();
    void slowQueryHoldsUpOtherThreads();
    void exchangesOfThreadsNeverInterleave();
    void connectingAndSendingOnManyThreads();

private:
    std::unique_ptr<FakeVisa> m_fake;
    std::unique_ptr<CDeviceVisa> m_device;
};

void TestCDeviceVisaThreads::init()
{
    m_fake = std::make_unique<FakeVisa>();
    m_device = std::make_unique<CDeviceVisa>(nullptr);
    QVERIFY(m_device->connectDevice(kTcpResource));
    m_fake->clearCalls();
}

void TestCDeviceVisaThreads::cleanup()
{
    m_device.reset();
    m_fake.reset();
}

void TestCDeviceVisaThreads::signalsComeUnderTheMutexOnTheCallingThread()
{
    int seen = 0;
    std::vector<std::future<QString>> others;
    // Another thread cannot get in while a receiver runs.
    const auto check = [&] {
        ++seen;
        QCOMPARE(QThread::currentThread(), thread());
        others.push_back(std::async(std::launch::async, [this] { return m_device->lastError(); }));
        QVERIFY(others.back().wait_for(std::chrono::milliseconds(50)) ==
                std::future_status::timeout);
    };
    connect(m_device.get(), &CDeviceVisa::commandCompleted, this, check, Qt::DirectConnection);
    connect(m_device.get(), &CDeviceVisa::errorOccurred, this, check, Qt::DirectConnection);
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    m_fake->fail(FakeVisa::Operation::Open, scn::visa::VI_ERROR_IO);
    m_device->connectDevice(kTcpResource);
    m_device->sendCommand(QStringLiteral("X?"), 5000);
    QCOMPARE(seen, 4);
    for (std::future<QString>& other : others) {
        QVERIFY(other.wait_for(std::chrono::seconds(5)) == std::future_status::ready);
    }
}

void TestCDeviceVisaThreads::otherOperationsWaitForAnExchange_data()
{
    using Operation = std::function<void(CDeviceVisa&)>;
    QTest::addColumn<Operation>("operation");
    QTest::newRow("connect") << Operation([](CDeviceVisa& d) { d.connectDevice(kTcpResource); });
    QTest::newRow("disconnect") << Operation([](CDeviceVisa& d) { d.disconnectDevice(); });
    QTest::newRow("state") << Operation([](CDeviceVisa& d) { d.isConnected(); });
    QTest::newRow("error") << Operation([](CDeviceVisa& d) { d.lastError(); });
    QTest::newRow("exchange") << Operation(
        [](CDeviceVisa& d) { d.sendCommand(QStringLiteral("*CLS"), 5000); });
}

void TestCDeviceVisaThreads::otherOperationsWaitForAnExchange()
{
    QFETCH(std::function<void(CDeviceVisa&)>, operation);
    std::future<void> other;
    bool waited = false;
    // The fake answers in the middle of the exchange.
    m_fake->setResponder([&](const QByteArray&) {
        other = std::async(std::launch::async, [&] { operation(*m_device); });
        waited = other.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
        m_fake->setResponder({});
        return QByteArray("whole\n");
    });
    QCOMPARE(m_device->sendCommand(QStringLiteral("X?"), 5000), QStringLiteral("whole"));
    QVERIFY(waited);
    QVERIFY(other.wait_for(std::chrono::seconds(5)) == std::future_status::ready);
}

void TestCDeviceVisaThreads::commandsCompletedComesWithoutTheMutex()
{
    bool free = false;
    connect(
        m_device.get(), &CDeviceVisa::commandsCompleted, this,
        [&] {
            auto other = std::async(std::launch::async, [this] { return m_device->isConnected(); });
            free = other.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        },
        Qt::DirectConnection);
    m_device->sendCommands({QStringLiteral("A"), QStringLiteral("B")}, 5000);
    QVERIFY(free);
}

void TestCDeviceVisaThreads::receiverOfASignalMaySend()
{
    m_fake->setReply("A?", "1");
    m_fake->setReply("B?", "2");
    QString inner;
    connect(
        m_device.get(), &CDeviceVisa::commandCompleted, this,
        [&](const QString& command) {
            if (command == QLatin1String("A?")) {
                inner = m_device->sendCommand(QStringLiteral("B?"), 5000);
            }
        },
        Qt::DirectConnection);
    QCOMPARE(m_device->sendCommand(QStringLiteral("A?"), 5000), QStringLiteral("1"));
    QCOMPARE(inner, QStringLiteral("2"));
}

void TestCDeviceVisaThreads::slowQueryHoldsUpOtherThreads()
{
    m_fake->setReadDuration(200);
    m_fake->setReply("SLOW?", "1");
    auto slow = std::async(std::launch::async,
                           [this] { return m_device->sendCommand(QStringLiteral("SLOW?"), 5000); });
    QTRY_VERIFY(m_fake->calls().contains(QStringLiteral("viRead(100, 40959)")));
    QElapsedTimer timer;
    timer.start();
    m_device->sendCommand(QStringLiteral("*CLS"), 5000);
    QVERIFY2(timer.elapsed() >= 100, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(slow.get(), QStringLiteral("1"));
    QCOMPARE(m_fake->writtenLines(),
             (QStringList{QStringLiteral("SLOW?"), QStringLiteral("*CLS")}));
}

void TestCDeviceVisaThreads::exchangesOfThreadsNeverInterleave()
{
    constexpr int kThreads = 4;
    constexpr int kExchanges = 250;
    m_fake->setResponder([](const QByteArray& line) {
        QThread::yieldCurrentThread();
        return QByteArray("re:" + line + '\n');
    });
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            for (int n = 0; n < kExchanges; ++n) {
                const QString command =
                    QStringLiteral("T%1:%2?").arg(QString::number(i), QString::number(n));
                const QString expected = QLatin1String("re:") + command;
                if (m_device->sendCommand(command, 1000 + i) == expected) {
                    ++good;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(good.load(), kThreads * kExchanges);
    const QStringList calls = m_fake->calls();
    QCOMPARE(calls.size(), 3 * kThreads * kExchanges);
    for (int i = 0; i < calls.size(); i += 3) {
        // The time-out identifies the thread of the exchange.
        const QString attribute = calls.at(i);
        QVERIFY(attribute.startsWith(QLatin1String("viSetAttribute(100, 0x3FFF001A, 100")));
        const QString prefix =
            QStringLiteral("viWrite(100, \"T%1:").arg(attribute.at(attribute.size() - 2));
        QVERIFY2(calls.at(i + 1).startsWith(prefix), qPrintable(calls.at(i + 1)));
        QCOMPARE(calls.at(i + 2), QStringLiteral("viRead(100, 40959)"));
    }
}

void TestCDeviceVisaThreads::connectingAndSendingOnManyThreads()
{
    m_fake->setReply("*IDN?", "x");
    std::atomic<bool> stop{false};
    std::atomic<int> strange{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                const QString reply = m_device->sendCommand(QStringLiteral("*IDN?"), 5000);
                if (!reply.isEmpty() && reply != QLatin1String("x")) {
                    ++strange;
                }
                const QString error = m_device->lastError();
                if (!error.isEmpty() && error != QStringLiteral("仪器未连接")) {
                    ++strange;
                }
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        m_device->connectDevice(kTcpResource);
        m_device->isConnected();
        m_device->disconnectDevice();
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(strange.load(), 0);
    QCOMPARE(m_fake->openSessions(), QList<scn::visa::ViSession>());
}

SCN_TEST(TestCDeviceVisaThreads, QCoreApplication)
#include "test_cdevicevisathreads.moc"
