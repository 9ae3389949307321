#include "support/streamclient_posix.h"
#include "support/testprogram.h"

#include <QProcess>
#include <QtTest>

#include <sys/resource.h>

#include <array>
#include <csignal>
#include <ctime>

namespace {

constexpr int kPatienceMs = 20000;
const QString kProgram = QStringLiteral(SCN_BIN_DIR "/scn4070a-sim");

} // namespace

/// The program itself, over both of its transports.
class TestSimProcess : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void bothTransportsTalkToOneInstrument();
    void transcriptHoldsEachLineBothWays();
    void scanIsFetchedOverBothTransports();
    void signalEndsItCleanly_data();
    void signalEndsItCleanly();
    void clientsComeAndGo();
    void hangingClientDisturbsNobody();
    void lineOfTenMegabytesIsAnError();
    void endlessLineEndsWithItsClient();
    void clientsWaitForAFreeDescriptor();
    void terminalComesBackWithoutFreeDescriptors();
    void clientThatNeverReadsDisturbsNobody();
    void terminalSurvivesItsClient();
    void halfALineOnTheTerminalOutlivesItsClient();
    void tooLongALineOnTheTerminalOutlivesItsClient();
    void lateReplyOnTheTerminalIsDropped();
    void baudLimitsTheTerminal();
    void badOptionsAreTold_data();
    void badOptionsAreTold();
    void helpIsShown();
    void placeOfTheLinkIsNotOverwritten();
    void takenPortIsTold();
    void programLinksNoWidgetLibrary();

private:
    void start(const QStringList& options = {});
    void useUpDescriptors();
    double processorSeconds() const;
    QStringList transcript() const;

    QTemporaryDir m_directory;
    QProcess m_process;
    /// Some are accepted, the others wait at the port.
    std::array<StreamClient, 16> m_crowd;
    QString m_link;
    quint16 m_port = 0;
};

void TestSimProcess::init()
{
    m_link = m_directory.filePath(QStringLiteral("tty"));
}

void TestSimProcess::cleanup()
{
    for (StreamClient& client : m_crowd) {
        client.close();
    }
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        QVERIFY(m_process.waitForFinished(kPatienceMs));
    }
}

/// Starts it on a free port and on the pseudo-terminal and waits until it serves.
void TestSimProcess::start(const QStringList& options)
{
    const QString file = m_directory.filePath(QStringLiteral("transcript"));
    m_process.start(kProgram, QStringList{QStringLiteral("--tcp"), QStringLiteral("0"),
                                          QStringLiteral("--pty"), m_link,
                                          QStringLiteral("--transcript"), file} +
                                  options);
    QByteArray output;
    while (output.count('\n') < 2) {
        QVERIFY(m_process.waitForReadyRead(kPatienceMs));
        output += m_process.readAllStandardOutput();
    }
    const QStringList lines = QString::fromLocal8Bit(output).split(QLatin1Char('\n'));
    const QRegularExpression tcp(QStringLiteral("^READY TCPIP0::127\\.0\\.0\\.1::(\\d+)::SOCKET$"));
    const QRegularExpressionMatch match = tcp.match(lines[0]);
    QVERIFY2(match.hasMatch(), output.constData());
    m_port = match.captured(1).toUShort();
    QCOMPARE(lines[1], QStringLiteral("READY ASRL%1::INSTR").arg(m_link));
}

/// Leaves the running program only a few free descriptors, and connects clients to those.
void TestSimProcess::useUpDescriptors()
{
    const rlimit few = {16, 16};
    QCOMPARE(prlimit(static_cast<pid_t>(m_process.processId()), RLIMIT_NOFILE, &few, nullptr), 0);
    for (StreamClient& client : m_crowd) {
        QVERIFY(client.connectTo(m_port));
    }
    QCOMPARE(m_crowd.front().ask("*OPC?"), QByteArray("1"));
    QVERIFY(m_crowd.back().send("*OPC?\n"));
    QCOMPARE(m_crowd.back().readFor(200), QByteArray());
}

