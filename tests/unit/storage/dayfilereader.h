#pragma once

#include <QString>
#include <QStringList>

/// Reads and changes day files through SQLite's own interface, so that what the store wrote is not
/// read back by the store.
namespace dayfile {

/// The rows of a query, columns joined by "|", a null column as "NULL". A failure is one row that
/// starts with "error: ".
QStringList rows(const QString& path, const QString& sql);

/// Runs statements; gives the error text, empty on success.
QString execute(const QString& path, const QString& sql);

/// Every row of every table but SQLite's own, each as "table: columns", tables by name, the rows of
/// a table in the order of their ids.
QStringList dump(const QString& path);

} // namespace dayfile

/// Holds a lock on a day file, as another process would, while it lives.
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
