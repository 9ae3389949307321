#include "skippedwaits.h"

#include "storage/storeclock.h"

#include <QMutex>

#include <utility>

namespace {

QMutex g_mutex;
QVector<int> g_asked;
SkippedWaits::Rule g_rule;

std::chrono::milliseconds skip(std::chrono::milliseconds wait)
{
    SkippedWaits::Rule rule;
    {
        const QMutexLocker locker(&g_mutex);
        g_asked.append(static_cast<int>(wait.count()));
        rule = g_rule;
    }
    return rule ? rule(wait) : std::chrono::milliseconds::zero();
}

} // namespace

SkippedWaits::SkippedWaits()
{
    forget();
    scn::setStoreWait(&skip);
}

SkippedWaits::~SkippedWaits()
{
    scn::setStoreWait(nullptr);
    setRule({});
}

QVector<int> SkippedWaits::asked() const
{
    const QMutexLocker locker(&g_mutex);
    return g_asked;
}

int SkippedWaits::count(std::chrono::milliseconds wait) const
{
    return asked().count(static_cast<int>(wait.count()));
}

void SkippedWaits::forget()
{
    const QMutexLocker locker(&g_mutex);
    g_asked.clear();
}

void SkippedWaits::setRule(Rule rule)
{
    const QMutexLocker locker(&g_mutex);
    g_rule = std::move(rule);
}
