#pragma once

#include <QObject>
#include <QString>

class CurveDataDB;

/// Deletes the store's files on its own thread. It uses no state of the store and takes no lock;
/// the store has closed every connection before.
class DBClearWorker : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DBClearWorker)

public:
    /// The curve id is always -1: stores are deleted as a whole.
    DBClearWorker(CurveDataDB* store, int curveId, const QString& dataDirectory);

signals:
    /// The files have been deleted, as far as possible.
    void clearFinished();

public slots:
    /// Deletes side files first, so that no database goes before its WAL. A file that cannot be
    /// deleted is tried three times, 500 ms apart. An interruption request of the thread ends the
    /// work early.
    void doClear();

private:
    static void removeFile(const QString& path);

    [[maybe_unused]] CurveDataDB* const m_store;
    [[maybe_unused]] const int m_curveId;
    const QString m_dataDirectory;
};
