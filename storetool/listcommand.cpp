#include "storetool/listcommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runaccess.h"
#include "storetool/runs/runfinder.h"
#include "storetool/runs/runsummary.h"

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

ListedRun listedRun(const StoredRun& run)
{
    const std::optional<QString> missing = missingRightOf(run);
    ListedRun listed{run, missing ? *missing : refusalOf(run).value_or(QString()), {}};
    if (listed.refusal.isEmpty()) {
        const SideFiles sideFiles(run);
        listed.summary = summaryOf(run, SummaryDetail::Counts);
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
        object.insert(QStringLiteral("damage"), summary.damage);
    }
    return object;
}

bool printList(const QVector<ListedRun>& runs, bool asJson)
{
    if (asJson) {
        QJsonArray array;
        for (const ListedRun& listed : runs) {
            array.append(jsonOf(listed));
        }
        return printJson({{QStringLiteral("runs"), array}});
    }
    QVector<QStringList> rows{{QStringLiteral("SERIAL"), QStringLiteral("INSTRUMENT"),
                               QStringLiteral("START"), QStringLiteral("END"),
                               QStringLiteral("CURVES"), QStringLiteral("READINGS"),
                               QStringLiteral("BYTES"), QStringLiteral("RUN")}};
    for (const ListedRun& listed : runs) {
        rows.append(rowOf(listed));
    }
    return print(tableText(rows, {4, 5, 6}));
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
    QVector<ListedRun> runs;
    QSet<QString> seen;
    bool isDamaged = false;
    for (const QString& folder : given.isEmpty() ? defaultFolders() : given) {
        for (const StoredRun& run : runsBelow(folder)) {
            if (seen.contains(run.directory)) {
                continue;
            }
            seen.insert(run.directory);
            runs.append(listedRun(run));
            if (isInterrupted()) {
                return fail(kFailed, QStringLiteral("list: interrupted."));
            }
            if (!runs.constLast().summary.damage.isEmpty()) {
                isDamaged = true;
                fail(kDamaged, QStringLiteral("list: ") + runs.constLast().summary.damage);
            }
        }
    }
    if (!printList(runs, parser.isSet(json))) {
        return fail(kFailed, QStringLiteral("list: the standard output cannot be written."));
    }
    return isDamaged ? kDamaged : kFine;
}

} // namespace scnstore
