#include "app/runstate.h"
#include "support/testprogram.h"

#include <QDeadlineTimer>
#include <QMetaType>
#include <QtTest>

#include <atomic>
#include <iterator>
#include <memory>
#include <thread>

namespace {

using scn::RunEvent;
using scn::RunState;
using scn::RunStateMachine;

/// What the link is at while the event comes.
enum class Link { Up, Lost, Searched, Found };

constexpr RunState kRuns[] = {RunState::Idle, RunState::Starting, RunState::Running,
                              RunState::Draining};

const char* nameOf(RunState state)
{
    switch (state) {
    case RunState::Idle:
        return "idle";
    case RunState::Starting:
        return "starting";
    case RunState::Running:
        return "running";
    case RunState::Draining:
        return "draining";
    case RunState::Lost:
        return "lost";
    case RunState::Reconnecting:
        return "reconnecting";
    case RunState::Reconnected:
        return "reconnected";
    }
    return "";
}

struct EventRow
{
    RunEvent event;
    const char* name;

    /// For Idle, Starting, Running and Draining: what the run becomes, by its letter, or a dash for an
    /// event that is refused.
    const char* whileUp;
    const char* whileLost;
    const char* whileSearched; ///< a helper looks for the instrument
    const char* whileFound;    ///< it has answered the helper, which goes on
};

constexpr EventRow kEvents[] = {
    {RunEvent::StartRequested, "StartRequested", "S---", "----", "----", "----"},
    {RunEvent::StartDropped, "StartDropped", "-I--", "-I--", "-I--", "-I--"},
    {RunEvent::ScanStarted, "ScanStarted", "RRRR", "----", "----", "----"},
    {RunEvent::ScanEnded, "ScanEnded", "IS--", "IS--", "IS--", "IS--"},
    {RunEvent::StopRequested, "StopRequested", "--DD", "--DD", "--DD", "--DD"},
    {RunEvent::TimeElapsed, "TimeElapsed", "ISII", "----", "----", "ISII"},
    {RunEvent::Unlocked, "Unlocked", "--I-", "--I-", "--I-", "--I-"},
    {RunEvent::LossReported, "LossReported", "ISRD", "ISRD", "----", "----"},
    {RunEvent::RecoveryRequested, "RecoveryRequested", "ISRD", "ISRD", "----", "----"},
    {RunEvent::RecoveryEnded, "RecoveryEnded", "----", "----", "ISRD", "ISRD"},
};

RunState runOfLetter(char letter)
{
    switch (letter) {
    case 'S':
        return RunState::Starting;
    case 'R':
        return RunState::Running;
    case 'D':
        return RunState::Draining;
    default:
        return RunState::Idle;
    }
}

/// What an event makes of the link.
Link linkAfter(Link link, RunEvent event)
{
    switch (event) {
    case RunEvent::LossReported:
        return Link::Lost;
    case RunEvent::RecoveryRequested:
        return link == Link::Up ? Link::Found : Link::Searched;
    case RunEvent::RecoveryEnded:
        return link == Link::Found ? Link::Up : Link::Lost;
    default:
        return link;
    }
}

RunState stateOf(RunState run, Link link)
{
    switch (link) {
    case Link::Up:
        return run;
    case Link::Lost:
        return RunState::Lost;
    case Link::Searched:
        return RunState::Reconnecting;
    case Link::Found:
        return RunState::Reconnected;
    }
    return run;
}

/// A machine with flags of its own.
struct Bench
{
    void bring(RunState run)
    {
        if (run == RunState::Starting) {
            QVERIFY(machine.take(RunEvent::StartRequested));
        } else if (run != RunState::Idle) {
            QVERIFY(machine.take(RunEvent::ScanStarted));
        }
        if (run == RunState::Draining) {
            QVERIFY(machine.take(RunEvent::StopRequested));
        }
    }

    void bring(Link link)
    {
        if (link == Link::Searched || link == Link::Found) {
            QVERIFY(machine.take(RunEvent::RecoveryRequested));
        }
        connected = link == Link::Up || link == Link::Found;
    }

    std::atomic<bool> scanRunning{false};
    std::atomic<bool> connected{true};
    RunStateMachine machine{scanRunning, connected};
};

bool isScanning(RunState run)
{
    return run == RunState::Running || run == RunState::Draining;
}

} // namespace

Q_DECLARE_METATYPE(scn::RunState)
Q_DECLARE_METATYPE(scn::RunEvent)
Q_DECLARE_METATYPE(Link)

class TestRunState : public QObject
{
    Q_OBJECT

private slots:
    void everyEventInEveryState_data();
    void everyEventInEveryState();
    void acquisitionEndsTheScan();
    void flagMayChangeInTheMidst();
    void flagAloneIsARun();
    void startGoesOnBelowALoss();
    void buttonsStopIsKeptUntilTheNextScan();
    void otherEndsAreNotTheButtons();
};

