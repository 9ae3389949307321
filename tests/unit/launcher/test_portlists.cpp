#include "launcher/serialports.h"
#include "launcher/usbinstruments.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

namespace {

/// A machine's /dev and /sys.
class Machine
{
public:
    QString root() const { return m_root.path(); }

    void write(const QString& name, const QByteArray& text = {}) const
    {
        QFile file(m_root.filePath(name));
        QDir().mkpath(QFileInfo(file).path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void link(const QString& target, const QString& name) const
    {
        const QString path = m_root.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QVERIFY(QFile::link(target, path));
    }
    void addPort(const QString& name, const QByteArray& type = {}) const
    {
        write(QStringLiteral("dev/") + name);
        const QString folder = QStringLiteral("sys/class/tty/") + name;
        QDir(root()).mkpath(folder + QStringLiteral("/device"));
        if (!type.isEmpty()) {
            write(folder + QStringLiteral("/type"), type);
        }
    }

private:
    const QTemporaryDir m_root;
};

} // namespace

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
    const Machine machine;
    QVERIFY(findSerialPorts(machine.root()).isEmpty());
    QVERIFY(findUsbInstruments(machine.root()).isEmpty());
}

void TestPortLists::portsWithADeviceAreListed()
{
    const Machine machine;
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
    const Machine machine;
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
    const Machine machine;
    const QString device = QStringLiteral("sys/devices/usb1/1-1");
    machine.write(device + QStringLiteral("/idVendor"), "049f\n");
    machine.write(device + QStringLiteral("/idProduct"), "606e\n");
    machine.write(device + QStringLiteral("/serial"), "MY42\n");
    machine.write(device + QStringLiteral("/product"), "SCN4070A\n");
    QDir(machine.root()).mkpath(device + QStringLiteral("/1-1:1.0"));
    machine.write(QStringLiteral("dev/usbtmc0"));
    machine.link(QDir(machine.root()).filePath(device + QStringLiteral("/1-1:1.0")),
                 QStringLiteral("sys/class/usbmisc/usbtmc0/device"));
    const FoundInstruments found = findUsbInstruments(machine.root());
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.at(0).resource, QStringLiteral("USB0::0x049F::0x606E::MY42::INSTR"));
    QCOMPARE(found.at(0).name, QStringLiteral("SCN4070A MY42"));
}

SCN_TEST(TestPortLists, QCoreApplication)
#include "test_portlists.moc"
