#include "support/testprogram.h"
#include "unit/visa/backgroundwork_posix.h"
#include "unit/visa/peers_posix.h"
#include "unit/visa/providersession.h"

#include <QElapsedTimer>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <vector>

using namespace scn::visa;

namespace {

/// How late a time-out may be on an idle machine, and on a busy one.
constexpr qint64 kExactMs = 20;
constexpr qint64 kGenerousMs = 1000;

volatile std::sig_atomic_t g_brokenPipes = 0;

void countBrokenPipe(int)
{
    g_brokenPipes = g_brokenPipes + 1;
}

/// Whether a listener has more connections waiting than its queue is meant to hold.
bool isQueueFull(int listener)
{
    // Of a listener the system reports the length of the queue here, and its limit.
    tcp_info info = {};
    socklen_t size = sizeof info;
    return ::getsockopt(listener, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 &&
           info.tcpi_unacked > info.tcpi_sacked;
}

} // namespace

/// Reads and writes over a TCP connection.
class TestSocketTransport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void queryAndReply();
    void readEndsAtTheTerminationCharacter();
    void bytesBehindTheTerminatorStayForTheNextRead();
    void replyInManyPiecesIsJoined();
    void everyByteValueGoesThrough();
    void otherTerminationCharacter();
    void terminationOffReadsUntilFull();
    void terminationOffHandsOverWhatCameByTheTimeout();
    void fullBufferIsMaximumCount_data();
    void fullBufferIsMaximumCount();
    void terminatorAsLastByteThatFits();
    void readOfNothing();
    void readTimeoutIsExact_data();
    void readTimeoutIsExact();
    void timeoutCountsFromTheStartOfTheRead();
    void readWithoutTimeoutWaits();
    void writeTimeoutIsExact();
    void writeDiscardsALateReply();
    void writeDiscardsAHalfReadReply();
    void writeStartsAgainstAnInstrumentThatNeverStopsTalking();
    void largeMessagesBothWays();
    void vanishedPeerInRead();
    void vanishedPeerHandsOverWhatItSent();
    void messageSentBeforeTheEndIsStillRead();
    void vanishedPeerInWrite();
    void resetPeerInRead();
    void resetPeerInAWriteThatWaits();
    void brokenPipeIsALossAndNoSignal();
    void lostConnectionIsReportedAtOnceEachTime();
    void refusedConnection();
    void connectToAPeerThatNeverAnswersIsBounded();
};

void TestSocketTransport::initTestCase()
{
    std::signal(SIGPIPE, countBrokenPipe);
}

void TestSocketTransport::queryAndReply()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.openStatus(), VI_SUCCESS);
    QVERIFY(peer.accept());
    QCOMPARE(session.write("*IDN?\n"), VI_SUCCESS);
    QCOMPARE(session.sent(), 6U);
    QCOMPARE(peer.receive(6), QByteArray("*IDN?\n"));
    QVERIFY(peer.send("maker,model,serial,1.0\n"));
    const ReadOutcome reply = session.read();
    QCOMPARE(reply.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(reply.bytes, QByteArray("maker,model,serial,1.0\n"));
}

void TestSocketTransport::readEndsAtTheTerminationCharacter()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("\n"));
    QCOMPARE(session.read().bytes, QByteArray("\n"));
    QVERIFY(peer.send("a\r\n"));
    QCOMPARE(session.read().bytes, QByteArray("a\r\n"));
}

void TestSocketTransport::bytesBehindTheTerminatorStayForTheNextRead()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("first\nsecond\nthi"));
    QCOMPARE(session.read().bytes, QByteArray("first\n"));
    QCOMPARE(session.read().bytes, QByteArray("second\n"));
    QVERIFY(peer.send("rd\n"));
    QCOMPARE(session.read().bytes, QByteArray("third\n"));
    session.set(VI_ATTR_TMO_VALUE, 30);
    QCOMPARE(session.read().status, VI_ERROR_TMO);
}

void TestSocketTransport::replyInManyPiecesIsJoined()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
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

void TestSocketTransport::everyByteValueGoesThrough()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
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

void TestSocketTransport::otherTerminationCharacter()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QCOMPARE(session.set(VI_ATTR_TERMCHAR, 0xFE), VI_SUCCESS);
    QVERIFY(peer.send("a\nb\xFE"
                      "c\n"));
    QCOMPARE(session.read().bytes, QByteArray("a\nb\xFE"));
    // Input already received is read by the rule in force at the read.
    QCOMPARE(session.set(VI_ATTR_TERMCHAR, '\n'), VI_SUCCESS);
    QCOMPARE(session.read().bytes, QByteArray("c\n"));
}

