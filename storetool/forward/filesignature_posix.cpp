#include "storetool/forward/filesignature.h"

#include <QFile>

#include <sys/stat.h>

#include <algorithm>

namespace scnstore {

namespace {

constexpr qint64 kNsPerS = 1000000000;
constexpr qint64 kNsPerMs = 1000000;

FileSignature::Part part(const QString& path, quint64* links)
{
    struct stat facts = {};
    if (::stat(QFile::encodeName(path).constData(), &facts) != 0) {
        return {};
    }
    *links = facts.st_nlink;
    return {facts.st_dev, facts.st_ino, facts.st_size,
            facts.st_mtim.tv_sec * kNsPerS + facts.st_mtim.tv_nsec};
}

bool isSame(const FileSignature::Part& left, const FileSignature::Part& right)
{
    return left.device == right.device && left.number == right.number && left.size == right.size &&
           left.changedNs == right.changedNs;
}

} // namespace

qint64 FileSignature::lastChange() const
{
    return std::max(file.changedNs, log.changedNs) / kNsPerMs;
}

bool operator==(const FileSignature& left, const FileSignature& right)
{
    return isSame(left.file, right.file) && isSame(left.log, right.log) &&
           left.links == right.links;
}

bool operator!=(const FileSignature& left, const FileSignature& right)
{
    return !(left == right);
}

FileSignature fileSignature(const QString& path)
{
    FileSignature signature;
    quint64 linksOfLog = 0;
    signature.file = part(path, &signature.links);
    signature.log = part(path + QLatin1String("-wal"), &linksOfLog);
    return signature;
}

} // namespace scnstore
