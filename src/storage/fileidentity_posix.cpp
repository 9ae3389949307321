#include "storage/fileidentity.h"

#include <QFile>

#include <sys/stat.h>

namespace scn {

FileIdentity fileIdentity(const QString& path)
{
    struct stat facts = {};
    if (::stat(QFile::encodeName(path).constData(), &facts) != 0) {
        return {};
    }
    return {static_cast<quint64>(facts.st_dev), static_cast<quint64>(facts.st_ino)};
}

} // namespace scn
