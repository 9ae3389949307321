#include "support/testprogram.h"
#include "unit/visa/backgroundwork_posix.h"
#include "unit/visa/peers_posix.h"
#include "unit/visa/providersession.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <thread>

using namespace scn::visa;

namespace {

constexpr qint64 kExactMs = 20;
constexpr qint64 kGenerousMs = 1000;

/// The line's settings as the instrument's end sees them.
termios settingsOf(const PtyPeer& peer)
{
    termios settings = {};
    ::tcgetattr(peer.descriptor(), &settings);
    return settings;
}

} // namespace

/// Reads and writes over a serial port, represented by a pseudo-terminal.
class TestSerialTransport : public QObject
{
    Q_OBJECT

private slots:
    void queryAndReply();
    void deviceMayBeALink();
    void lineIsRawFromTheStart();
    void everyByteValueGoesThrough();
    void standardSettingsOfANewSession();
    void chosenRateTakesThePlaceOfAnother_data();
    void chosenRateTakesThePlaceOfAnother();
    void baudRateIsSet_data();
    void baudRateIsSet();
    void stopBitsAreSet();
    void settingsThatThePortDoesNotTake_data();
    void settingsThatThePortDoesNotTake();
    void settingsOfTheProgramAreTaken();
    void attributeThatIsNotKnown();
    void replyInManyPiecesIsJoined();
    void longReply();
    void readTimeoutIsExact();
    void writeTimeoutOnAFullLine();
    void writeDiscardsALateReply();
    void hangUpInRead();
    void hangUpBeforeWrite();
    void hangUpInAWriteThatWaits();
    void settingsOfALineThatIsHungUp();
    void lineIsFreeAfterClosing();
    void portIsNotTheControllingTerminal();
};

void TestSerialTransport::queryAndReply()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.openStatus(), VI_SUCCESS);
    QCOMPARE(session.write("*IDN?\n"), VI_SUCCESS);
    QCOMPARE(session.sent(), 6U);
    QCOMPARE(peer.receive(6), QByteArray("*IDN?\n"));
    QVERIFY(peer.send("maker,model,serial,1.0\nnext\n"));
    const ReadOutcome reply = session.read();
    QCOMPARE(reply.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(reply.bytes, QByteArray("maker,model,serial,1.0\n"));
    QCOMPARE(session.read().bytes, QByteArray("next\n"));
}

void TestSerialTransport::deviceMayBeALink()
{
    QTemporaryDir directory;
    PtyPeer peer;
    const QByteArray link = directory.filePath(QStringLiteral("port")).toLocal8Bit();
    QCOMPARE(::symlink(peer.device().constData(), link.constData()), 0);
    ProviderSession session(QByteArray("asrl" + link + "::instr"));
    QCOMPARE(session.openStatus(), VI_SUCCESS);
    QCOMPARE(session.write("x\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(2), QByteArray("x\n"));
}

void TestSerialTransport::lineIsRawFromTheStart()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    const termios settings = settingsOf(peer);
    QCOMPARE(settings.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0U);
    QCOMPARE(settings.c_oflag & OPOST, 0U);
    QCOMPARE(settings.c_iflag & (ICRNL | INLCR | IGNCR | ISTRIP | IXON | IXOFF | BRKINT), 0U);
    QCOMPARE(settings.c_cflag & CRTSCTS, 0U);
    QCOMPARE(settings.c_cflag & (CLOCAL | CREAD), static_cast<tcflag_t>(CLOCAL | CREAD));
}

void TestSerialTransport::everyByteValueGoesThrough()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QByteArray all;
    for (int value = 0; value < 256; ++value) {
        if (value != '\n') {
            all.append(static_cast<char>(value));
        }
    }
    all.append('\n');
    QCOMPARE(session.write(all), VI_SUCCESS);
    QCOMPARE(peer.receive(256), all);
    QVERIFY(peer.send(all));
    QCOMPARE(session.read().bytes, all);
}

