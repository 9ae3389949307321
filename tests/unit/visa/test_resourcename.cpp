#include "support/testprogram.h"
#include "visa/resourcename.h"

#include <QTest>

using namespace scn::visa;

class TestResourceName : public QObject
{
    Q_OBJECT

private slots:
    void serialResourceNamesItsDevice_data();
    void serialResourceNamesItsDevice();
    void socketResourceNamesHostAndPort_data();
    void socketResourceNamesHostAndPort();
    void usbResourceNamesItsInstrument_data();
    void usbResourceNamesItsInstrument();
    void anythingElseIsRefused_data();
    void anythingElseIsRefused();
};

void TestResourceName::serialResourceNamesItsDevice_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("device");
    QTest::newRow("device file") << QByteArray("ASRL/dev/ttyUSB0::INSTR")
                                 << QByteArray("/dev/ttyUSB0");
    QTest::newRow("class left out") << QByteArray("ASRL/dev/ttyACM1") << QByteArray("/dev/ttyACM1");
    QTest::newRow("key words in lower case, path kept")
        << QByteArray("asrl/dev/TTYx::instr") << QByteArray("/dev/TTYx");
    QTest::newRow("mixed case") << QByteArray("AsRl/dev/pts/3::Instr") << QByteArray("/dev/pts/3");
    QTest::newRow("blank in the path")
        << QByteArray("ASRL/tmp/a b::INSTR") << QByteArray("/tmp/a b");
    QTest::newRow("single colon in the path")
        << QByteArray("ASRL/dev/serial/by-path/pci-0:1::INSTR")
        << QByteArray("/dev/serial/by-path/pci-0:1");
    QTest::newRow("port 1 is ttyS0") << QByteArray("ASRL1::INSTR") << QByteArray("/dev/ttyS0");
    QTest::newRow("port 12 is ttyS11") << QByteArray("ASRL12::INSTR") << QByteArray("/dev/ttyS11");
    QTest::newRow("port without class") << QByteArray("asrl3") << QByteArray("/dev/ttyS2");
    QTest::newRow("highest port") << QByteArray("ASRL9999::INSTR") << QByteArray("/dev/ttyS9998");
}

void TestResourceName::serialResourceNamesItsDevice()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, device);
    const auto name = parseResourceName(text.constData());
    QVERIFY(name);
    QVERIFY(name->kind == ResourceName::Kind::Serial);
    QCOMPARE(QByteArray::fromStdString(name->device), device);
}

void TestResourceName::socketResourceNamesHostAndPort_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("host");
    QTest::addColumn<int>("port");
    QTest::newRow("address") << QByteArray("TCPIP0::192.168.1.7::5025::SOCKET")
                             << QByteArray("192.168.1.7") << 5025;
    QTest::newRow("no board") << QByteArray("TCPIP::127.0.0.1::1::SOCKET")
                              << QByteArray("127.0.0.1") << 1;
    QTest::newRow("board of two digits")
        << QByteArray("TCPIP17::h::65535::SOCKET") << QByteArray("h") << 65535;
    QTest::newRow("host name keeps its case") << QByteArray("tcpip0::DAQ-7.lab.Local::5025::socket")
                                              << QByteArray("DAQ-7.lab.Local") << 5025;
    QTest::newRow("zeros in front of the port")
        << QByteArray("TCPIP0::h::0080::SOCKET") << QByteArray("h") << 80;
    QTest::newRow("address of six")
        << QByteArray("TCPIP0::[fe80::1]::5025::SOCKET") << QByteArray("fe80::1") << 5025;
    QTest::newRow("loopback of six")
        << QByteArray("TCPIP0::[::1]::5025::SOCKET") << QByteArray("::1") << 5025;
}

void TestResourceName::socketResourceNamesHostAndPort()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, host);
    QFETCH(int, port);
    const auto name = parseResourceName(text.constData());
    QVERIFY(name);
    QVERIFY(name->kind == ResourceName::Kind::Socket);
    QCOMPARE(QByteArray::fromStdString(name->host), host);
    QCOMPARE(static_cast<int>(name->port), port);
}

void TestResourceName::usbResourceNamesItsInstrument_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("vendor");
    QTest::addColumn<int>("product");
    QTest::addColumn<QByteArray>("serial");
    QTest::addColumn<int>("usbInterface");
    const auto row = [](const char* name, const char* text, int vendor, int product,
                        const char* serial, int usbInterface) {
        QTest::newRow(name) << QByteArray(text) << vendor << product << QByteArray(serial)
                            << usbInterface;
    };
    row("hexadecimal", "USB0::0x049F::0x606E::MY42::INSTR", 0x049F, 0x606E, "MY42", 0);
    row("decimal", "USB0::1183::24686::MY42::INSTR", 0x049F, 0x606E, "MY42", 0);
    row("interface", "USB0::0x049F::0x606E::MY42::2::INSTR", 0x049F, 0x606E, "MY42", 2);
    row("hexadecimal interface", "USB::1::2::s::0x1f::INSTR", 1, 2, "s", 0x1F);
    row("no board, no class, any case", "usb::0X49f::0X606e::My42", 0x049F, 0x606E, "My42", 0);
    row("class left out behind an interface", "USB7::1::2::s::3", 1, 2, "s", 3);
    row("serial number of digits", "USB0::1::2::3::INSTR", 1, 2, "3", 0);
    row("highest numbers", "USB12::65535::0xFFFF::s::255::INSTR", 0xFFFF, 0xFFFF, "s", 255);
    row("lowest numbers, many zeros", "USB0::0::0x0000000::s::00::INSTR", 0, 0, "s", 0);
    row("blanks and colons in the serial number", "USB0::1::2::a b:c::INSTR", 1, 2, "a b:c", 0);
    row("colon at its end", "USB0::1::2::a:::5::INSTR", 1, 2, "a:", 5);
}

