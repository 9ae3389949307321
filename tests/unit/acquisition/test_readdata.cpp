#include "acquisition/readdata.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "support/fakevisa.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QWaitCondition>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <memory>

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr int kPatienceMs = 120000;
constexpr int kBufferSize = 40959;

const QString kPoints = QStringLiteral("DATA:POIN?");
const QString kFetchTwo = QStringLiteral("R? 2");
const QString kCondition = QStringLiteral("STAT:OPER:COND?");
const QString kEvent = QStringLiteral("STAT:OPER:EVEN?");

const QString kTwoReadings = QStringLiteral("#280+1.5 V,2024,1,2,3,4,5.600,101,0,"
                                            "-2.5 V,2024,1,2,3,4,5.700,102,1");

/// A clock that never waits: a sleep advances it and returns at once.
class DrivenClock
{
public:
    /// The clock of a thread. It may outlive this object.
    scn::WaitClock clock() const
    {
        const auto shared = m_shared;
        return {[shared] { return std::chrono::steady_clock::time_point(shared->elapsed.load()); },
                [shared](scn::Sleeper&, milliseconds time) {
                    shared->elapsed = shared->elapsed.load() + time;
                    if (shared->atSleep) {
                        shared->atSleep();
                    }
                }};
    }

    /// Milliseconds slept so far.
    qint64 elapsed() const { return m_shared->elapsed.load().count(); }

    /// Runs on the sleeping thread after each sleep. Set it before the thread starts.
    void atSleep(const std::function<void()>& work) { m_shared->atSleep = work; }

private:
    struct Shared
    {
        std::atomic<milliseconds> elapsed{0ms};
        std::function<void()> atSleep;
    };

    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
};

/// An instrument that answers each query from a list of its own: one reply at a time, the last one
/// repeatedly. An empty reply is silence. It records when each query arrived.
class ScriptedInstrument
{
public:
    explicit ScriptedInstrument(const DrivenClock& clock)
        : m_clock(clock)
    {
        m_visa.setResponder([this](const QByteArray& line) { return answer(line); });
        g_visa->connectDevice(QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET"));
    }

    ~ScriptedInstrument() { g_visa->disconnectDevice(); }

    ScriptedInstrument(const ScriptedInstrument&) = delete;
    ScriptedInstrument& operator=(const ScriptedInstrument&) = delete;

    void setReplies(const QString& query, const QStringList& replies)
    {
        const QMutexLocker locker(&m_mutex);
        m_replies.insert(query, replies);
    }

    /// Stops the scan from outside while this query is on the wire.
    void stopScanDuring(const QString& query)
    {
        const QMutexLocker locker(&m_mutex);
        m_stoppingQuery = query;
    }

    /// The reply to the next of these queries fills the program's buffer.
    void overflowNext(const QString& query)
    {
        const QMutexLocker locker(&m_mutex);
        m_overflowingQuery = query;
    }

    QStringList queries() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_queries;
    }

    /// The clock's time at each query.
    QList<qint64> times() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_times;
    }

    /// All calls through the table of operations.
    QStringList calls() const { return m_visa.calls(); }

private:
    QByteArray answer(const QByteArray& line)
    {
        const QMutexLocker locker(&m_mutex);
        const QString query = QString::fromUtf8(line);
        m_queries.append(query);
        m_times.append(m_clock.elapsed());
        if (query == m_stoppingQuery) {
            g_scanRunning = false;
        }
        if (query == m_overflowingQuery) {
            m_overflowingQuery.clear();
            m_visa.scriptRead(scn::visa::VI_SUCCESS_MAX_CNT, QByteArray(kBufferSize, '0'));
            return {};
        }
        QStringList& replies = m_replies[query];
        const QString reply = replies.value(0);
        if (replies.size() > 1) {
            replies.removeFirst();
        }
        return reply.isEmpty() ? QByteArray() : reply.toUtf8() + '\n';
    }

    mutable QMutex m_mutex;
    const DrivenClock m_clock;
    QMap<QString, QStringList> m_replies;
    QStringList m_queries;
    QList<qint64> m_times;
    QString m_stoppingQuery;
    QString m_overflowingQuery;
    FakeVisa m_visa;
};

