#include "common/guigate.h"

#include "common/threadassert.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

namespace scn {
namespace {

/// One call of a helper, shared because either side may be the last to release it.
struct Call
{
    QSemaphore done;
    std::atomic<bool> hasRun{false};
};

/// Wakes the waiting helper once the queued call has run or was dropped with its receiver: either
/// way the last copy is destroyed.
class Ticket
{
public:
    explicit Ticket(std::shared_ptr<Call> call)
        : m_call(std::move(call))
    {
    }
    ~Ticket() { m_call->done.release(); }
    Ticket(const Ticket&) = delete;
    Ticket& operator=(const Ticket&) = delete;

    void markRun() { m_call->hasRun = true; }

private:
    std::shared_ptr<Call> m_call;
};

} // namespace

GuiGate::GuiGate()
    : m_context(std::make_unique<QObject>())
{
}

GuiGate::~GuiGate()
{
    // The last owner may be a helper; by then close() has destroyed the context.
    Q_ASSERT(!m_context);
}

void GuiGate::close()
{
    assertGuiThread();
    m_open.store(false, std::memory_order_relaxed);
    std::unique_ptr<QObject> context;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        context = std::move(m_context);
    }
}

bool GuiGate::run(const std::function<void()>& work)
{
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        if (!isOpen()) {
            return false;
        }
        work();
        return true;
    }

    const auto call = std::make_shared<Call>();
    {
        auto ticket = std::make_shared<Ticket>(call);
        post([&work, ticket] {
            work();
            ticket->markRun();
        });
    }
    call->done.acquire();
    return call->hasRun;
}

void GuiGate::post(const std::function<void()>& work)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_context) {
        QMetaObject::invokeMethod(m_context.get(), work, Qt::QueuedConnection);
    }
}

} // namespace scn
