#include "followerprocess.h"

#include <signal.h>

namespace {

constexpr int kPatienceMs = 60000;

} // namespace

FollowerProcess::FollowerProcess(const QStringList& arguments, const QStringList& launcher)
{
    const QStringList command =
        launcher + QStringList{QStringLiteral(SCN_STORE), QStringLiteral("forward")} + arguments;
    m_process.start(command.constFirst(), command.mid(1), QIODevice::ReadOnly);
    m_process.waitForStarted(kPatienceMs);
}

FollowerProcess::~FollowerProcess()
{
    kill();
}

void FollowerProcess::kill()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(kPatienceMs);
    }
}

void FollowerProcess::signal(int number) const
{
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}

int FollowerProcess::exitCode()
{
    const bool ended =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(kPatienceMs);
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

QString FollowerProcess::errors()
{
    m_errors += QString::fromUtf8(m_process.readAllStandardError());
    return m_errors;
}