/// What the thread emitted, in order, as it arrives on the GUI thread.
class Listener : public QObject
{
    Q_OBJECT

public:
    explicit Listener(ReadData* thread)
    {
        connect(thread, &ReadData::sigStopScan, this, &Listener::onStopScan);
        connect(thread, &ReadData::sigUseInst, this, &Listener::onUseInst);
        connect(thread, &ReadData::sigSendMeasure, this, &Listener::onMeasure);
    }

    QStringList told;
    QList<MeasurementData> readings;

private:
    void onStopScan() { note(QStringLiteral("stop")); }
    void onUseInst() { note(QStringLiteral("in use")); }
    void onMeasure(const QList<MeasurementData>& batch)
    {
        note(QStringLiteral("batch of %1").arg(batch.size()));
        readings += batch;
    }
    void note(const QString& text)
    {
        told.append(QThread::currentThread() == QCoreApplication::instance()->thread()
                        ? text
                        : QStringLiteral("off the GUI thread"));
    }
};

/// A place where a thread waits until it may go on, and can be terminated meanwhile.
class Gate
{
public:
    void pass()
    {
        QMutexLocker lock(&m_mutex);
        m_isReached = true;
        while (!m_isOpen) {
            m_changed.wait(&m_mutex);
        }
    }

    bool isReached()
    {
        const QMutexLocker lock(&m_mutex);
        return m_isReached;
    }

    void open()
    {
        const QMutexLocker lock(&m_mutex);
        m_isOpen = true;
        m_changed.wakeAll();
    }

private:
    QMutex m_mutex;
    QWaitCondition m_changed;
    bool m_isReached = false;
    bool m_isOpen = false;
};

/// Delivers what the thread queued before it ended.
void deliverSignals()
{
    QCoreApplication::sendPostedEvents();
}

} // namespace

class TestReadData : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void accessorMakesAnotherObjectAfterDeletion();
    void idlePassAsksOnlyForTheEvent();
    void passOfAScanFetchesThenLooksForItsEnd();
    void unreadableReplyIsFetchedSixMoreTimes();
    void fetchIsRepeatedUntilABatchDecodes();
    void nextPassFetchesWhatWasGivenUp();
    void largeCountIsFetchedInPartsWithoutPauses_data();
    void largeCountIsFetchedInPartsWithoutPauses();
    void partThatFailsIsFollowedByThePause();
    void replyThatFillsTheBufferIsLogged();
    void flagIsReadOnceAPass();
    void exchangeMayTakeFiveSeconds();
    void zeroPointsAndIdleConditionEndTheScan_data();
    void zeroPointsAndIdleConditionEndTheScan();
    void lastReadingsAreDrainedBeforeTheStop();
    void otherEventsAreIgnored();
    void inUseEventEndsTheThreadAlsoDuringAScan();
    void sixMoreSilencesEndTheThread();
    void anyReplyEndsTheSilence();
    void threadRunsAgainAfterItsEnd();
    void stopInTheFirstSecondIsOverwritten();
    void stopEndsASleepEarly();
    void terminationInASleepLeavesNothingBehind();
    void terminationWaitsForALogLine();
    void sleepsAreAsLongAsTold();
    void sleepIsOneWait();
    void stopEndsARealSleep();
    void threadBeginsAfterASecond();
    void sleepsTakeRealTime();

private:
    void sleepForReal(const scn::ReadDataTiming& timing);

    DrivenClock m_clock;
    std::unique_ptr<ScriptedInstrument> m_instrument;
    ReadData* m_thread = nullptr;
    std::unique_ptr<Listener> m_listener;
};

void TestReadData::init()
{
    g_scanRunning = false;
    m_clock = DrivenClock();
    m_instrument = std::make_unique<ScriptedInstrument>(m_clock);
    m_thread = ReadData::instance();
    scn::ReadDataTiming timing;
    timing.clock = m_clock.clock();
    m_thread->setTiming(timing);
    m_listener = std::make_unique<Listener>(m_thread);
}

/// The thread uses the machine's clock.
void TestReadData::sleepForReal(const scn::ReadDataTiming& timing)
{
    m_thread->setTiming(timing);
}

void TestReadData::cleanup()
{
    // A failed test may leave the thread in its first sleep, where a stop is overwritten.
    while (m_thread->isRunning()) {
        m_thread->stop();
        m_thread->wait(100);
    }
    delete m_thread;
    m_thread = nullptr;
    m_listener.reset();
    m_instrument.reset();
}