void TestSocketTransport::terminationOffReadsUntilFull()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QCOMPARE(session.set(VI_ATTR_TERMCHAR_EN, 0), VI_SUCCESS);
    QVERIFY(peer.send("one\ntwo\nthree\n"));
    const ReadOutcome outcome = session.read(10);
    QCOMPARE(outcome.status, VI_SUCCESS_MAX_CNT);
    QCOMPARE(outcome.bytes, QByteArray("one\ntwo\nth"));
}

void TestSocketTransport::terminationOffHandsOverWhatCameByTheTimeout()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TERMCHAR_EN, 0);
    session.set(VI_ATTR_TMO_VALUE, 50);
    QVERIFY(peer.send("one\ntwo\n"));
    const ReadOutcome outcome = session.read();
    QCOMPARE(outcome.status, VI_ERROR_TMO);
    QCOMPARE(outcome.bytes, QByteArray("one\ntwo\n"));
    QCOMPARE(session.read().bytes, QByteArray());
}

void TestSocketTransport::fullBufferIsMaximumCount_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("one byte") << 1;
    QTest::newRow("ten bytes") << 10;
    QTest::newRow("the program's buffer") << 40959;
    QTest::newRow("more than one chunk") << 100000;
}

void TestSocketTransport::fullBufferIsMaximumCount()
{
    QFETCH(int, count);
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    std::thread sender([&] { peer.send(QByteArray(count, 'x') + "rest\n"); });
    const ReadOutcome outcome = session.read(count);
    const ReadOutcome rest = session.read(count);
    QByteArray tail = rest.bytes;
    while (!tail.endsWith('\n') && tail.size() < 5) {
        tail += session.read(count).bytes;
    }
    sender.join();
    QCOMPARE(outcome.status, VI_SUCCESS_MAX_CNT);
    QCOMPARE(outcome.bytes, QByteArray(count, 'x'));
    QCOMPARE(tail, QByteArray("rest\n"));
}

void TestSocketTransport::terminatorAsLastByteThatFits()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("abc\ndef\n"));
    const ReadOutcome outcome = session.read(4);
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(outcome.bytes, QByteArray("abc\n"));
    const ReadOutcome cut = session.read(3);
    QCOMPARE(cut.status, VI_SUCCESS_MAX_CNT);
    QCOMPARE(cut.bytes, QByteArray("def"));
    QCOMPARE(session.read(3).bytes, QByteArray("\n"));
}

void TestSocketTransport::readOfNothing()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    ViByte buffer = 7;
    ViUInt32 received = 7;
    QCOMPARE(providerVisaTable().viRead(session.handle(), &buffer, 0, &received),
             VI_SUCCESS_MAX_CNT);
    QCOMPARE(received, 0U);
    QCOMPARE(buffer, ViByte(7));
}

void TestSocketTransport::readTimeoutIsExact_data()
{
    QTest::addColumn<int>("timeoutMs");
    QTest::newRow("at once") << 0;
    QTest::newRow("1 ms") << 1;
    QTest::newRow("50 ms") << 50;
    QTest::newRow("333 ms") << 333;
}

void TestSocketTransport::readTimeoutIsExact()
{
    QFETCH(int, timeoutMs);
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, static_cast<ViAttrState>(timeoutMs));
    // The best of several: another process may delay one of them, but not all.
    qint64 best = std::numeric_limits<qint64>::max();
    for (int attempt = 0; attempt < 10 && best > timeoutMs + kExactMs; ++attempt) {
        QElapsedTimer timer;
        timer.start();
        const ReadOutcome outcome = session.read();
        const qint64 elapsedNs = timer.nsecsElapsed();
        QCOMPARE(outcome.status, VI_ERROR_TMO);
        QVERIFY(outcome.bytes.isEmpty());
        QVERIFY2(elapsedNs >= timeoutMs * 1000000LL, qPrintable(QString::number(elapsedNs)));
        QVERIFY(elapsedNs < (timeoutMs + kGenerousMs) * 1000000LL);
        best = std::min(best, elapsedNs / 1000000);
    }
    QVERIFY2(best <= timeoutMs + kExactMs, qPrintable(QString::number(best)));
}

