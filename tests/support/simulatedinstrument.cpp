#include "support/simulatedinstrument.h"

#include <QFile>

#include <csignal>

namespace {

constexpr int kReadyWaitMs = 20000;

} // namespace

SimulatedInstrument::SimulatedInstrument(Transport transport, const QStringList& options)
{
    QStringList arguments = options;
    if (transport == Transport::Tcp) {
        arguments << QStringLiteral("--tcp") << QStringLiteral("0");
    } else {
        arguments << QStringLiteral("--pty") << m_directory.filePath(QStringLiteral("instrument"));
    }
    arguments << QStringLiteral("--control") << QStringLiteral("0");
    arguments << QStringLiteral("--transcript")
              << m_directory.filePath(QStringLiteral("transcript"));
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-sim"), arguments);
    const QString resource = readyLine();
    const QString control = readyLine();
    const quint16 controlPort = control.section(QLatin1Char(':'), 1).toUShort();
    if (control.startsWith(QLatin1String("CONTROL ")) && m_control.connectTo(controlPort)) {
        m_resource = resource;
    }
}

/// What stands behind READY in the next line of its output; empty when it does not come.
QString SimulatedInstrument::readyLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(kReadyWaitMs)) {
            return {};
        }
    }
    const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
    return line.startsWith(QLatin1String("READY ")) ? line.mid(6) : QString();
}

quint16 SimulatedInstrument::port() const
{
    return m_resource.section(QStringLiteral("::"), 2, 2).toUShort();
}

QStringList SimulatedInstrument::receivedBefore(const QString& line) const
{
    const QStringList all = received();
    return all.mid(0, all.indexOf(line));
}

QString SimulatedInstrument::order(const QString& line)
{
    return QString::fromUtf8(m_control.ask(line.toUtf8()));
}

SimulatedInstrument::~SimulatedInstrument()
{
    thaw();
    m_process.terminate();
    m_process.waitForFinished();
}

void SimulatedInstrument::freeze()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void SimulatedInstrument::thaw()
{
    if (m_process.state() == QProcess::Running) {
        ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
    }
}

QStringList SimulatedInstrument::sentSince(const QString& received) const
{
    return lines(QStringLiteral(" < "), received);
}

/// The lines of one direction, from the last time on that the line `since` came in if there is one.
QStringList SimulatedInstrument::lines(const QString& direction, const QString& since) const
{
    const QString begin = QStringLiteral(" > ") + since;
    QFile transcript(m_directory.filePath(QStringLiteral("transcript")));
    QStringList found;
    if (!transcript.open(QIODevice::ReadOnly)) {
        return found;
    }
    for (QByteArray line = transcript.readLine(); !line.isEmpty(); line = transcript.readLine()) {
        if (!line.endsWith('\n')) {
            break; // still being written
        }
        const QString text = QString::fromUtf8(line).chopped(1);
        if (!since.isEmpty() && text.section(QLatin1Char(' '), 1).endsWith(begin)) {
            found.clear();
        }
        // "time transport > line"
        const int at = text.indexOf(direction);
        if (at >= 0 && text.left(at).count(QLatin1Char(' ')) == 1) {
            found.append(text.mid(at + direction.size()));
        }
    }
    return found;
}
