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

/// What one export is asked for.
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

/// What came of it.
struct ExportOutcome
{
    ExportResult result = ExportSuccess;
    QStringList files;
    int finished = 0; ///< How often the end was told.
    QVector<qlonglong> progress;
    QVector<qlonglong> totals;
    QStringList log; ///< With levels.
};

/// Runs an export to its end and keeps its log lines off the terminal. `atProgress` is called in
/// the exporting thread, between two rows, each time progress is told.
ExportOutcome runExport(const ExportOrder& order,
                        const std::function<void(CsvExportFromDBThread&)>& atProgress = {});

/// The contents of the parts in a directory, by their numbers.
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
/// What was written is remembered, so that the export that it must give can be told.
class ExportScene
{
public:
    ExportScene();

    TestStore& store() { return *m_store; }
    QString outputDirectory() const { return m_output.path(); }

    /// Makes curves known to the store, with these ids, through today's file.
    void know(const QMap<int, QString>& curves);

    /// Writes curves to the file of a day, "yyyyMMdd", in batches of six hours from its local
    /// midnight.
    void addDay(const char* key, const QVector<DayCurve>& curves);

    /// Stores a reading through the store and remembers it.
    void append(int curveId, qint64 timestamp, double value);

    /// What of a curve was stored and must not come out.
    void forget(const QString& name, qint64 start, qint64 end);

    /// An export of these curves to the output directory.
    ExportOrder order(const QList<int>& ids, qint64 start, qint64 end);

    /// The parts that an order must give.
    QVector<QByteArray> expectedParts(const ExportOrder& order);

    /// Runs the order; gives what differs from the parts that it must give, empty if nothing does.
    /// The output directory is emptied.
    QString difference(const ExportOrder& order);

private:
    QTemporaryDir m_output;
    std::unique_ptr<TestStore> m_store;
    QMap<QString, QVector<QPointF>> m_samples;
};
