#include "launcher/place/resourceidentity.h"
#include "support/testprogram.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace scnlauncher;

/// Texts for one instrument are one, texts for two are two.
class TestResourceIdentity : public QObject
{
    Q_OBJECT

private slots:
    void sameInstrument_data();
    void sameInstrument();
    void otherInstrument_data();
    void otherInstrument();
    void ownNameIsThisMachine();
    void linksLeadToTheirDevice();
    void namesAreReadable_data();
    void namesAreReadable();
    void longNameIsCut();
};

void TestResourceIdentity::sameInstrument_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    const auto row = [](const char* name, const char* one, const char* other) {
        QTest::newRow(name) << QString::fromUtf8(one) << QString::fromUtf8(other);
    };
    row("board 0", "TCPIP::192.0.2.1::5025::SOCKET", "TCPIP0::192.0.2.1::5025::SOCKET");
    row("case of a socket", "TCPIP0::Host::5025::SOCKET", "tcpip0::hOST::5025::socket");
    row("this machine", "TCPIP0::localhost::5025::SOCKET", "TCPIP0::127.0.0.1::5025::SOCKET");
    row("class of a port", "ASRL/dev/nosuchport::INSTR", "asrl/dev/nosuchport");
    row("port by number", "ASRL3::INSTR", "ASRL/dev/ttyS2::INSTR");
    row("behind the semicolon", "ASRL3::INSTR;more", " ASRL3::INSTR ");
    row("USB numbers", "USB0::0x049F::0x606E::A1::0::INSTR", "usb::1183::24686::a1");
    row("USB interface", "USB0::0x049F::0x606E::A1::INSTR", "USB0::0x49f::0x606e::A1::0::INSTR");
    row("USB serial number in another case", "USB0::1::2::Ab::INSTR", "USB0::1::2::aB::INSTR");
    row("USB board", "USB1::1::2::A::INSTR", "USB0::0x0001::0x2::A::0x0::INSTR");
    row("USB class", "USB0::1::2::A::0", "USB0::1::2::A::INSTR");
    row("IPv6 address", "TCPIP::[fe80::1]::5025::SOCKET",
        "TCPIP0::[FE80:0:0:0::0001]::5025::SOCKET");
    row("IPv4 in IPv6", "TCPIP::[::ffff:192.0.2.1]::5025::SOCKET",
        "TCPIP::192.0.2.1::5025::SOCKET");
    row("IPv4 in groups of IPv6", "TCPIP::[::ffff:c000:201]::5025::SOCKET",
        "TCPIP::192.0.2.1::5025::SOCKET");
    row("IPv4 in fewer parts", "TCPIP::192.513::5025::SOCKET", "TCPIP::192.0.2.1::5025::SOCKET");
    row("IPv4 in hexadecimal", "TCPIP::0xC0000201::5025::SOCKET", "TCPIP::192.0.2.1::5025::SOCKET");
    row("this machine over IPv6", "TCPIP::[::1]::5025::SOCKET", "TCPIP::localhost::5025::SOCKET");
    row("this machine by any address", "TCPIP::0.0.0.0::5025::SOCKET",
        "TCPIP::[0:0:0:0:0:0:0:0]::5025::SOCKET");
    row("full name", "TCPIP::daq.lab.example.::5025::SOCKET",
        "TCPIP::DAQ.lab.example::5025::SOCKET");
    row("board of a LAN device", "TCPIP1::192.0.2.1::INSTR", "TCPIP0::192.0.2.1::INSTR");
    row("class of a LAN device", "TCPIP0::daq::hislip0", "tcpip::DAQ::HiSLIP0::INSTR");
    row("IPv6 address of a LAN device", "TCPIP::[2001:db8::1]::INSTR",
        "TCPIP0::[2001:0DB8:0::1]::inst0::INSTR");
    row("LAN device", "TCPIP::192.0.2.1::INSTR", "TCPIP0::192.0.2.1::inst0::INSTR");
    row("another bus", "GPIB::9::INSTR", "gpib0::9::instr");
}

void TestResourceIdentity::sameInstrument()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    QCOMPARE(resourceIdentity(one), resourceIdentity(other));
}

