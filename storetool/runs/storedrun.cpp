#include "storetool/runs/storedrun.h"

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
    }
    return run;
}

} // namespace scnstore
