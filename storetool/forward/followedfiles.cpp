#include "storetool/forward/followedfiles.h"

#include "storetool/forward/copybuffer.h"
#include "storetool/forward/descriptorlimit.h"
#include "storetool/runs/runfinder.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>

namespace scnstore {

namespace {

using namespace std::chrono_literals;

constexpr auto kSearchInterval = 1s;

/// What is not written to is read by and by: the catalogue of a file takes a megabyte.
constexpr int kMostOldOpen = 16;

/// A file that got nothing for so long is closed; it is opened again when it changes.
constexpr auto kQuiet = 10s;

bool isQuiet(const FileSignature& signature)
{
    const qint64 age = QDateTime::currentMSecsSinceEpoch() - signature.lastChange();
    return age < 0 || age > std::chrono::milliseconds(kQuiet).count();
}

} // namespace

FollowedFiles::FollowedFiles(const QStringList& directories)
    : m_directories(directories)
    , m_mostOpen(mostOpenDatabases())
{
}

void FollowedFiles::update()
{
    findRuns();
    m_newest.clear();
    m_unopened.clear();
    m_refusals.clear();
    m_faults.beginLook();
    for (const QString& folder : qAsConst(m_closed)) {
        noteUnopened(folder);
    }
    std::vector<QStringList> files;
    for (const StoredRun& run : qAsConst(m_runs)) {
        files.push_back(run.dayFiles());
        if (!run.isKept && !files.back().isEmpty()) {
            m_newest.insert(files.back().last());
        }
    }
    auto ofRun = files.cbegin();
    for (const StoredRun& run : qAsConst(m_runs)) {
        // The newest is the one that can vanish next.
        for (auto file = ofRun->crbegin(); file != ofRun->crend(); ++file) {
            lookAt(*file, run);
        }
        ++ofRun;
    }
    m_faults.endLook();
}

void FollowedFiles::doubt()
{
    m_done.clear();
    for (const auto& file : m_open) {
        file->forgetPlaces();
    }
}

void FollowedFiles::findRuns()
{
    const Clock::time_point now = Clock::now();
    if (m_runsFoundAt == Clock::time_point() || now - m_runsFoundAt >= kSearchInterval) {
        m_runs.clear();
        m_closed.clear();
        m_empty.clear();
        for (const QString& directory : m_directories) {
            const FoundRuns found = runsBelow(directory);
            m_runs += found.runs;
            m_closed += found.closed;
            if (found.runs.isEmpty()) {
                m_empty.append(directory);
            }
        }
        m_runsFoundAt = now;
    }
}

void FollowedFiles::lookAt(const QString& path, const StoredRun& run)
{
    const FileSignature signature = fileSignature(path);
    const auto done = m_done.constFind(path);
    if (!signature.exists() || (done != m_done.constEnd() && *done == signature) ||
        isOpen(signature)) {
        return;
    }
    if (!run.isDataDirectory() && signature.links > 1) {
        refuse(path, run, signature);
        return;
    }
    // A kept file that has lost its other name may still be open in the program that wrote it.
    if (!hasRoomFor(path) || (run.isKept && isBeingClosed(path))) {
        m_unopened.insert(path);
        m_faults.keep(path);
        return;
    }
    openFile(path, run, signature);
}

/// A file that is written to is opened under the name that its log goes by.
void FollowedFiles::refuse(const QString& path, const StoredRun& run,
                           const FileSignature& signature)
{
    const QString name = QFileInfo(path).fileName();
    if (isFollowedElsewhere(name, run, signature)) {
        return;
    }
    const QString place =
        run.source.isEmpty() ? QStringLiteral("the program's data directory") : run.source;
    const bool isThere = run.source.isEmpty() ||
                         fileSignature(place + QLatin1Char('/') + name).isSameFile(signature);
    const QString sentence =
        isThere
            ? QStringLiteral("%1 is not opened under its second name. Forward %2.").arg(path, place)
            : QStringLiteral("%1 has another name, which is not in %2. Copy the run to "
                             "forward it.")
                  .arg(path, place);
    m_refusals.append({sentence, isThere});
    m_faults.note(path, sentence);
}

/// Whether the file is that of a data directory which is followed.
bool FollowedFiles::isFollowedElsewhere(const QString& name, const StoredRun& run,
                                        const FileSignature& signature) const
{
    return std::any_of(m_runs.cbegin(), m_runs.cend(), [&](const StoredRun& other) {
        // A kept run without its facts may be any directory's.
        return other.isDataDirectory() && (run.source.isEmpty() || run.source == other.directory) &&
               fileSignature(other.directory + QLatin1Char('/') + name).isSameFile(signature);
    });
}

bool FollowedFiles::hasRoomFor(const QString& path) const
{
    const auto old = std::count_if(m_open.cbegin(), m_open.cend(), [this](const auto& file) {
        return !m_newest.contains(file->path());
    });
    return static_cast<int>(m_open.size()) < m_mostOpen &&
           (m_newest.contains(path) || old < kMostOldOpen);
}

bool FollowedFiles::isOpen(const FileSignature& signature) const
{
    return std::any_of(m_open.cbegin(), m_open.cend(), [&signature](const auto& file) {
        return file->signature().isSameFile(signature);
    });
}

void FollowedFiles::openFile(const QString& path, const StoredRun& run,
                             const FileSignature& signature)
{
    // A log that is left has no writer either, if it is in a place where nobody can write.
    const bool hasLog = signature.log.size > 0;
    const bool isIdle = run.isKept || ((!hasLog || !QFileInfo(run.directory).isWritable()) &&
                                       !isOpenElsewhere(path));
    bool isDamaged = false;
    auto connection = DayFileConnection::open(path, isIdle, &isDamaged);
    if (connection) {
        m_open.push_back(std::make_unique<FollowedFile>(path, storableText(run.serial.toUtf8()),
                                                        signature, std::move(connection)));
    } else if (isDamaged) {
        m_done.insert(path, signature);
        noteDamage(path);
    } else {
        noteUnopened(path);
    }
}

void FollowedFiles::noteUnopened(const QString& path)
{
    m_unopened.insert(path);
    m_faults.note(path, FileFaults::reasonFor(path));
}

void FollowedFiles::noteDamage(const QString& path)
{
    if (!m_damaged.contains(path)) {
        m_damaged.insert(path);
        m_damageNews.append(path);
    }
}

void FollowedFiles::setAside(const FollowedFile& file)
{
    m_done.insert(file.path(), file.signature());
    noteDamage(file.path());
    m_open.erase(std::find_if(m_open.begin(), m_open.end(),
                              [&file](const auto& other) { return other.get() == &file; }));
}

void FollowedFiles::noteSpoilt(const FollowedFile& file)
{
    noteDamage(file.path());
}

void FollowedFiles::noteWhole(const FollowedFile& file)
{
    m_damaged.remove(file.path());
}

QStringList FollowedFiles::takeDamageNews()
{
    return std::exchange(m_damageNews, {});
}

void FollowedFiles::closeFinished()
{
    const auto finished = std::stable_partition(
        m_open.begin(), m_open.end(), [this](const auto& file) { return !mayClose(*file); });
    for (auto file = finished; file != m_open.end(); ++file) {
        if ((*file)->isComplete() && !(*file)->hasMoved()) {
            m_done.insert((*file)->path(), (*file)->signature());
        }
        m_unusableOfClosed += (*file)->unusableReadings();
    }
    m_open.erase(finished, m_open.end());
}

bool FollowedFiles::mayClose(const FollowedFile& file) const
{
    if (!file.isComplete()) {
        return file.isStale();
    }
    if (file.hasMoved()) {
        return Clock::now() - file.lastNews() > kQuiet;
    }
    const bool isStill = file.mode() == DayFileConnection::Mode::Still;
    if (m_newest.contains(file.path())) {
        // An empty log is what a program leaves that ended while the file was open here.
        const bool hasEnded =
            file.mode() == DayFileConnection::Mode::Shared && file.signature().log.size == 0;
        return hasEnded && isQuiet(file.signature());
    }
    return isStill || isQuiet(file.signature());
}

bool FollowedFiles::isComplete() const
{
    return m_unopened.isEmpty() && std::all_of(m_open.cbegin(), m_open.cend(),
                                               [](const auto& file) { return file->isComplete(); });
}

QStringList FollowedFiles::unread() const
{
    QStringList paths(m_unopened.cbegin(), m_unopened.cend());
    for (const auto& file : m_open) {
        if (!file->isComplete()) {
            paths.append(file->path());
        }
    }
    paths.sort();
    return paths;
}

std::optional<FollowedFiles::Clock::time_point> FollowedFiles::waitingSince() const
{
    std::optional<Clock::time_point> since;
    for (const auto& file : m_open) {
        if (!file->isComplete() && (!since || file->completeAt() < *since)) {
            since = file->completeAt();
        }
    }
    return since;
}

int FollowedFiles::instruments() const
{
    QSet<QString> names;
    for (const StoredRun& run : m_runs) {
        names.insert(run.serial);
    }
    return names.size();
}

int FollowedFiles::unusableReadings() const
{
    int count = m_unusableOfClosed;
    for (const auto& file : m_open) {
        count += file->unusableReadings();
    }
    return count;
}

} // namespace scnstore
