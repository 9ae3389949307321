#include "support/guiload.h"

#include <QThread>

#include <algorithm>

namespace {

constexpr int kBeatMs = 10;

} // namespace

MeteredApplication::MeteredApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
    m_clock.start();
}

bool MeteredApplication::notify(QObject* receiver, QEvent* event)
{
    // Other threads deliver their events through here too.
    if (QThread::currentThread() != thread() || m_depth > 0)
        return QApplication::notify(receiver, event);
    ++m_depth;
    const qint64 begin = m_clock.nsecsElapsed();
    const bool handled = QApplication::notify(receiver, event);
    m_busy += m_clock.nsecsElapsed() - begin;
    --m_depth;
    return handled;
}

qint64 MeteredApplication::busyNs()
{
    return static_cast<MeteredApplication*>(instance())->m_busy;
}

GuiLoad::GuiLoad()
    : m_busyAtStart(MeteredApplication::busyNs())
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
    return static_cast<double>(MeteredApplication::busyNs() - m_busyAtStart) /
           static_cast<double>(m_clock.nsecsElapsed());
}

QString GuiLoad::report() const
{
    return QStringLiteral(
               "GUI thread busy %1 % of the time, largest gap of a %2 ms heartbeat %3 ms")
        .arg(busyShare() * 100, 0, 'f', 1)
        .arg(kBeatMs)
        .arg(m_largestGapMs);
}
