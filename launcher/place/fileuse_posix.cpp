#include "launcher/place/fileuse.h"

#include "posix/filedescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace scnlauncher {
namespace {

/// The bytes that SQLite locks to read a file, and to keep a WAL file open.
constexpr off_t kSharedFirst = 0x40000002;
constexpr off_t kSharedSize = 510;

constexpr qint64 kMsPerSecond = 1000;
constexpr qint64 kNsPerMs = 1000000;

QDateTime timeOf(const struct timespec& time)
{
    return QDateTime::fromMSecsSinceEpoch(time.tv_sec * kMsPerSecond + time.tv_nsec / kNsPerMs);
}

std::filesystem::path pathOf(const QString& path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

} // namespace

std::optional<FileFacts> factsOf(const QString& path)
{
    struct stat facts = {};
    if (::lstat(QFile::encodeName(path).constData(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
        return std::nullopt;
    }
    return FileFacts{facts.st_dev,  facts.st_ino,          facts.st_nlink,
                     facts.st_size, timeOf(facts.st_mtim), timeOf(facts.st_ctim)};
}

std::error_code addName(const QString& path, const QString& secondName)
{
    std::error_code error;
    std::filesystem::create_hard_link(pathOf(path), pathOf(secondName), error);
    return error;
}

std::error_code moveName(const QString& path, const QString& newName)
{
    std::error_code error;
    std::filesystem::rename(pathOf(path), pathOf(newName), error);
    return error;
}

bool isWithoutLinks(const std::error_code& error)
{
    return error == std::errc::cross_device_link || error == std::errc::operation_not_supported ||
           error == std::errc::function_not_supported;
}

bool isOpenElsewhere(const QString& database)
{
    const scn::FileDescriptor file(
        ::open(QFile::encodeName(database).constData(), O_RDONLY | O_CLOEXEC));
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = kSharedFirst;
    lock.l_len = kSharedSize;
    return file.isOpen() && ::fcntl(file.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace scnlauncher
