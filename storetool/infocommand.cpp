#include "storetool/infocommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/openrun.h"
#include "storetool/runs/runsummary.h"

#include <QJsonArray>

namespace scnstore {
namespace {

QString valueText(double value)
{
    constexpr int kDigits = 10;
    return QString::number(value, 'g', kDigits);
}

QDateTime timeOf(const CurveSummary& curve, qint64 CurveSummary::*member)
{
    return curve.readings > 0 ? QDateTime::fromMSecsSinceEpoch(curve.*member) : QDateTime();
}

QString textOf(const StoredRun& run, const RunSummary& summary)
{
    const auto line = [](const char* label, const QString& text) -> QString {
        constexpr int kLabelWidth = 12;
        return QString::fromLatin1(label).leftJustified(kLabelWidth) + shown(text) +
               QLatin1Char('\n');
    };
    QString text = line("Run", run.directory) + line("Serial", run.serial);
    if (!run.instrument.isEmpty()) {
        text += line("Instrument", run.instrument);
    }
    if (!run.source.isEmpty()) {
        text += line("Kept from", run.source);
    }
    text += line("Start", timeText(summary.startOf(run))) + line("End", timeText(summary.end())) +
            line("Readings", QString::number(summary.readings)) +
            line("Bytes", QString::number(summary.bytes));
    QVector<QStringList> files{{QStringLiteral("FILE"), QStringLiteral("BYTES")}};
    for (const FileSummary& file : summary.files) {
        files.append({file.name, QString::number(file.bytes)});
    }
    QVector<QStringList> curves{{QStringLiteral("CURVE"), QStringLiteral("READINGS"),
                                 QStringLiteral("FIRST"), QStringLiteral("LAST"),
                                 QStringLiteral("LOWEST"), QStringLiteral("HIGHEST")}};
    for (auto curve = summary.curves.cbegin(); curve != summary.curves.cend(); ++curve) {
        const bool isEmpty = curve->readings == 0;
        curves.append({curve.key(), QString::number(curve->readings),
                       timeText(timeOf(*curve, &CurveSummary::first)),
                       timeText(timeOf(*curve, &CurveSummary::last)),
                       isEmpty ? QStringLiteral("-") : valueText(curve->lowest),
                       isEmpty ? QStringLiteral("-") : valueText(curve->highest)});
    }
    return text + QLatin1Char('\n') + tableText(files, {1}) + QLatin1Char('\n') +
           tableText(curves, {1, 4, 5});
}

QJsonObject jsonOf(const StoredRun& run, const RunSummary& summary)
{
    QJsonArray files;
    for (const FileSummary& file : summary.files) {
        files.append(QJsonObject{{QStringLiteral("file"), file.name},
                                 {QStringLiteral("bytes"), file.bytes}});
    }
    QJsonArray curves;
    for (auto curve = summary.curves.cbegin(); curve != summary.curves.cend(); ++curve) {
        QJsonObject object{{QStringLiteral("curve"), curve.key()},
                           {QStringLiteral("readings"), curve->readings}};
        if (curve->readings > 0) {
            object.insert(QStringLiteral("first"), timeJson(timeOf(*curve, &CurveSummary::first)));
            object.insert(QStringLiteral("last"), timeJson(timeOf(*curve, &CurveSummary::last)));
            object.insert(QStringLiteral("lowest"), curve->lowest);
            object.insert(QStringLiteral("highest"), curve->highest);
        }
        curves.append(object);
    }
    QJsonObject object{{QStringLiteral("run"), run.directory},
                       {QStringLiteral("serial"), run.serial},
                       {QStringLiteral("instrument"), run.instrument},
                       {QStringLiteral("kept"), run.isKept},
                       {QStringLiteral("source"), run.source},
                       {QStringLiteral("start"), timeJson(summary.startOf(run))},
                       {QStringLiteral("end"), timeJson(summary.end())},
                       {QStringLiteral("readings"), summary.readings},
                       {QStringLiteral("bytes"), summary.bytes},
                       {QStringLiteral("files"), files},
                       {QStringLiteral("curves"), curves}};
    if (!summary.damage.isEmpty()) {
        object.insert(QStringLiteral("damage"), QJsonArray{summary.damage});
    }
    return object;
}

} // namespace

int runInfoCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Describes a run: its files and its curves."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Prints JSON."));
    parser.addOption(json);
    addRunArgument(parser);
    if (const std::optional<int> end = readArguments(parser, arguments, {1, 1})) {
        return *end;
    }
    int status = kFine;
    const auto run = openRun(QStringLiteral("info"), parser, status);
    if (!run) {
        return status;
    }
    const RunSummary summary = summaryOf(run->run(), SummaryDetail::Values);
    if (isInterrupted()) {
        return fail(kFailed, QStringLiteral("info: interrupted."));
    }
    const bool isDamaged = !summary.damage.isEmpty();
    const std::optional<QString> excuse = run->watch().excuseFor(isDamaged && summary.metLock);
    if (excuse) {
        return refuseRun(QStringLiteral("info"), parser, run->run(), kFailed, *excuse);
    }
    if (isDamaged) {
        fail(kDamaged,
             QStringLiteral("info: %1. 'scn4070a-store check' tells more.").arg(summary.damage));
    }
    const bool isPrinted = parser.isSet(json) ? printJson(jsonOf(run->run(), summary))
                                              : isDamaged || print(textOf(run->run(), summary));
    if (!isPrinted) {
        return fail(kFailed, QStringLiteral("info: the standard output cannot be written."));
    }
    return isDamaged ? kDamaged : kFine;
}

} // namespace scnstore
