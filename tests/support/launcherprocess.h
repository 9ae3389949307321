#pragma once

#include "support/xdisplay.h"

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The launcher as a process on a display, with settings, data and logs of its own.
class LauncherProcess
{
public:
    /// On the display of that name; on none if it is empty.
    explicit LauncherProcess(const QString& display);
    ~LauncherProcess();
    LauncherProcess(const LauncherProcess&) = delete;
    LauncherProcess& operator=(const LauncherProcess&) = delete;

    /// Sets a variable of its environment for the next start.
    void setVariable(const QString& name, const QString& value);

    void start(const QStringList& arguments);
    /// The same from a terminal, where keys can be typed and which can be closed.
    void startInTerminal(const QStringList& arguments);
    void type(const QByteArray& keys) { m_process.write(keys); }
    void closeTerminal() { kill(); }
    void terminate() { m_process.terminate(); }
    void kill();
    bool waitForEnd();
    bool crashed() const { return m_process.exitStatus() == QProcess::CrashExit; }
    int exitCode() const { return m_process.exitCode(); }
    /// Of the launcher; 0 before it runs.
    qint64 processId() const;
    QString output() { return QString::fromUtf8(m_process.readAllStandardOutput()); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }
    /// Waits until its standard error holds this, also what was waited for before.
    bool waitForError(const QString& text);
    /// The log files of its children.
    QString log() const;

    /// Its child process of that name; 0 if there is none.
    qint64 child(const QString& name) const;

    /// The lock files of all its starts that are there.
    QStringList locks() const;
    /// Those that the launcher with this process id has signed.
    static QStringList locksOf(qint64 process);

    /// The visible window of a launcher on a display, and of a program; 0 if there is none.
    static qulonglong windowOn(const XDisplay& display);
    static qulonglong programWindowOn(const XDisplay& display);
    /// Waits until the program's window is inside the launcher's.
    static bool waitForEmbeddingOn(const XDisplay& display);

private:
    const QTemporaryDir m_home;
    QProcess m_process;
    QList<qint64> m_started;
    QString m_awaitedErrors;
    bool m_isInTerminal = false;
};
