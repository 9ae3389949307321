#pragma once

#include "storage/batchtablewriter.h"
#include "storage/currentfile.h"
#include "storage/curveread.h"
#include "storage/curverecords.h"
#include "storage/dayfiles.h"
#include "storage/fileaccess.h"
#include "storage/heldfiles.h"
#include "storage/latefile.h"
#include "storage/managedquery.h"
#include "storage/roworders.h"
#include "storage/storedchanges.h"
#include "storage/storememory.h"
#include "storage/timeslice.h"

#include <QDeadlineTimer>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <chrono>

class QFile;
class QIODevice;
class QTextStream;
class QThread;

Q_DECLARE_METATYPE(QSharedPointer<QSqlDatabase>)

/// The process-wide store of curves: one SQLite file per local day, with one table per curve and
/// six hours. Times are milliseconds since the epoch.
///
/// Any thread may call; every public operation except openDb() holds the store's recursive mutex
/// throughout. Failures are log lines and an empty, false or -1 result; a failed write never stops
/// the next one.
class CurveDataDB : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CurveDataDB)

public:
    /// The program's one store. The first caller's directory name wins; it is a name below the
    /// application's directory, "curve_data" if empty.
    static CurveDataDB* instance(const QString& directoryName);

    /// Closes the program's store and its connections properly, within two seconds, and for good.
    /// Entry calls it after the window is gone and before the application object is. Does nothing
    /// if no store was opened.
    static void shutdown();

    /// A store in a given directory, beside the program's own. One that only reads knows the curves of
    /// all day files there, by the ids of the newest file that has them, and stores nothing:
    /// registerCurve() finds a curve, and what would write or delete fails.
    explicit CurveDataDB(const QString& dataDirectory, QObject* parent = nullptr,
                         scn::FileAccess access = scn::FileAccess::Write);
    ~CurveDataDB() override;

    /// What shutdown() does, for this store.
    void closeForExit(QDeadlineTimer deadline);

    QString dataDirectory() const { return m_dataDir; }
    bool isReadOnly() const { return m_files.isReadOnly(); }

    /// Whether the last reading, or the last registration of a curve since, could not be stored.
    /// Never blocks.
    bool refusesReadings() const { return m_refusing; }

    QString dbPathForDate(const QString& dateKey) const;
    QString dbPathForTime(qint64 timestamp) const;
    QString todayDbPath() const;

    /// The pooled connection to a file, opened if necessary; null if it cannot be opened, during a
    /// clear, and after the store was closed for good. Does not take the store's lock.
    QSharedPointer<QSqlDatabase> openDb(const QString& path);

    /// The id of a curve in today's file, registered if it is new there (which takes 200 ms); -1 on
    /// failure.
    int registerCurve(const QString& name);

    /// The same without the 200 ms, for a store that has been in use.
    int registerCurveAtOnce(const QString& name);

    /// Stores one reading in a commit of its own, together with the curve's extremes. Anything more
    /// than 270,000 years from the epoch is not a time and is not stored.
    void appendPoint(int curveId, qint64 timestamp, double value);

    /// Stores many readings of one curve, one transaction per file; x is the time.
    void appendPoints(int curveId, const QVector<QPointF>& points);

    /// Writes the held-back points.
    void flushPending();

    /// Saves what is unsaved and detaches from today's file; the next write attaches again.
    void flushAndDetach();

    /// Saves the extremes of all curves in today's file.
    bool saveMetadata();

    /// Extremes of a curve; the initial values for an unknown id.
    DBCurveMetadata curveMetadata(int curveId) const;

    /// Names of all known curves by id.
    QMap<int, QString> curveNames() const;

    /// Names of the known ids among these.
    QMap<int, QString> namesForIds(const QList<int>& ids) const;

    /// Number of batch tables known to exist.
    int knownTableCount() const;

    /// Points of a curve from start to end, both included, in order of time; x the time, y the
    /// stored value. More than maxPoints are thinned; 0 or less: no limit.
    QVector<QPointF> readCurveData(int curveId, qint64 start, qint64 end, int maxPoints);

    /// Goes on with a read, which then has the points of readCurveData(). True once it has them all;
    /// false if that takes another slice.
    bool proceed(scn::CurveRead& read, scn::ReadSlice& slice);

    /// Looks through the tables of a curve in some files, which a read does first. False if that takes
    /// another slice.
    bool lookThrough(int curveId, qint64 start, qint64 end, const scn::HeldFiles& files,
                     scn::ReadSlice& slice);

    /// Tells, when compared with a later one, whether readCurveData() would give the same points.
    scn::StoredState storedState(int curveId);

    /// The batches of a curve in one file that overlap the range. `failed` is set if the file's
    /// batch catalogue could not be read to its end.
    QVector<DBBatchInfo> queryBatches(int curveId, qint64 start, qint64 end,
                                      const QSharedPointer<QSqlDatabase>& db,
                                      bool* failed = nullptr);

    /// Whether a connection is open and answers.
    bool pingConnection(const QSharedPointer<QSqlDatabase>& db);

    /// queryBatches() for a file given by its path; empty if there is no such file.
    QVector<DBBatchInfo> listBatchesInFile(int curveId, qint64 start, qint64 end,
                                           const QString& path);

    /// Marks a curve's tables in today's file as known. From then on appendPoints() holds its
    /// points back.
    void loadBatchesForCurve(int curveId, qint64 start, qint64 end);

    /// Path of one part of a CSV export: the base name with the part's number and the current
    /// second appended. Each call reads the clock.
    static QString partFilePath(const QString& path, int index);

    /// Creates a part of a CSV export, with its directory, and writes its header and the titles of
    /// the curves, by id. Closes what `file` had open. False if the file cannot be created; whether
    /// the text reached it is in the file's error().
    bool openCsvPart(const QString& path, int index, const QString& separator,
                     const QMap<QString, QString>& header, const QMap<int, QString>& curves,
                     QFile& file, QTextStream& stream);

    /// Binds the stream to an open device and writes the header of a CSV export to it.
    static void writeCsvHead(const QString& separator, const QMap<QString, QString>& header,
                             const QMap<int, QString>& curves, QIODevice& device,
                             QTextStream& stream);

    /// Starts clearing the store and returns; sigClearFinished() reports when it is ready again.
    /// GUI thread.
    void clearAll();

    /// Removes one curve's tables from today's file.
    bool deleteCurveData(int curveId);

