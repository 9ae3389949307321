#include "storetool/runs/storedrun.h"

#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"
#include "storage/datadirectory.h"

#include <QFile>
#include <QFileInfo>

namespace scnstore {

QStringList StoredRun::dayFiles() const
{
    return dayFilesIn(directory);
}

bool StoredRun::isDataDirectory() const
{
    return !isKept && scnlauncher::isDataDirectory(directory);
}

bool StoredRun::knowsFileToBeWhole(const QString& path) const
{
    const auto kept = scnlauncher::KeptRun::in(directory);
    const auto facts = scnlauncher::factsOf(path);
    const QString name = QFileInfo(path).fileName();
    return kept && facts && kept->files.value(name) == QString::number(facts->number) &&
           !kept->files.contains(name + QStringLiteral("-wal"));
}

StoredRun StoredRun::in(const QString& directory)
{
    StoredRun run;
    run.directory = QFileInfo(directory).canonicalFilePath();
    run.serial = scnlauncher::serialOfDataDirectory(run.directory);
    run.isKept = QFile::exists(scnlauncher::keptRunFacts(run.directory));
    if (const auto kept = scnlauncher::KeptRun::in(run.directory)) {
        run.instrument = kept->instrument;
        run.serial = kept->serial;
        run.start = kept->start;
        run.source = kept->source;
    } else if (run.isKept) { // its facts cannot be read
        run.serial = scnlauncher::serialOfKeptRun(run.directory);
    }
    return run;
}

} // namespace scnstore