/// Processor time used by the program.
double TestSimProcess::processorSeconds() const
{
    clockid_t clock = 0;
    timespec time = {};
    if (clock_getcpuclockid(static_cast<pid_t>(m_process.processId()), &clock) != 0 ||
        clock_gettime(clock, &time) != 0) {
        return qInf();
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

QStringList TestSimProcess::transcript() const
{
    QFile file(m_directory.filePath(QStringLiteral("transcript")));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (!line.isEmpty()) {
            // The time has 23 characters, a blank follows.
            lines << QString::fromLatin1(line.mid(24));
        }
    }
    return lines;
}

void TestSimProcess::bothTransportsTalkToOneInstrument()
{
    start({QStringLiteral("--slots"), QStringLiteral("2:8"), QStringLiteral("--idn"),
           QStringLiteral("SCN,SCN4070A,SN7,1.0")});
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QCOMPARE(tcp.ask("*IDN?"), QByteArray("SCN,SCN4070A,SN7,1.0"));
    QCOMPARE(serial.ask("*IDN?"), QByteArray("SCN,SCN4070A,SN7,1.0"));
    QCOMPARE(serial.ask("SYST:CTYP? 1"), QByteArray("SCN,0,0,0"));
    QVERIFY(serial.send("ROUT:SCAN (@201,240)\n"));
    QCOMPARE(serial.ask("*OPC?"), QByteArray("1"));
    QCOMPARE(tcp.ask("ROUT:SCAN?"), QByteArray("#210(@201,240)"));
    QVERIFY(tcp.send("FOO\n"));
    QCOMPARE(tcp.ask("*OPC?"), QByteArray("1"));
    QCOMPARE(serial.ask("SYST:ERR?"), QByteArray("-113,\"Undefined header\""));
}

void TestSimProcess::transcriptHoldsEachLineBothWays()
{
    start();
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QVERIFY(tcp.send("*CLS\r\n"));
    QCOMPARE(tcp.ask("SYST:CTYP? 1"), QByteArray("SCN,SCN4001A,0,01.02"));
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QCOMPARE(serial.ask("STAT:OPER:COND?"), QByteArray("+256"));
    const QStringList wanted{
        QStringLiteral("tcp > *CLS"),
        QStringLiteral("tcp > SYST:CTYP? 1"),
        QStringLiteral("tcp < SCN,SCN4001A,0,01.02"),
        QStringLiteral("pty > STAT:OPER:COND?"),
        QStringLiteral("pty < +256"),
    };
    QCOMPARE(transcript(), wanted);
}

void TestSimProcess::scanIsFetchedOverBothTransports()
{
    start({QStringLiteral("--rate"), QStringLiteral("1000")});
    for (const bool overTcp : {true, false}) {
        StreamClient client;
        QVERIFY(overTcp ? client.connectTo(m_port) : client.openDevice(m_link));
        QVERIFY(client.send("ROUT:SCAN (@101:120,201:216,301:324);:TRIG:COUN 20;:INIT\n"));
        QVERIFY(client.send("FORM:READ:ALAR ON;CHAN ON;TIME ON;UNIT ON;TIME:TYPE ABS\n"));
        QTRY_COMPARE(client.ask("DATA:POIN?;:STAT:OPER:COND?"), QByteArray("+1200;+256"));
        const QByteArray reply = client.ask("R? 1200");
        QCOMPARE(reply.left(7), QByteArray("#559999"));
        QCOMPARE(reply.size(), 7 + 59999);
        QCOMPARE(reply.count(','), 1200 * 9 - 1);
        QCOMPARE(client.ask("DATA:POIN?;:SYST:ERR?"), QByteArray("+0;+0,\"No error\""));
        QCOMPARE(transcript().filter(QString::fromLatin1(reply)).size(), 1);
    }
}

void TestSimProcess::signalEndsItCleanly_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestSimProcess::signalEndsItCleanly()
{
    QFETCH(int, signal);
    start();
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QCOMPARE(tcp.ask("*OPC?"), QByteArray("1"));
    QVERIFY(QFileInfo(m_link).isSymLink());
    QCOMPARE(kill(static_cast<pid_t>(m_process.processId()), signal), 0);
    QVERIFY(m_process.waitForFinished(kPatienceMs));
    QCOMPARE(m_process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process.exitCode(), 0);
    QVERIFY(!QFileInfo(m_link).isSymLink());
    QCOMPARE(m_process.readAllStandardError(), QByteArray());
}

void TestSimProcess::clientsComeAndGo()
{
    start();
    for (int i = 0; i < 100; ++i) {
        StreamClient tcp;
        QVERIFY(tcp.connectTo(m_port));
        QCOMPARE(tcp.ask("*OPC?"), QByteArray("1"));
        // Every second one leaves an incomplete line and an unread answer.
        if (i % 2 == 0) {
            QVERIFY(tcp.send("*IDN?\nSYST:ER"));
        }
    }
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
}

void TestSimProcess::hangingClientDisturbsNobody()
{
    start();
    StreamClient hanging;
    QVERIFY(hanging.connectTo(m_port));
    QVERIFY(hanging.send("*ID"));
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
    QCOMPARE(hanging.ask("N?"), QByteArray("SCN,SCN4070A,MY00000042,01.02-sim"));
}

void TestSimProcess::lineOfTenMegabytesIsAnError()
{
    start();
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QVERIFY(tcp.send(QByteArray(10000000, 'x') + '\n'));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("-363,\"Input buffer overrun\""));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
}

