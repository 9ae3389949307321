#pragma once

#include "support/testprogram.h"

#include <QProcess>
#include <QString>
#include <QStringList>

/// Another process that holds a lock on a database file. It is the test program itself, whose
/// main() passes its arguments to playLock() first.
class LockingProcess
{
public:
    /// Prevents others from writing, and with Everything from reading if the file has no WAL.
    enum Kind { Writing, Everything };

    /// Returns when the lock is held.
    LockingProcess(const QString& path, Kind kind);

    /// Ends the process and its lock.
    ~LockingProcess();
    LockingProcess(const LockingProcess&) = delete;
    LockingProcess& operator=(const LockingProcess&) = delete;

    bool isHeld() const { return m_held; }

    /// Lets go of the lock in an orderly way, and returns when that is done.
    void end();

    /// Holds the lock if the arguments say so, else runs the test.
    template <class Test>
    static int run(int argc, char** argv)
    {
        return isMeant(argc, argv) ? playLock(argc, argv)
                                   : testprogram::run<Test, QCoreApplication>(argc, argv);
    }

private:
    static bool isMeant(int argc, char** argv);
    static int playLock(int argc, char** argv);

    QProcess m_process;
    bool m_held = false;
};
