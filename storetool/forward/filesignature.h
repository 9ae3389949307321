#pragma once

#include <QString>
#include <QtGlobal>

namespace scnstore {

/// What the file system tells about a day file and its log. Unless it changes, nothing was written.
struct FileSignature
{
    struct Part
    {
        quint64 device = 0;
        quint64 number = 0; ///< 0: there is no file.
        qint64 size = 0;
        qint64 changedNs = 0; ///< Since the epoch.
    };

    Part file;
    Part log;
    quint64 links = 0;

    bool exists() const { return file.number != 0; }

    /// Milliseconds since the epoch.
    qint64 lastChange() const;

    bool isSameFile(const FileSignature& other) const
    {
        return file.device == other.file.device && file.number == other.file.number;
    }
};

bool operator==(const FileSignature& left, const FileSignature& right);
bool operator!=(const FileSignature& left, const FileSignature& right);

FileSignature fileSignature(const QString& path);

} // namespace scnstore
