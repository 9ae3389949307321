#include "support/faultsession.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <unistd.h>

namespace {

constexpr int kSlackMs = 30000;
/// Six pauses of three seconds, and seven polls that fail at once or time out.
constexpr int kDeadLinkMs = 18000;
constexpr int kSilenceMs = 18000 + 7 * 5000;
/// The exchanges of the same pass before the first poll.
constexpr int kPassMs = 10000;
constexpr int kExchangeMs = 5000;
/// A read-back without replies gives up after this.
constexpr int kReadBackMs = 60000 + kExchangeMs;
constexpr int kEndWaitMs = 60000;

constexpr int kSettleMs = 3000;
constexpr int kMeasureMs = 4000;
constexpr double kIdleShare = 0.05;

constexpr int kChannels = 8;
/// Bytes of a record with its comma.
constexpr int kRecordLength = 50;

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");
const QString kAbort = QStringLiteral("ABOR");
const QString kStart = QStringLiteral("INIT");
const QString kFetch = QStringLiteral("R? ");

enum class Fault { Dropped, Silent30, Silent90, Garbage, Truncated, Oversized, Elsewhere };
enum class State { Idle, Starting, Running, Stopping, Lost };

struct FaultRow
{
    Fault fault;
    const char* name;
    /// The orders that cause it.
    QStringList orders;
    /// Its duration; 0 if it ends by itself.
    int lastsMs;
    /// Whether the instrument hands out readings in a spoilt reply, so that they are lost.
    bool spoilsReplies;
};

const FaultRow kFaults[] = {
    {Fault::Dropped,
     "dropped",
     {QStringLiteral("refuse"), QStringLiteral("drop times 1")},
     0,
     false},
    {Fault::Silent30, "silent30", {QStringLiteral("silence")}, 30000, false},
    {Fault::Silent90, "silent90", {QStringLiteral("silence")}, 90000, false},
    {Fault::Garbage, "garbage", {QStringLiteral("garbage times 10")}, 0, true},
    {Fault::Truncated, "truncated", {QStringLiteral("truncate for R? * times 1")}, 0, true},
    {Fault::Oversized, "oversized", {QStringLiteral("oversize for R? * times 1")}, 0, true},
    {Fault::Elsewhere,
     "elsewhere",
     {QStringLiteral("elsewhere for STAT:OPER:EVEN? times 1")},
     0,
     false},
};

struct StateRow
{
    State state;
    const char* name;
};

const StateRow kStates[] = {{State::Idle, "idle"},
                            {State::Starting, "starting"},
                            {State::Running, "running"},
                            {State::Stopping, "stopping"},
                            {State::Lost, "lost"}};

/// When the overlay must have appeared, counted from the fault.
struct Loss
{
    bool isShown;
    int earliestMs;
    int latestMs;
};

Loss lossOf(Fault fault, State state)
{
    const bool asksIdentity = state == State::Starting || state == State::Lost;
    switch (fault) {
    case Fault::Dropped:
        return {true, asksIdentity ? 0 : kDeadLinkMs - 1000, kDeadLinkMs};
    case Fault::Silent30:
        return {asksIdentity, 0, 2 * kExchangeMs};
    case Fault::Silent90:
        if (state == State::Lost) {
            return {true, 0, kReadBackMs};
        }
        if (state == State::Starting) {
            return {true, 0, 2 * kExchangeMs};
        }
        return {true, kSilenceMs - 1000, kSilenceMs + kPassMs};
    case Fault::Elsewhere:
        return {true, 0, kExchangeMs};
    default:
        return {false, 0, 0};
    }
}

/// Number of readings in the spoilt replies among these, from the lengths in their headers.
int spoiltReadings(const QStringList& sentLines)
{
    int count = 0;
    for (const QString& line : sentLines) {
        const int digits = line.mid(1, 1).toInt();
        const int length = line.mid(2, digits).toInt();
        if (line.startsWith(QLatin1Char('#')) && line.size() != 2 + digits + length) {
            count += (length + 1) / kRecordLength;
        }
    }
    return count;
}

} // namespace

/// The program against each fault in each of its states, at a low and at a high rate.
class TestFaultMatrix : public FaultSession
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(hasDisplay(), "Xvfb did not start"); }
    void init() { beginSession(); }
    void cleanup() { endSession(QTest::currentTestFailed()); }

    void survives_data();
    void survives();

private:
    bool enter(State state);
    bool strike(const FaultRow& fault, State state);
    void sitOut(const FaultRow& fault, const Loss& loss);
    bool sitOutSpoiltRecovery();
    bool comeToRest(State state, bool wasLost);
    bool scanAgain();
    bool scan();
    bool waitForBegin() const;
    bool waitForNextPass() const;
    int receivedCount(const QString& begin) const;
    double cpuSeconds() const;
    double shareOfCore() const;
    QString storeError() const;

    QElapsedTimer m_sinceFault;
};