void TestResourceIdentity::otherInstrument_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    const auto row = [](const char* name, const char* one, const char* other) {
        QTest::newRow(name) << QString::fromUtf8(one) << QString::fromUtf8(other);
    };
    row("port of a socket", "TCPIP::192.0.2.1::5025::SOCKET", "TCPIP::192.0.2.1::5026::SOCKET");
    row("case of a device file", "ASRL/dev/nosuchport::INSTR", "ASRL/dev/NOSUCHPORT::INSTR");
    row("USB serial number", "USB0::1::2::A1::INSTR", "USB0::1::2::A2::INSTR");
    row("USB interface", "USB0::1::2::A1::INSTR", "USB0::1::2::A1::1::INSTR");
    row("socket and LAN device", "TCPIP::192.0.2.1::5025::SOCKET", "TCPIP::192.0.2.1::INSTR");
    row("USB vendor", "USB0::1::2::A1::INSTR", "USB0::3::2::A1::INSTR");
    row("USB product", "USB0::1::2::A1::INSTR", "USB0::1::3::A1::INSTR");
    row("IPv6 address", "TCPIP::[fe80::1]::5025::SOCKET", "TCPIP::[fe80::2]::5025::SOCKET");
    row("loopback addresses", "TCPIP::127.0.0.2::5025::SOCKET", "TCPIP::localhost::5025::SOCKET");
    row("name that begins like this machine's", "TCPIP::localhost.example::5025::SOCKET",
        "TCPIP::localhost::5025::SOCKET");
    row("LAN device", "TCPIP::192.0.2.1::inst0::INSTR", "TCPIP::192.0.2.1::inst1::INSTR");
    row("host of a LAN device", "TCPIP::[2001:db8::1]::INSTR", "TCPIP::[2001:db8::2]::INSTR");
    row("board 1", "GPIB0::9::INSTR", "GPIB1::9::INSTR");
}

void TestResourceIdentity::otherInstrument()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    QVERIFY(resourceIdentity(one) != resourceIdentity(other));
}

void TestResourceIdentity::ownNameIsThisMachine()
{
    const auto resource = [](const QString& host) {
        return QStringLiteral("TCPIP::%1::5025::SOCKET").arg(host);
    };
    const QString own = QSysInfo::machineHostName();
    const QString identity = resourceIdentity(resource(QStringLiteral("127.0.0.1")));
    QCOMPARE(resourceIdentity(resource(own)), identity);
    QCOMPARE(resourceIdentity(resource(own.toUpper() + QStringLiteral(".local."))), identity);
    QVERIFY(resourceIdentity(resource(QStringLiteral("x") + own)) != identity);
}

void TestResourceIdentity::linksLeadToTheirDevice()
{
    const QTemporaryDir folder;
    const QString device = folder.filePath(QStringLiteral("tty"));
    const QString link = folder.filePath(QStringLiteral("by-id"));
    QFile file(device);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(QFile::link(device, link));

    const auto resource = [](const QString& path) {
        return QStringLiteral("ASRL%1::INSTR").arg(path);
    };
    QCOMPARE(resourceIdentity(resource(link)), resourceIdentity(resource(device)));
    QVERIFY(resourceIdentity(resource(folder.filePath(QStringLiteral("other")))) !=
            resourceIdentity(resource(device)));
}

void TestResourceIdentity::namesAreReadable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("name");
    QTest::newRow("socket") << QStringLiteral("TCPIP0::192.0.2.1::5025::SOCKET")
                            << QStringLiteral("TCPIP0-192.0.2.1-5025-SOCKET");
    QTest::newRow("serial port") << QStringLiteral("ASRL/dev/ttyUSB0::INSTR")
                                 << QStringLiteral("ASRL-dev-ttyUSB0-INSTR");
    QTest::newRow("others get a hash")
        << QStringLiteral("a b*c") << QStringLiteral("xa-b-c-c8877037");
    QTest::newRow("folder above") << QStringLiteral("..") << QStringLiteral("x..-9d891e73");
    QTest::newRow("nothing") << QString() << QStringLiteral("x-da39a3ee");
}

void TestResourceIdentity::namesAreReadable()
{
    QFETCH(QString, text);
    QTEST(readableName(text), "name");
}

void TestResourceIdentity::longNameIsCut()
{
    const QString longText(300, QLatin1Char('a'));
    QVERIFY(readableName(longText).size() < 100);
    QVERIFY(readableName(longText) != readableName(longText + QLatin1Char('a')));
}

SCN_TEST(TestResourceIdentity, QCoreApplication)
#include "test_resourceidentity.moc"
