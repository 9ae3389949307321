#pragma once

#include <QDateTime>
#include <QString>

#include <optional>
#include <system_error>

namespace scnlauncher {

/// What the file system knows of a file, under whatever name.
struct FileFacts
{
    quint64 device = 0;
    quint64 number = 0;
    quint64 names = 0; ///< How many hard links it has.
    qint64 bytes = 0;
    QDateTime modified; ///< When its content last changed,
    QDateTime changed;  ///< and when that, its names or its rights did.

    bool isSameFile(const FileFacts& other) const
    {
        return device == other.device && number == other.number;
    }
};

/// Nothing if there is no regular file; links are not followed.
std::optional<FileFacts> factsOf(const QString& path);

/// Gives a file a second name.
std::error_code addName(const QString& path, const QString& secondName);

/// Gives a file's name to another file of the same folder, in one step.
std::error_code moveName(const QString& path, const QString& newName);

/// Whether the error means that a second name can never be given there. Missing permission is not among
/// them: it may concern the file alone, one of another user for instance.
bool isWithoutLinks(const std::error_code& error);

/// Whether another process has a database open, under whatever name: SQLite's locks tell, which a
/// database with a WAL holds all the time. Not for a file that this process has open: its own locks
/// would go.
bool isOpenElsewhere(const QString& database);

} // namespace scnlauncher