void TestReadData::accessorMakesAnotherObjectAfterDeletion()
{
    QCOMPARE(ReadData::instance(), m_thread);
    QVERIFY(!m_thread->parent());
    QPointer<ReadData> first = m_thread;
    delete m_thread;
    QVERIFY(first.isNull());
    m_thread = ReadData::instance();
    QVERIFY(m_thread);
    QVERIFY(!m_thread->isRunning());
    QCOMPARE(ReadData::instance(), m_thread);
}

void TestReadData::idlePassAsksOnlyForTheEvent()
{
    m_instrument->setReplies(kEvent,
                             {QStringLiteral("+0"), QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(), (QStringList{kEvent, kEvent, kEvent}));
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
}

void TestReadData::passOfAScanFetchesThenLooksForItsEnd()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kFetchTwo, kCondition, kEvent}));
    QCOMPARE(m_listener->told,
             (QStringList{QStringLiteral("batch of 2"), QStringLiteral("in use")}));
    QVERIFY(g_scanRunning);
    QCOMPARE(m_listener->readings.size(), 2);
    QCOMPARE(m_listener->readings[0].value, 1.5);
    QCOMPARE(m_listener->readings[0].channel, 101);
    QCOMPARE(m_listener->readings[1].value, -2.5);
    QCOMPARE(m_listener->readings[1].channel, 102);
    QCOMPARE(m_listener->readings[1].time, QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5, 700)));
}

void TestReadData::unreadableReplyIsFetchedSixMoreTimes()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("2")});
    m_instrument->setReplies(kFetchTwo, {QStringLiteral("#13+1 ")});
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    const LogCapture log;
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(),
             (QStringList{kPoints, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo,
                          kFetchTwo, kCondition, kEvent}));
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
    QCOMPARE(log.lines().size(), 7);
    QCOMPARE(log.lines().count(QStringLiteral("warning: 存在不完整的数据记录，已忽略")), 7);
}

void TestReadData::fetchIsRepeatedUntilABatchDecodes()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {QString(), QString(), kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(),
             (QStringList{kPoints, kFetchTwo, kFetchTwo, kFetchTwo, kCondition, kEvent}));
    QCOMPARE(m_listener->told,
             (QStringList{QStringLiteral("batch of 2"), QStringLiteral("in use")}));
}

void TestReadData::nextPassFetchesWhatWasGivenUp()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {QString(), QString(), QString(), QString(), QString(),
                                         QString(), QString(), kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(),
             (QStringList{kPoints, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo, kFetchTwo,
                          kFetchTwo, kCondition, kEvent, kPoints, kFetchTwo, kCondition, kEvent}));
    QCOMPARE(m_listener->told,
             (QStringList{QStringLiteral("batch of 2"), QStringLiteral("in use")}));
}

void TestReadData::largeCountIsFetchedInPartsWithoutPauses_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<int>("most");
    QTest::newRow("socket") << QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET") << 800;
    // 800 records take longer than the time-out.
    QTest::newRow("serial") << QStringLiteral("ASRL1::INSTR") << 500;
}

