#pragma once

#include "posix/filedescriptor.h"

#include <QString>

namespace scnlauncher {

/// Keeps two launchers from changing a folder at once. Does not wait.
class FolderLock
{
public:
    explicit FolderLock(const QString& folder);

    /// False if another process holds it. A folder that cannot be locked is nobody's.
    bool isFree() const { return m_isFree; }

private:
    scn::FileDescriptor m_folder;
    bool m_isFree = true;
};

} // namespace scnlauncher