void TestResourceName::usbResourceNamesItsInstrument()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, serial);
    const auto name = parseResourceName(text.constData());
    QVERIFY(name);
    QVERIFY(name->kind == ResourceName::Kind::Usb);
    QTEST(static_cast<int>(name->vendor), "vendor");
    QTEST(static_cast<int>(name->product), "product");
    QCOMPARE(QByteArray::fromStdString(name->serialNumber), serial);
    QTEST(static_cast<int>(name->usbInterface), "usbInterface");
}

void TestResourceName::anythingElseIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    const QList<QByteArray> refused = {
        "",
        " ",
        "ASRL",
        "ASRL::INSTR",
        "ASRL/::INSTR",
        "ASRL0::INSTR",
        "ASRL10000::INSTR",
        "ASRL99999999999999999999::INSTR",
        "ASRL-1::INSTR",
        "ASRL+1::INSTR",
        "ASRL 1::INSTR",
        "ASRL1 ::INSTR",
        "ASRL1::SOCKET",
        "ASRL1::INSTR::INSTR",
        "ASRL1:INSTR",
        "ASRLdev/ttyS0::INSTR",
        "ASRL/dev/a::b::INSTR",
        "ASRL/dev/a\n::INSTR",
        " ASRL1::INSTR",
        "ASRL1::INSTR ",
        "TCPIP",
        "TCPIP0",
        "TCPIP0::",
        "TCPIP0::::SOCKET",
        "TCPIP0::SOCKET",
        "TCPIP0::h::SOCKET",
        "TCPIP0::h::5025",
        "TCPIP0::h::5025::INSTR",
        "TCPIP0::h::5025::SOCKETS",
        "TCPIP0::h::5025:SOCKET",
        "TCPIP0::::5025::SOCKET",
        "TCPIP0::h::::SOCKET",
        "TCPIP0::h::0::SOCKET",
        "TCPIP0::h::65536::SOCKET",
        "TCPIP0::h::4294967297::SOCKET",
        "TCPIP0::h::-1::SOCKET",
        "TCPIP0::h:: 80::SOCKET",
        "TCPIP0::h::80x::SOCKET",
        "TCPIPx::h::80::SOCKET",
        "TCPIP-1::h::80::SOCKET",
        "TCPIP0::a b::80::SOCKET",
        "TCPIP0::a::b::80::SOCKET",
        "TCPIP0::fe80::1::80::SOCKET",
        "TCPIP0::[]::80::SOCKET",
        "TCPIP0::[::80::SOCKET",
        "TCPIP0::[fe80::1::80::SOCKET",
        "TCPIP0::[host]::80::SOCKET",
        "TCPIP0::h\x7F::80::SOCKET",
        "TCPIP0:h::80::SOCKET",
        "TCPIP0::h::80::SOCKET::",
        "USB",
        "USB0",
        "USB0::INSTR",
        "USB0::1::2",
        "USB0::1::2::INSTR",
        "USB0::1::2::::INSTR",
        "USB0::1::2::::0::INSTR",
        "USB0::1::2::s::::INSTR",
        "USB0::1::2::s::x::INSTR",
        "USB0::1::2::s::256::INSTR",
        "USB0::1::2::s::-1::INSTR",
        "USB0::1::2::s::0::0::INSTR",
        "USB0::1::2::s::INSTR::INSTR",
        "USB0::1::2::s::0::RAW",
        "USB0::65536::2::s::INSTR",
        "USB0::1::0x10000::s::INSTR",
        "USB0::1::4294967298::s::INSTR",
        "USB0::0x::2::s::INSTR",
        "USB0::0x-1::2::s::INSTR",
        "USB0::0x0x1::2::s::INSTR",
        "USB0::49F::2::s::INSTR",
        "USB0:: 1::2::s::INSTR",
        "USBx::1::2::s::INSTR",
        "USB-1::1::2::s::INSTR",
        "GPIB0::9::INSTR",
        "VXI",
        "nonsense",
    };
    for (int i = 0; i < refused.size(); ++i) {
        QTest::newRow(qPrintable(
            QStringLiteral("%1: %2").arg(i).arg(QString::fromLatin1(refused.at(i)).simplified())))
            << refused.at(i);
    }
}

void TestResourceName::anythingElseIsRefused()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseResourceName(
        std::string_view(text.constData(), static_cast<std::size_t>(text.size()))));
}

SCN_TEST(TestResourceName, testprogram::NoApplication)
#include "test_resourcename.moc"
