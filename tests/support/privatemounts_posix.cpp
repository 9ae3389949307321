#include "support/privatemounts.h"

#include <QFile>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// Linux: mount namespaces are its own.

namespace {

QString failure(const char* what)
{
    return QStringLiteral("%1: %2").arg(QString::fromLatin1(what),
                                        QString::fromLocal8Bit(std::strerror(errno)));
}

bool writeFile(const char* path, const QByteArray& text)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

} // namespace

QString privatemounts::enter()
{
    const QByteArray user = QByteArray::number(getuid());
    const QByteArray group = QByteArray::number(getgid());
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            return failure("no mount namespace");
        }
        if (!writeFile("/proc/self/setgroups", "deny") ||
            !writeFile("/proc/self/uid_map", "0 " + user + " 1") ||
            !writeFile("/proc/self/gid_map", "0 " + group + " 1")) {
            return failure("no root in the user namespace");
        }
    }
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        return failure("mounts cannot be kept private");
    }
    if (mount("none", "/mnt", "tmpfs", 0, "size=64k") != 0) {
        return failure("nothing can be mounted");
    }
    umount("/mnt");
    return {};
}

bool privatemounts::mountMemory(const QString& directory, qint64 bytes)
{
    const QByteArray options = "size=" + QByteArray::number(bytes);
    return mount("none", QFile::encodeName(directory).constData(), "tmpfs", 0,
                 options.constData()) == 0;
}

bool privatemounts::makeReadOnly(const QString& directory)
{
    const QByteArray path = QFile::encodeName(directory);
    return mount(path.constData(), path.constData(), nullptr, MS_BIND, nullptr) == 0 &&
           mount(nullptr, path.constData(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) ==
               0;
}

bool privatemounts::show(const QString& directory, const QString& place)
{
    return mount(QFile::encodeName(directory).constData(), QFile::encodeName(place).constData(),
                 nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

void privatemounts::fillDisk(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (file.write(QByteArray(4096, 'x')) > 0) {
    }
}

bool privatemounts::unmount(const QString& directory)
{
    return umount2(QFile::encodeName(directory).constData(), MNT_DETACH) == 0;
}
