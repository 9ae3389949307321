#pragma once

#include <QObject>
#include <QString>

class CurveDataDB;

/// Deletes the store's files on a thread of its own. It touches no state of the store and takes no
/// lock; the store has closed every connection before.
class DBClearWorker : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DBClearWorker)

public:
    /// The curve id is always -1: whole stores are deleted, not single curves.
    DBClearWorker(CurveDataDB* store, int curveId, const QString& dataDirectory);

signals:
    /// The files are gone, or as many of them as would go.
    void clearFinished();

public slots:
    /// Deletes side files first, so that no database goes before its log. A file that resists is
    /// tried three times, 500 ms apart. An interruption request of the thread ends the work early.
    void doClear();

private:
    static void removeFile(const QString& path);

    [[maybe_unused]] CurveDataDB* const m_store;
    [[maybe_unused]] const int m_curveId;
    const QString m_dataDirectory;
};
