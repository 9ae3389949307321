#include "storetool/listcommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runaccess.h"
#include "storetool/runs/runfinder.h"
#include "storetool/runs/runsummary.h"
#include "storetool/runs/runwatch.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QSet>

namespace scnstore {
namespace {

/// One line of the list.
struct ListedRun
{
    StoredRun run;
    QString refusal; ///< Why it was not read.
    RunSummary summary;
};

/// The runs in some folders, and the folders below them that there is no right to look into.
struct RunList
{
    QVector<ListedRun> runs;
    QStringList closed;
};

ListedRun listedRun(const StoredRun& run)
{
    const std::optional<QString> missing = missingRightOf(run);
    const std::optional<RunRefusal> refusal = missing ? std::nullopt : refusalOf(run);
    ListedRun listed{run, missing ? *missing : refusal ? refusal->sentence : QString(), {}};
    if (listed.refusal.isEmpty()) {
        const SideFiles sideFiles(run);
        const RunWatch watch(run);
        listed.summary = summaryOf(run, SummaryDetail::Counts);
        const bool isLocked = listed.summary.metLock && !listed.summary.damage.isEmpty();
        if (const std::optional<QString> excuse = watch.excuseFor(isLocked)) {
            listed.refusal = *excuse;
            listed.summary = {};
        }
    }
    return listed;
}

QStringList rowOf(const ListedRun& listed)
{
    const RunSummary& summary = listed.summary;
    const QString unknown = QStringLiteral("-");
    const bool isRead = listed.refusal.isEmpty();
    const auto number = [&](qint64 value) { return isRead ? QString::number(value) : unknown; };
    return {listed.run.serial,
            listed.run.instrument.isEmpty() ? unknown : listed.run.instrument,
            timeText(summary.startOf(listed.run)),
            timeText(summary.end()),
            number(summary.curves.size()),
            number(summary.readings),
            number(summary.bytes),
            listed.run.directory};
}

QJsonObject jsonOf(const ListedRun& listed)
{
    const RunSummary& summary = listed.summary;
    QJsonObject object{{QStringLiteral("run"), listed.run.directory},
                       {QStringLiteral("serial"), listed.run.serial},
                       {QStringLiteral("instrument"), listed.run.instrument},
                       {QStringLiteral("kept"), listed.run.isKept},
                       {QStringLiteral("start"), timeJson(summary.startOf(listed.run))}};
    if (!listed.refusal.isEmpty()) {
        object.insert(QStringLiteral("refused"), listed.refusal);
        return object;
    }
    object.insert(QStringLiteral("end"), timeJson(summary.end()));
    object.insert(QStringLiteral("curves"), summary.curves.size());
    object.insert(QStringLiteral("readings"), summary.readings);
    object.insert(QStringLiteral("bytes"), summary.bytes);
    if (!summary.damage.isEmpty()) {
        object.insert(QStringLiteral("damage"), QJsonArray{summary.damage});
    }
    return object;
}

/// Ends early if it is interrupted.
RunList listRuns(const QStringList& folders)
{
    RunList list;
    QSet<QString> seen;
    for (const QString& folder : folders) {
        const FoundRuns found = runsBelow(folder);
        list.closed += found.closed;
        for (const StoredRun& run : found.runs) {
            if (isInterrupted()) {
                return list;
            }
            if (!seen.contains(run.directory)) {
                seen.insert(run.directory);
                list.runs.append(listedRun(run));
            }
        }
    }
    return list;
}

bool printList(const RunList& list, bool asJson)
{
    if (asJson) {
        QJsonArray array;
        for (const ListedRun& listed : list.runs) {
            array.append(jsonOf(listed));
        }
        return printJson({{QStringLiteral("runs"), array},
                          {QStringLiteral("closed"), QJsonArray::fromStringList(list.closed)}});
    }
    QVector<QStringList> rows{{QStringLiteral("SERIAL"), QStringLiteral("INSTRUMENT"),
                               QStringLiteral("START"), QStringLiteral("END"),
                               QStringLiteral("CURVES"), QStringLiteral("READINGS"),
                               QStringLiteral("BYTES"), QStringLiteral("RUN")}};
    for (const ListedRun& listed : list.runs) {
        rows.append(rowOf(listed));
    }
    return print(tableText(rows, {4, 5, 6}));
}

/// Says what the list itself does not, and returns the exit code.
ExitCode tellOf(const RunList& list, const QStringList& folders)
{
    ExitCode code = kFine;
    if (list.runs.isEmpty()) {
        fail(code, QStringLiteral("list: there is no run below %1.")
                       .arg(folders.join(QStringLiteral(", "))));
    }
    for (const QString& folder : list.closed) {
        code = kFailed;
        fail(code, QStringLiteral("list: there is no right to look into %1.").arg(folder));
    }
    for (const ListedRun& listed : list.runs) {
        if (!listed.summary.damage.isEmpty()) {
            code = kDamaged;
            fail(code, QStringLiteral("list: %1.").arg(listed.summary.damage));
        }
    }
    return code;
}

} // namespace

int runListCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Lists the runs in DIR and up to four folders below it. Without DIR: in the "
                       "folders where the launcher starts the control program."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Prints JSON."));
    parser.addOption(json);
    parser.addPositionalArgument(QStringLiteral("DIR"), QStringLiteral("Folder to look in."),
                                 QStringLiteral("[DIR]"));
    if (const std::optional<int> end = readArguments(parser, arguments, {0, 1})) {
        return *end;
    }
    const QStringList given = parser.positionalArguments();
    if (!given.isEmpty() && !QFileInfo(given.constFirst()).isDir()) {
        return fail(kFailed,
                    QStringLiteral("list: there is no folder %1.").arg(given.constFirst()));
    }
    catchInterrupts();
    const QStringList folders = given.isEmpty() ? defaultFolders() : given;
    const RunList list = listRuns(folders);
    if (isInterrupted()) {
        return fail(kFailed, QStringLiteral("list: interrupted."));
    }
    if (!printList(list, parser.isSet(json))) {
        return fail(kFailed, QStringLiteral("list: the standard output cannot be written."));
    }
    return tellOf(list, folders);
}

} // namespace scnstore
