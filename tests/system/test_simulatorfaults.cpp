#include "support/simulatedinstrument.h"
#include "support/streamclient_posix.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

namespace {

const QByteArray kIdentity("SCN,SCN4070A,MY00000042,01.02-sim");
const QString kOk = QStringLiteral("ok");
/// Long enough for anything that would arrive at once on this machine.
constexpr int kSilenceMs = 300;

using Transport = SimulatedInstrument::Transport;

QString linkOf(const SimulatedInstrument& instrument)
{
    return instrument.resource().section(QStringLiteral("::"), 0, 0).mid(4);
}

} // namespace

/// The simulator's faults as bytes and connections, over its real ports.
class TestSimulatorFaults : public QObject
{
    Q_OBJECT

private slots:
    void portsAreToldInOrder();
    void faultsOfTheCommandLineActAtOnce();
    void faultOnTheWire_data();
    void faultOnTheWire();
    void silenceStaysSilent();
    void delayedReplyComesLateAndAlone();
    void delayedReplyDiesWithItsClient();
    void droppedLinkEnds();
    void refusedConnectionUntilCleared();
    void refusedConnectionsAreCounted();
    void droppedTerminalHangsUpAndComesBack();
    void refusedTerminalHasNoLink();
    void terminalMayBeDroppedAndRefusedAtOnce();
    void transcriptTellsTheFaults();
    void controllersThatMisbehaveDisturbNobody();
};

void TestSimulatorFaults::portsAreToldInOrder()
{
    QTemporaryDir directory;
    QProcess process;
    process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-sim"),
                  {QStringLiteral("--control"), QStringLiteral("0"), QStringLiteral("--pty"),
                   directory.filePath(QStringLiteral("tty")), QStringLiteral("--tcp"),
                   QStringLiteral("0")});
    QByteArray output;
    while (output.count('\n') < 3 && process.waitForReadyRead(20000)) {
        output += process.readAllStandardOutput();
    }
    process.terminate();
    QVERIFY(process.waitForFinished());
    const QStringList lines = QString::fromUtf8(output).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4);
    QVERIFY(lines[0].startsWith(QLatin1String("READY TCPIP0::127.0.0.1::")));
    QVERIFY(lines[1].startsWith(QLatin1String("READY ASRL/")));
    const QRegularExpression control(QStringLiteral("^READY CONTROL 127\\.0\\.0\\.1:[1-9]\\d+$"));
    QVERIFY2(control.match(lines[2]).hasMatch(), output.constData());
}

void TestSimulatorFaults::faultsOfTheCommandLineActAtOnce()
{
    SimulatedInstrument instrument(
        Transport::Tcp,
        {QStringLiteral("--fault"), QStringLiteral("shorten 3 for *IDN? times 1"),
         QStringLiteral("--fault"), QStringLiteral("elsewhere for STAT:OPER:EVEN? times 1")});
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    QCOMPARE(client.ask("*IDN?"), QByteArray("SCN"));
    QCOMPARE(client.ask("*IDN?"), kIdentity);
    QCOMPARE(client.ask("STAT:OPER:EVEN?"), QByteArray("+2048"));
    QCOMPARE(client.ask("STAT:OPER:EVEN?"), QByteArray("+0"));
    QCOMPARE(instrument.order(QStringLiteral("list")), kOk);
}

void TestSimulatorFaults::faultOnTheWire_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* fault, const char* line, const QByteArray& bytes) {
        QTest::newRow(fault) << QString::fromLatin1(fault) << QByteArray(line) << bytes;
    };
    row("silence", "*IDN?", "");
    row("delay 50", "*IDN?", kIdentity + '\n');
    row("garbage 8", "*IDN?", QByteArray::fromHex("79af3ea2f18274e00a"));
    row("truncate 7", "*IDN?", "SCN,SCN");
    row("shorten 7", "*IDN?", "SCN,SCN\n");
    row("oversize 40", "*IDN?", kIdentity + "SCN,SCN\n");
    row("oversize 50000", "*OPC?", QByteArray(50000, '1') + '\n');
    row("reject -222", "*IDN?", "");
    row("elsewhere", "STAT:OPER:EVEN?", "+2048\n");
    row("clock 86400", "SYST:DATE 2024,02,28;DATE?", "2024,02,28\n");
}