void TestSimProcess::endlessLineEndsWithItsClient()
{
    start();
    StreamClient endless;
    QVERIFY(endless.connectTo(m_port));
    QVERIFY(endless.send(QByteArray(10000000, 'x')));
    endless.close();
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QTRY_COMPARE(tcp.ask("SYST:ERR:COUN?"), QByteArray("+1"));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("-363,\"Input buffer overrun\""));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
}

void TestSimProcess::clientsWaitForAFreeDescriptor()
{
    start();
    useUpDescriptors();
    const double before = processorSeconds();
    // Nothing is to happen in this time, so that nothing could end it.
    constexpr int kIdleMs = 300;
    QTest::qSleep(kIdleMs);
    const double used = processorSeconds() - before;
    QVERIFY2(used < 0.1 * kIdleMs / 1000, qPrintable(QString::number(used)));
    QCOMPARE(m_crowd.front().ask("*OPC?"), QByteArray("1"));
    for (std::size_t i = 0; i < m_crowd.size() - 3; ++i) {
        m_crowd[i].close();
    }
    QCOMPARE(m_crowd.back().readLine(), QByteArray("1"));
}

void TestSimProcess::terminalComesBackWithoutFreeDescriptors()
{
    start({QStringLiteral("--fault"), QStringLiteral("drop for *IDN? times 1")});
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QCOMPARE(serial.ask("*OPC?"), QByteArray("1"));
    useUpDescriptors();
    QVERIFY(serial.send("*IDN?\n"));
    QVERIFY(serial.waitForEnd());
    QTRY_VERIFY(QFileInfo::exists(m_link));
    QVERIFY(serial.openDevice(m_link));
    QCOMPARE(serial.ask("*OPC?"), QByteArray("1"));
}

void TestSimProcess::clientThatNeverReadsDisturbsNobody()
{
    start({QStringLiteral("--rate"), QStringLiteral("100000")});
    StreamClient silent;
    QVERIFY(silent.connectTo(m_port));
    // More replies than both sides' buffers hold.
    const QByteArray questions = QByteArray("*IDN?;*IDN?;*IDN?;*IDN?\n").repeated(1500);
    for (int i = 0; i < 10; ++i) {
        QVERIFY(silent.send(questions));
    }
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QCOMPARE(tcp.ask("*OPC?"), QByteArray("1"));
    // Queries are answered once the replies are read.
    const QByteArray identity("SCN,SCN4070A,MY00000042,01.02-sim");
    const QByteArray answer = identity + ';' + identity + ';' + identity + ';' + identity;
    for (int i = 0; i < questions.count('\n') * 10; ++i) {
        QCOMPARE(silent.readLine(), answer);
    }
}

