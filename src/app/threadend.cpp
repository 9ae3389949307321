#include "app/threadend.h"

#include "common/helperthreads.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"

#include <QDebug>
#include <QThread>

namespace scn {

namespace {

/// How long a thread may take to leave its interrupted exchange.
constexpr std::chrono::milliseconds kWakeWait{1000};
/// How long a thread may take to end after terminate().
constexpr std::chrono::milliseconds kTerminationWait{1000};

bool endsWithin(QThread* thread, std::chrono::milliseconds time)
{
    return thread->wait(static_cast<unsigned long>(time.count()));
}

/// Leaves a hanging thread running until the process exits, which then destroys no static objects.
void leaveBehind(QThread* thread)
{
    thread->setParent(nullptr);
    HelperThreads::start([thread] { thread->wait(); });
}

} // namespace

void endThread(QThread* thread)
{
    assertGuiThread();
    if (!endsWithin(thread, kThreadWait)) {
        // On a helper: the library may block in this, too.
        HelperThreads::start([] { g_visa->interrupt(); });
        if (!endsWithin(thread, kWakeWait)) {
            qWarning() << "线程未能结束，强制终止";
            thread->terminate();
        }
        if (!endsWithin(thread, kTerminationWait)) {
            leaveBehind(thread);
            return;
        }
    }
    delete thread;
}

void awaitThread(QThread* thread)
{
    assertGuiThread();
    if (endsWithin(thread, kThreadWait + kTerminationWait)) {
        delete thread;
    } else {
        leaveBehind(thread);
    }
}

} // namespace scn
