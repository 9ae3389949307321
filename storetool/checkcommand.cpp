#include "storetool/checkcommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/openrun.h"
#include "storetool/runs/runcheck.h"

#include <QJsonArray>

namespace scnstore {
namespace {

constexpr int kUsualGapFactor = 10;

QDateTime timeOf(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time);
}

QString seconds(qint64 milliseconds)
{
    constexpr double kSecondMs = 1000.0;
    return QString::number(static_cast<double>(milliseconds) / kSecondMs) + QStringLiteral(" s");
}

QString textOf(const CheckedRun& checked, int gapFactor)
{
    QVector<QStringList> tables{{QStringLiteral("FILE"), QStringLiteral("CURVE"),
                                 QStringLiteral("READINGS"), QStringLiteral("DOUBLES"),
                                 QStringLiteral("TABLE")}};
    for (const CheckedFile& file : checked.files) {
        for (const CheckedTable& table : file.tables) {
            tables.append({file.name, table.curve, QString::number(table.readings),
                           QString::number(table.doubles), table.name});
        }
    }
    QVector<QStringList> curves{{QStringLiteral("CURVE"), QStringLiteral("READINGS"),
                                 QStringLiteral("USUALLY EVERY"), QStringLiteral("GAPS")}};
    QString gaps;
    for (auto curve = checked.curves.cbegin(); curve != checked.curves.cend(); ++curve) {
        const IntervalMeter& intervals = curve->intervals;
        curves.append({curve.key(), QString::number(curve->readings), seconds(intervals.usual()),
                       QString::number(intervals.gaps(gapFactor))});
        for (const ReadingGap& gap : intervals.longestGaps(gapFactor)) {
            gaps += QStringLiteral("%1: none for %2 after %3\n")
                        .arg(shown(curve.key()), seconds(gap.length()), timeText(timeOf(gap.from)));
        }
    }
    QString notes;
    for (const QString& note : checked.notes) {
        notes += QStringLiteral("Note: %1.\n").arg(shown(note));
    }
    const QString verdict = checked.damage.isEmpty() ? QStringLiteral("The run is sound.\n")
                                                     : QStringLiteral("The run is damaged.\n");
    return tableText(tables, {2, 3}) + QLatin1Char('\n') + tableText(curves, {1, 2, 3}) +
           QLatin1Char('\n') + gaps + notes + verdict;
}

QJsonArray filesJson(const CheckedRun& checked)
{
    QJsonArray files;
    for (const CheckedFile& file : checked.files) {
        QJsonArray tables;
        for (const CheckedTable& table : file.tables) {
            tables.append(QJsonObject{{QStringLiteral("table"), table.name},
                                      {QStringLiteral("curve"), table.curve},
                                      {QStringLiteral("readings"), table.readings},
                                      {QStringLiteral("doubles"), table.doubles}});
        }
        files.append(QJsonObject{{QStringLiteral("file"), file.name},
                                 {QStringLiteral("bytes"), file.bytes},
                                 {QStringLiteral("tables"), tables}});
    }
    return files;
}

QJsonArray curvesJson(const CheckedRun& checked, int gapFactor)
{
    QJsonArray curves;
    for (auto curve = checked.curves.cbegin(); curve != checked.curves.cend(); ++curve) {
        QJsonArray gaps;
        for (const ReadingGap& gap : curve->intervals.longestGaps(gapFactor)) {
            gaps.append(QJsonObject{{QStringLiteral("from"), timeJson(timeOf(gap.from))},
                                    {QStringLiteral("to"), timeJson(timeOf(gap.to))},
                                    {QStringLiteral("milliseconds"), gap.length()}});
        }
        curves.append(QJsonObject{{QStringLiteral("curve"), curve.key()},
                                  {QStringLiteral("readings"), curve->readings},
                                  {QStringLiteral("usualMilliseconds"), curve->intervals.usual()},
                                  {QStringLiteral("gaps"), curve->intervals.gaps(gapFactor)},
                                  {QStringLiteral("longestGaps"), gaps}});
    }
    return curves;
}

} // namespace

int runCheckCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads everything in a run and says what is wrong with it: what SQLite finds in "
        "the files, tables that the catalogue lacks or that are missing, readings of "
        "the same millisecond. A gap is an interval of more than ten times the median "
        "of the curve's intervals; gaps are told, but are no damage."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Prints JSON."));
    const QCommandLineOption gap(QStringLiteral("gap"),
                                 QStringLiteral("What makes an interval a gap, in medians."),
                                 QStringLiteral("factor"), QString::number(kUsualGapFactor));
    parser.addOptions({json, gap});
    addRunArgument(parser);
    if (const std::optional<int> end = readArguments(parser, arguments, {1, 1})) {
        return *end;
    }
    const int gapFactor = parser.value(gap).toInt();
    if (gapFactor < 1) {
        return fail(kFailed,
                    QStringLiteral("check: --gap takes a whole number from 1 on, not '%1'.")
                        .arg(parser.value(gap)));
    }
    int status = kFine;
    const auto run = openRun(QStringLiteral("check"), parser, status);
    if (!run) {
        return status;
    }
    const CheckedRun checked = checkRun(run->run());
    if (isInterrupted()) {
        return fail(kFailed, QStringLiteral("check: interrupted."));
    }
    const bool isLocked = checked.metLock && !checked.damage.isEmpty();
    if (const std::optional<QString> excuse = run->watch().excuseFor(isLocked)) {
        return refuseRun(QStringLiteral("check"), parser, run->run(), kFailed, *excuse);
    }
    const bool isPrinted =
        parser.isSet(json)
            ? printJson({{QStringLiteral("run"), run->run().directory},
                         {QStringLiteral("files"), filesJson(checked)},
                         {QStringLiteral("curves"), curvesJson(checked, gapFactor)},
                         {QStringLiteral("notes"), QJsonArray::fromStringList(checked.notes)},
                         {QStringLiteral("damage"), QJsonArray::fromStringList(checked.damage)}})
            : print(textOf(checked, gapFactor));
    for (const QString& damage : checked.damage) {
        fail(kDamaged, QStringLiteral("check: %1.").arg(damage));
    }
    if (!isPrinted) {
        return fail(kFailed, QStringLiteral("check: the standard output cannot be written."));
    }
    return checked.damage.isEmpty() ? kFine : kDamaged;
}

} // namespace scnstore