void TestSimulatorFaults::faultOnTheWire()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, line);
    for (const Transport transport : {Transport::Tcp, Transport::PseudoTerminal}) {
        SimulatedInstrument instrument(transport);
        StreamClient client;
        QVERIFY(transport == Transport::Tcp ? client.connectTo(instrument.port())
                                            : client.openDevice(linkOf(instrument)));
        const QString order = QStringLiteral("fault %1 times 1").arg(fault);
        QCOMPARE(instrument.order(order), QStringLiteral("ok 1"));
        QVERIFY(client.send(line + '\n'));
        QTEST(client.readFor(kSilenceMs), "bytes");
        QCOMPARE(instrument.faults(), QStringList{order.mid(6)});
        // The next one is served normally.
        QCOMPARE(client.ask("*IDN?"), kIdentity);
    }
}

void TestSimulatorFaults::silenceStaysSilent()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    instrument.order(QStringLiteral("fault silence"));
    QVERIFY(client.send("*IDN?\nTRIG:COUN 5\n*OPC?\n"));
    QCOMPARE(client.readFor(kSilenceMs), QByteArray());
    instrument.order(QStringLiteral("clear"));
    QCOMPARE(client.ask("TRIG:COUN?"), QByteArray("+9.90000000E+37"));
}

void TestSimulatorFaults::delayedReplyComesLateAndAlone()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    StreamClient other;
    QVERIFY(other.connectTo(instrument.port()));
    instrument.order(QStringLiteral("fault delay 700 for *IDN? times 1"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(client.send("*IDN?\n"));
    QCOMPARE(other.ask("*IDN?"), kIdentity);
    // Lines that arrive meanwhile are answered meanwhile.
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
    QVERIFY2(timer.elapsed() < 600, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(client.readLine(), kIdentity);
    QVERIFY2(timer.elapsed() >= 700, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(instrument.sent(), (QStringList{QString::fromUtf8(kIdentity), QStringLiteral("1"),
                                             QString::fromUtf8(kIdentity)}));
}

void TestSimulatorFaults::delayedReplyDiesWithItsClient()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    instrument.order(QStringLiteral("fault delay 200 times 1"));
    QVERIFY(client.send("*IDN?\n"));
    QTRY_COMPARE(instrument.received().size(), 1);
    QVERIFY(client.connectTo(instrument.port()));
    QCOMPARE(client.readFor(400), QByteArray());
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
    QCOMPARE(instrument.sent(), QStringList{QStringLiteral("1")});
}

void TestSimulatorFaults::droppedLinkEnds()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    StreamClient other;
    QVERIFY(other.connectTo(instrument.port()));
    instrument.order(QStringLiteral("fault drop for TRIG:COUN 5 times 1"));
    QVERIFY(client.send("TRIG:COUN 5\n*IDN?\n"));
    QVERIFY(client.waitForEnd());
    QCOMPARE(other.ask("TRIG:COUN?"), QByteArray("+9.90000000E+37"));
    QVERIFY(client.connectTo(instrument.port()));
    QCOMPARE(client.ask("*IDN?"), kIdentity);
}

void TestSimulatorFaults::refusedConnectionUntilCleared()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient old;
    QVERIFY(old.connectTo(instrument.port()));
    QCOMPARE(old.ask("*OPC?"), QByteArray("1"));
    instrument.order(QStringLiteral("fault refuse"));
    StreamClient client;
    QTRY_VERIFY(!client.connectTo(instrument.port()));
    QVERIFY(!client.connectTo(instrument.port()));
    QCOMPARE(old.ask("*OPC?"), QByteArray("1"));
    instrument.order(QStringLiteral("clear"));
    QTRY_VERIFY(client.connectTo(instrument.port()));
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
}

void TestSimulatorFaults::refusedConnectionsAreCounted()
{
    SimulatedInstrument instrument(Transport::Tcp);
    instrument.order(QStringLiteral("fault refuse times 2"));
    StreamClient client;
    for (int i = 0; i < 2; ++i) {
        QVERIFY(client.connectTo(instrument.port()));
        QVERIFY(client.waitForEnd());
    }
    QVERIFY(client.connectTo(instrument.port()));
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
}

