#include "support/testprogram.h"
#include "visa/usbdevicefile_posix.h"

#include <QList>
#include <QTest>

#include <linux/usb/tmc.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

using namespace scn;
using namespace scn::visa;

namespace {

using Outcome = UsbDevice::Outcome;

/// What the driver is asked for, and what it answers.
struct Driver
{
    QList<unsigned long> requests;
    unsigned timeoutMs = 0;
    int autoAbort = -1;
    /// The attributes of the last transfer; -1 for a driver that does not know of them.
    int attributes = -1;
};

Driver g_driver;

int control(int, unsigned long request, void* argument)
{
    g_driver.requests.append(request);
    if (request == USBTMC_IOCTL_SET_TIMEOUT) {
        std::memcpy(&g_driver.timeoutMs, argument, sizeof g_driver.timeoutMs);
    }
    if (request == USBTMC_IOCTL_AUTO_ABORT) {
        g_driver.autoAbort = *static_cast<__u8*>(argument);
    }
    if (request == USBTMC_IOCTL_MSG_IN_ATTR) {
        if (g_driver.attributes < 0) {
            errno = ENOTTY;
            return -1;
        }
        *static_cast<__u8*>(argument) = static_cast<__u8>(g_driver.attributes);
    }
    return 0;
}

} // namespace

/// The calls on the device file: a pair of sockets that keep messages apart stands in for the driver.
class TestUsbDeviceFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void unansweredReadIsToBeAborted();
    void timeoutReachesTheDriver_data();
    void timeoutReachesTheDriver();
    void messageIsOneWrite();
    void driverTellsTheEndOfAMessage_data();
    void driverTellsTheEndOfAMessage();
    void clearReachesTheDriver();
    void systemErrorsAreToldApart_data();
    void systemErrorsAreToldApart();
    void failedCallsAreTold();

private:
    std::unique_ptr<UsbDeviceFile> m_device;
    FileDescriptor m_instrument;
};

void TestUsbDeviceFile::init()
{
    int ends[2];
    QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    g_driver = Driver();
    m_instrument = FileDescriptor(ends[1]);
    m_device = std::make_unique<UsbDeviceFile>(FileDescriptor(ends[0]), control);
}

void TestUsbDeviceFile::cleanup()
{
    m_device.reset();
}

void TestUsbDeviceFile::unansweredReadIsToBeAborted()
{
    QCOMPARE(g_driver.autoAbort, 1);
}

void TestUsbDeviceFile::timeoutReachesTheDriver_data()
{
    QTest::addColumn<int>("asked");
    QTest::addColumn<unsigned>("set");
    QTest::newRow("usual") << 5100 << 5100U;
    QTest::newRow("shorter than the driver takes") << 20 << 100U;
    QTest::newRow("the shortest") << 100 << 100U;
}

void TestUsbDeviceFile::timeoutReachesTheDriver()
{
    QFETCH(int, asked);
    m_device->setTimeout(std::chrono::milliseconds(asked));
    QTEST(g_driver.timeoutMs, "set");
}

void TestUsbDeviceFile::messageIsOneWrite()
{
    QVERIFY(m_device->send("*IDN?\n", 6) == Outcome::Done);
    QVERIFY(m_device->send("*RST\n", 5) == Outcome::Done);
    char buffer[64];
    QCOMPARE(::read(m_instrument.get(), buffer, sizeof buffer), ssize_t(6));
    QCOMPARE(QByteArray(buffer, 6), QByteArray("*IDN?\n"));
    QCOMPARE(::read(m_instrument.get(), buffer, sizeof buffer), ssize_t(5));
}

void TestUsbDeviceFile::driverTellsTheEndOfAMessage_data()
{
    QTest::addColumn<int>("attributes");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("ends");
    QTest::newRow("short part") << 0 << 3 << false;
    QTest::newRow("full part") << 0 << 8 << false;
    QTest::newRow("short end") << 1 << 3 << true;
    QTest::newRow("full end") << 1 << 8 << true;
    QTest::newRow("end at a termination character") << 3 << 3 << true;
    QTest::newRow("termination character alone") << 2 << 3 << false;
    QTest::newRow("old driver, short") << -1 << 3 << true;
    QTest::newRow("old driver, full") << -1 << 8 << false;
}

void TestUsbDeviceFile::driverTellsTheEndOfAMessage()
{
    QFETCH(int, count);
    QFETCH(int, attributes);
    g_driver.attributes = attributes;
    const QByteArray part(count, 'x');
    QCOMPARE(::write(m_instrument.get(), part.constData(), std::size_t(count)), ssize_t(count));
    char buffer[8];
    const UsbDevice::Reception got = m_device->receive(buffer, sizeof buffer);
    QVERIFY(got.outcome == Outcome::Done);
    QCOMPARE(QByteArray(buffer, int(got.count)), part);
    QTEST(got.endsMessage, "ends");
}

void TestUsbDeviceFile::clearReachesTheDriver()
{
    g_driver.requests.clear();
    m_device->clear();
    QCOMPARE(g_driver.requests, QList<unsigned long>{USBTMC_IOCTL_CLEAR});
}

void TestUsbDeviceFile::systemErrorsAreToldApart_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("outcome");
    QTest::newRow("no answer") << ETIMEDOUT << int(Outcome::TimedOut);
    QTest::newRow("unplugged") << ENODEV << int(Outcome::Lost);
    QTest::newRow("unplugged meanwhile") << ESHUTDOWN << int(Outcome::Lost);
    QTest::newRow("no such device") << ENXIO << int(Outcome::Lost);
    QTest::newRow("stalled") << EPIPE << int(Outcome::Failed);
    QTest::newRow("bad packet") << EPROTO << int(Outcome::Failed);
    QTest::newRow("input or output") << EIO << int(Outcome::Failed);
}

void TestUsbDeviceFile::systemErrorsAreToldApart()
{
    QFETCH(int, error);
    QTEST(int(usbOutcomeOf(error)), "outcome");
}

void TestUsbDeviceFile::failedCallsAreTold()
{
    UsbDeviceFile closed(FileDescriptor(), control);
    char byte = 'x';
    QVERIFY(closed.send(&byte, 1) == Outcome::Failed);
    const UsbDevice::Reception got = closed.receive(&byte, 1);
    QVERIFY(got.outcome == Outcome::Failed);
    QCOMPARE(got.count, std::size_t(0));
}

SCN_TEST(TestUsbDeviceFile, QCoreApplication)
#include "test_usbdevicefile.moc"