void TestSerialTransport::standardSettingsOfANewSession()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    const termios settings = settingsOf(peer);
    QCOMPARE(::cfgetospeed(&settings), static_cast<speed_t>(B9600));
    QCOMPARE(::cfgetispeed(&settings), static_cast<speed_t>(B9600));
    QCOMPARE(settings.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    QCOMPARE(settings.c_cflag & (PARENB | CSTOPB), 0U);
}

void TestSerialTransport::baudRateIsSet_data()
{
    QTest::addColumn<int>("baud");
    QTest::addColumn<uint>("speed");
    QTest::newRow("300") << 300 << uint(B300);
    QTest::newRow("1200") << 1200 << uint(B1200);
    QTest::newRow("19200") << 19200 << uint(B19200);
    QTest::newRow("57600") << 57600 << uint(B57600);
    QTest::newRow("115200") << 115200 << uint(B115200);
    QTest::newRow("921600") << 921600 << uint(B921600);
}

void TestSerialTransport::baudRateIsSet()
{
    QFETCH(int, baud);
    QFETCH(uint, speed);
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.set(VI_ATTR_ASRL_BAUD, static_cast<ViAttrState>(baud)), VI_SUCCESS);
    const termios settings = settingsOf(peer);
    QCOMPARE(::cfgetospeed(&settings), static_cast<speed_t>(speed));
    QCOMPARE(::cfgetispeed(&settings), static_cast<speed_t>(speed));
}

void TestSerialTransport::chosenRateTakesThePlaceOfAnother_data()
{
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<uint>("speed");
    QTest::newRow("a rate") << QByteArrayLiteral("9600") << uint(B9600);
    QTest::newRow("a high rate") << QByteArrayLiteral("115200") << uint(B115200);
    QTest::newRow("no port has it") << QByteArrayLiteral("57601") << uint(B57600);
    QTest::newRow("zero") << QByteArrayLiteral("0") << uint(B57600);
    QTest::newRow("negative") << QByteArrayLiteral("-9600") << uint(B57600);
    QTest::newRow("a word behind it") << QByteArrayLiteral("9600 baud") << uint(B57600);
    QTest::newRow("too large") << QByteArrayLiteral("99999999999999999999999") << uint(B57600);
    QTest::newRow("empty") << QByteArrayLiteral("") << uint(B57600);
}

void TestSerialTransport::chosenRateTakesThePlaceOfAnother()
{
    QFETCH(QByteArray, chosen);
    QFETCH(uint, speed);
    qputenv("SCN4070A_SERIAL_RATE", chosen);
    PtyPeer peer;
    ProviderSession session(peer.resource());
    const ViStatus status = session.set(VI_ATTR_ASRL_BAUD, 57600);
    qunsetenv("SCN4070A_SERIAL_RATE");
    QCOMPARE(status, VI_SUCCESS);
    const termios settings = settingsOf(peer);
    QCOMPARE(::cfgetospeed(&settings), static_cast<speed_t>(speed));
    QCOMPARE(::cfgetispeed(&settings), static_cast<speed_t>(speed));
}

void TestSerialTransport::stopBitsAreSet()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.set(VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_TWO), VI_SUCCESS);
    QCOMPARE(settingsOf(peer).c_cflag & CSTOPB, static_cast<tcflag_t>(CSTOPB));
    QCOMPARE(session.set(VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_ONE), VI_SUCCESS);
    QCOMPARE(settingsOf(peer).c_cflag & CSTOPB, 0U);
}