void TestReadData::largeCountIsFetchedInPartsWithoutPauses()
{
    QFETCH(const QString, resource);
    QFETCH(const int, most);
    g_visa->connectDevice(resource);
    g_scanRunning = true;
    const QString fetchMost = QStringLiteral("R? %1").arg(most);
    QStringList counts;
    for (const int count : {4 * most + 2, 3 * most + 2, 2 * most + 2, most + 2, 2, most, 0}) {
        counts << QStringLiteral("+%1").arg(count);
    }
    m_instrument->setReplies(kPoints, counts);
    m_instrument->setReplies(fetchMost, {kTwoReadings});
    m_instrument->setReplies(kFetchTwo, {kTwoReadings});
    // The instrument reports the end of its scan throughout.
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    const QString zero = QStringLiteral("+0");
    m_instrument->setReplies(kEvent, {zero, zero, zero, zero, zero, zero, QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QStringList queries;
    for (int pass = 0; pass < 4; ++pass) {
        queries << kPoints << fetchMost << kCondition << kEvent;
    }
    queries << kPoints << kFetchTwo << kCondition << kEvent;
    queries << kPoints << fetchMost << kCondition << kEvent;
    queries << kPoints << kCondition << kEvent;
    QCOMPARE(m_instrument->queries(), queries);
    QCOMPARE(m_listener->told.count(QStringLiteral("batch of 2")), 6);
    QCOMPARE(m_listener->told.mid(6),
             (QStringList{QStringLiteral("stop"), QStringLiteral("in use")}));

    const QList<qint64> times = m_instrument->times();
    const auto gapBehindPass = [&times](int pass) { return times[4 * pass] - times[4 * pass - 1]; };
    for (const int pass : {1, 2, 3, 4}) {
        QCOMPARE(gapBehindPass(pass), 0);
    }
    // Everything there has been fetched, so there is time for more to accumulate.
    QCOMPARE(gapBehindPass(5), 1000);
    QCOMPARE(gapBehindPass(6), 1000);
}

void TestReadData::partThatFailsIsFollowedByThePause()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+900"), QStringLiteral("+0")});
    m_instrument->setReplies(QStringLiteral("R? 800"), {QString()});
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    const QStringList queries = m_instrument->queries();
    QCOMPARE(queries.count(QStringLiteral("R? 800")), 7);
    QCOMPARE(queries.mid(8), (QStringList{kCondition, kEvent, kPoints, kCondition, kEvent}));
    const QList<qint64> times = m_instrument->times();
    QCOMPARE(times[10] - times[9], 1000);
}

void TestReadData::replyThatFillsTheBufferIsLogged()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {kTwoReadings});
    m_instrument->overflowNext(kFetchTwo);
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    const LogCapture log;
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(),
             (QStringList{kPoints, kFetchTwo, kFetchTwo, kCondition, kEvent}));
    QCOMPARE(m_listener->told.value(0), QStringLiteral("batch of 2"));
    QCOMPARE(log.lines(),
             LogCapture::warnings({QStringLiteral("响应超出接收缓冲区，已丢弃: R? 2")}));
}

void TestReadData::flagIsReadOnceAPass()
{
    g_scanRunning = true;
    m_instrument->stopScanDuring(kPoints);
    m_instrument->setReplies(kPoints, {QStringLiteral("+0")});
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kCondition, kEvent, kEvent}));
    QCOMPARE(m_listener->told, (QStringList{QStringLiteral("stop"), QStringLiteral("in use")}));
}

void TestReadData::exchangeMayTakeFiveSeconds()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(kEvent, {QString(), QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    const QStringList calls = m_instrument->calls();
    int exchanges = 0;
    for (int i = 1; i < calls.size(); ++i) {
        if (calls[i].startsWith(QLatin1String("viWrite("))) {
            QCOMPARE(calls[i - 1], QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"));
            ++exchanges;
        }
    }
    QCOMPARE(exchanges, m_instrument->queries().size());
}

void TestReadData::zeroPointsAndIdleConditionEndTheScan_data()
{
    QTest::addColumn<QString>("points");
    QTest::addColumn<QString>("condition");
    QTest::addColumn<bool>("ends");
    QTest::newRow("zero and idle") << QStringLiteral("+0") << QStringLiteral("+256") << true;
    QTest::newRow("no answer and idle") << QString() << QStringLiteral("+256") << true;
    QTest::newRow("no number and idle") << QStringLiteral("many") << QStringLiteral("+256") << true;
    QTest::newRow("zero and scanning") << QStringLiteral("+0") << QStringLiteral("+16") << false;
    QTest::newRow("zero and no answer") << QStringLiteral("+0") << QString() << false;
    QTest::newRow("zero and no sign") << QStringLiteral("+0") << QStringLiteral("256") << false;
    QTest::newRow("zero and more bits") << QStringLiteral("+0") << QStringLiteral("+272") << false;
}

void TestReadData::zeroPointsAndIdleConditionEndTheScan()
{
    QFETCH(const QString, points);
    QFETCH(const QString, condition);
    QFETCH(const bool, ends);
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {points});
    m_instrument->setReplies(kCondition, {condition});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kCondition, kEvent}));
    QCOMPARE(m_listener->told.contains(QStringLiteral("stop")), ends);
    QCOMPARE(g_scanRunning.load(), !ends);
}

