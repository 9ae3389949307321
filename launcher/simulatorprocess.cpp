#include "launcher/simulatorprocess.h"

#include <QFileInfo>

#include <cstdio>
#include <utility>

namespace scnlauncher {
namespace {

const QString kReady = QStringLiteral("READY ");
/// It ends at SIGTERM at once, unless it is stopped.
constexpr int kEndWaitMs = 500;
constexpr int kLastWords = 12;
constexpr int kShownOfALine = 100;
const QString kTranscriptOption = QStringLiteral("--transcript");

/// The path with a number before its suffix; the first is the path itself.
QString numbered(const QString& path, int number)
{
    if (number == 1) {
        return path;
    }
    const QString suffix = QFileInfo(path).suffix();
    const int end = suffix.isEmpty() ? path.size() : path.size() - suffix.size() - 1;
    return QStringLiteral("%1-%2%3").arg(path.left(end), QString::number(number), path.mid(end));
}

} // namespace

SimulatorProcess::SimulatorProcess(QObject* parent)
    : QObject(parent)
{
    connect(&m_process, &QProcess::readyReadStandardError, this, &SimulatorProcess::readErrors);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &SimulatorProcess::readOutput);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            emit failed(tr("模拟仪器没有启动：%1。请重新安装它，或检查 --simulator。")
                            .arg(m_process.errorString()));
        }
    });
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, [this] {
        readErrors();
        keep(m_errors.takeRest());
        if (m_serves) {
            emit ended(tr("模拟仪器已退出，扫描随之结束。请重新启动它。"));
        } else if (!std::exchange(m_isAnnounced, true)) {
            emit failed(tr("模拟仪器启动后即退出，请检查它的选项。"));
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
    QStringList own = arguments;
    const int option = own.indexOf(kTranscriptOption);
    if (option >= 0 && option + 1 < own.size() && !claimTranscript(own[option + 1])) {
        m_isAnnounced = true;
        emit failed(tr("模拟仪器没有启动。%1").arg(m_transcript.errorText()));
        return;
    }
    m_process.start(path, own);
}

/// Each simulator overwrites its file at the start.
bool SimulatorProcess::claimTranscript(QString& path)
{
    const QFileInfo file(path);
    if (file.exists() && !file.isFile()) {
        return true;
    }
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    const QString real = folder + QLatin1Char('/') + file.fileName();
    const Owner self = Owner::self(folder);
    int number = 1;
    Ownership::Result result;
    while ((result = m_transcript.take(QStringLiteral("transcript ") + numbered(real, number),
                                       self)) == Ownership::Result::HeldByOther) {
        ++number;
    }
    path = numbered(path, number);
    return result == Ownership::Result::Taken;
}

/// Its first line counts. What follows is read too: a full pipe would stop it.
void SimulatorProcess::readOutput()
{
    const QList<QByteArray> lines = m_output.take(m_process.readAllStandardOutput());
    if (m_isAnnounced || lines.isEmpty()) {
        return;
    }
    m_isAnnounced = true;
    const QString line = QString::fromUtf8(lines.constFirst()).trimmed();
    m_serves = line.startsWith(kReady);
    if (m_serves) {
        emit ready(line.mid(kReady.size()));
    } else {
        emit failed(
            tr("模拟仪器的输出无法识别：%1。请检查 --simulator。").arg(line.left(kShownOfALine)));
    }
}

/// For the user, and for whoever started the launcher.
void SimulatorProcess::readErrors()
{
    const QList<QByteArray> lines = m_errors.take(m_process.readAllStandardError());
    for (const QByteArray& line : lines) {
        keep(line);
    }
}

void SimulatorProcess::keep(const QByteArray& line)
{
    if (line.isEmpty()) {
        return;
    }
    std::fprintf(stderr, "%s\n", line.constData());
    m_lastWords.append(QString::fromUtf8(line));
    while (m_lastWords.size() > kLastWords) {
        m_lastWords.removeFirst();
    }
}

} // namespace scnlauncher