void TestSerialTransport::settingsThatThePortDoesNotTake_data()
{
    QTest::addColumn<ViAttr>("attribute");
    QTest::addColumn<int>("value");
    QTest::newRow("baud of no port") << VI_ATTR_ASRL_BAUD << 57601;
    QTest::newRow("no baud") << VI_ATTR_ASRL_BAUD << 0;
    QTest::newRow("nine data bits") << VI_ATTR_ASRL_DATA_BITS << 9;
    QTest::newRow("four data bits") << VI_ATTR_ASRL_DATA_BITS << 4;
    QTest::newRow("parity of no kind") << VI_ATTR_ASRL_PARITY << 5;
    QTest::newRow("one and a half stop bits") << VI_ATTR_ASRL_STOP_BITS << 15;
    QTest::newRow("no stop bit") << VI_ATTR_ASRL_STOP_BITS << 0;
    // A pseudo-terminal has eight bits and no parity, whatever is requested.
    QTest::newRow("seven data bits on a pseudo-terminal") << VI_ATTR_ASRL_DATA_BITS << 7;
    QTest::newRow("parity on a pseudo-terminal") << VI_ATTR_ASRL_PARITY << 2;
}

void TestSerialTransport::settingsThatThePortDoesNotTake()
{
    QFETCH(ViAttr, attribute);
    QFETCH(int, value);
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.set(attribute, static_cast<ViAttrState>(value)), VI_ERROR_NSUP_ATTR_STATE);
    const termios settings = settingsOf(peer);
    QCOMPARE(settings.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    QCOMPARE(settings.c_cflag & (PARENB | CSTOPB), 0U);
    QCOMPARE(::cfgetospeed(&settings), static_cast<speed_t>(B9600));
    QCOMPARE(session.write("still there\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(12), QByteArray("still there\n"));
}

void TestSerialTransport::settingsOfTheProgramAreTaken()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.set(VI_ATTR_ASRL_BAUD, 57600), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_ASRL_DATA_BITS, 8), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_NONE), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_ONE), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_TMO_VALUE, 5000), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_TERMCHAR, '\n'), VI_SUCCESS);
    QCOMPARE(session.set(VI_ATTR_TERMCHAR_EN, 1), VI_SUCCESS);
}

void TestSerialTransport::attributeThatIsNotKnown()
{
    constexpr ViAttr kFlowControl = 0x3FFF0025;
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.set(kFlowControl, 0), VI_ERROR_NSUP_ATTR);
}

void TestSerialTransport::replyInManyPiecesIsJoined()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QByteArray reply;
    for (int i = 0; i < 200; ++i) {
        reply += QByteArray::number(i) + ",";
    }
    reply += "end\n";
    ReadOutcome outcome = {};
    BackgroundWork reader([&] { outcome = session.read(); });
    for (int i = 0; i < reply.size(); i += 7) {
        // Now and then the reader has taken all there is.
        if (i % 70 == 0) {
            QVERIFY(reader.waitUntilInPoll());
        }
        peer.send(reply.mid(i, 7));
    }
    reader.join();
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(outcome.bytes, reply);
}

void TestSerialTransport::longReply()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QByteArray reply(40958, 'r');
    reply.append('\n');
    std::thread sender([&] { peer.send(reply + "left over\n"); });
    const ReadOutcome outcome = session.read();
    const ReadOutcome rest = session.read();
    sender.join();
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QVERIFY(outcome.bytes == reply);
    QCOMPARE(rest.bytes, QByteArray("left over\n"));
}

void TestSerialTransport::readTimeoutIsExact()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 120);
    QVERIFY(peer.send("no line feed"));
    qint64 best = std::numeric_limits<qint64>::max();
    for (int attempt = 0; attempt < 10 && best > 120 + kExactMs; ++attempt) {
        QElapsedTimer timer;
        timer.start();
        const ReadOutcome outcome = session.read();
        const qint64 elapsedNs = timer.nsecsElapsed();
        QCOMPARE(outcome.status, VI_ERROR_TMO);
        QCOMPARE(outcome.bytes, attempt == 0 ? QByteArray("no line feed") : QByteArray());
        QVERIFY(elapsedNs >= 120 * 1000000LL);
        QVERIFY(elapsedNs < (120 + kGenerousMs) * 1000000LL);
        best = std::min(best, elapsedNs / 1000000);
    }
    QVERIFY2(best <= 120 + kExactMs, qPrintable(QString::number(best)));
}