void TestReadData::lastReadingsAreDrainedBeforeTheStop()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2"), QStringLiteral("+0")});
    m_instrument->setReplies(kFetchTwo, {kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+256")});
    m_instrument->setReplies(kEvent,
                             {QStringLiteral("+0"), QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    // The third pass belongs to no scan.
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kFetchTwo, kCondition, kEvent, kPoints,
                                                   kCondition, kEvent, kEvent}));
    QCOMPARE(m_listener->told, (QStringList{QStringLiteral("batch of 2"), QStringLiteral("stop"),
                                            QStringLiteral("in use")}));
    QVERIFY(!g_scanRunning);
}

void TestReadData::otherEventsAreIgnored()
{
    m_instrument->setReplies(kEvent, {QStringLiteral("+2049"), QStringLiteral("2048"),
                                      QStringLiteral("+1"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries().size(), 4);
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
}

void TestReadData::inUseEventEndsTheThreadAlsoDuringAScan()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+0")});
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kCondition, kEvent}));
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
    // The verdict does not change the scan.
    QVERIFY(g_scanRunning);
}

void TestReadData::sixMoreSilencesEndTheThread()
{
    m_instrument->setReplies(kEvent, {QString()});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(m_instrument->queries(),
             (QStringList{kEvent, kEvent, kEvent, kEvent, kEvent, kEvent, kEvent}));
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
    const QList<qint64> times = m_instrument->times();
    for (int i = 1; i < times.size(); ++i) {
        QCOMPARE(times[i] - times[i - 1], 3000);
    }
}

void TestReadData::anyReplyEndsTheSilence()
{
    // The reply that ends the silence is ignored; the next pass's is not.
    m_instrument->setReplies(kEvent, {QString(), QString(), QStringLiteral("+2048"),
                                      QStringLiteral("+0"), QStringLiteral("+2048")});
    int queriesAtReport = 0;
    connect(
        m_thread, &ReadData::sigUseInst, m_thread,
        [this, &queriesAtReport] { queriesAtReport = m_instrument->queries().size(); },
        Qt::DirectConnection);
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(queriesAtReport, 5);
    QCOMPARE(m_instrument->queries().size(), 5);
    QCOMPARE(m_listener->told, QStringList{QStringLiteral("in use")});
}

void TestReadData::threadRunsAgainAfterItsEnd()
{
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    bool isRunning = false;
    m_clock.atSleep([this, &isRunning] { isRunning = m_thread->isRunning(); });
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QVERIFY(isRunning);
    QCOMPARE(m_instrument->queries(), (QStringList{kEvent, kEvent, kEvent}));
    QCOMPARE(m_listener->told, (QStringList{QStringLiteral("in use"), QStringLiteral("in use")}));
}

void TestReadData::stopInTheFirstSecondIsOverwritten()
{
    m_instrument->setReplies(kEvent, {QStringLiteral("+0")});
    std::atomic<bool> isFirst{true};
    m_clock.atSleep([this, &isFirst] {
        if (isFirst.exchange(false)) {
            m_thread->stop();
        }
    });
    m_thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->queries().size() >= 3, kPatienceMs);
    QVERIFY(m_thread->isRunning());
    m_thread->stop();
    QVERIFY(m_thread->wait(kPatienceMs));
}

void TestReadData::stopEndsASleepEarly()
{
    m_instrument->setReplies(kEvent, {QString()});
    // Six sleeps of three seconds follow the query.
    qint64 stopped = 0;
    m_clock.atSleep([this, &stopped] {
        if (m_instrument->queries().size() == 1) {
            stopped = m_clock.elapsed();
            m_thread->stop();
        }
    });
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    QCOMPARE(stopped, 4000);
    QCOMPARE(m_clock.elapsed(), stopped);
    QCOMPARE(m_instrument->queries().size(), 7);
}

void TestReadData::terminationInASleepLeavesNothingBehind()
{
    const LogCapture log;
    scn::ReadDataTiming timing;
    timing.startDelay = 1ms;
    timing.silenceDelay = 1h;
    sleepForReal(timing);
    m_instrument->setReplies(kEvent, {QString()});
    m_thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->queries().size() == 1, kPatienceMs);
    m_thread->terminate();
    QVERIFY(m_thread->wait(kPatienceMs));
    // The gate is free, and stopping a dead thread blocks no one.
    m_thread->stop();
    m_instrument->setReplies(kPoints, {QStringLiteral("+0")});
    QCOMPARE(g_visa->sendCommand(kPoints, 5000), QStringLiteral("+0"));
    delete m_thread;
    m_thread = ReadData::instance();
    sleepForReal(timing);
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    QCOMPARE(log.lines(), QStringList());
}

