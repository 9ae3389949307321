#include "launcher/simulatorprocess.h"

namespace scnlauncher {
namespace {

const QString kReady = QStringLiteral("READY ");
/// It ends at SIGTERM at once, unless it is stopped.
constexpr int kEndWaitMs = 500;

} // namespace

SimulatorProcess::SimulatorProcess(QObject* parent)
    : QObject(parent)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &SimulatorProcess::readLine);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            emit failed(tr("模拟仪器没有启动：%1").arg(m_process.errorString()));
        }
    });
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, [this] {
        if (!m_isAnnounced) {
            m_isAnnounced = true;
            emit failed(tr("模拟仪器启动后即退出。"));
        }
    });
}

SimulatorProcess::~SimulatorProcess()
{
    m_process.disconnect(this);
    if (m_process.state() == QProcess::NotRunning) {
        return;
    }
    m_process.terminate();
    if (!m_process.waitForFinished(kEndWaitMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void SimulatorProcess::start(const QString& path, const QStringList& arguments)
{
    m_process.start(path, arguments);
}

void SimulatorProcess::readLine()
{
    if (m_isAnnounced || !m_process.canReadLine()) {
        return;
    }
    m_isAnnounced = true;
    const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
    if (line.startsWith(kReady)) {
        emit ready(line.mid(kReady.size()));
    } else {
        emit failed(tr("模拟仪器的输出无法识别：%1").arg(line));
    }
}

} // namespace scnlauncher
