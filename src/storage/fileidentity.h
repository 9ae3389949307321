#pragma once

#include <QString>
#include <QtGlobal>

namespace scn {

/// Identifies the file at a path. A file that was deleted or moved while open differs from its
/// replacement.
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
/// Where open files cannot be deleted or replaced, checking that one exists is enough.
FileIdentity fileIdentity(const QString& path);

} // namespace scn
