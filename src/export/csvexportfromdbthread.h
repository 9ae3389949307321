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

class CsvParts;
class CsvRows;
class CurveCursor;
class CurveDataDB;
struct SampleBlock;

/// Writes the stored samples of some curves to CSV files, in a thread of its own and in constant
/// memory. The n-th row holds the n-th sample of each curve: rows are aligned by position, not by
/// time. The columns stand in the order of the curve ids.
///
/// While one block of rows is written, the next ones are read. An export that does not succeed leaves no
/// file behind.
class CsvExportFromDBThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CsvExportFromDBThread)

public:
    /// @param store null is an outcome of the export
    /// @param path of the files; the part's number and the time are put behind its base name
    /// @param separator between the fields of a line
    /// @param header texts of the lines above the titles, by the keys of CurveDataDB::openCsvPart()
    /// @param start,end first and last millisecond since the epoch to be exported
    CsvExportFromDBThread(CurveDataDB* store, const QList<int>& curveIds, const QString& path,
                          const QString& separator, const QMap<QString, QString>& header,
                          qint64 start, qint64 end, QObject* parent = nullptr);

    /// Asks the export to stop and waits for its end.
    ~CsvExportFromDBThread() override;

    /// Starts the export, or warns if it runs. Not from a slot that the exporting thread calls at
    /// its end.
    void startExport();

    /// The export ends at the next row, with ExportCancelled. Any thread.
    void requestStop();

    /// Whether the export that runs, or ran last, was asked to stop. Any thread.
    bool isStopRequested() const { return m_stopRequested; }

    /// Any thread.
    bool isExporting() const;

    /// Rows after which a new part is begun, at least one; 1,000,000 unless set. Before
    /// startExport().
    void setRowsPerPart(qint64 rows) { m_rowsPerPart = qMax<qint64>(rows, 1); }

    /// Rows read under one hold of a connection's lock, at least one; what is written does not
    /// depend on it. Before startExport().
    void setRowsPerBlock(int rows) { m_rowsPerBlock = qMax(rows, 1); }

signals:
    /// Each hundred rows; the total is unknown, -1.
    void exportProgress(qlonglong processed, qlonglong total);

    /// The end of the export; the files are those that were written, and empty unless it succeeded.
    void exportFinished(ExportResult result, QStringList files);

protected:
    void run() override;

private:
    using Cursors = std::vector<std::unique_ptr<CurveCursor>>;

    ExportResult exportCurves(QStringList& files);
    QMap<int, QString> selectExistingCurves() const;
    bool makeCursors(const QMap<int, QString>& curves, Cursors& cursors) const;
    ExportResult writeFiles(Cursors& cursors, const QMap<int, QString>& curves, QStringList& files);
    ExportResult writeParts(Cursors& cursors, CsvParts& parts);
    ExportResult writeBlock(const SampleBlock& block, CsvRows& rows, CsvParts& parts);
    ExportResult countRow(CsvRows& rows, CsvParts& parts);
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

    qint64 m_rowsPerPart;
    int m_rowsPerBlock;
    qint64 m_rowNumber = 1;  ///< Of the next row.
    qint64 m_rowsInPart = 0; ///< Rows that the part holds.
};
