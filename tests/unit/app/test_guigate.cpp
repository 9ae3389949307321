#include "common/guigate.h"
#include "common/helperthreads.h"
#include "support/testprogram.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QSemaphore>
#include <QTest>
#include <QThread>

using namespace scn;

namespace {

/// Nothing but another look tells that an event was posted.
constexpr int kLookEveryMs = 1;

} // namespace

/// Helper threads' work reaches the GUI thread, and none of it outlives the window.
class TestGuiGate : public QObject
{
    Q_OBJECT

private slots:
    void runsAtOnceOnTheGuiThread();
    void helperWaitsUntilItsWorkHasRun();
    void closedGateRunsNothing();
    void closingWakesAWaitingHelper();
    void postedWorkKeepsItsOrder();
    void postedWorkIsDroppedByClosing();
    void waitingForHelpersIsBounded();
    void helpersDoNotQueue();
};

void TestGuiGate::runsAtOnceOnTheGuiThread()
{
    GuiGate gate;
    bool hasRun = false;
    QVERIFY(gate.run([&hasRun] { hasRun = true; }));
    QVERIFY(hasRun);
    gate.close();
}

void TestGuiGate::helperWaitsUntilItsWorkHasRun()
{
    const auto gate = std::make_shared<GuiGate>();
    QThread* ranOn = nullptr;
    std::atomic<bool> returned{false};
    bool hadRunAtReturn = false;
    helperthreads::start([gate, &ranOn, &returned, &hadRunAtReturn] {
        const bool ran = gate->run([&ranOn] { ranOn = QThread::currentThread(); });
        hadRunAtReturn = ran && ranOn;
        returned = true;
    });
    QTRY_VERIFY(returned);
    QVERIFY(hadRunAtReturn);
    QCOMPARE(ranOn, QCoreApplication::instance()->thread());
    gate->close();
}

void TestGuiGate::closedGateRunsNothing()
{
    const auto gate = std::make_shared<GuiGate>();
    gate->close();
    QVERIFY(!gate->isOpen());
    bool hasRun = false;
    QVERIFY(!gate->run([&hasRun] { hasRun = true; }));
    QSemaphore done;
    helperthreads::start([gate, &hasRun, &done] {
        gate->run([&hasRun] { hasRun = true; });
        gate->post([&hasRun] { hasRun = true; });
        done.release();
    });
    QVERIFY(done.tryAcquire(1, 5000));
    QCoreApplication::processEvents();
    QVERIFY(!hasRun);
}

void TestGuiGate::closingWakesAWaitingHelper()
{
    const auto gate = std::make_shared<GuiGate>();
    bool hasRun = false;
    bool told = true;
    QSemaphore started;
    QSemaphore done;
    helperthreads::start([gate, &hasRun, &told, &started, &done] {
        started.release();
        told = gate->run([&hasRun] { hasRun = true; });
        done.release();
    });
    QVERIFY(started.tryAcquire(1, 5000));
    // Its step is posted before it waits.
    QAbstractEventDispatcher* const events = QAbstractEventDispatcher::instance();
    for (QDeadlineTimer patience(5000); !events->hasPendingEvents() && !patience.hasExpired();) {
        QVERIFY(!done.tryAcquire(1, kLookEveryMs));
    }
    QVERIFY(events->hasPendingEvents());
    gate->close();
    QVERIFY(done.tryAcquire(1, 5000));
    QVERIFY(!told);
    QVERIFY(!hasRun);
}

void TestGuiGate::postedWorkKeepsItsOrder()
{
    const auto gate = std::make_shared<GuiGate>();
    QList<int> order;
    gate->post([&order] { order.append(1); });
    gate->post([&order] { order.append(2); });
    QVERIFY(order.isEmpty());
    QTRY_COMPARE(order, (QList<int>{1, 2}));
    gate->close();
}

void TestGuiGate::postedWorkIsDroppedByClosing()
{
    const auto gate = std::make_shared<GuiGate>();
    bool hasRun = false;
    gate->post([&hasRun] { hasRun = true; });
    gate->close();
    QCoreApplication::processEvents();
    QVERIFY(!hasRun);
}

void TestGuiGate::waitingForHelpersIsBounded()
{
    const auto release = std::make_shared<QSemaphore>();
    helperthreads::start([release] { release->acquire(); });
    QVERIFY(!helperthreads::waitForAll(std::chrono::milliseconds(50)));
    release->release();
    QVERIFY(helperthreads::waitForAll(std::chrono::seconds(5)));
}

void TestGuiGate::helpersDoNotQueue()
{
    // As many as wait for an instrument at one time, and many more.
    constexpr int kHelpers = 50;
    const auto running = std::make_shared<QSemaphore>();
    const auto release = std::make_shared<QSemaphore>();
    for (int i = 0; i < kHelpers; ++i) {
        helperthreads::start([running, release] {
            running->release();
            release->acquire();
        });
    }
    QVERIFY(running->tryAcquire(kHelpers, 10000));
    release->release(kHelpers);
    QVERIFY(helperthreads::waitForAll(std::chrono::seconds(10)));
}

SCN_TEST(TestGuiGate, QCoreApplication)
#include "test_guigate.moc"
