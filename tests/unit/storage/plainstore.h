#pragma once

#include <QMap>
#include <QString>

struct sqlite3;

/// A plain version of the store's writing: every step of every reading is a statement of its own on
/// SQLite's own interface, nothing kept, nothing skipped. What CurveDataDB leaves in its files is
/// compared with this.
class PlainStore
{
public:
    explicit PlainStore(const QString& directory);
    ~PlainStore();
    PlainStore(const PlainStore&) = delete;
    PlainStore& operator=(const PlainStore&) = delete;

    int registerCurve(const QString& name);
    void appendPoint(int curveId, qint64 timestamp, double value);
    void saveMetadata();
    void flushAndDetach();

private:
    struct Extremes
    {
        qint64 minTime;
        qint64 maxTime;
        double minValue;
        double maxValue;
    };

    sqlite3* open(const QString& path);
    void ensureCurrent();
    void load(const QString& path);
    void createBaseTables(sqlite3* db);
    void setUp(sqlite3* db);
    void openForWrite(int curveId, qint64 timestamp);
    void update(int curveId, qint64 timestamp, double value);

    QString m_directory;
    QString m_currentPath;
    QString m_currentDate;
    QMap<QString, sqlite3*> m_files;
    QMap<int, QString> m_names;
    QMap<int, Extremes> m_extremes;
};
