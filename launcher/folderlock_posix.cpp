#include "launcher/folderlock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace scnlauncher {

FolderLock::FolderLock(const QString& folder)
    : m_folder(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    m_isFree = !m_folder.isOpen() || ::flock(m_folder.get(), LOCK_EX | LOCK_NB) == 0 ||
               errno != EWOULDBLOCK;
}

} // namespace scnlauncher
