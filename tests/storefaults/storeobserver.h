#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

struct sqlite3;

/// Reads a directory's day files through its own connections, which bypass any layer below the
/// store's. It sees only what is committed.
class StoreObserver
{
public:
    explicit StoreObserver(const QString& directory);
    ~StoreObserver();
    StoreObserver(const StoreObserver&) = delete;
    StoreObserver& operator=(const StoreObserver&) = delete;

    /// Number of rows in a day file's table for a reading; 0 without the file or the table.
    int count(const QString& dateKey, const QString& table, int curveId, qint64 time, double value);

    /// Closes all files.
    void close();

private:
    sqlite3* open(const QString& dateKey);

    QString m_directory;
    QMap<QString, sqlite3*> m_files;
};
