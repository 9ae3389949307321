#include "launcher/serialports.h"
#include "launcher/usbinstruments.h"
#include "support/machinetree.h"
#include "support/testprogram.h"

#include <QTest>

using namespace scnlauncher;

/// The ports and USB instruments of a machine.
class TestPortLists : public QObject
{
    Q_OBJECT

private slots:
    void emptyMachineHasNone();
    void portsWithADeviceAreListed();
    void namedPortComesFirst();
    void usbInstrumentHasItsResource();
};

void TestPortLists::emptyMachineHasNone()
{
    const MachineTree machine;
    QVERIFY(findSerialPorts(machine.root()).isEmpty());
    QVERIFY(findUsbInstruments(machine.root()).isEmpty());
}

void TestPortLists::portsWithADeviceAreListed()
{
    const MachineTree machine;
    machine.addPort(QStringLiteral("ttyS0"), "4\n");
    machine.addPort(QStringLiteral("ttyS1"), "0\n");
    machine.write(QStringLiteral("dev/tty1"));
    QDir(machine.root()).mkpath(QStringLiteral("sys/class/tty/tty1"));
    const FoundInstruments found = findSerialPorts(machine.root());
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.at(0).resource, QStringLiteral("ASRL%1/dev/ttyS0::INSTR").arg(machine.root()));
    QCOMPARE(found.at(0).problem, QString());
}

void TestPortLists::namedPortComesFirst()
{
    const MachineTree machine;
    machine.addPort(QStringLiteral("ttyS0"), "4\n");
    machine.addPort(QStringLiteral("ttyUSB0"));
    machine.link(QStringLiteral("../../ttyUSB0"),
                 QStringLiteral("dev/serial/by-id/usb-MAKER_Adapter-if00"));
    const FoundInstruments found = findSerialPorts(machine.root());
    QCOMPARE(found.size(), 2);
    QVERIFY(found.at(0).resource.endsWith(QLatin1String("/dev/ttyUSB0::INSTR")));
    QVERIFY(found.at(0).name.contains(QLatin1String("usb-MAKER_Adapter-if00")));
}

void TestPortLists::usbInstrumentHasItsResource()
{
    const MachineTree machine;
    machine.addUsbInstrument(QStringLiteral("usbtmc0"), {});
    machine.write(QStringLiteral("dev/usbtmc0"));
    const FoundInstruments found = findUsbInstruments(machine.root());
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.at(0).resource, QStringLiteral("USB0::0x049F::0x606E::MY42::INSTR"));
    QCOMPARE(found.at(0).name, QStringLiteral("SCN4070A MY42"));
}

SCN_TEST(TestPortLists, QCoreApplication)
#include "test_portlists.moc"