void TestRunState::everyEventInEveryState_data()
{
    QTest::addColumn<RunEvent>("event");
    QTest::addColumn<RunState>("run");
    QTest::addColumn<Link>("link");
    QTest::addColumn<bool>("isAllowed");
    QTest::addColumn<RunState>("newRun");
    for (const EventRow& row : kEvents) {
        const struct
        {
            Link link;
            const char* name;
            const char* runs;
        } links[] = {{Link::Up, "up", row.whileUp},
                     {Link::Lost, "lost", row.whileLost},
                     {Link::Searched, "searched", row.whileSearched},
                     {Link::Found, "found", row.whileFound}};
        for (const auto& link : links) {
            for (std::size_t index = 0; index < std::size(kRuns); ++index) {
                const char letter = link.runs[index];
                const bool isAllowed = letter != '-';
                QTest::addRow("%s while %s, link %s", row.name, nameOf(kRuns[index]), link.name)
                    << row.event << kRuns[index] << link.link << isAllowed
                    << (isAllowed ? runOfLetter(letter) : kRuns[index]);
            }
        }
    }
}

void TestRunState::everyEventInEveryState()
{
    QFETCH(RunEvent, event);
    QFETCH(RunState, run);
    QFETCH(Link, link);
    QFETCH(bool, isAllowed);
    QFETCH(RunState, newRun);
    Bench bench;
    bench.bring(run);
    bench.bring(link);
    QCOMPARE(nameOf(bench.machine.run()), nameOf(run));
    QCOMPARE(nameOf(bench.machine.state()), nameOf(stateOf(run, link)));

    QCOMPARE(bench.machine.allows(event), isAllowed);
    QCOMPARE(bench.machine.take(event), isAllowed);

    const Link newLink = isAllowed ? linkAfter(link, event) : link;
    QCOMPARE(nameOf(bench.machine.run()), nameOf(newRun));
    QCOMPARE(nameOf(bench.machine.state()), nameOf(stateOf(newRun, newLink)));
    QCOMPARE(bench.scanRunning.load(), isScanning(newRun));
    const bool isConnected = newLink == Link::Up || newLink == Link::Found;
    QCOMPARE(bench.connected.load(), isConnected);
    QCOMPARE(bench.machine.isConnected(), isConnected);
}

void TestRunState::acquisitionEndsTheScan()
{
    for (const RunState run : {RunState::Running, RunState::Draining}) {
        Bench bench;
        bench.bring(run);
        bench.scanRunning = false;
        QCOMPARE(bench.machine.state(), RunState::Idle);
        QVERIFY(!bench.machine.allows(RunEvent::StopRequested));
        QVERIFY(bench.machine.take(RunEvent::StartRequested));
        QCOMPARE(bench.machine.state(), RunState::Starting);
    }
}

void TestRunState::flagMayChangeInTheMidst()
{
    constexpr int kTakes = 200000;
    Bench bench;
    std::atomic<bool> isOver{false};
    std::thread acquisition([&] {
        while (!isOver) {
            bench.scanRunning = !bench.scanRunning;
        }
    });
    // On a busy machine the other thread may begin after all these takes.
    const QDeadlineTimer patience(30000);
    int taken = 0;
    int refused = 0;
    while (taken + refused < kTakes || ((taken == 0 || refused == 0) && !patience.hasExpired())) {
        ++(bench.machine.take(RunEvent::StopRequested) ? taken : refused);
    }
    isOver = true;
    acquisition.join();
    QVERIFY(taken > 0);
    QVERIFY(refused > 0);
}

void TestRunState::flagAloneIsARun()
{
    Bench bench;
    bench.scanRunning = true;
    QCOMPARE(bench.machine.state(), RunState::Running);
    QVERIFY(bench.machine.take(RunEvent::StopRequested));
    QCOMPARE(bench.machine.state(), RunState::Draining);
}

void TestRunState::startGoesOnBelowALoss()
{
    Bench bench;
    bench.bring(RunState::Starting);
    QVERIFY(bench.machine.take(RunEvent::LossReported));
    QVERIFY(bench.machine.take(RunEvent::RecoveryRequested));
    bench.connected = true;
    QVERIFY(bench.machine.take(RunEvent::RecoveryEnded));
    QCOMPARE(bench.machine.state(), RunState::Starting);
    QVERIFY(bench.machine.take(RunEvent::ScanStarted));
    QCOMPARE(bench.machine.state(), RunState::Running);
}

void TestRunState::buttonsStopIsKeptUntilTheNextScan()
{
    Bench bench;
    QVERIFY(!bench.machine.isStoppedByButton());
    bench.bring(RunState::Draining);
    QVERIFY(bench.machine.isStoppedByButton());
    QVERIFY(bench.machine.take(RunEvent::TimeElapsed));
    QVERIFY(bench.machine.isStoppedByButton());
    QVERIFY(bench.machine.take(RunEvent::StartRequested));
    QVERIFY(bench.machine.isStoppedByButton());
    QVERIFY(bench.machine.take(RunEvent::StartDropped));
    QVERIFY(bench.machine.isStoppedByButton());
    QVERIFY(bench.machine.take(RunEvent::ScanStarted));
    QVERIFY(!bench.machine.isStoppedByButton());
}

void TestRunState::otherEndsAreNotTheButtons()
{
    for (const RunEvent end : {RunEvent::TimeElapsed, RunEvent::Unlocked}) {
        Bench bench;
        bench.bring(RunState::Running);
        QVERIFY(bench.machine.take(end));
        QVERIFY(!bench.machine.isStoppedByButton());
        QVERIFY(!bench.scanRunning);
    }
}

SCN_TEST(TestRunState, QCoreApplication)
#include "test_runstate.moc"
