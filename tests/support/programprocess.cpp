#include "support/programprocess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>

ProgramProcess::ProgramProcess(const QString& display)
{
    QFile::copy(QStringLiteral(SCN_BIN_DIR "/scn4070a"),
                m_directory.filePath(QStringLiteral("scn4070a")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    m_process.setProcessEnvironment(environment);
}

ProgramProcess::~ProgramProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        kill();
    }
}

void ProgramProcess::start(const QStringList& arguments)
{
    m_output.clear();
    m_errors.clear();
    m_process.start(m_directory.filePath(QStringLiteral("scn4070a")), arguments);
    m_process.waitForStarted();
}

void ProgramProcess::startForOneLine(const QStringList& arguments, Reader reader)
{
    // QProcess itself never closes its end of the pipe and always reads it.
    const QString behind = reader == Reader::Goes
                               ? QString()
                               : QStringLiteral("; exec sleep 60 >/dev/null 2>/dev/null");
    m_process.start(QStringLiteral("bash"),
                    QStringList{QStringLiteral("-c"),
                                QStringLiteral("exec \"$0\" \"$@\" > >(head -n 1%1)").arg(behind),
                                m_directory.filePath(QStringLiteral("scn4070a"))} +
                        arguments);
    m_process.waitForStarted();
}

void ProgramProcess::startWithout(int descriptor, const QStringList& arguments)
{
    m_process.start(QStringLiteral("bash"),
                    QStringList{QStringLiteral("-c"),
                                QStringLiteral("exec \"$0\" \"$@\" %1>&-").arg(descriptor),
                                m_directory.filePath(QStringLiteral("scn4070a"))} +
                        arguments);
    m_process.waitForStarted();
}

void ProgramProcess::write(const QByteArray& bytes)
{
    m_process.write(bytes);
    while (m_process.bytesToWrite() > 0 && m_process.waitForBytesWritten()) {
    }
}

void ProgramProcess::closeInput()
{
    m_process.closeWriteChannel();
    // The event loop closes the pipe.
    m_process.waitForReadyRead(10);
}

QStringList ProgramProcess::waitForLines(const QString& prefix, int count, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        const QStringList found =
            lines().filter(QRegExp(QLatin1Char('^') + QRegExp::escape(prefix)));
        if (found.size() >= count || timer.elapsed() >= timeoutMs) {
            return found;
        }
        m_process.waitForReadyRead(20);
    }
}

QStringList ProgramProcess::lines()
{
    collect();
    QStringList all = QString::fromUtf8(m_output).split(QLatin1Char('\n'));
    all.removeLast();
    return all;
}

bool ProgramProcess::waitForEnd(int timeoutMs)
{
    const bool ended =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutMs);
    collect();
    return ended;
}

void ProgramProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString ProgramProcess::log()
{
    collect();
    return QString::fromUtf8(m_errors);
}

qulonglong ProgramProcess::windowHandle()
{
    const QStringList shown = lines().filter(QStringLiteral("WID:"));
    if (shown.isEmpty()) {
        return 0;
    }
    return shown.constLast().section(QLatin1Char(';'), 0, 0).mid(4).toULongLong();
}

void ProgramProcess::collect()
{
    m_output += m_process.readAllStandardOutput();
    m_errors += m_process.readAllStandardError();
}
