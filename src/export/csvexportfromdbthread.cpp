#include "export/csvexportfromdbthread.h"

#include "export/batchtables.h"
#include "export/blockreader.h"
#include "export/csvparts.h"
#include "export/csvrows.h"
#include "export/curvecursor.h"
#include "storage/curvedatadb.h"
#include "storage/lockpatience.h"

#include <QDebug>
#include <QMutexLocker>

#include <algorithm>
#include <limits>

using namespace scn;

namespace {

constexpr qint64 kRowsPerPart = 1000000;
constexpr int kRowsPerBlock = 1000;
constexpr int kRowsPerFlush = 1000;
constexpr int kRowsPerProgress = 100;
constexpr qlonglong kUnknownTotal = -1;
/// Text collected before it goes to the file.
constexpr int kWriteBytes = 262144;

/// Whether `test` is true for any cursor.
template <typename Test>
bool anyOf(const std::vector<std::unique_ptr<CurveCursor>>& cursors, Test test)
{
    return std::any_of(cursors.cbegin(), cursors.cend(),
                       [test](const auto& cursor) { return (*cursor.*test)(); });
}

} // namespace

CsvExportFromDBThread::CsvExportFromDBThread(CurveDataDB* store, const QList<int>& curveIds,
                                             const QString& path, const QString& separator,
                                             const QMap<QString, QString>& header, qint64 start,
                                             qint64 end, QObject* parent)
    : QThread(parent)
    , m_store(store)
    , m_curveIds(curveIds)
    , m_path(path)
    , m_separator(separator)
    , m_header(header)
    , m_start(start)
    , m_end(end)
    , m_rowsPerPart(kRowsPerPart)
    , m_rowsPerBlock(kRowsPerBlock)
{
    qRegisterMetaType<ExportResult>("ExportResult");
    QThread::setTerminationEnabled(true);
}

CsvExportFromDBThread::~CsvExportFromDBThread()
{
    requestStop();
    wait();
}

void CsvExportFromDBThread::startExport()
{
    {
        const QMutexLocker locker(&m_mutex);
        if (m_running) {
            qWarning() << "[导出线程] 已在运行中，无需重复启动";
            return;
        }
        m_running = true;
        m_stopRequested = false;
    }
    wait(); // a thread that has reported its end may still run, and would not start again
    start();
}

void CsvExportFromDBThread::setDevice(QFileDevice* device)
{
    m_device = device;
    m_rowsPerPart = std::numeric_limits<qint64>::max();
}

void CsvExportFromDBThread::requestStop()
{
    const QMutexLocker locker(&m_mutex);
    m_stopRequested = true;
}

bool CsvExportFromDBThread::isExporting() const
{
    const QMutexLocker locker(&m_mutex);
    return m_running;
}

void CsvExportFromDBThread::run()
{
    QStringList files;
    const ExportResult result = exportCurves(files);
    {
        const QMutexLocker locker(&m_mutex);
        m_running = false;
    }
    emit exportFinished(result, files);
}

/// Checks before anything is written, then writes.
ExportResult CsvExportFromDBThread::exportCurves(QStringList& files)
{
    if (!m_store) {
        qCritical() << "[导出线程] CurveDataDB实例为空";
        return ExportDbError;
    }
    if (m_curveIds.isEmpty()) {
        qCritical() << "[导出线程] 未选中任何曲线";
        return ExportNoData;
    }
    if (m_store->curveNames().isEmpty()) {
        qCritical() << "[导出线程] CurveDataDB中无任何曲线";
        return ExportNoData;
    }
    const QMap<int, QString> curves = selectExistingCurves();
    if (curves.isEmpty()) {
        qCritical() << "[导出线程] 选中的曲线在CurveDataDB中不存在";
        return ExportNoData;
    }
    Cursors cursors;
    const bool complete = makeCursors(curves, cursors);
    if (m_stopRequested) {
        return cancelled();
    }
    if (!complete) {
        return failedToRead();
    }
    if (!anyOf(cursors, &CurveCursor::isValid)) {
        qCritical() << "[导出线程] 所有选中曲线均无有效数据（游标初始化失败）";
        return ExportNoData;
    }
    return writeFiles(cursors, curves, files);
}

/// One cursor per curve. False, with fewer cursors, if a file cannot be read or a stop was
/// requested.
bool CsvExportFromDBThread::makeCursors(const QMap<int, QString>& curves, Cursors& cursors) const
{
    // A file locked by another process is waited for once, not once per curve.
    const LockPatience patience;
    const BatchTables tables = collectTables(*m_store, curves, m_start, m_end, m_stopRequested);
    bool complete = !tables.failed;
    for (auto curve = curves.cbegin(); curve != curves.cend() && complete; ++curve) {
        // The time of a row is that of the first curve.
        cursors.push_back(std::make_unique<CurveCursor>(
            *m_store, curve.key(), tables.byCurve.value(curve.key()), m_start, m_end,
            cursors.empty() ? CurveCursor::TimesAndValues : CurveCursor::ValuesOnly));
        complete = !cursors.back()->hasFailed() && !m_stopRequested;
    }
    return complete;
}

