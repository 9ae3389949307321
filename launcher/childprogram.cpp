#include "launcher/childprogram.h"

#include <QDebug>
#include <QRegularExpression>

namespace scnlauncher {
namespace {

/// The child gives each of its two threads 5 s before it terminates them.
constexpr int kEndWaitMs = 12000;

} // namespace

ChildProgram::ChildProgram(QObject* parent)
    : QObject(parent)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ChildProgram::readLines);
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode) { emit ended(exitCode); });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) {
            return;
        }
        qCritical() << "the program did not start:" << m_process.errorString();
        emit ended(-1);
    });
}

void ChildProgram::start(const QString& path, const QString& resource)
{
    m_process.start(path, {resource});
}

void ChildProgram::end()
{
    if (!isRunning()) {
        return;
    }
    m_process.write("exit\n");
    if (!m_process.waitForFinished(kEndWaitMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void ChildProgram::readLines()
{
    m_pending += m_process.readAllStandardOutput();
    for (int end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
        handleLine(QString::fromUtf8(m_pending.left(end)));
        m_pending.remove(0, end + 1);
    }
}

void ChildProgram::handleLine(const QString& line)
{
    static const QRegularExpression shown(QStringLiteral("^WID:(\\d+);COLOR:(#[0-9a-f]{6})$"));
    const QRegularExpressionMatch match = shown.match(line);
    if (match.hasMatch()) {
        emit windowShown(match.captured(1).toULongLong(), QColor(match.captured(2)));
    } else {
        emit lineReceived(line);
    }
}

} // namespace scnlauncher