void TestSocketTransport::timeoutCountsFromTheStartOfTheRead()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 200);
    ReadOutcome outcome = {};
    qint64 elapsed = 0;
    BackgroundWork reader([&] {
        QElapsedTimer timer;
        timer.start();
        outcome = session.read();
        elapsed = timer.elapsed();
    });
    // Fragments keep coming whenever it waits for more, but never a line feed.
    while (reader.waitUntilInPoll()) {
        peer.send("x");
    }
    reader.join();
    QCOMPARE(outcome.status, VI_ERROR_TMO);
    QVERIFY(outcome.bytes.startsWith("xx"));
    QVERIFY2(elapsed >= 200 && elapsed < 200 + kGenerousMs, qPrintable(QString::number(elapsed)));
}

void TestSocketTransport::readWithoutTimeoutWaits()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, VI_TMO_INFINITE);
    ReadOutcome outcome = {};
    BackgroundWork reader([&] { outcome = session.read(); });
    QVERIFY(reader.waitUntilInPoll());
    peer.send("late\n");
    reader.join();
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(outcome.bytes, QByteArray("late\n"));
}

void TestSocketTransport::writeTimeoutIsExact()
{
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 200);
    const QByteArray much(64 << 20, 'w');
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(session.write(much), VI_ERROR_TMO);
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed >= 200 && elapsed < 200 + kGenerousMs, qPrintable(QString::number(elapsed)));
    QVERIFY(session.sent() > 0);
    QVERIFY(session.sent() < static_cast<ViUInt32>(much.size()));
}

void TestSocketTransport::writeDiscardsALateReply()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 50);
    QCOMPARE(session.write("FIRST?\n"), VI_SUCCESS);
    QCOMPARE(session.read().status, VI_ERROR_TMO);
    QCOMPARE(peer.receive(7), QByteArray("FIRST?\n"));
    QVERIFY(peer.send("reply to the first\n"));
    QVERIFY(peer.waitUntilArrived());
    session.set(VI_ATTR_TMO_VALUE, 2000);
    QCOMPARE(session.write("SECOND?\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(8), QByteArray("SECOND?\n"));
    QVERIFY(peer.send("reply to the second\n"));
    QCOMPARE(session.read().bytes, QByteArray("reply to the second\n"));
}

void TestSocketTransport::writeDiscardsAHalfReadReply()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("a long reply of which the program wants a part\n"));
    QCOMPARE(session.read(6).bytes, QByteArray("a long"));
    QCOMPARE(session.write("NEXT?\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(6), QByteArray("NEXT?\n"));
    QVERIFY(peer.send("next\n"));
    QCOMPARE(session.read().bytes, QByteArray("next\n"));
}

void TestSocketTransport::writeStartsAgainstAnInstrumentThatNeverStopsTalking()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    std::thread sender([&] {
        const QByteArray noise(1 << 20, 'n');
        while (peer.send(noise)) {
        }
    });
    QElapsedTimer timer;
    timer.start();
    const ViStatus status = session.write("STOP\n");
    const qint64 elapsed = timer.elapsed();
    session.close();
    sender.join();
    QCOMPARE(status, VI_SUCCESS);
    QVERIFY2(elapsed < 2000 + kGenerousMs, qPrintable(QString::number(elapsed)));
}

void TestSocketTransport::largeMessagesBothWays()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QByteArray big(5 << 20, 'b');
    big.append('\n');
    QByteArray arrived;
    std::thread instrument([&] {
        arrived = peer.receive(big.size());
        peer.send(big);
    });
    session.set(VI_ATTR_TMO_VALUE, 20000);
    const ViStatus written = session.write(big);
    const ReadOutcome outcome = session.read(big.size() + 1);
    instrument.join();
    QCOMPARE(written, VI_SUCCESS);
    QCOMPARE(session.sent(), static_cast<ViUInt32>(big.size()));
    QVERIFY(arrived == big);
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QVERIFY(outcome.bytes == big);
}

void TestSocketTransport::vanishedPeerInRead()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
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
}

void TestSocketTransport::vanishedPeerHandsOverWhatItSent()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("half a li"));
    peer.close();
    const ReadOutcome outcome = session.read();
    QCOMPARE(outcome.status, VI_ERROR_CONN_LOST);
    QCOMPARE(outcome.bytes, QByteArray("half a li"));
}

void TestSocketTransport::messageSentBeforeTheEndIsStillRead()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.send("one\ntwo\n"));
    peer.close();
    QCOMPARE(session.read().bytes, QByteArray("one\n"));
    QCOMPARE(session.read().bytes, QByteArray("two\n"));
    QCOMPARE(session.read().status, VI_ERROR_CONN_LOST);
}

