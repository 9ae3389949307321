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
        "USB0::0x049F::0x606E::1::INSTR",
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
