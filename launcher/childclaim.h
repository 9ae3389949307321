#pragma once

#include "launcher/ownership.h"
#include "launcher/place/programplace.h"

#include <QString>

namespace scnlauncher {

/// What a child needs for itself: its instrument, and the folder that its data goes to. Held until
/// this object and the child have gone.
class ChildClaim
{
public:
    explicit ChildClaim(const QString& lockFolder = Ownership::commonLockFolder());

    /// Takes both for a child of `program`: the folder beside the program, or, where it takes no
    /// data or is held, a folder of the user with a copy of the program. That folder is named after
    /// `name`: give the resource, or one name for all simulated instruments, whose resource differs
    /// at each start. False if there is nothing to start; errorText() tells the user why.
    bool take(const QString& program, const QString& resource, const QString& name);

    /// The child has ended, or none was started.
    void release();

    /// The program to start, and its folder, where the data is.
    QString program() const { return m_place.program; }
    QString folder() const { return m_place.folder; }
    /// False if the data does not go beside the program that take() was given.
    bool isBesideProgram() const { return m_isBesideProgram; }

    QString errorText() const { return m_errorText; }

    /// Adds the started child to what other launchers read.
    void noteChild(qint64 processId);

    /// For QProcess::setupChildProcess(): the child keeps what is held, even without its launcher.
    void passOn() const;

private:
    bool takeResource(const QString& resource);
    bool takeBeside(const QString& program);
    bool takePerUser(const QString& program, const QString& name);

    Owner m_self;
    Ownership m_resource;
    Ownership m_folder;
    ProgramPlace m_place;
    bool m_isBesideProgram = false;
    QString m_errorText;
};

} // namespace scnlauncher
