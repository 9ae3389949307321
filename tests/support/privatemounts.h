#pragma once

#include "support/testprogram.h"

#include <QString>

/// Mounts that only this process sees.
namespace privatemounts {

/// Gives the process mounts of its own, as root or in a user namespace of its own. To be called
/// before there is a second thread. Gives what stood in the way; empty on success.
QString enter();

/// Mounts an in-memory file system of this many bytes over a directory.
bool mountMemory(const QString& directory, qint64 bytes);

/// Makes a directory read-only for files opened from now on. Open files stay writable.
bool makeReadOnly(const QString& directory);

/// Shows a directory, with what is mounted in it, in the place of another.
bool show(const QString& directory, const QString& place);

/// Undoes the last of these.
bool unmount(const QString& directory);

/// Such a mount while it lives.
class Mount
{
public:
    static Mount disk(const QString& directory, qint64 bytes)
    {
        return Mount(directory, mountMemory(directory, bytes));
    }
    static Mount readOnly(const QString& directory)
    {
        return Mount(directory, makeReadOnly(directory));
    }

    ~Mount() { unmount(m_directory); }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;

    bool isMounted() const { return m_mounted; }

private:
    Mount(const QString& directory, bool mounted)
        : m_directory(directory)
        , m_mounted(mounted)
    {
    }

    const QString m_directory;
    const bool m_mounted;
};

/// Writes a file until its disk is full.
void fillDisk(const QString& path);

/// Runs a test class in such mounts, or skips it where the system grants none.
template <class Test, class Application>
int run(int argc, char** argv)
{
    const QString obstacle = enter();
    return obstacle.isEmpty()
               ? testprogram::run<Test, Application>(argc, argv)
               : testprogram::skip(QStringLiteral("full and read-only disks"), obstacle);
}

} // namespace privatemounts