void TestSerialTransport::writeTimeoutOnAFullLine()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 100);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(session.write(QByteArray(1 << 20, 'w')), VI_ERROR_TMO);
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed >= 100 && elapsed < 100 + kGenerousMs, qPrintable(QString::number(elapsed)));
    QVERIFY(session.sent() > 0);
    QVERIFY(session.sent() < 1U << 20);
}

void TestSerialTransport::writeDiscardsALateReply()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 50);
    QCOMPARE(session.write("FIRST?\n"), VI_SUCCESS);
    QCOMPARE(session.read().status, VI_ERROR_TMO);
    QCOMPARE(peer.receive(7), QByteArray("FIRST?\n"));
    QVERIFY(peer.send("reply to the first\n"));
    QVERIFY(peer.waitUntilArrived(19));
    session.set(VI_ATTR_TMO_VALUE, 2000);
    QCOMPARE(session.write("SECOND?\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(8), QByteArray("SECOND?\n"));
    QVERIFY(peer.send("reply to the second\n"));
    QCOMPARE(session.read().bytes, QByteArray("reply to the second\n"));
}

void TestSerialTransport::hangUpInRead()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    ReadOutcome outcome = {};
    BackgroundWork reader([&] { outcome = session.read(); });
    QVERIFY(reader.waitUntilInPoll());
    QElapsedTimer timer;
    timer.start();
    peer.close();
    reader.join();
    QCOMPARE(outcome.status, VI_ERROR_CONN_LOST);
    QVERIFY(timer.elapsed() < kGenerousMs);
    timer.start();
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(session.write("*IDN?\n"), VI_ERROR_CONN_LOST);
        QCOMPARE(session.read().status, VI_ERROR_CONN_LOST);
    }
    QVERIFY(timer.elapsed() < kGenerousMs);
}

void TestSerialTransport::hangUpBeforeWrite()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    peer.close();
    QCOMPARE(session.write("*IDN?\n"), VI_ERROR_CONN_LOST);
    QCOMPARE(session.sent(), 0U);
}

void TestSerialTransport::hangUpInAWriteThatWaits()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    ViStatus status = VI_SUCCESS;
    BackgroundWork writer([&] { status = session.write(QByteArray(1 << 20, 'w')); });
    QVERIFY(writer.waitUntilInPoll());
    QElapsedTimer timer;
    timer.start();
    peer.close();
    writer.join();
    QCOMPARE(status, VI_ERROR_CONN_LOST);
    QVERIFY(timer.elapsed() < kGenerousMs);
}

void TestSerialTransport::settingsOfALineThatIsHungUp()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    peer.close();
    QCOMPARE(session.set(VI_ATTR_ASRL_BAUD, 57600), VI_ERROR_IO);
    QCOMPARE(session.set(VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_NONE), VI_ERROR_IO);
    QCOMPARE(session.set(VI_ATTR_TMO_VALUE, 5), VI_SUCCESS);
}

void TestSerialTransport::lineIsFreeAfterClosing()
{
    PtyPeer peer;
    const int keeper = ::open(peer.device().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(keeper >= 0);
    for (int i = 0; i < 3; ++i) {
        ProviderSession session(peer.resource());
        QCOMPARE(session.openStatus(), VI_SUCCESS);
        QCOMPARE(session.write("x\n"), VI_SUCCESS);
        QCOMPARE(peer.receive(2), QByteArray("x\n"));
    }
    ::close(keeper);
}

/// The first terminal that the leader of a session opens would become the one whose hang-up ends it.
void TestSerialTransport::portIsNotTheControllingTerminal()
{
    PtyPeer peer;
    const pid_t child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        ::setsid();
        const ProviderSession session(peer.resource());
        const bool opened = session.openStatus() == VI_SUCCESS;
        ::_exit(opened && ::open("/dev/tty", O_RDWR | O_CLOEXEC) < 0 ? 0 : 1);
    }
    int status = -1;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
}

SCN_TEST(TestSerialTransport, QCoreApplication)
#include "test_serialtransport.moc"
