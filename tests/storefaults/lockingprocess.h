#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// Another process that holds a lock on a database file. It is the test program itself, whose
/// main() hands the arguments over to playLock() before it does anything else.
class LockingProcess
{
public:
    /// Keeps others from writing, or from reading as well where the file has no log beside it.
    enum Kind { Writing, Everything };

    /// Returns when the lock is held.
    LockingProcess(const QString& path, Kind kind);

    /// Ends the process, and with it the lock.
    ~LockingProcess();
    LockingProcess(const LockingProcess&) = delete;
    LockingProcess& operator=(const LockingProcess&) = delete;

    bool isHeld() const { return m_held; }

    /// Lets go of the lock in an orderly way, and returns when that is done.
    void end();

    /// Whether these are the arguments of such a process.
    static bool isMeant(const QStringList& arguments);

    /// What the process does; gives its exit code.
    static int playLock(const QStringList& arguments);

private:
    QProcess m_process;
    bool m_held = false;
};
