#pragma once

#include "storetool/runs/runbounds.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace scnstore {

/// The ids of the curves that a list names: channels "101", ranges of them "101:110", or whole names
/// "101(Vdc)", between commas. All for an empty list. Nothing, and a sentence, if it names a curve that
/// is not there.
std::optional<QList<int>> selectedCurves(const QMap<int, QString>& curves, const QString& list,
                                         QString& sentence);

/// The part of a run between two times, both included.
struct TimeSelection
{
    qint64 start = 0; ///< Ms since the epoch.
    qint64 end = 0;
    QString startText; ///< As the program's exports write them, "yyyy MM dd hh mm ss".
    QString endText;
};

/// What lies between two times of the command line, local ones unless they have an offset; an empty one
/// stands for the bound of the run. A time without milliseconds means the first of its second, for both
/// ends, as in the program's exports. Nothing, and a sentence, if a text is no time.
std::optional<TimeSelection> selectedTimes(const RunBounds& bounds, const QString& from,
                                           const QString& to, QString& sentence);

} // namespace scnstore