/// The curves known to the store, by id.
QMap<int, QString> CsvExportFromDBThread::selectExistingCurves() const
{
    return m_store->namesForIds(m_curveIds);
}

ExportResult CsvExportFromDBThread::writeFiles(Cursors& cursors, const QMap<int, QString>& curves,
                                               QStringList& files)
{
    if (m_device) {
        CsvParts parts(*m_store, *m_device, m_separator, m_header, curves);
        return writeParts(files, cursors, parts);
    }
    CsvParts parts(*m_store, m_path, m_separator, m_header, curves);
    return writeParts(files, cursors, parts);
}

ExportResult CsvExportFromDBThread::writeParts(QStringList& files, Cursors& cursors,
                                               CsvParts& parts)
{
    if (!parts.openNext()) {
        qCritical() << "[导出线程] 创建CSV文件失败：" << CurveDataDB::partFilePath(m_path, 1);
        return ExportFileError;
    }
    m_rowNumber = 1;
    m_rowsInPart = 0;
    ExportResult result = writeRows(cursors, parts);
    parts.close();
    if (result == ExportSuccess && !parts.isWhole()) {
        result = failedToWrite();
    }
    if (result == ExportSuccess) {
        parts.keep();
        files = parts.listedFiles();
    }
    return result;
}

/// Writes block after block until no cursor has a sample, while the next blocks are being read.
ExportResult CsvExportFromDBThread::writeRows(Cursors& cursors, CsvParts& parts)
{
    CsvRows rows(m_separator);
    BlockReader reader(cursors, static_cast<std::size_t>(m_rowsPerBlock), m_stopRequested);
    SampleBlock block;
    while (!m_stopRequested) {
        const bool complete = reader.take(block);
        if (m_stopRequested) {
            break;
        }
        if (!complete) {
            return failedToRead();
        }
        if (block.rows() == 0) {
            parts.write(rows.text());
            qDebug() << "[导出线程] 所有曲线数据导出完成";
            return ExportSuccess;
        }
        const ExportResult result = writeBlock(block, rows, parts);
        if (result != ExportSuccess) {
            return result;
        }
    }
    return cancelled();
}

ExportResult CsvExportFromDBThread::cancelled()
{
    qDebug() << "[导出线程] 收到停止信号，终止导出";
    return ExportCancelled;
}

ExportResult CsvExportFromDBThread::failedToRead()
{
    qCritical() << "[导出线程] 读取数据库失败，导出终止";
    return ExportDbError;
}

ExportResult CsvExportFromDBThread::failedToWrite()
{
    qCritical() << "[导出线程] 写入CSV行失败";
    return ExportWriteError;
}

/// Writes the rows of a block until a stop is requested.
ExportResult CsvExportFromDBThread::writeBlock(const SampleBlock& block, CsvRows& rows,
                                               CsvParts& parts)
{
    const std::size_t count = block.rows();
    for (std::size_t row = 0; row < count && !m_stopRequested; ++row) {
        if (!rows.writeCsvRow(m_rowNumber, block, row) || !parts.isWhole()) {
            return failedToWrite();
        }
        const ExportResult result = countRow(rows, parts);
        if (result != ExportSuccess) {
            return result;
        }
    }
    return ExportSuccess;
}

/// After each row: progress, flushes and parts.
ExportResult CsvExportFromDBThread::countRow(CsvRows& rows, CsvParts& parts)
{
    ++m_rowsInPart;
    if ((m_rowNumber + 1) % kRowsPerProgress == 0) {
        emit exportProgress(m_rowNumber, kUnknownTotal);
    }
    ++m_rowNumber;

    const bool flushDue = m_rowsInPart % kRowsPerFlush == 0;
    const bool partFull = m_rowsInPart >= m_rowsPerPart;
    if (flushDue || partFull || rows.text().size() >= kWriteBytes) {
        parts.write(rows.text());
        rows.clear();
    }
    if (flushDue) {
        parts.flush();
    }
    if (!partFull) {
        return ExportSuccess;
    }
    parts.close();
    if (!parts.isWhole()) {
        return failedToWrite();
    }
    if (!parts.openNext()) {
        qCritical() << "[导出线程] 创建CSV分片失败："
                    << CurveDataDB::partFilePath(m_path, parts.listedFiles().size() + 1);
        return ExportFileError;
    }
    m_rowsInPart = 0;
    return ExportSuccess;
}
