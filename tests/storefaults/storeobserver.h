#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

struct sqlite3;

/// Looks at the day files of a directory through connections of its own, which pass by whatever
/// layer the store's connections go through. It sees what is committed and nothing else.
class StoreObserver
{
public:
    explicit StoreObserver(const QString& directory);
    ~StoreObserver();
    StoreObserver(const StoreObserver&) = delete;
    StoreObserver& operator=(const StoreObserver&) = delete;

    /// How many rows a table of a day file has for a reading; 0 without the file or the table.
    int count(const QString& dateKey, const QString& table, int curveId, qint64 time, double value);

    /// Lets go of all files.
    void close();

private:
    sqlite3* open(const QString& dateKey);

    QString m_directory;
    QMap<QString, sqlite3*> m_files;
};
