#include "storetool/exportcommand.h"

#include "export/exportrequest.h"
#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/console/outputfile.h"
#include "storetool/exports/csvexport.h"
#include "storetool/exports/longexport.h"
#include "storetool/runs/openrun.h"
#include "storetool/runs/runoutput.h"
#include "storetool/runs/runstore.h"

#include <QDir>
#include <QFileInfo>

namespace scnstore {
namespace {

const QString kInterrupted = QStringLiteral("interrupted; no file is left.");
QCommandLineOption valued(const char* name, const char* description, const char* value,
                          const QString& defaultValue = {})
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              QString::fromLatin1(value), defaultValue);
}

/// The command's options.
struct ExportOptions
{
    QCommandLineOption separator = valued("separator", "Stands between fields: a text, or 'tab'.",
                                          "text", QStringLiteral(","));
    QCommandLineOption curves =
        valued("curves", "Channels, ranges of them (101:110) and names of curves, between commas.",
               "list");
    QCommandLineOption from = valued("from", "First moment, 2026-01-12 07:30:00.", "time");
    QCommandLineOption to = valued("to", "Last moment.", "time");
    QCommandLineOption output{{QStringLiteral("o"), QStringLiteral("output")},
                              QStringLiteral("File to write, '-' for the standard output."),
                              QStringLiteral("file"),
                              QStringLiteral("-")};
    QCommandLineOption parts = valued(
        "parts", "Folder to write the program's own files to, of a million rows each.", "folder");
    QCommandLineOption name = valued("name", "Middle part of their names.", "text");
    QCommandLineOption isLong{QStringLiteral("long"),
                              QStringLiteral("One reading a line: time, channel, value, unit.")};
    QCommandLineOption address =
        valued("address", "Resource of the instrument in the header.", "text");
    QCommandLineOption model =
        valued("model", "Model in the header.", "text", QStringLiteral("SCN4070A"));
    QCommandLineOption serial = valued("serial", "Serial number in the header.", "text");

    void addTo(QCommandLineParser& parser) const
    {
        parser.addOptions(
            {separator, curves, from, to, output, parts, name, isLong, address, model, serial});
    }
};

/// One call of the command.
class ExportCall
{
public:
    ExportCall(const QCommandLineParser& parser, const ExportOptions& options)
        : m_parser(parser)
        , m_options(options)
    {
    }

    int run() const;

private:
    QString value(const QCommandLineOption& option) const { return m_parser.value(option); }
    QString separator() const;
    QString identity(const StoredRun& run) const;
    QMap<QString, QString> header(const StoredRun& run, const TimeSelection& times) const;
    int exportRun(const OpenRun& open, const RunBounds& bounds) const;
    int writeParts(const ExportJob& job, const OpenRun& open) const;
    int writeOutput(const ExportJob& job, const OpenRun& open) const;

    const QCommandLineParser& m_parser;
    const ExportOptions& m_options;
};

int failExport(ExitCode code, const QString& sentence)
{
    return fail(code, QStringLiteral("export: ") + sentence);
}

/// The exit code of an export, after a sentence if it has failed. `place` is where it wrote to.
int endOf(ExportResult result, const OpenRun& open, const QString& place)
{
    switch (result) {
    case ExportSuccess:
        return kFine;
    case ExportNoData:
        return failExport(kFailed, QStringLiteral("no reading lies in that time."));
    case ExportFileError:
        return failExport(kFailed, QStringLiteral("no file can be created in %1.").arg(place));
    case ExportWriteError:
        return failExport(kFailed,
                          QStringLiteral("%1 cannot be written; is the disk full?").arg(place));
    case ExportCancelled:
        return failExport(kFailed, kInterrupted);
    case ExportDbError:
        break;
    }
    if (const std::optional<QString> excuse = open.excuse()) {
        return failExport(kFailed, *excuse);
    }
    return failExport(kDamaged, QStringLiteral("the run cannot be read to its end: it is damaged. "
                                               "'scn4070a-store check' tells more."));
}

QString ExportCall::separator() const
{
    const QString text = value(m_options.separator);
    return text == QLatin1String("tab") || text == QLatin1String("\\t") ? QStringLiteral("\t")
                                                                        : text;
}