signals:
    /// The store has been cleared and is ready.
    void sigClearFinished();

private slots:
    void onClearFinished();

private:
    void ensureCurrentDb();
    void readCatalogues();
    int enlistCurve(const QString& name, scn::CurrentFile::NewCurve newCurve);

    // Readings one by one: curvedatadb_write.cpp
    const QString& dateKeyFor(qint64 timestamp);
    bool targetsCurrentFile(qint64 timestamp);
    bool appendToCurrentFile(const scn::Reading& reading);
    bool appendToOtherFile(const scn::Reading& reading);
    bool openForWrite(int curveId, qint64 timestamp);
    void updateMetadataCache(int curveId, qint64 timestamp, double value);

    // Many readings at once: curvedatadb_bulk.cpp
    void appendToFile(const QString& path, int curveId, const QVector<QPointF>& points);
    void insertPoints(const QSqlDatabase& db, int curveId, const QVector<QPointF>& points);

    // Clearing: curvedatadb_clear.cpp
    void closeAllForClear();
    void startClearThread();
    void stopClearThreads(std::chrono::milliseconds wait);
    bool dropCurve(int curveId);

    QString m_dataDir;
    scn::FileAccess m_access;
    QString m_currentDbPath;
    QString m_currentDate; ///< "yyyyMMdd"
    QSharedPointer<QSqlDatabase> m_currentDb;
    QMap<int, QString> m_curveNameMap;
    QMap<int, DBCurveMetadata> m_metadataMap;
    QVector<DBBatchInfo> m_batchList;  ///< Batches of the file loaded last.
    QMap<QString, bool> m_knownTables; ///< Tables seen as present; written and counted.
    QMap<int, QVector<QPointF>> m_pendingPoints;
    mutable QRecursiveMutex m_mutex;
    bool m_batchLoadMode = false; ///< Once set, appendPoints() holds its points back for good.
    QThread* m_clearThread = nullptr;

    // No two of these exclude each other: the program may end while it clears, and whether the last
    // reading was stored says nothing about the next. They are read without the mutex.
    std::atomic<bool> m_clearing{false};
    std::atomic<bool> m_closedForExit{false};
    std::atomic<bool> m_refusing{false};

    scn::DayFiles m_files{m_dataDir, m_access, m_clearing, m_closedForExit};
    scn::StoreMemory m_memory{m_currentDbPath, m_currentDate, m_currentDb,
                              m_curveNameMap,  m_metadataMap, m_batchList};
    scn::CurrentFile m_today{m_memory, m_files};
    scn::LateFile m_late{m_memory, m_files, m_today};
    scn::BatchTableWriter m_tables{m_batchList, m_knownTables, m_today.attachment()};
    scn::TimeSliceCache m_readingSlice;
    // Who only reads goes through the files once.
    scn::RowOrders m_rowOrders{isReadOnly() ? 0 : scn::RowOrders::kMostKept};
};
