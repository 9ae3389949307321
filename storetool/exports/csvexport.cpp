#include "storetool/exports/csvexport.h"

#include "export/csvexportfromdbthread.h"
#include "storetool/console/interrupt.h"
#include "storetool/console/progressline.h"

#include <QEventLoop>
#include <QFileDevice>
#include <QTimer>

#include <chrono>

namespace scnstore {
namespace {

constexpr std::chrono::milliseconds kInterruptCheck{50};

ExportResult run(CsvExportFromDBThread& engine, int target = -1)
{
    ExportResult result = ExportCancelled;
    ProgressLine progress(QStringLiteral("rows"), target);
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&engine] {
        if (isInterrupted()) {
            engine.requestStop();
        }
    });
    QObject::connect(&engine, &CsvExportFromDBThread::exportProgress, &loop,
                     [&progress](qlonglong rows) { progress.show(rows); });
    QObject::connect(&engine, &CsvExportFromDBThread::exportFinished, &loop,
                     [&loop, &result](ExportResult outcome) {
                         result = outcome;
                         loop.quit();
                     });
    check.start(kInterruptCheck);
    engine.startExport();
    loop.exec();
    return result;
}

} // namespace

ExportResult exportToDevice(const ExportJob& job, QFileDevice& device)
{
    CsvExportFromDBThread engine(&job.store, job.curves, {}, job.separator, job.header,
                                 job.times.start, job.times.end);
    engine.setDevice(&device);
    return run(engine, device.handle());
}

ExportResult exportToParts(const ExportJob& job, const QString& path)
{
    CsvExportFromDBThread engine(&job.store, job.curves, path, job.separator, job.header,
                                 job.times.start, job.times.end);
    return run(engine);
}

} // namespace scnstore