/// As the instrument would tell it: "maker model serial".
QString ExportCall::identity(const StoredRun& run) const
{
    const QString serial = m_parser.isSet(m_options.serial) ? value(m_options.serial) : run.serial;
    return QStringLiteral("SCN %1 %2").arg(value(m_options.model), serial);
}

QMap<QString, QString> ExportCall::header(const StoredRun& run, const TimeSelection& times) const
{
    const QString address =
        m_parser.isSet(m_options.address) ? value(m_options.address) : run.instrument;
    return exportHeader(address, identity(run), times.startText, times.endText);
}

int ExportCall::run() const
{
    if (m_parser.isSet(m_options.parts) &&
        (m_parser.isSet(m_options.output) || m_parser.isSet(m_options.isLong))) {
        return failExport(kFailed,
                          QStringLiteral("--parts goes with neither --output nor --long."));
    }
    if (separator().isEmpty()) {
        return failExport(kFailed, QStringLiteral("--separator takes a text that is not empty."));
    }
    int status = kFine;
    const auto open = openRun(QStringLiteral("export"), m_parser, status);
    if (!open) {
        return status;
    }
    if (const auto refusal = outputRefusalOf(open->run(), value(m_options.output))) {
        return failExport(kFailed, *refusal);
    }
    BoundsFailure failure;
    const std::optional<RunBounds> bounds = boundsOf(open->run(), failure);
    if (isInterrupted()) {
        return failExport(kFailed, kInterrupted);
    }
    if (!bounds) {
        const std::optional<QString> excuse = open->watch().excuseFor(failure.metLock);
        return excuse ? failExport(kFailed, *excuse) : failExport(kDamaged, failure.sentence);
    }
    if (!bounds->hasReadings()) {
        return failExport(kFailed, QStringLiteral("the run has no readings."));
    }
    return exportRun(*open, *bounds);
}

int ExportCall::exportRun(const OpenRun& open, const RunBounds& bounds) const
{
    const StoredRun& run = open.run();
    QString sentence;
    RunStore store(run);
    const std::optional<QList<int>> curves =
        selectedCurves(store.store().curveNames(), value(m_options.curves), sentence);
    const std::optional<TimeSelection> times =
        curves ? selectedTimes(bounds, value(m_options.from), value(m_options.to), sentence)
               : std::nullopt;
    if (!times) {
        return failExport(kFailed, sentence);
    }
    const ExportJob job{store.store(), *curves, *times, separator(), header(run, *times)};
    return m_parser.isSet(m_options.parts) ? writeParts(job, open) : writeOutput(job, open);
}

int ExportCall::writeParts(const ExportJob& job, const OpenRun& open) const
{
    const QString folder = value(m_options.parts);
    const QString path = exportFilePath(folder, identity(open.run()), value(m_options.name));
    return endOf(exportToParts(job, path), open, folder);
}

int ExportCall::writeOutput(const ExportJob& job, const OpenRun& open) const
{
    OutputFile output(value(m_options.output));
    const QString place =
        output.isStandardOutput() ? QStringLiteral("the standard output") : value(m_options.output);
    if (!output.open()) {
        return failExport(kFailed,
                          QStringLiteral("%1 cannot be written: %2.").arg(place, output.failure()));
    }
    const ExportResult result = m_parser.isSet(m_options.isLong)
                                    ? LongExport(job, output.device()).run()
                                    : exportToDevice(job, output.device());
    if (result == ExportWriteError && output.isStandardOutput() && isOutputUnwanted()) {
        return kFailed;
    }
    if (result != ExportSuccess || output.finish()) {
        return endOf(result, open, place);
    }
    return failExport(kFailed,
                      QStringLiteral("%1 cannot be written: %2.").arg(place, output.failure()));
}

} // namespace

int runExportCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes a run as text, in the form of the program's own exports: one row for the "
        "n-th reading of each curve."));
    const ExportOptions options;
    options.addTo(parser);
    addRunArgument(parser);
    if (const std::optional<int> end = readArguments(parser, arguments, {1, 1})) {
        return *end;
    }
    return ExportCall(parser, options).run();
}

} // namespace scnstore