void TestSimulatorFaults::droppedTerminalHangsUpAndComesBack()
{
    SimulatedInstrument instrument(Transport::PseudoTerminal);
    const QString link = linkOf(instrument);
    StreamClient client;
    for (int i = 0; i < 3; ++i) {
        QVERIFY(client.openDevice(link));
        QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
        instrument.order(QStringLiteral("fault drop for *IDN? times 1"));
        QVERIFY(client.send("*IDN?\n"));
        QVERIFY(client.waitForEnd());
        QTRY_VERIFY(QFileInfo::exists(link));
    }
    QVERIFY(client.openDevice(link));
    QCOMPARE(client.ask("*IDN?"), kIdentity);
}

void TestSimulatorFaults::refusedTerminalHasNoLink()
{
    SimulatedInstrument instrument(Transport::PseudoTerminal);
    const QString link = linkOf(instrument);
    StreamClient client;
    QVERIFY(client.openDevice(link));
    instrument.order(QStringLiteral("fault refuse"));
    QTRY_VERIFY(!QFileInfo(link).isSymLink());
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
    instrument.order(QStringLiteral("clear"));
    QTRY_VERIFY(QFileInfo(link).isSymLink());
    QVERIFY(client.openDevice(link));
    QCOMPARE(client.ask("*OPC?"), QByteArray("1"));
}

void TestSimulatorFaults::terminalMayBeDroppedAndRefusedAtOnce()
{
    SimulatedInstrument instrument(Transport::PseudoTerminal);
    const QString link = linkOf(instrument);
    StreamClient client;
    QVERIFY(client.openDevice(link));
    instrument.order(QStringLiteral("fault refuse"));
    instrument.order(QStringLiteral("fault drop times 1"));
    QVERIFY(client.send("*IDN?\n"));
    QVERIFY(client.waitForEnd());
    QTest::qWait(kSilenceMs);
    QVERIFY(!QFileInfo(link).isSymLink());
    instrument.order(QStringLiteral("clear"));
    QTRY_VERIFY(QFileInfo::exists(link));
    QVERIFY(client.openDevice(link));
    QCOMPARE(client.ask("*IDN?"), kIdentity);
}

void TestSimulatorFaults::transcriptTellsTheFaults()
{
    SimulatedInstrument instrument(Transport::Tcp);
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    instrument.order(QStringLiteral("fault garbage 5 for *IDN? times 1"));
    instrument.order(QStringLiteral("fault shorten 2"));
    QCOMPARE(client.ask("*IDN?").size(), 2);
    QCOMPARE(client.ask("STAT:OPER:COND?"), QByteArray("+2"));
    QVERIFY(client.send("*CLS\n"));
    QTRY_COMPARE(instrument.received(),
                 (QStringList{QStringLiteral("*IDN?"), QStringLiteral("STAT:OPER:COND?"),
                              QStringLiteral("*CLS")}));
    QCOMPARE(instrument.faults(),
             (QStringList{QStringLiteral("garbage 5 for *IDN? times 1"),
                          QStringLiteral("shorten 2"), QStringLiteral("shorten 2")}));
}

void TestSimulatorFaults::controllersThatMisbehaveDisturbNobody()
{
    QProcess process;
    process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-sim"),
                  {QStringLiteral("--control"), QStringLiteral("0"), QStringLiteral("--tcp"),
                   QStringLiteral("0")});
    QByteArray output;
    while (output.count('\n') < 2 && process.waitForReadyRead(20000)) {
        output += process.readAllStandardOutput();
    }
    const quint16 port = output.trimmed().split(':').constLast().toUShort();
    for (int i = 0; i < 100; ++i) {
        StreamClient client;
        QVERIFY(client.connectTo(port));
        QVERIFY(client.send("list\nfault dro"));
    }
    StreamClient hanging;
    QVERIFY(hanging.connectTo(port));
    QVERIFY(hanging.send("li"));
    StreamClient client;
    QVERIFY(client.connectTo(port));
    QVERIFY(client.send(QByteArray(10000000, 'x') + '\n'));
    QCOMPARE(client.readLine(), QByteArray("error line too long"));
    QCOMPARE(client.ask(QByteArray("fault \xFF\x00", 8)),
             QByteArray("error unknown fault \xFF\x00", 22));
    QCOMPARE(client.ask("list"), QByteArray("ok"));
    QCOMPARE(hanging.ask("st"), QByteArray("ok"));
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

SCN_TEST(TestSimulatorFaults, QCoreApplication)
#include "test_simulatorfaults.moc"
