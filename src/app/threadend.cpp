#include "app/threadend.h"

#include "app/windowtiming.h"
#include "common/helperthreads.h"
#include "common/threadassert.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"

#include <QDebug>
#include <QThread>

namespace scn {

namespace {

bool endsWithin(QThread* thread, std::chrono::milliseconds time)
{
    return thread->wait(static_cast<unsigned long>(time.count()));
}

/// Leaves a hanging thread running until the process exits, which then destroys no static objects.
void leaveBehind(QThread* thread)
{
    thread->setParent(nullptr);
    helperthreads::start([thread] { thread->wait(); });
}

} // namespace

void endThread(QThread* thread, const std::function<void()>& stop, const ThreadEndTiming& timing)
{
    assertGuiThread();
    stop();
    if (!endsWithin(thread, timing.stop)) {
        stop();
        // On a helper: the library may block in this, too.
        helperthreads::start([] { g_visa->interrupt(); });
        if (!endsWithin(thread, timing.interrupt)) {
            qWarning() << "线程未能结束，强制终止";
            thread->terminate();
        }
        if (!endsWithin(thread, timing.termination)) {
            leaveBehind(thread);
            return;
        }
    }
    delete thread;
}

void awaitThread(QThread* thread, const ThreadEndTiming& timing)
{
    assertGuiThread();
    if (endsWithin(thread, timing.stop + timing.termination)) {
        delete thread;
    } else {
        leaveBehind(thread);
    }
}

} // namespace scn
