#include "support/faultsession.h"

#include <QElapsedTimer>
#include <QtCore/qtestsupport_core.h>

namespace {

/// What is waited for happens in another process, which does not tell.
constexpr int kLookEveryMs = 100;
constexpr int kEndWaitMs = 20000;
/// Enough to drain a minute and a half of readings at full speed.
constexpr int kDrainWaitMs = 180000;

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");

} // namespace

void FaultSession::beginSession()
{
    m_program = std::make_unique<ProgramProcess>(m_display.name());
    m_user = std::make_unique<ProgramUser>(m_display, *m_program);
}

void FaultSession::endSession(bool hasFailed)
{
    if (hasFailed) {
        qWarning("%s", qPrintable(m_program->log()));
    }
    m_user.reset();
    m_program.reset();
    m_instrument.reset();
}

QStringList FaultSession::options(const QStringList& more, int readingsPerSecond)
{
    return QStringList{QStringLiteral("--slots"), QStringLiteral("1:15"), QStringLiteral("--rate"),
                       QString::number(readingsPerSecond)} +
           more;
}

bool FaultSession::waitUntil(const std::function<bool()>& isSo, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!isSo()) {
        if (timer.elapsed() >= timeoutMs) {
            return false;
        }
        QTest::qWait(kLookEveryMs);
    }
    return true;
}

bool FaultSession::order(const QString& line)
{
    return m_instrument->order(line).startsWith(QLatin1String("ok"));
}

bool FaultSession::waitForFault(const QString& begin) const
{
    return waitUntil([this, &begin] { return !m_instrument->faults().filter(begin).isEmpty(); },
                     kEndWaitMs);
}

bool FaultSession::stopScan()
{
    const auto aborts = [this] { return m_instrument->received().count(QStringLiteral("ABOR")); };
    const auto idles = [this] { return m_instrument->sent().count(QStringLiteral("+256")); };
    const int abortsBefore = aborts();
    const int idlesBefore = idles();
    m_user->clickStart();
    return waitUntil([&] { return aborts() > abortsBefore && idles() > idlesBefore; },
                     kDrainWaitMs) &&
           waitForRest();
}

bool FaultSession::waitForRest() const
{
    const auto rests = [this] {
        const QStringList lines = m_instrument->received();
        return lines.size() > 2 && lines.mid(lines.size() - 3) == QStringList{kPoll, kPoll, kPoll};
    };
    return waitUntil(rests, kDrainWaitMs);
}

bool FaultSession::recover()
{
    const int openings = m_instrument->received().count(QStringLiteral("*CLS"));
    m_user->clickRecovery();
    return waitUntil(
               [this, openings] {
                   return m_instrument->received().count(QStringLiteral("*CLS")) > openings;
               },
               kEndWaitMs) &&
           waitUntil([this] { return !m_user->seesRecoveryButton(); }, 2 * kEndWaitMs) &&
           // The busy overlay of a new window disappears after two seconds.
           ProgramUser::waitForPolls(*m_instrument, 5);
}

bool FaultSession::leave()
{
    m_program->write("exit\n");
    return m_program->waitForEnd(kDrainWaitMs) && !m_program->crashed();
}

Readings FaultSession::stored() const
{
    return readingsInStore(storeDirectory());
}

QString FaultSession::storeDirectory() const
{
    return m_program->directory() + QStringLiteral("/MY00000042_Data");
}
