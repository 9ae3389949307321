#include "storetool/runs/selection.h"

#include "export/exportrequest.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QStringList>

namespace scnstore {
namespace {

int channelOf(const QString& curve)
{
    return curve.section(QLatin1Char('('), 0, 0).toInt();
}

/// Whether one entry of a list names the curve.
bool isNamed(const QString& curve, const QString& entry)
{
    const int channel = channelOf(curve);
    const int first = entry.section(QLatin1Char(':'), 0, 0).toInt();
    const int last = entry.section(QLatin1Char(':'), -1).toInt();
    return curve == entry || (channel > 0 && channel >= first && channel <= last);
}

/// Whether an entry was meant as a range of channels and is none.
bool isBrokenRange(const QString& entry)
{
    static const QRegularExpression form(QStringLiteral("^(\\d+)\\s*:\\s*(\\d+)$"));
    const QRegularExpressionMatch range = form.match(entry);
    return entry.contains(QLatin1Char(':')) &&
           (!range.hasMatch() || range.captured(1).toInt() > range.captured(2).toInt());
}

/// A time as it was typed.
struct TypedTime
{
    QDateTime time;
    bool isExact = false; ///< It has milliseconds or an offset.
};

TypedTime typedTime(const QString& text)
{
    static const QRegularExpression hasOffset(QStringLiteral("(Z|[+-]\\d\\d:?\\d\\d)$"));
    const QString iso = QString(text).replace(QLatin1Char(' '), QLatin1Char('T'));
    if (text.contains(QLatin1Char(':')) && text.indexOf(hasOffset) >= 0) {
        return {QDateTime::fromString(iso, Qt::ISODateWithMs), true};
    }
    for (const char* format :
         {"yyyy-MM-ddThh:mm:ss", "yyyy-MM-ddThh:mm", "yyyy-MM-dd", "yyyyTMMTddThhTmmTss"}) {
        const QDateTime time = QDateTime::fromString(iso, QString::fromLatin1(format));
        if (time.isValid()) {
            return {time, false};
        }
    }
    return {QDateTime::fromString(iso, QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz")), true};
}

QString runText(const QDateTime& time)
{
    return time.toLocalTime().toString(QStringLiteral("yyyy MM dd hh mm ss"));
}

} // namespace

std::optional<QList<int>> selectedCurves(const QMap<int, QString>& curves, const QString& list,
                                         QString& sentence)
{
    if (list.isEmpty()) {
        return curves.keys();
    }
    QList<int> ids;
    for (const QString& entry : list.split(QLatin1Char(','))) {
        if (isBrokenRange(entry.trimmed()) && !curves.values().contains(entry.trimmed())) {
            sentence = QStringLiteral("'%1' is no range of channels. Write it as 101:110.")
                           .arg(entry.trimmed());
            return std::nullopt;
        }
        const int before = ids.size();
        for (auto curve = curves.cbegin(); curve != curves.cend(); ++curve) {
            if (isNamed(*curve, entry.trimmed())) {
                ids.append(curve.key());
            }
        }
        if (ids.size() == before) {
            sentence = QStringLiteral("the run has no curve '%1'. It has %2.")
                           .arg(entry, QStringList(curves.values()).join(QStringLiteral(", ")));
            return std::nullopt;
        }
    }
    return ids;
}

std::optional<TimeSelection> selectedTimes(const RunBounds& bounds, const QString& from,
                                           const QString& to, QString& sentence)
{
    for (const QString& text : {from, to}) {
        if (!text.isEmpty() && !typedTime(text).time.isValid()) {
            sentence =
                QStringLiteral("'%1' is no time. Write it as 2026-01-12 07:30:00.").arg(text);
            return std::nullopt;
        }
    }
    const TypedTime start = from.isEmpty()
                                ? TypedTime{QDateTime::fromMSecsSinceEpoch(bounds.first), true}
                                : typedTime(from);
    const TypedTime end =
        to.isEmpty() ? TypedTime{QDateTime::fromMSecsSinceEpoch(bounds.last), true} : typedTime(to);
    TimeSelection selection{start.time.toMSecsSinceEpoch(), end.time.toMSecsSinceEpoch(),
                            runText(start.time), runText(end.time)};
    // In the hour that autumn repeats, the program's rule decides.
    const scn::ExportRange range = exportRange(selection.startText, selection.endText);
    selection.start = start.isExact ? selection.start : range.start;
    selection.end = end.isExact ? selection.end : range.end;
    if (selection.start > selection.end) {
        sentence = from.isEmpty() || to.isEmpty()
                       ? QStringLiteral("no reading lies in that time.")
                       : QStringLiteral("the time range ends before it begins.");
        return std::nullopt;
    }
    return selection;
}

} // namespace scnstore