/// Ticks all channels and starts.
bool TestFaultMatrix::scan()
{
    return m_user->startScan(*m_instrument, kChannels);
}

bool TestFaultMatrix::scanAgain()
{
    const int fetches = receivedCount(kFetch);
    m_user->clickStart();
    return waitUntil([&] { return receivedCount(kFetch) >= fetches + 3; }, kEndWaitMs) &&
           stopScan();
}

int TestFaultMatrix::receivedCount(const QString& begin) const
{
    int count = 0;
    for (const QString& line : m_instrument->received()) {
        count += line.startsWith(begin) ? 1 : 0;
    }
    return count;
}

/// Waits until the start button's click has taken effect. The first start creates the directory.
/// The curves are registered after that, which takes longer than one poll interval.
bool TestFaultMatrix::waitForBegin() const
{
    return QTest::qWaitFor([this] { return QFileInfo::exists(storeDirectory()); }, kEndWaitMs);
}

/// Waits until the middle of a pause between two passes.
bool TestFaultMatrix::waitForNextPass() const
{
    const int polls = receivedCount(kPoll);
    if (!QTest::qWaitFor([this, polls] { return receivedCount(kPoll) > polls; }, kEndWaitMs)) {
        return false;
    }
    QTest::qWait(400);
    return true;
}

/// Brings the program into a state; passing states are only entered.
bool TestFaultMatrix::enter(State state)
{
    switch (state) {
    case State::Idle:
        return scan() && stopScan();
    case State::Starting:
        if (!m_user->chooseChannels(*m_instrument, kChannels)) {
            return false;
        }
        m_user->clickStart();
        return waitForBegin();
    case State::Running:
        return scan();
    case State::Stopping: {
        if (!scan() || !waitForNextPass()) {
            return false;
        }
        m_user->clickStart();
        return QTest::qWaitFor([this] { return receivedCount(kAbort) == 1; }, kEndWaitMs);
    }
    case State::Lost:
        if (!scan() || !order(QStringLiteral("fault elsewhere for STAT:OPER:EVEN? times 1"))) {
            return false;
        }
        return waitUntil([this] { return m_user->seesRecoveryButton(); }, kEndWaitMs);
    }
    return false;
}

/// Causes the fault. With a broken link, or with long silence, the recovery fails in the middle of
/// its read-back.
bool TestFaultMatrix::strike(const FaultRow& fault, State state)
{
    QStringList orders = fault.orders;
    const bool isLost = state == State::Lost;
    if (isLost && fault.fault == Fault::Dropped) {
        orders = QStringList{QStringLiteral("drop for ROUT:SCAN? times 1")};
    }
    if (isLost && fault.fault == Fault::Elsewhere) {
        orders = QStringList{QStringLiteral("elsewhere for STAT:OPER:EVEN? times 2")};
    }
    if (isLost && fault.fault == Fault::Silent90) {
        const QString pause = QStringLiteral("delay 1500 for SYST:CTYP? 1 times 1");
        if (!order(QStringLiteral("fault ") + pause)) {
            return false;
        }
        m_user->clickRecovery();
        if (!waitForFault(pause)) {
            return false;
        }
    }
    const int faults = m_instrument->faults().size();
    for (const QString& text : qAsConst(orders)) {
        if (!order(QStringLiteral("fault ") + text)) {
            return false;
        }
    }
    m_sinceFault.start();
    if (isLost && fault.fault != Fault::Silent90) {
        m_user->clickRecovery();
    }
    return waitUntil([this, faults] { return m_instrument->faults().size() > faults; }, kEndWaitMs);
}

/// Waits for the end of the fault and, if it loses the link, for the overlay. In both cases checks
/// what the program does meanwhile.
void TestFaultMatrix::sitOut(const FaultRow& fault, const Loss& loss)
{
    if (loss.isShown) {
        QTest::qWait(500);
        QVERIFY(
            waitUntil([this] { return m_user->seesRecoveryButton(); }, loss.latestMs + kSlackMs));
        const auto elapsed = m_sinceFault.elapsed();
        QVERIFY2(elapsed >= loss.earliestMs, qPrintable(QString::number(elapsed)));
        qInfo("lost after %lld ms", elapsed);
    }
    if (loss.isShown || fault.lastsMs > 0) {
        QTest::qWait(kSettleMs);
        const double share = shareOfCore();
        qInfo("%.1f %% of a core", 100 * share);
        QVERIFY2(share < kIdleShare, qPrintable(QString::number(share)));
    }
    if (fault.lastsMs > m_sinceFault.elapsed()) {
        QTest::qWait(static_cast<int>(fault.lastsMs - m_sinceFault.elapsed()));
    }
    if (fault.lastsMs > 0 || loss.isShown) {
        QVERIFY(order(QStringLiteral("clear")));
    }
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, loss.isShown ? 0 : 3));
    QCOMPARE(m_user->seesRecoveryButton(), loss.isShown);
}

