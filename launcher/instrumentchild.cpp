#include "launcher/instrumentchild.h"

#include "launcher/logline.h"

#include <QRegularExpression>

#include <utility>

namespace scnlauncher {
namespace {

constexpr int kLastWords = 12;
/// What is kept of one line for the page that shows the last words.
constexpr int kLongestWords = 400;
const QByteArray kExit("exit");
const QByteArray kEchoOfExit("receive msg: exit");

} // namespace

InstrumentChild::InstrumentChild(QObject* parent, WindowCheck check, const EndTiming& timing)
    : QObject(parent)
    , m_check(std::move(check))
    , m_timing(timing)
{
    m_endTimer.setSingleShot(true);
    connect(&m_endTimer, &QTimer::timeout, this, &InstrumentChild::escalate);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &InstrumentChild::readOutput);
    connect(&m_process, &QProcess::readyReadStandardError, this, &InstrumentChild::readErrors);
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus status) {
                finish({m_isEnding, true, status == QProcess::CrashExit, exitCode});
            });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            keep(m_process.errorString());
            finish({m_isEnding, false, false, -1});
        }
    });
}

InstrumentChild::~InstrumentChild()
{
    // Nobody is left to see how it ends; it goes with its launcher.
    m_process.disconnect(this);
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void InstrumentChild::start(const Call& call)
{
    QProcessEnvironment environment = call.environment;
    environment.insert(QStringLiteral("QT_MESSAGE_PATTERN"), messagePattern());
    environment.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    m_log = std::make_unique<ChildLog>(call.logPath);
    m_log->write(
        QStringLiteral("---- %1 %2 %3")
            .arg(QDateTime::currentDateTime().toString(Qt::ISODate), call.program, call.resource)
            .toUtf8());
    m_process.setProcessEnvironment(environment);
    m_process.setClaim(call.claim);
    m_process.start(call.program, {call.resource});
    if (call.claim) {
        call.claim->noteChild(m_process.processId());
    }
}

void InstrumentChild::end()
{
    if (!isRunning() || m_isEnding) {
        return;
    }
    m_isEnding = true;
    m_process.write(kExit + '\n');
    // Without an instrument it does not listen. If it does hear, its echo gives it more time.
    const bool listens = m_status.link() == ChildStatus::Link::Connected ||
                         m_status.link() == ChildStatus::Link::Lost;
    m_endTimer.start(listens ? m_timing.exit : m_timing.deaf);
    emit statusChanged();
}

/// The next means, after the child has had its time for the last.
void InstrumentChild::escalate()
{
    if (m_force == Force::Terminated) {
        m_force = Force::Killed;
        m_process.kill();
        return;
    }
    m_force = Force::Terminated;
    m_process.terminate();
    m_endTimer.start(m_timing.terminate);
}

void InstrumentChild::finish(const ChildEnd& end)
{
    m_endTimer.stop();
    if (std::exchange(m_hasEnded, true)) {
        return;
    }
    readOutput();
    readErrors();
    for (const QByteArray& rest : {m_output.takeRest(), m_errors.takeRest()}) {
        if (!rest.isEmpty()) {
            takeErrors(rest);
        }
    }
    m_process.setClaim(nullptr);
    emit ended(end);
}

void InstrumentChild::readOutput()
{
    const QList<QByteArray> lines = m_output.take(m_process.readAllStandardOutput());
    for (const QByteArray& line : lines) {
        takeOutput(line);
    }
}

void InstrumentChild::readErrors()
{
    const QList<QByteArray> lines = m_errors.take(m_process.readAllStandardError());
    for (const QByteArray& line : lines) {
        takeErrors(line);
    }
}

void InstrumentChild::takeOutput(const QByteArray& line)
{
    static const QRegularExpression shown(QStringLiteral("^WID:(\\d+);COLOR:(#[0-9a-f]{6})$"));
    const QString text = QString::fromUtf8(line);
    m_lastLine.start();
    if (m_force == Force::Asked && m_isEnding && line == kEchoOfExit) {
        m_force = Force::Heard;
        m_endTimer.start(m_timing.exit);
    }
    const QRegularExpressionMatch match = shown.match(text);
    if (!match.hasMatch()) {
        keep(text);
        tellIfCut(line);
        return;
    }
    const qulonglong handle = match.captured(1).toULongLong();
    const QString reason = m_check(handle, processId());
    if (reason.isEmpty()) {
        emit windowShown(handle, QColor(match.captured(2)));
    } else {
        keep(text);
        emit windowRefused(reason);
    }
}

void InstrumentChild::takeErrors(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line);
    m_lastLine.start();
    m_log->write(line);
    keep(text);
    if (m_status.take(text)) {
        emit statusChanged();
    }
    tellIfCut(line);
}

/// A program of ours ends its lines: the user may have started another.
void InstrumentChild::tellIfCut(const QByteArray& line)
{
    if (LineCutter::isCut(line)) {
        m_status.noteCutLine();
        emit statusChanged();
        emit lineCut();
    }
}

void InstrumentChild::keep(const QString& line)
{
    m_lastWords.append(line.left(kLongestWords));
    while (m_lastWords.size() > kLastWords) {
        m_lastWords.removeFirst();
    }
}

} // namespace scnlauncher
