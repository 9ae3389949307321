#include "storetool/runs/runaccess.h"

#include "launcher/place/fileuse.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace scnstore {
namespace {

const QString kLogEnding = QStringLiteral("-wal");
const QString kIndexEnding = QStringLiteral("-shm");

/// Why a file outside a data directory must not be opened while it has another name; nothing if it has none.
std::optional<RunRefusal> secondNameOf(const StoredRun& run, const QString& path)
{
    const auto facts = scnlauncher::factsOf(path);
    if (!facts || facts->names < 2) {
        return std::nullopt;
    }
    const auto original =
        scnlauncher::factsOf(run.source + QLatin1Char('/') + QFileInfo(path).fileName());
    if (run.source.isEmpty() || (original && original->isSameFile(*facts))) {
        const QString place =
            run.source.isEmpty() ? QStringLiteral("the program's data directory") : run.source;
        return RunRefusal{
            QStringLiteral("%1 is not opened under its second name. Read the run in %2.")
                .arg(path, place),
            true};
    }
    // A program could have it open there. The data directory may hold another run by now.
    return RunRefusal{
        QStringLiteral("%1 has another name, which is not in the run's data directory. "
                       "Copy the run to read it.")
            .arg(path),
        false};
}

/// How long after its last change a file may still be written by the program that deleted it: one by one,
/// it closes what it had open. Who reads for longer, changes nothing.
constexpr qint64 kClosingSeconds = 60;

/// SQLite reads a WAL by an index beside it, which it creates.
bool lacksIndex(const QString& path)
{
    return QFileInfo(path + kLogEnding).size() > 0 && !QFile::exists(path + kIndexEnding) &&
           !QFileInfo(QFileInfo(path).path()).isWritable();
}

} // namespace

bool isOpenElsewhere(const QString& path)
{
    return scnlauncher::isOpenElsewhere(path);
}

bool isBeingClosed(const QString& path)
{
    const auto facts = scnlauncher::factsOf(path);
    return facts && facts->changed.secsTo(QDateTime::currentDateTime()) <= kClosingSeconds &&
           isOpenElsewhere(path);
}

std::optional<RunRefusal> refusalOf(const StoredRun& run)
{
    for (const QString& file : run.dayFiles()) {
        if (lacksIndex(file)) {
            return RunRefusal{
                QStringLiteral("%1 has a WAL that can be read only in a folder that can be "
                               "written. Copy the run to one.")
                    .arg(file),
                false};
        }
        if (run.isDataDirectory()) {
            continue;
        }
        for (const QString& name : QStringList{file, file + kLogEnding}) {
            if (const std::optional<RunRefusal> refusal = secondNameOf(run, name)) {
                return refusal;
            }
        }
        if (isBeingClosed(file)) {
            return RunRefusal{QStringLiteral("%1 is still open in a program that deleted it. Try "
                                             "again in a minute.")
                                  .arg(file),
                              true};
        }
    }
    return std::nullopt;
}

std::optional<QString> missingRightOf(const StoredRun& run)
{
    for (const QString& file : run.dayFiles()) {
        for (const QFileInfo& place : {QFileInfo(file), QFileInfo(file + kLogEnding)}) {
            if (place.exists() && !place.isReadable()) {
                return QStringLiteral("there is no right to read %1.").arg(place.filePath());
            }
        }
    }
    return std::nullopt;
}

SideFiles::SideFiles(const StoredRun& run)
    : m_run(run)
    , m_found(in(run.directory))
{
}

SideFiles::~SideFiles()
{
    if (m_run.isDataDirectory()) {
        return;
    }
    for (const QString& path : in(m_run.directory)) {
        const QString dayFile = path.left(path.lastIndexOf(QLatin1Char('-')));
        // An index that was there may be what an earlier reader had to leave to this one.
        const bool isSpent = path.endsWith(kIndexEnding) || !m_found.contains(path);
        if (isSpent && !isOpenElsewhere(dayFile)) {
            QFile::remove(path);
        }
    }
}

/// Those that hold no readings: each index of a WAL, and empty ones.
QStringList SideFiles::in(const QString& directory)
{
    const QDir folder(directory);
    QStringList paths;
    for (const QFileInfo& file : folder.entryInfoList(
             {QStringLiteral("*.db-shm"), QStringLiteral("*.db-wal")}, QDir::Files)) {
        if (file.size() == 0 || file.fileName().endsWith(kIndexEnding)) {
            paths.append(file.absoluteFilePath());
        }
    }
    return paths;
}

} // namespace scnstore
