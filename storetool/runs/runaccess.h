#pragma once

#include "storetool/runs/storedrun.h"

#include <QSet>
#include <QString>

#include <optional>

namespace scnstore {

/// Why the files of a run must not be opened.
struct RunRefusal
{
    QString sentence;
    bool isForNow; ///< The run is not over, or its program still closes it.
};

/// Nothing if the files of a run may be opened. SQLite must not meet one file under two names: it would
/// miss the WAL that lies beside the other name, and the locks.
/// Call it before any file of the run is open in this process.
std::optional<RunRefusal> refusalOf(const StoredRun& run);

/// Which file of the run the user has no right to read, as a sentence; nothing if there is none. That is
/// no damage.
std::optional<QString> missingRightOf(const StoredRun& run);

/// Whether another process has a day file open, under whatever name. Asking drops the locks that this process
/// has on it, so it must not have the file open.
bool isOpenElsewhere(const QString& path);

/// Whether that is so and the file was deleted or written just now. The same holds for asking.
bool isBeingClosed(const QString& path);

/// Leaves a kept run as it was found: removes the side files that SQLite creates to read it. Lives
/// longer than everything that has its files open.
class SideFiles
{
public:
    explicit SideFiles(const StoredRun& run);
    ~SideFiles();
    SideFiles(const SideFiles&) = delete;
    SideFiles& operator=(const SideFiles&) = delete;

private:
    static QStringList in(const QString& directory);

    StoredRun m_run;
    QStringList m_found;
};

} // namespace scnstore
