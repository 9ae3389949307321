#include "launcher/simulatorprocess.h"

namespace scnlauncher {
namespace {

constexpr int kReadyWaitMs = 10000;
constexpr int kEndWaitMs = 2000;

} // namespace

SimulatorProcess::~SimulatorProcess()
{
    if (m_process.state() == QProcess::NotRunning) {
        return;
    }
    m_process.terminate();
    if (!m_process.waitForFinished(kEndWaitMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QString SimulatorProcess::start(const QString& path, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(path, arguments);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(kReadyWaitMs)) {
            m_errorText = QStringLiteral("the simulator did not start: ") + m_process.errorString();
            return {};
        }
    }
    const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
    if (!line.startsWith(QLatin1String("READY "))) {
        m_errorText = QStringLiteral("unexpected line from the simulator: ") + line;
        return {};
    }
    return line.mid(6);
}

} // namespace scnlauncher
