#pragma once

#include <QString>
#include <QStringList>

/// Reads and changes day files through SQLite's own interface, so that the store does not check
/// itself.
namespace dayfile {

/// The rows of a query, columns joined by "|", a null column as "NULL". A failure is one row that
/// starts with "error: ".
QStringList rows(const QString& path, const QString& sql);

/// Runs statements; returns the error text, empty on success.
QString execute(const QString& path, const QString& sql);

/// Every row of every table except SQLite's own, each as "table: columns", tables by name, rows by
/// id.
QStringList dump(const QString& path);

} // namespace dayfile

/// Holds a lock on a day file, as another process would.
class DayFileLock
{
public:
    enum Kind { Read, Write, Exclusive };

    explicit DayFileLock(const QString& path, Kind kind = Write);
    ~DayFileLock();
    DayFileLock(const DayFileLock&) = delete;
    DayFileLock& operator=(const DayFileLock&) = delete;

    bool isHeld() const { return m_held; }

private:
    void* m_database = nullptr;
    bool m_held = false;
};
