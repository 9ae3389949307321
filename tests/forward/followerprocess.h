#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// scn4070a-store forward, running.
class FollowerProcess
{
public:
    /// `launcher` is a command that runs the program, as another user, for instance.
    explicit FollowerProcess(const QStringList& arguments, const QStringList& launcher = {});

    /// Kills it if it runs.
    ~FollowerProcess();
    FollowerProcess(const FollowerProcess&) = delete;
    FollowerProcess& operator=(const FollowerProcess&) = delete;

    void kill();

    /// Sends a signal.
    void signal(int number) const;

    /// Waits for its end and gives the exit code, -1 if it crashed or goes on.
    int exitCode();

    qint64 processId() const { return m_process.processId(); }

    /// What it has said so far.
    QString errors();

private:
    QProcess m_process;
    QString m_errors;
};
