#include "support/guiload.h"

#include <QAbstractEventDispatcher>
#include <QThread>

#include <algorithm>

namespace {

constexpr int kBeatMs = 10;

} // namespace

MeteredApplication::MeteredApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
    m_clock.start();
    const QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
            &MeteredApplication::beginWait);
    connect(dispatcher, &QAbstractEventDispatcher::awake, this, &MeteredApplication::endWait);
}

/// A dispatcher reports being awake only after it has handled what woke it, so the first event also
/// ends a wait.
bool MeteredApplication::notify(QObject* receiver, QEvent* event)
{
    // Other threads' events pass through here too.
    if (QThread::currentThread() == thread()) {
        endWait();
    }
    return QApplication::notify(receiver, event);
}

void MeteredApplication::beginWait()
{
    m_waitBeginNs = m_clock.nsecsElapsed();
}

void MeteredApplication::endWait()
{
    if (m_waitBeginNs < 0) {
        return;
    }
    m_waitedNs += m_clock.nsecsElapsed() - m_waitBeginNs;
    m_waitBeginNs = -1;
}

qint64 MeteredApplication::waitedNs()
{
    return static_cast<MeteredApplication*>(instance())->m_waitedNs;
}

GuiLoad::GuiLoad()
    : m_waitedAtStart(MeteredApplication::waitedNs())
{
    connect(&m_heartbeat, &QTimer::timeout, this,
            [this] { m_largestGapMs = std::max(m_largestGapMs, m_sinceBeat.restart()); });
    m_heartbeat.setTimerType(Qt::PreciseTimer);
    m_heartbeat.start(kBeatMs);
    m_clock.start();
    m_sinceBeat.start();
}

double GuiLoad::busyShare() const
{
    const auto waited = static_cast<double>(MeteredApplication::waitedNs() - m_waitedAtStart);
    return 1.0 - waited / static_cast<double>(m_clock.nsecsElapsed());
}

QString GuiLoad::report() const
{
    return QStringLiteral(
               "GUI thread busy %1 % of the time, largest gap of a %2 ms heartbeat %3 ms")
        .arg(busyShare() * 100, 0, 'f', 1)
        .arg(kBeatMs)
        .arg(m_largestGapMs);
}
