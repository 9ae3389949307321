#pragma once

#include <QPointF>
#include <QString>
#include <QVector>

/// Writes a day file by plain SQL on its own connection, so that the store reads what it did not
/// write.
class DayFileWriter
{
public:
    /// Opens or creates the file and its three base tables.
    explicit DayFileWriter(const QString& path);
    ~DayFileWriter();
    DayFileWriter(const DayFileWriter&) = delete;
    DayFileWriter& operator=(const DayFileWriter&) = delete;

    void addCurve(int curveId, const QString& name);

    /// The catalogue row of a batch, without its table.
    void addBatchRow(int curveId, qint64 batchStart, const QString& tableName);

    /// The catalogue row, the table and its points.
    void addBatch(int curveId, qint64 batchStart, const QString& tableName,
                  const QVector<QPointF>& points);

    /// Any other statement. The test fails if it fails.
    void execute(const QString& sql);

    /// "curve_1_batch_20260112_060000_20260112_115959".
    static QString tableName(int curveId, qint64 batchStart);

private:
    QString m_connectionName;
};

constexpr qint64 kBatchMs = 21600000;
constexpr qint64 kHourMs = 3600000;

/// Milliseconds since the epoch of a local time "yyyy-MM-dd hh:mm:ss.zzz".
qint64 localTime(const char* text);