void TestReadData::terminationWaitsForALogLine()
{
    // Unwinding out of a log line would end the process.
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2")});
    m_instrument->setReplies(kFetchTwo, {QStringLiteral("#13+1 ")});
    LogCapture log;
    Gate gate;
    bool isWritten = false;
    log.whenLogged(QString(), [&gate, &isWritten] {
        gate.pass();
        isWritten = true;
    });
    m_thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(gate.isReached(), kPatienceMs);
    m_thread->terminate();
    gate.open();
    QVERIFY(m_thread->wait(kPatienceMs));
    QVERIFY(isWritten);
    QCOMPARE(m_instrument->queries(), (QStringList{kPoints, kFetchTwo}));
}

void TestReadData::sleepsAreAsLongAsTold()
{
    g_scanRunning = true;
    m_instrument->setReplies(kPoints, {QStringLiteral("+2"), QStringLiteral("+0")});
    m_instrument->setReplies(kFetchTwo, {QString(), kTwoReadings});
    m_instrument->setReplies(kCondition, {QStringLiteral("+16")});
    m_instrument->setReplies(
        kEvent, {QStringLiteral("+0"), QString(), QStringLiteral("+0"), QStringLiteral("+2048")});
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    deliverSignals();
    const QStringList queries = m_instrument->queries();
    const QList<qint64> times = m_instrument->times();
    QStringList told;
    qint64 before = 0;
    for (int i = 0; i < queries.size(); ++i) {
        told.append(QStringLiteral("%1: %2").arg(QString::number(times[i] - before), queries[i]));
        before = times[i];
    }
    QCOMPARE(
        told,
        (QStringList{QStringLiteral("1000: DATA:POIN?"), QStringLiteral("0: R? 2"),
                     QStringLiteral("100: R? 2"), QStringLiteral("50: STAT:OPER:COND?"),
                     QStringLiteral("50: STAT:OPER:EVEN?"), QStringLiteral("1000: DATA:POIN?"),
                     QStringLiteral("0: STAT:OPER:COND?"), QStringLiteral("50: STAT:OPER:EVEN?"),
                     QStringLiteral("3000: STAT:OPER:EVEN?"), QStringLiteral("1000: DATA:POIN?"),
                     QStringLiteral("0: STAT:OPER:COND?"), QStringLiteral("50: STAT:OPER:EVEN?")}));
}

void TestReadData::sleepIsOneWait()
{
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    int sleeps = 0;
    m_clock.atSleep([&sleeps] { ++sleeps; });
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    // One before the first pass and one between the two.
    QCOMPARE(sleeps, 2);
    QCOMPARE(m_clock.elapsed(), 2000);
}

void TestReadData::stopEndsARealSleep()
{
    scn::ReadDataTiming timing;
    timing.startDelay = 1ms;
    timing.passDelay = 1h;
    sleepForReal(timing);
    m_instrument->setReplies(kEvent, {QStringLiteral("+0")});
    m_thread->start();
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->queries().size() == 1, kPatienceMs);
    m_thread->stop();
    QVERIFY(m_thread->wait(kPatienceMs));
    QCOMPARE(m_instrument->queries().size(), 1);
}

void TestReadData::threadBeginsAfterASecond()
{
    m_instrument->setReplies(kEvent, {QStringLiteral("+2048")});
    for (int start = 0; start < 2; ++start) {
        const qint64 before = m_clock.elapsed();
        m_thread->start();
        QVERIFY(m_thread->wait(kPatienceMs));
        QCOMPARE(m_instrument->times().constLast() - before, 1000);
    }
}

void TestReadData::sleepsTakeRealTime()
{
    scn::ReadDataTiming timing;
    timing.startDelay = 15ms;
    timing.passDelay = 25ms;
    sleepForReal(timing);
    m_instrument->setReplies(kEvent, {QStringLiteral("+0"), QStringLiteral("+2048")});
    QElapsedTimer clock;
    clock.start();
    m_thread->start();
    QVERIFY(m_thread->wait(kPatienceMs));
    QCOMPARE(m_instrument->queries().size(), 2);
    QVERIFY2(clock.elapsed() >= 15 + 25, qPrintable(QString::number(clock.elapsed())));
}

SCN_TEST(TestReadData, QCoreApplication)
#include "test_readdata.moc"
