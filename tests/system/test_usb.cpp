#include "support/machinetree.h"
#include "support/privatemounts.h"
#include "support/programprocess.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace {

constexpr int kPatienceMs = 30000;
const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");
const QString kResource = QStringLiteral("USB0::0x049F::0x606E::MY42::INSTR");

} // namespace

/// The whole program and a USB instrument of the machine: the kernel's view of it is made up, and its
/// device file leads to the simulator's pseudo-terminal.
class TestUsb : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void programFindsItsInstrument();
    void programWithoutItsInstrumentSaysWhy();

private:
    const MachineTree m_machine;
    VirtualDisplay m_display;
};

void TestUsb::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
    // The machine's device files, and room for one more.
    QVERIFY(privatemounts::show(QStringLiteral("/dev"), QStringLiteral("/mnt")));
    QVERIFY(privatemounts::mountMemory(QStringLiteral("/dev"), 1 << 20));
    for (const QString& name :
         QDir(QStringLiteral("/mnt"))
             .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot)) {
        QVERIFY(QFile::link(QStringLiteral("/mnt/") + name, QStringLiteral("/dev/") + name));
    }
    m_machine.addUsbInstrument(QStringLiteral("usbtmc0"), {});
    QVERIFY(privatemounts::mountMemory(QStringLiteral("/sys/class"), 1 << 20));
    QVERIFY(QFile::link(m_machine.path(QStringLiteral("sys/class/usbmisc")),
                        QStringLiteral("/sys/class/usbmisc")));
}

void TestUsb::programFindsItsInstrument()
{
    const QStringList slots1And2 = {QStringLiteral("--slots"), QStringLiteral("1:1,2:14")};
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::PseudoTerminal,
                                         slots1And2);
    const QString terminal = instrument.resource().section(QStringLiteral("::"), 0, 0).mid(4);
    const QString file = QStringLiteral("/dev/usbtmc0");
    QVERIFY(QFile::link(terminal, file));
    ProgramProcess program(m_display.name());
    program.start({kResource});
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(kPoll), kPatienceMs);
    QVERIFY2(program.log().contains(QStringLiteral("仪器已连接: SCN SCN4070A ")),
             qPrintable(program.log()));
    program.kill();
    QVERIFY(QFile::remove(file));

    // The same on the wire as over the network.
    const SimulatedInstrument other(SimulatedInstrument::Transport::Tcp, slots1And2);
    program.start({other.resource()});
    QTRY_VERIFY_WITH_TIMEOUT(other.received().contains(kPoll), kPatienceMs);
    QCOMPARE(instrument.receivedBefore(kPoll), other.receivedBefore(kPoll));
}

void TestUsb::programWithoutItsInstrumentSaysWhy()
{
    ProgramProcess program(m_display.name());
    program.start({QStringLiteral("USB0::0x049F::0x606E::MY43::INSTR")});
    QTRY_VERIFY_WITH_TIMEOUT(program.log().contains(QStringLiteral("VI_ERROR_RSRC_NFOUND")),
                             kPatienceMs);
}

SCN_TEST_RUN((&privatemounts::run<TestUsb, QCoreApplication>))
#include "test_usb.moc"
