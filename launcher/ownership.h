#pragma once

#include "posix/filedescriptor.h"

#include <QDateTime>
#include <QString>

namespace scnlauncher {

/// Who holds an instrument or a data folder.
struct Owner
{
    /// The launcher.
    qint64 processId = 0;
    /// The program that it started, which goes on without it; 0 before the start.
    qint64 childProcessId = 0;
    QString user;
    QString program;
    /// The folder that the data goes to.
    QString place;
    QDateTime since;

    /// This process and its user, from now on.
    static Owner self(const QString& place);

    /// Whether its launcher has gone and the program is still there, without a window.
    bool isLeftOver() const;

    /// "scn4070a-launcher（进程 12，用户 li，自 2026-11-22 10:00 起，目录 /home/li/data）"; of a launcher
    /// that has gone, the program that it left.
    QString description() const;
};

/// One owner at a time, on the whole machine, for a thing that a text stands for. The lock is on an
/// open file: it ends with the last process that has that file open, whatever ends it. So a child
/// that outlives its launcher holds on.
class Ownership
{
public:
    /// `lockFolder` has a file for each thing that is held.
    explicit Ownership(QString lockFolder = commonLockFolder());
    ~Ownership();
    Ownership(const Ownership&) = delete;
    Ownership& operator=(const Ownership&) = delete;

    /// What take() came to.
    enum class Result { Taken, HeldByOther, Failed };

    /// Takes the thing, and gives up what was held before. If another holds it, other() tells who;
    /// on failure errorText() tells why.
    Result take(const QString& thing, const Owner& self);
    void release();

    bool isHeld() const { return m_file.isOpen(); }
    const Owner& other() const { return m_other; }
    QString errorText() const { return m_errorText; }

    /// Changes what others read of the owner.
    void sign(const Owner& self) const;

    /// For a forked process before it becomes the child: it keeps the lock. Allocates nothing.
    void passOn() const;

    /// A folder that all users of the machine can write, and that is empty after a restart: that of the
    /// environment variable SCN4070A_LOCK_FOLDER, else a usual one. Whoever has another sees no owner here.
    static QString commonLockFolder();

private:
    bool openFile();
    Result lockFile();
    bool isFileInPlace() const;
    Owner readOwner() const;
    void fail(int error);

    const QString m_lockFolder;
    QString m_path;
    scn::FileDescriptor m_file;
    Owner m_other;
    QString m_errorText;
};

} // namespace scnlauncher
