#include "posix/filedescriptor.h"
#include "support/testprogram.h"
#include "unit/visa/backgroundwork_posix.h"
#include "unit/visa/peers_posix.h"
#include "unit/visa/providersession.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using namespace scn::visa;

namespace {

/// A thread that does one thing, with nothing of the library between it and its termination.
class WorkThread : public QThread
{
public:
    explicit WorkThread(std::function<void()> work)
        : m_work(std::move(work))
    {
    }

    bool isInPoll() const { return m_id != 0 && ::isInPoll(m_id); }

protected:
    void run() override
    {
        m_id = ::gettid();
        m_work();
    }

private:
    const std::function<void()> m_work;
    std::atomic<pid_t> m_id{0};
};

/// A read on a thread of its own, which waits for its first byte when the constructor returns.
class BackgroundRead
{
public:
    explicit BackgroundRead(ProviderSession& session)
        : m_work([this, &session] { m_outcome = session.read(); })
        , m_waits(m_work.waitUntilInPoll())
    {
    }

    bool waits() const { return m_waits; }

    /// Sends the reading thread a signal.
    void signal(int number) { m_work.signal(number); }

    ReadOutcome outcome()
    {
        m_work.join();
        return m_outcome;
    }

private:
    ReadOutcome m_outcome = {VI_SUCCESS, {}};
    BackgroundWork m_work;
    bool m_waits;
};

constexpr qint64 kGenerousMs = 1000;

QStringList openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::Files | QDir::System);
}

/// A descriptor that goes out of scope in a thread being terminated.
struct Closing
{
    int descriptor = -1;
    bool done = false;
};

void* closeWhileTerminated(void* argument)
{
    auto* const closing = static_cast<Closing*>(argument);
    {
        const scn::FileDescriptor descriptor(closing->descriptor);
        ::pthread_cancel(::pthread_self());
    }
    closing->done = true;
    ::pthread_testcancel();
    return nullptr;
}

} // namespace

/// The seven operations called by several threads at once.
class TestVisaThreads : public QObject
{
    Q_OBJECT

private slots:
    void closingEndsAReadInAnotherThread_data();
    void closingEndsAReadInAnotherThread();
    void closingEndsAWriteInAnotherThread();
    void closingTheResourceManagerEndsAReadInAnotherThread();
    void openingAndClosingWhileOthersRead();
    void eachThreadItsOwnSession();
    void messagesOfTwoWritersDoNotMix();
    void writerWaitsForItsTurnNoLongerThanItsTimeout();
    void writeDuringAReadThatWaits();
    void signalsDoNotEndARead();
    void terminatedThreadLeavesASessionThatWorks_data();
    void terminatedThreadLeavesASessionThatWorks();
    void closingADescriptorIsNoPlaceToBeTerminated();
    void noDescriptorIsLeftBehind();
    void descriptorsAreKeptFromChildProcesses();
};

void TestVisaThreads::closingEndsAReadInAnotherThread_data()
{
    QTest::addColumn<bool>("serial");
    QTest::newRow("TCP") << false;
    QTest::newRow("serial") << true;
}

void TestVisaThreads::closingEndsAReadInAnotherThread()
{
    QFETCH(bool, serial);
    TcpPeer tcp;
    PtyPeer pty;
    ProviderSession session(serial ? pty.resource() : tcp.resource());
    session.set(VI_ATTR_TMO_VALUE, 20000);
    BackgroundRead read(session);
    QVERIFY(read.waits());
    QElapsedTimer timer;
    timer.start();
    const ViStatus closed = session.close();
    const ReadOutcome outcome = read.outcome();
    QVERIFY(timer.elapsed() < kGenerousMs);
    QCOMPARE(closed, VI_SUCCESS);
    QCOMPARE(outcome.status, VI_ERROR_ABORT);
    QCOMPARE(session.read().status, VI_ERROR_INV_OBJECT);
}

void TestVisaThreads::closingEndsAWriteInAnotherThread()
{
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 20000);
    ViStatus status = VI_SUCCESS;
    std::thread writer([&] { status = session.write(QByteArray(64 << 20, 'w')); });
    const bool begun = !peer.receive(1).isEmpty();
    QElapsedTimer timer;
    timer.start();
    session.close();
    writer.join();
    QVERIFY(begun);
    QVERIFY(timer.elapsed() < 2 * kGenerousMs);
    QCOMPARE(status, VI_ERROR_ABORT);
}

void TestVisaThreads::closingTheResourceManagerEndsAReadInAnotherThread()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    session.set(VI_ATTR_TMO_VALUE, 20000);
    BackgroundRead read(session);
    QVERIFY(read.waits());
    QCOMPARE(providerVisaTable().viClose(session.resourceManager()), VI_SUCCESS);
    QCOMPARE(read.outcome().status, VI_ERROR_ABORT);
}

