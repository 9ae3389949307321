#pragma once

#include "storage/fileaccess.h"

#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>

#include <atomic>

namespace scn {

/// The day files of a store's directory, for the store and its parts. Any thread.
class DayFiles
{
public:
    /// The flags, which outlive this, say whether files may be opened: neither while the store is
    /// being cleared nor after it was closed for good.
    DayFiles(QString directory, FileAccess access, const std::atomic<bool>& clearing,
             const std::atomic<bool>& closedForExit);
    virtual ~DayFiles();
    Q_DISABLE_COPY_MOVE(DayFiles)

    const QString& directory() const { return m_directory; }
    bool isReadOnly() const { return m_access == FileAccess::Read; }
    QString path(const QString& dateKey) const;

    bool isClearing() const { return m_clearing; }
    bool isClosedForExit() const { return m_closedForExit; }

    /// The pooled connection to a file, opened if necessary; null if it cannot be opened.
    virtual QSharedPointer<QSqlDatabase> open(const QString& path) const;

private:
    QString m_directory;
    FileAccess m_access;
    const std::atomic<bool>& m_clearing;
    const std::atomic<bool>& m_closedForExit;
};

} // namespace scn
