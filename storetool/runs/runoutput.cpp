#include "storetool/runs/runoutput.h"

#include "launcher/place/fileuse.h"
#include "storage/datadirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace scnstore {
namespace {

const QString kFacts = QStringLiteral("run.json");

/// A day file, or what SQLite puts beside it.
bool isNameOfDayFile(const QString& name)
{
    static const QRegularExpression form(QStringLiteral("^\\d{8}\\.db(-wal|-shm|-journal)?$"));
    return form.match(name).hasMatch();
}

bool isNameInRun(const QFileInfo& place)
{
    return isNameOfDayFile(place.fileName()) ||
           (place.fileName() == kFacts && !dayFilesIn(place.path()).isEmpty());
}

/// Whether it is a file of the run, under whatever name.
bool isFileOf(const StoredRun& run, const QString& path)
{
    const auto facts = scnlauncher::factsOf(path);
    const QFileInfoList files = QDir(run.directory).entryInfoList(QDir::Files);
    return facts && std::any_of(files.cbegin(), files.cend(), [&facts](const QFileInfo& file) {
               const auto own = scnlauncher::factsOf(file.filePath());
               return isNameInRun(file) && own && own->isSameFile(*facts);
           });
}

} // namespace

std::optional<QString> outputRefusalOf(const StoredRun& run, const QString& path)
{
    const QFileInfo given(path);
    // What is written through a link replaces its target.
    const QFileInfo place(given.exists() ? given.canonicalFilePath() : path);
    if (isNameInRun(place) || isFileOf(run, place.filePath())) {
        return QStringLiteral("%1 is a file of a run and is not written. Give another name.")
            .arg(path);
    }
    return std::nullopt;
}

} // namespace scnstore
