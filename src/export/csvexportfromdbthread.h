#pragma once

#include "export/exportresult.h"
#include "storage/samplecolumn.h"

#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <memory>
#include <vector>

class CurveDataDB;
class QFileDevice;

namespace scn {
class CsvParts;
class CsvRows;
class CurveCursor;
struct SampleBlock;
} // namespace scn

/// Writes stored samples of several curves to CSV files, on its own thread and in constant memory.
/// The n-th row holds the n-th sample of each curve: rows are aligned by position, not by time.
/// Columns are in the order of the curve ids.
///
/// While one block of rows is written, the next ones are read. An export that fails leaves no file.
class CsvExportFromDBThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CsvExportFromDBThread)

public:
    /// @param store null is an outcome of the export
    /// @param path of the files; part number and time are appended to its base name
    CsvExportFromDBThread(CurveDataDB* store, const QList<int>& curveIds, const QString& path,
                          const QString& separator, const QMap<QString, QString>& header,
                          qint64 start, qint64 end, QObject* parent = nullptr);

    /// Asks the export to stop and waits for its end.
    ~CsvExportFromDBThread() override;

    /// Starts the export, or warns if it is running. Not from a slot that the exporting thread
    /// calls at its end.
    void startExport();

    /// Ends the export at the next row, with ExportCancelled. Any thread.
    void requestStop();

    /// Whether the running, or last, export was asked to stop. Any thread.
    bool isStopRequested() const { return m_stopRequested; }

    /// Any thread.
    bool isExporting() const;

    /// Rows per part, at least one; 1,000,000 by default. Set before startExport().
    void setRowsPerPart(qint64 rows) { m_rowsPerPart = qMax<qint64>(rows, 1); }

    /// Writes everything to an open device instead of parts. It outlives the export, stays open, and is
    /// whole only if the export succeeds. Set before startExport().
    void setDevice(QFileDevice* device);

    /// Rows read per hold of a connection's lock, at least one; it does not affect the output. Set
    /// before startExport().
    void setRowsPerBlock(int rows) { m_rowsPerBlock = qMax(rows, 1); }

signals:
    /// Every hundred rows; the total is unknown, -1.
    void exportProgress(qlonglong processed, qlonglong total);

    /// The export has ended; the written files, empty unless it succeeded.
    void exportFinished(ExportResult result, QStringList files);

protected:
    void run() override;

private:
    using Cursors = std::vector<std::unique_ptr<scn::CurveCursor>>;

    ExportResult exportCurves(QStringList& files);
    QMap<int, QString> selectExistingCurves() const;
    bool makeCursors(const QMap<int, QString>& curves, Cursors& cursors) const;
    ExportResult writeFiles(Cursors& cursors, const QMap<int, QString>& curves, QStringList& files);
    ExportResult writeParts(QStringList& files, Cursors& cursors, scn::CsvParts& parts);
    ExportResult writeRows(Cursors& cursors, scn::CsvParts& parts);
    ExportResult writeBlock(const scn::SampleBlock& block, scn::CsvRows& rows,
                            scn::CsvParts& parts);
    ExportResult countRow(scn::CsvRows& rows, scn::CsvParts& parts);
    static ExportResult cancelled();
    static ExportResult failedToRead();
    static ExportResult failedToWrite();

    CurveDataDB* m_store;
    QList<int> m_curveIds;
    QString m_path;
    QString m_separator;
    QMap<QString, QString> m_header;
    qint64 m_start;
    qint64 m_end;
    mutable QMutex m_mutex;
    std::atomic<bool> m_stopRequested{false};
    bool m_running = false;

    QFileDevice* m_device = nullptr; ///< Null: parts.
    qint64 m_rowsPerPart;
    int m_rowsPerBlock;
    qint64 m_rowNumber = 1;  ///< Of the next row.
    qint64 m_rowsInPart = 0; ///< Rows that the part holds.
};
