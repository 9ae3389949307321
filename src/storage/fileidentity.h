#pragma once

#include <QString>
#include <QtGlobal>

/// Which file a path leads to. A file that was deleted or moved away while it was open, and the one
/// that has taken its place, differ.
struct FileIdentity
{
    quint64 device = 0;
    quint64 number = 0; ///< 0: there is no file.

    bool exists() const { return number != 0; }
};

inline bool operator==(const FileIdentity& left, const FileIdentity& right)
{
    return left.device == right.device && left.number == right.number;
}

inline bool operator!=(const FileIdentity& left, const FileIdentity& right)
{
    return !(left == right);
}

/// The identity of the file at a path; costs about a microsecond. Any thread.
///
/// Where open files cannot be deleted or replaced, it is enough to tell whether there is one.
FileIdentity fileIdentity(const QString& path);
