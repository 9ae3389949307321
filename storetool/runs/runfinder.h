#pragma once

#include "storetool/runs/storedrun.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace scnstore {

/// The folders that the launcher starts programs in, and so those of the data: that of the installed
/// or built program, and those of the user.
QStringList defaultFolders();

/// What lies below a folder.
struct FoundRuns
{
    QVector<StoredRun> runs;
    QStringList closed; ///< The folders that there is no right to look into.
};

/// The runs in a folder and up to four folders below it. A folder with day files is a run, whatever its
/// name; there are no other runs in a data directory or a kept run. Links are not followed.
FoundRuns runsBelow(const QString& folder);

/// The run that a text of the command line names: the path of a directory, or "<serial>/<start>" or
/// the name of a data directory in one of the default folders. Nothing, and a sentence, if there is
/// none, or more than one of that short name.
std::optional<StoredRun> findRun(const QString& text, QString& sentence);

} // namespace scnstore