void TestSocketTransport::vanishedPeerInWrite()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    QVERIFY(peer.finishSending());
    peer.close();
    QCOMPARE(session.write("*IDN?\n"), VI_ERROR_CONN_LOST);
    QCOMPARE(session.sent(), 0U);
}

void TestSocketTransport::resetPeerInRead()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    ReadOutcome outcome = {};
    BackgroundWork reader([&] { outcome = session.read(); });
    QVERIFY(reader.waitUntilInPoll());
    peer.reset();
    reader.join();
    QCOMPARE(outcome.status, VI_ERROR_CONN_LOST);
    QCOMPARE(session.write("x\n"), VI_ERROR_CONN_LOST);
}

void TestSocketTransport::resetPeerInAWriteThatWaits()
{
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    ViStatus status = VI_SUCCESS;
    BackgroundWork writer([&] { status = session.write(QByteArray(64 << 20, 'w')); });
    QVERIFY(writer.waitUntilInPoll());
    QElapsedTimer timer;
    timer.start();
    peer.reset();
    writer.join();
    QCOMPARE(status, VI_ERROR_CONN_LOST);
    QVERIFY2(timer.elapsed() < 2 * kGenerousMs, qPrintable(QString::number(timer.elapsed())));
}

void TestSocketTransport::brokenPipeIsALossAndNoSignal()
{
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    ViStatus status = VI_SUCCESS;
    BackgroundWork writer([&] { status = session.write(QByteArray(64 << 20, 'w')); });
    QVERIFY(writer.waitUntilInPoll());
    // The system reports a reset after a proper end as a broken pipe.
    QVERIFY(peer.finishSending());
    peer.reset();
    writer.join();
    QCOMPARE(status, VI_ERROR_CONN_LOST);
    QCOMPARE(static_cast<int>(g_brokenPipes), 0);
}

void TestSocketTransport::lostConnectionIsReportedAtOnceEachTime()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 5000);
    peer.close();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(session.read().status, VI_ERROR_CONN_LOST);
        QCOMPARE(session.write("*IDN?\n"), VI_ERROR_CONN_LOST);
    }
    QVERIFY(timer.elapsed() < kGenerousMs);
    // It does not affect a new session to the same peer.
    ProviderSession again(peer.resource());
    QVERIFY(peer.accept());
    QCOMPARE(again.write("x\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(2), QByteArray("x\n"));
}

void TestSocketTransport::refusedConnection()
{
    TcpPeer peer;
    peer.stopListening();
    QElapsedTimer timer;
    timer.start();
    ProviderSession session(peer.resource());
    QCOMPARE(session.openStatus(), VI_ERROR_RSRC_NFOUND);
    QCOMPARE(session.handle(), VI_NULL);
    QVERIFY(timer.elapsed() < kGenerousMs);
}

void TestSocketTransport::connectToAPeerThatNeverAnswersIsBounded()
{
    // A listener with a full queue answers no further connection request.
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    QCOMPARE(::listen(listener, 0), 0);
    socklen_t size = sizeof address;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::vector<int> fillers;
    for (int i = 0; i < 4; ++i) {
        fillers.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        ::connect(fillers.back(), reinterpret_cast<sockaddr*>(&address), sizeof address);
    }
    QTRY_VERIFY(isQueueFull(listener));

    const VisaTable& visa = providerVisaTable();
    ViSession manager = 0;
    visa.viOpenDefaultRM(&manager);
    const QByteArray resource = QByteArray("TCPIP0::127.0.0.1::") +
                                QByteArray::number(ntohs(address.sin_port)) + "::SOCKET";
    ViSession session = 99;
    QElapsedTimer timer;
    timer.start();
    const ViStatus named = visa.viOpen(manager, resource.constData(), VI_NO_LOCK, 200, &session);
    const qint64 namedMs = timer.restart();
    const ViStatus usual = visa.viOpen(manager, resource.constData(), VI_NO_LOCK, 0, &session);
    const qint64 usualMs = timer.elapsed();
    visa.viClose(manager);
    for (const int filler : fillers) {
        ::close(filler);
    }
    ::close(listener);

    QCOMPARE(named, VI_ERROR_TMO);
    QVERIFY2(namedMs >= 200 && namedMs < 200 + kGenerousMs, qPrintable(QString::number(namedMs)));
    QCOMPARE(usual, VI_ERROR_TMO);
    QVERIFY2(usualMs >= 3000 && usualMs < 3000 + kGenerousMs, qPrintable(QString::number(usualMs)));
    QCOMPARE(session, VI_NULL);
}

SCN_TEST(TestSocketTransport, QCoreApplication)
#include "test_sockettransport.moc"