void TestSimProcess::terminalSurvivesItsClient()
{
    start();
    for (int i = 0; i < 5; ++i) {
        StreamClient serial;
        QVERIFY(serial.openDevice(m_link));
        QCOMPARE(serial.ask("*OPC?"), QByteArray("1"));
    }
}

void TestSimProcess::halfALineOnTheTerminalOutlivesItsClient()
{
    start();
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send("*ID"));
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send("\n*IDN?\n"));
    QCOMPARE(serial.readLine(), QByteArray("SCN,SCN4070A,MY00000042,01.02-sim"));
    QCOMPARE(serial.ask("SYST:ERR?"), QByteArray("-113,\"Undefined header\""));
    QCOMPARE(transcript().mid(0, 2),
             (QStringList{QStringLiteral("pty > *ID"), QStringLiteral("pty > *IDN?")}));
    // Without an empty line, the next client's line completes the fragment.
    QVERIFY(serial.send("*ID"));
    QVERIFY(serial.openDevice(m_link));
    QCOMPARE(serial.ask("N?"), QByteArray("SCN,SCN4070A,MY00000042,01.02-sim"));
}

void TestSimProcess::tooLongALineOnTheTerminalOutlivesItsClient()
{
    start();
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send(QByteArray(100000, 'x')));
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send("*OPC?\n*IDN?\n"));
    // The query was lost with its line.
    QCOMPARE(serial.readLine(), QByteArray("SCN,SCN4070A,MY00000042,01.02-sim"));
    QCOMPARE(serial.ask("SYST:ERR?"), QByteArray("-363,\"Input buffer overrun\""));
    QVERIFY(serial.send(QByteArray(100000, 'x')));
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send("\n*IDN?\n"));
    QCOMPARE(serial.readLine(), QByteArray("SCN,SCN4070A,MY00000042,01.02-sim"));
    QCOMPARE(serial.ask("SYST:ERR?"), QByteArray("-363,\"Input buffer overrun\""));
    QCOMPARE(serial.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
}

void TestSimProcess::lateReplyOnTheTerminalIsDropped()
{
    start({QStringLiteral("--rate"), QStringLiteral("10000")});
    StreamClient tcp;
    QVERIFY(tcp.connectTo(m_port));
    QVERIFY(tcp.send("ROUT:SCAN (@101:120);:TRIG:COUN 500;:INIT\n"));
    QTRY_COMPARE(tcp.ask("DATA:POIN?"), QByteArray("+10000"));
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    // The terminal holds a few kilobytes of the reply; the rest waits for a reader.
    QVERIFY(serial.send("R? 10000\n"));
    QTRY_COMPARE(tcp.ask("DATA:POIN?"), QByteArray("+0"));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("+0,\"No error\""));
    QVERIFY(serial.send("TRIG:COUN 5\n"));
    QTRY_VERIFY(transcript().contains(QStringLiteral("pty > TRIG:COUN 5")));
    QCOMPARE(tcp.ask("SYST:ERR?"), QByteArray("-410,\"Query INTERRUPTED\""));
    // The line that interrupted was carried out.
    QCOMPARE(tcp.ask("TRIG:COUN?;:SYST:ERR?"), QByteArray("+5.00000000E+00;+0,\"No error\""));
    QVERIFY(serial.send("\n*IDN?\n"));
    const QByteArray line = serial.readLine();
    QVERIFY(line.startsWith("#6"));
    QVERIFY(line.endsWith("SCN,SCN4070A,MY00000042,01.02-sim"));
    QVERIFY(line.size() < 100000);
}

