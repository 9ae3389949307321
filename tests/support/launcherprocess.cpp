#include "support/launcherprocess.h"

#include <QDirIterator>
#include <QFile>
#include <QProcessEnvironment>
#include <QtCore/qtestsupport_core.h>

namespace {

/// Long enough for a start, or an end, under a sanitizer on a busy machine.
constexpr int kStartWaitMs = 60000;
constexpr int kEndWaitMs = 30000;

const QString kProgramTitle = QStringLiteral("SCN4070A 控制软件");
const QString kLauncherTitle = QStringLiteral("SCN4070A( - .*)?");

QString commandOf(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

/// Child process of that name; 0 if there is none.
qint64 childOf(qint64 parent, const QString& name)
{
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(parent));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> children = file.readAll().simplified().split(' ');
    for (const QByteArray& each : children) {
        if (commandOf(each.toLongLong()) == name) {
            return each.toLongLong();
        }
    }
    return 0;
}

qulonglong windowOf(const QString& title, const XDisplay& display)
{
    const QString found =
        display.xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                         QStringLiteral("--name"), QLatin1Char('^') + title + QLatin1Char('$')});
    return found.section(QLatin1Char('\n'), 0, 0).toULongLong();
}

} // namespace

LauncherProcess::LauncherProcess(const QString& display)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        environment.insert(QString::fromLatin1(variable), m_home.path());
    }
    m_process.setProcessEnvironment(environment);
}

LauncherProcess::~LauncherProcess()
{
    m_process.terminate();
    m_process.waitForFinished();
    // One that is killed cannot delete its own.
    for (const QString& lock : locks()) {
        QFile::remove(lock);
    }
}

void LauncherProcess::setVariable(const QString& name, const QString& value)
{
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert(name, value);
    m_process.setProcessEnvironment(environment);
}

void LauncherProcess::start(const QStringList& arguments)
{
    m_process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-launcher"), arguments);
    m_process.waitForStarted();
    m_started.append(m_process.processId());
}

void LauncherProcess::startInTerminal(const QStringList& arguments)
{
    m_isInTerminal = true;
    const QString command = QStringLiteral("exec " SCN_BIN_DIR "/scn4070a-launcher '%1'")
                                .arg(arguments.join(QStringLiteral("' '")));
    m_process.start(QStringLiteral("script"),
                    {QStringLiteral("--quiet"), QStringLiteral("--return"),
                     QStringLiteral("--command"), command, QStringLiteral("/dev/null")});
    const bool isRunning = QTest::qWaitFor([this] { return processId() != 0; }, kStartWaitMs);
    Q_ASSERT(isRunning);
    Q_UNUSED(isRunning)
    m_started.append(processId());
}

qint64 LauncherProcess::processId() const
{
    // The system cuts names at 15 characters.
    return m_isInTerminal ? childOf(m_process.processId(), QStringLiteral("scn4070a-launch"))
                          : m_process.processId();
}

void LauncherProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool LauncherProcess::waitForEnd()
{
    return m_process.waitForFinished(kEndWaitMs);
}

bool LauncherProcess::waitForError(const QString& text)
{
    return QTest::qWaitFor([&] { return (m_awaitedErrors += errors()).contains(text); },
                           kStartWaitMs);
}

QString LauncherProcess::log() const
{
    QString text;
    QDirIterator files(m_home.path(), {QStringLiteral("*.log")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly)) {
            text += QString::fromUtf8(file.readAll());
        }
    }
    return text;
}

qint64 LauncherProcess::child(const QString& name) const
{
    return childOf(processId(), name);
}

QStringList LauncherProcess::locks() const
{
    QStringList files;
    for (const qint64 process : m_started) {
        files += locksOf(process);
    }
    return files;
}

QStringList LauncherProcess::locksOf(qint64 process)
{
    const QByteArray signature = "\"process\":" + QByteArray::number(process) + ',';
    QStringList files;
    for (const QString& folder : {qEnvironmentVariable("SCN4070A_LOCK_FOLDER"),
                                  QStringLiteral("/run/lock"), QStringLiteral("/tmp")}) {
        QDirIterator locks(folder, {QStringLiteral("scn4070a-*.lock")});
        while (locks.hasNext()) {
            QFile file(locks.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(signature)) {
                files.append(file.fileName());
            }
        }
    }
    return files;
}

qulonglong LauncherProcess::windowOn(const XDisplay& display)
{
    return windowOf(kLauncherTitle, display);
}

qulonglong LauncherProcess::programWindowOn(const XDisplay& display)
{
    return windowOf(kProgramTitle, display);
}

bool LauncherProcess::waitForEmbeddingOn(const XDisplay& display)
{
    return QTest::qWaitFor(
        [&display] {
            const qulonglong launcher = windowOn(display);
            qulonglong window = programWindowOn(display);
            while (window != 0 && window != launcher) {
                window = display.parentOf(window);
            }
            return window != 0;
        },
        kStartWaitMs);
}
