#include "launcher/devicerights.h"
#include "support/asnobody_posix.h"
#include "support/machinetree.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace scnlauncher;

/// Whether a device file can be opened, and by whom if not.
class TestDeviceRights : public QObject
{
    Q_OBJECT

private slots:
    void serialResourceHasADevice_data();
    void serialResourceHasADevice();
    void usbResourceHasADevice();
    void whatCanBeOpenedIsNoProblem();
    void missingGroupIsNamed_data();
    void missingGroupIsNamed();
};

void TestDeviceRights::serialResourceHasADevice_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<QString>("device");
    QTest::newRow("serial") << QStringLiteral("ASRL/dev/ttyUSB0::INSTR")
                            << QStringLiteral("/dev/ttyUSB0");
    QTest::newRow("lower case") << QStringLiteral("asrl/dev/ttyS1::instr")
                                << QStringLiteral("/dev/ttyS1");
    QTest::newRow("by number") << QStringLiteral("ASRL3::INSTR") << QStringLiteral("/dev/ttyS2");
    QTest::newRow("network") << QStringLiteral("TCPIP0::host::1::SOCKET") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestDeviceRights::serialResourceHasADevice()
{
    QFETCH(QString, resource);
    QFETCH(QString, device);
    QCOMPARE(deviceOf(resource), device);
}

void TestDeviceRights::usbResourceHasADevice()
{
    const MachineTree machine;
    machine.addUsbInstrument(QStringLiteral("usbtmc3"), {});
    QCOMPARE(deviceOf(QStringLiteral("USB::1183::24686::my42::INSTR"), machine.root()),
             machine.path(QStringLiteral("dev/usbtmc3")));
    QCOMPARE(deviceOf(QStringLiteral("USB0::1183::24686::MY43::INSTR"), machine.root()), QString());
}

void TestDeviceRights::whatCanBeOpenedIsNoProblem()
{
    QCOMPARE(rightsProblem(QStringLiteral("/dev/null")), QString());
    QCOMPARE(rightsProblem(QStringLiteral("/dev/no/such/device")), QString());
    QCOMPARE(rightsProblem(QString()), QString());
}

void TestDeviceRights::missingGroupIsNamed_data()
{
    QTest::addColumn<QByteArray>("group");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("isNamed");
    QTest::newRow("of modems") << QByteArray("dialout") << 0660 << true;
    QTest::newRow("group without rights") << QByteArray("dialout") << 0600 << false;
    QTest::newRow("root's") << QByteArray("root") << 0660 << false;
}

void TestDeviceRights::missingGroupIsNamed()
{
    QFETCH(QByteArray, group);
    QFETCH(int, mode);
    QFETCH(bool, isNamed);
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const QTemporaryDir directory;
    QVERIFY(::chmod(QFile::encodeName(directory.path()).constData(), 0755) == 0);
    const QString device = directory.filePath(QStringLiteral("ttyUSB0"));
    QFile file(device);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const auto* const owners = ::getgrnam(group.constData());
    QVERIFY(owners);
    const QByteArray path = QFile::encodeName(device);
    QVERIFY(::chown(path.constData(), 0, owners->gr_gid) == 0);
    QVERIFY(::chmod(path.constData(), static_cast<mode_t>(mode)) == 0);
    const AsNobody nobody;
    QVERIFY(nobody.isNobody());
    const QString problem = rightsProblem(device);
    QVERIFY2(problem.contains(device), qPrintable(problem));
    QCOMPARE(problem.contains(QStringLiteral("用户组 dialout")), isNamed);
}

SCN_TEST(TestDeviceRights, QCoreApplication)
#include "test_devicerights.moc"