void TestSimProcess::baudLimitsTheTerminal()
{
    start({QStringLiteral("--rate"), QStringLiteral("10000"), QStringLiteral("--baud"),
           QStringLiteral("57600")});
    StreamClient serial;
    QVERIFY(serial.openDevice(m_link));
    QVERIFY(serial.send("ROUT:SCAN (@101:120);:TRIG:COUN 10;:INIT\n"));
    QTRY_COMPARE(serial.ask("DATA:POIN?"), QByteArray("+200"));
    QElapsedTimer timer;
    timer.start();
    const QByteArray reply = serial.ask("R? 200");
    // 3204 bytes at 5760 a second, less the few that the port buffers at once.
    const int bytes = reply.size() + 1;
    QCOMPARE(bytes, 200 * 16 - 1 + 6 + 1);
    QVERIFY2(timer.elapsed() >= (bytes - 64) * 1000 / 5760,
             qPrintable(QString::number(timer.elapsed())));
}

void TestSimProcess::badOptionsAreTold_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("unknown") << QStringList{QStringLiteral("--port")}
                             << QByteArray("scn4070a-sim: unknown option --port\n");
    QTest::newRow("missing") << QStringList{QStringLiteral("--tcp")}
                             << QByteArray("scn4070a-sim: --tcp wants a port from 0 to 65535\n");
    QTest::newRow("wrong")
        << QStringList{QStringLiteral("--tcp"), QStringLiteral("high")}
        << QByteArray("scn4070a-sim: --tcp wants a port from 0 to 65535, not \"high\"\n");
    QTest::newRow("fault")
        << QStringList{QStringLiteral("--fault"), QStringLiteral("delay 0 for R? *")}
        << QByteArray("scn4070a-sim: --fault wants kind [value] [for pattern] [times count], "
                      "not \"delay 0 for R? *\": delay wants milliseconds from 1 to 3600000\n");
}

void TestSimProcess::badOptionsAreTold()
{
    QFETCH(QStringList, options);
    m_process.start(kProgram, options);
    QVERIFY(m_process.waitForFinished(kPatienceMs));
    QCOMPARE(m_process.exitCode(), 2);
    QTEST(m_process.readAllStandardError(), "message");
    QCOMPARE(m_process.readAllStandardOutput(), QByteArray());
}

void TestSimProcess::helpIsShown()
{
    m_process.start(kProgram, {QStringLiteral("--help")});
    QVERIFY(m_process.waitForFinished(kPatienceMs));
    QCOMPARE(m_process.exitCode(), 0);
    const QByteArray text = m_process.readAllStandardOutput();
    for (const char* option : {"--tcp", "--pty", "--baud", "--slots", "--idn", "--rate", "--seed",
                               "--open", "--transcript", "--fault", "--control"}) {
        QVERIFY2(text.contains(option), option);
    }
}

void TestSimProcess::placeOfTheLinkIsNotOverwritten()
{
    const QString path = m_directory.filePath(QStringLiteral("letter"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("dear");
    file.close();
    m_process.start(kProgram, {QStringLiteral("--pty"), path});
    QVERIFY(m_process.waitForFinished(kPatienceMs));
    QCOMPARE(m_process.exitCode(), 1);
    QVERIFY(m_process.readAllStandardError().contains("cannot make the link"));
    QCOMPARE(QFileInfo(path).size(), qint64{4});
}

void TestSimProcess::takenPortIsTold()
{
    start();
    QProcess second;
    second.start(kProgram, {QStringLiteral("--tcp"), QString::number(m_port)});
    QVERIFY(second.waitForFinished(kPatienceMs));
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.readAllStandardError().contains("cannot listen on 127.0.0.1"));
}

void TestSimProcess::programLinksNoWidgetLibrary()
{
    // The file names its shared libraries.
    QFile file(kProgram);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray program = file.readAll().toLower();
    QVERIFY(program.contains("libc.so"));
    for (const char* library : {"libqt", "libqwt", "libx11", "libxcb", "libgtk"}) {
        QVERIFY2(!program.contains(library), library);
    }
}

SCN_TEST(TestSimProcess, QCoreApplication)
#include "test_simprocess.moc"
