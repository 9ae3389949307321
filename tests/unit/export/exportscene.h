#pragma once

#include "export/exportresult.h"
#include "plaincsv.h"
#include "teststore.h"

#include <QList>
#include <QMap>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

#include <functional>
#include <memory>

class CsvExportFromDBThread;

/// The parameters of one export.
struct ExportOrder
{
    CurveDataDB* store = nullptr;
    QList<int> ids;
    QString path;
    qint64 start = 0;
    qint64 end = 0;
    QString separator = QStringLiteral(",");
    QMap<QString, QString> header;
    int rowsPerPart = 0;  ///< 0: as many as there are unless set
    int rowsPerBlock = 0; ///< 0: as many as there are unless set
};

/// The outcome.
struct ExportOutcome
{
    ExportResult result = ExportSuccess;
    QStringList files;
    int finished = 0; ///< How often the end was reported.
    QVector<qlonglong> progress;
    QVector<qlonglong> totals;
    QStringList log; ///< With levels.
};

/// Runs an export to its end, keeping its log lines off the terminal. `atProgress` is called in the
/// exporting thread, between two rows, at each progress report.
ExportOutcome runExport(const ExportOrder& order,
                        const std::function<void(CsvExportFromDBThread&)>& atProgress = {});

/// The contents of the parts in a directory, by number.
QMap<int, QByteArray> partsIn(const QString& directory);

/// Samples `step` milliseconds apart.
QVector<QPointF> samplesFrom(qint64 first, int count, qint64 step = 1000);

/// A curve in a day file.
struct DayCurve
{
    int id; ///< In that file.
    QString name;
    QVector<QPointF> samples;
};

/// A store at noon of 2026-03-10, whose past files the test writes, and a directory to export to.
/// It remembers what was written, to predict the export.
class ExportScene
{
public:
    ExportScene();

    TestStore& store() { return *m_store; }
    QString outputDirectory() const { return m_output.path(); }

    /// Registers curves with these ids, through today's file.
    void know(const QMap<int, QString>& curves);

    /// Writes curves to the file of a day, "yyyyMMdd", in six-hour batches from its local midnight.
    void addDay(const char* key, const QVector<DayCurve>& curves);

    /// Stores a reading through the store and remembers it.
    void append(int curveId, qint64 timestamp, double value);

    /// The part of a curve that was stored but must not be exported.
    void forget(const QString& name, qint64 start, qint64 end);

    /// An export of these curves to the output directory.
    ExportOrder order(const QList<int>& ids, qint64 start, qint64 end);

    /// The parts an order must produce.
    QVector<QByteArray> expectedParts(const ExportOrder& order);

    /// Runs the order; returns how it differs from the expected parts, empty if it does not. The
    /// output directory is emptied.
    QString difference(const ExportOrder& order);

private:
    QTemporaryDir m_output;
    std::unique_ptr<TestStore> m_store;
    QMap<QString, QVector<QPointF>> m_samples;
};