/// Waits until a recovery among spoilt replies has ended. A reply that looks like a module leads to
/// unanswered queries and back to the overlay; its button then works.
bool TestFaultMatrix::sitOutSpoiltRecovery()
{
    const int polls = receivedCount(kPoll);
    const auto isBack = [this, polls] {
        return m_user->seesRecoveryButton() || receivedCount(kPoll) > polls + 3;
    };
    QTest::qWait(kSettleMs);
    return waitUntil(isBack, kReadBackMs + kSlackMs) &&
           (!m_user->seesRecoveryButton() || recover());
}

/// Waits until the program has fetched everything from the instrument.
bool TestFaultMatrix::comeToRest(State state, bool wasLost)
{
    if (wasLost) {
        return recover() && waitForRest();
    }
    if (state == State::Starting || state == State::Running) {
        return stopScan();
    }
    return waitForRest();
}

/// Processor time used by the program, in seconds.
double TestFaultMatrix::cpuSeconds() const
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(m_program->processId()));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    // The name in parentheses may contain blanks.
    const QList<QByteArray> fields = file.readAll().split(')').constLast().split(' ');
    return static_cast<double>(fields.value(12).toLongLong() + fields.value(13).toLongLong()) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
}

double TestFaultMatrix::shareOfCore() const
{
    const double before = cpuSeconds();
    QElapsedTimer timer;
    timer.start();
    QTest::qWait(kMeasureMs);
    return (cpuSeconds() - before) * 1000 / static_cast<double>(timer.elapsed());
}

/// What is missing from the store, or stored more than once, of the last scan; empty if all is
/// well.
QString TestFaultMatrix::storeError() const
{
    return difference(stored(), storableReadings(m_instrument->sentSince(kStart)));
}

void TestFaultMatrix::survives_data()
{
    QTest::addColumn<int>("faultRow");
    QTest::addColumn<int>("stateRow");
    QTest::addColumn<int>("rate");
    for (int fault = 0; fault < static_cast<int>(std::size(kFaults)); ++fault) {
        for (int state = 0; state < static_cast<int>(std::size(kStates)); ++state) {
            const bool fetches = kStates[state].state != State::Idle;
            const bool needsFetch = kFaults[fault].fault == Fault::Truncated ||
                                    kFaults[fault].fault == Fault::Oversized;
            if (needsFetch && !fetches) {
                continue;
            }
            for (const int rate : {10, 600}) {
                QTest::addRow("%s-%s-%d", kFaults[fault].name, kStates[state].name, rate)
                    << fault << state << rate;
            }
        }
    }
}

void TestFaultMatrix::survives()
{
    QFETCH(int, faultRow);
    QFETCH(int, stateRow);
    QFETCH(int, rate);
    const FaultRow& fault = kFaults[faultRow];
    const State state = kStates[stateRow].state;
    const Loss loss = lossOf(fault.fault, state);

    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options({}, rate));
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(enter(state));
    QVERIFY(strike(fault, state));
    if (fault.fault == Fault::Garbage && state == State::Lost) {
        QVERIFY(sitOutSpoiltRecovery());
    } else {
        sitOut(fault, loss);
    }
    if (QTest::currentTestFailed()) {
        return;
    }
    // A start that meets a loss leaves the instrument to its other user.
    if (loss.isShown && state == State::Starting) {
        QCOMPARE(receivedCount(kStart), 0);
    }
    QVERIFY(comeToRest(state, loss.isShown));
    QCOMPARE(storeError(), QString());

    // A spoilt reply leaves a gap unless it is the first or the last.
    const QStringList sent = m_instrument->sentSince(kStart);
    const int missing = missingIn(stored(), 1000.0 * kChannels / rate);
    if (!fault.spoilsReplies) {
        QCOMPARE(missing, 0);
    } else if (state == State::Running && fault.fault != Fault::Garbage) {
        QCOMPARE(missing, spoiltReadings(sent));
    }
    qInfo("%d readings, %d missing", countOf(stored()), missing);

    if (state == State::Idle || (state == State::Starting && loss.isShown)) {
        QVERIFY(scanAgain());
        QCOMPARE(storeError(), QString());
        QVERIFY(countOf(stored()) > rate);
    }
    QVERIFY(leave());
    QCOMPARE(storeError(), QString());
}

SCN_TEST(TestFaultMatrix, QCoreApplication)
#include "test_faultmatrix.moc"