void TestVisaThreads::openingAndClosingWhileOthersRead()
{
    PtyPeer peer;
    std::atomic<bool> stop{false};
    std::atomic<ViSession> current{0};
    std::atomic<int> strange{0};
    std::atomic<ViSession> lastRead{0};
    QSemaphore reads;
    std::vector<std::thread> users;
    for (int i = 0; i < 3; ++i) {
        users.emplace_back([&] {
            const VisaTable& visa = providerVisaTable();
            while (!stop) {
                ViByte buffer[16];
                const ViSession session = current;
                lastRead = session;
                reads.release();
                const ViStatus read = visa.viRead(session, buffer, sizeof buffer, nullptr);
                const ViStatus set = visa.viSetAttribute(session, VI_ATTR_TMO_VALUE, 5);
                for (const ViStatus status : {read, set}) {
                    if (status != VI_SUCCESS && status != VI_ERROR_TMO &&
                        status != VI_ERROR_ABORT && status != VI_ERROR_INV_OBJECT) {
                        ++strange;
                    }
                }
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        ProviderSession session(peer.resource());
        session.set(VI_ATTR_TMO_VALUE, 1000);
        current = session.handle();
        while (lastRead != current) {
            reads.acquire();
        }
        session.close();
    }
    stop = true;
    for (std::thread& user : users) {
        user.join();
    }
    QCOMPARE(strange.load(), 0);
}

void TestVisaThreads::eachThreadItsOwnSession()
{
    constexpr int kThreads = 8;
    constexpr int kExchanges = 200;
    std::vector<std::unique_ptr<TcpPeer>> peers;
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    for (int i = 0; i < kThreads; ++i) {
        peers.push_back(std::make_unique<TcpPeer>());
        TcpPeer* const peer = peers.back().get();
        threads.emplace_back([&good, peer, i] {
            ProviderSession session(peer->resource());
            std::thread instrument([peer] {
                if (!peer->accept()) {
                    return;
                }
                for (int n = 0; n < kExchanges; ++n) {
                    peer->send("re:" + peer->receive(7));
                }
            });
            for (int n = 0; n < kExchanges; ++n) {
                const QByteArray command =
                    QByteArray::number(i * 1000 + n).rightJustified(6, '0') + "\n";
                if (session.write(command) == VI_SUCCESS &&
                    session.read().bytes == QByteArray("re:" + command)) {
                    ++good;
                }
            }
            instrument.join();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(good.load(), kThreads * kExchanges);
}

void TestVisaThreads::messagesOfTwoWritersDoNotMix()
{
    constexpr int kSize = 2 << 20;
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 30000);
    std::vector<std::thread> writers;
    std::atomic<int> written{0};
    for (const char letter : {'a', 'b', 'c'}) {
        writers.emplace_back([&session, &written, letter] {
            const QByteArray message(kSize, letter);
            ViUInt32 sent = 0;
            if (providerVisaTable().viWrite(session.handle(),
                                            reinterpret_cast<const ViByte*>(message.constData()),
                                            kSize, &sent) == VI_SUCCESS &&
                sent == kSize) {
                ++written;
            }
        });
    }
    const QByteArray all = peer.receive(3 * kSize);
    for (std::thread& writer : writers) {
        writer.join();
    }
    QCOMPARE(written.load(), 3);
    QCOMPARE(all.size(), 3 * kSize);
    QByteArray order;
    for (int i = 0; i < all.size(); ++i) {
        if (order.isEmpty() || order.back() != all.at(i)) {
            order.append(all.at(i));
        }
    }
    std::sort(order.begin(), order.end());
    QCOMPARE(order, QByteArray("abc"));
}

void TestVisaThreads::writerWaitsForItsTurnNoLongerThanItsTimeout()
{
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 20000);
    ViStatus first = VI_SUCCESS;
    std::thread writer([&] {
        const QByteArray much(64 << 20, 'w');
        first = providerVisaTable().viWrite(session.handle(),
                                            reinterpret_cast<const ViByte*>(much.constData()),
                                            static_cast<ViUInt32>(much.size()), nullptr);
    });
    const bool begun = !peer.receive(1).isEmpty();
    session.set(VI_ATTR_TMO_VALUE, 100);
    QElapsedTimer timer;
    timer.start();
    const ViStatus second = session.write("x\n");
    const qint64 elapsed = timer.elapsed();
    session.close();
    writer.join();
    QVERIFY(begun);
    QCOMPARE(second, VI_ERROR_TMO);
    QCOMPARE(session.sent(), 0U);
    QVERIFY2(elapsed >= 100 && elapsed < 100 + kGenerousMs, qPrintable(QString::number(elapsed)));
    QCOMPARE(first, VI_ERROR_ABORT);
}

void TestVisaThreads::writeDuringAReadThatWaits()
{
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    BackgroundRead read(session);
    QVERIFY(read.waits());
    QElapsedTimer timer;
    timer.start();
    const ViStatus written = session.write("ABOR\n");
    QVERIFY(timer.elapsed() < kGenerousMs);
    const QByteArray line = peer.receive(5);
    peer.send("ok\n");
    QCOMPARE(written, VI_SUCCESS);
    QCOMPARE(line, QByteArray("ABOR\n"));
    QCOMPARE(read.outcome().bytes, QByteArray("ok\n"));
}

void TestVisaThreads::signalsDoNotEndARead()
{
    static std::atomic<int> handled{0};
    handled = 0;
    std::signal(SIGUSR1, [](int) { ++handled; });
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 10000);
    BackgroundRead read(session);
    QVERIFY(read.waits());
    for (int i = 0; i < 3; ++i) {
        read.signal(SIGUSR1);
        QTRY_COMPARE(handled.load(), i + 1);
    }
    peer.send("still here\n");
    const ReadOutcome outcome = read.outcome();
    std::signal(SIGUSR1, SIG_DFL);
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(outcome.bytes, QByteArray("still here\n"));
}

void TestVisaThreads::terminatedThreadLeavesASessionThatWorks_data()
{
    QTest::addColumn<bool>("reading");
    QTest::newRow("in a read") << true;
    QTest::newRow("in a write") << false;
}

void TestVisaThreads::terminatedThreadLeavesASessionThatWorks()
{
    QFETCH(bool, reading);
    TcpPeer peer;
    peer.useSmallBuffers();
    ProviderSession session(peer.resource());
    QVERIFY(peer.accept());
    session.set(VI_ATTR_TMO_VALUE, 60000);
    static const QByteArray much(64 << 20, 'w');
    WorkThread thread([&session, reading] {
        ViByte buffer[64];
        if (reading) {
            providerVisaTable().viRead(session.handle(), buffer, sizeof buffer, nullptr);
        } else {
            providerVisaTable().viWrite(session.handle(),
                                        reinterpret_cast<const ViByte*>(much.constData()),
                                        static_cast<ViUInt32>(much.size()), nullptr);
        }
    });
    thread.start();
    QTRY_VERIFY(thread.isInPoll());
    thread.terminate();
    QVERIFY(thread.wait(5000));
    // Discards what the write had sent.
    std::atomic<bool> found{false};
    std::thread instrument([&] {
        QByteArray tail;
        while (!tail.endsWith("next?\n")) {
            const QByteArray more = peer.receive(1);
            if (more.isEmpty()) {
                return;
            }
            tail.append(more);
            tail = tail.right(6);
        }
        found = true;
        peer.send("next\n");
    });
    session.set(VI_ATTR_TMO_VALUE, 10000);
    const ViStatus written = session.write("next?\n");
    const ReadOutcome outcome = session.read();
    instrument.join();
    QCOMPARE(written, VI_SUCCESS);
    QVERIFY(found);
    QCOMPARE(outcome.bytes, QByteArray("next\n"));
}

void TestVisaThreads::closingADescriptorIsNoPlaceToBeTerminated()
{
    Closing closing;
    closing.descriptor = ::dup(STDERR_FILENO);
    pthread_t thread;
    QCOMPARE(::pthread_create(&thread, nullptr, closeWhileTerminated, &closing), 0);
    void* result = nullptr;
    QCOMPARE(::pthread_join(thread, &result), 0);
    QVERIFY(closing.done);
    QCOMPARE(result, PTHREAD_CANCELED);
    QCOMPARE(::fcntl(closing.descriptor, F_GETFD), -1);
}

void TestVisaThreads::noDescriptorIsLeftBehind()
{
    TcpPeer listening;
    TcpPeer deaf;
    deaf.stopListening();
    PtyPeer pty;
    const int before = openDescriptors().size();
    QVERIFY(before > 0);
    for (int i = 0; i < 20; ++i) {
        ProviderSession tcp(listening.resource());
        QVERIFY(listening.accept());
        listening.close();
        ProviderSession serial(pty.resource());
        QCOMPARE(serial.openStatus(), VI_SUCCESS);
        ProviderSession refused(deaf.resource());
        QCOMPARE(refused.openStatus(), VI_ERROR_RSRC_NFOUND);
        ProviderSession missing("ASRL/dev/no-such-port::INSTR");
        QCOMPARE(missing.openStatus(), VI_ERROR_RSRC_NFOUND);
        ProviderSession nobody("TCPIP0::no-such-host.invalid::1::SOCKET");
        QVERIFY(nobody.openStatus() < 0);
    }
    // An abandoned look-up still ends by itself.
    QTRY_COMPARE_WITH_TIMEOUT(openDescriptors().size(), before, 30000);
}

void TestVisaThreads::descriptorsAreKeptFromChildProcesses()
{
    TcpPeer tcp;
    PtyPeer pty;
    const QStringList before = openDescriptors();
    const ProviderSession first(tcp.resource());
    const ProviderSession second(pty.resource());
    int opened = 0;
    const QStringList after = openDescriptors();
    for (const QString& name : after) {
        if (before.contains(name)) {
            continue;
        }
        ++opened;
        QVERIFY2((::fcntl(name.toInt(), F_GETFD) & FD_CLOEXEC) != 0, qPrintable(name));
    }
    // Each session has its connection and a pipe.
    QCOMPARE(opened, 6);
}

SCN_TEST(TestVisaThreads, QCoreApplication)
#include "test_visathreads.moc"
