#include "storetool/forward/forwarder.h"

#include "storetool/console/interrupt.h"

#include <poll.h>

#include <algorithm>

namespace scnstore {

namespace {

using namespace std::chrono_literals;

constexpr auto kLookInterval = 500ms;
constexpr auto kFirstPause = 1s;
constexpr auto kLongestPause = 30s;

/// What a server that does not answer gets to finish a transaction when the program is to end.
constexpr auto kStopPatience = 5s;

/// Of one file in one transaction, so that no checkpoint waits for the end of a long one.
constexpr int kMostOfFile = 10000;
constexpr int kMostOfBatch = 100000;

/// How long a file that cannot be read now is waited for where all is to end.
constexpr auto kFilePatience = 10s;

/// Whether the program is to end, which cuts the wait short.
bool isEndedAfter(std::chrono::milliseconds wait)
{
    if (!isInterrupted()) {
        ::poll(nullptr, 0, static_cast<int>(wait.count()));
    }
    return isInterrupted();
}

} // namespace

Forwarder::Forwarder(const ForwardSetup& setup, const ForwardReport::Say& say)
    : m_setup(setup)
    , m_report(setup.reportInterval, say)
    , m_files(setup.directories)
    , m_server(setup.target, [this] { return mayGoOn(); })
    , m_table(m_server)
{
}

Forwarder::End Forwarder::run()
{
    for (;;) {
        m_files.closeFinished();
        m_files.update();
        m_report.noteFiles(m_files);
        const Turn turn = connect() ? forwardOnce() : Turn::Failed;
        if (m_isHopeless) {
            return End::ServerFailed;
        }
        m_report.noteStart(m_files.emptyDirectories());
        m_report.tellIfDue(m_files);
        if (m_setup.once && turn == Turn::Through) {
            if (m_files.isComplete()) {
                return end();
            }
            if (isStuck()) {
                return End::FilesBusy;
            }
        }
        if (isEndedAfter(turn == Turn::Full ? 0ms : kLookInterval)) {
            return end();
        }
    }
}

Forwarder::End Forwarder::end()
{
    m_report.noteFiles(m_files);
    m_report.tellEnd();
    if (m_setup.once && !m_files.refusals().isEmpty()) {
        const RunRefusal& first = m_files.refusals().constFirst();
        m_errorText = first.sentence;
        return first.isForNow ? End::FilesInUse : End::FilesRefused;
    }
    return m_setup.once && m_files.sawDamage() ? End::FilesDamaged : End::Done;
}

/// What is done while the server is waited for. False if it is not to be waited for any longer.
bool Forwarder::mayGoOn()
{
    const Clock::time_point now = Clock::now();
    if (isInterrupted()) {
        if (m_stoppedAt == Clock::time_point()) {
            m_stoppedAt = now;
        }
        return now - m_stoppedAt < kStopPatience;
    }
    if (now >= m_nextLook) {
        m_nextLook = now + kLookInterval;
        m_files.update();
        m_report.tellIfDue(m_files);
    }
    return true;
}

bool Forwarder::connect()
{
    if (m_server.isConnected()) {
        return true;
    }
    if (Clock::now() < m_nextTry) {
        return false;
    }
    if (!m_server.connect()) {
        noteFailure(!m_wasReady && m_server.isRefusal());
        return false;
    }
    if (!m_table.prepare()) {
        noteFailure(!m_wasReady && m_server.isRejection());
        return false;
    }
    // What was sent last may have arrived or not, and the server may have been restored from a backup.
    m_files.doubt();
    m_files.update();
    return true;
}

Forwarder::Turn Forwarder::forwardOnce()
{
    ReadingBatch batch;
    m_read.clear();
    m_damaged.clear();
    if (readFiles(batch) && (batch.isEmpty() || store(batch))) {
        m_wasReady = true;
        m_pause = {};
        m_report.noteServer();
        return keepRead();
    }
    for (FollowedFile* file : m_read) {
        file->dropRead();
    }
    noteFailure(!m_wasReady && m_server.isRejection());
    return Turn::Failed;
}

/// False if the server failed.
bool Forwarder::readFiles(ReadingBatch& batch)
{
    // While the server is waited for, files are opened.
    std::vector<FollowedFile*> files;
    for (const auto& file : m_files.open()) {
        files.push_back(file.get());
    }
    // A full batch leaves files out: each is the first once.
    const std::size_t first = files.empty() ? 0 : m_turns++ % files.size();
    std::rotate(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(first), files.end());
    for (FollowedFile* file : files) {
        if (batch.readings() >= kMostOfBatch) {
            break;
        }
        if (file->needsPlaces() && !askForPlaces(*file)) {
            return false;
        }
        readFile(*file, batch);
    }
    return true;
}

bool Forwarder::askForPlaces(FollowedFile& file)
{
    FollowedFile::KnownPlaces places;
    const QList<QByteArray> tables = file.tables();
    if (!tables.isEmpty() && !m_table.loadPlaces(file.instrument(), tables, &places)) {
        return false;
    }
    file.takePlaces(places);
    return true;
}

void Forwarder::readFile(FollowedFile& file, ReadingBatch& batch)
{
    const FollowedFile::Outcome outcome = file.read(batch, kMostOfFile);
    if (outcome == FollowedFile::Outcome::Read || outcome == FollowedFile::Outcome::Damaged) {
        m_read.push_back(&file);
    }
    if (outcome == FollowedFile::Outcome::Damaged) {
        m_damaged.push_back(&file);
    } else if (file.hasSpoiltNames()) {
        m_files.noteSpoilt(file);
    }
}

bool Forwarder::store(const ReadingBatch& batch)
{
    if (!m_table.store(batch)) {
        return false;
    }
    Clock::time_point waitingSince = Clock::now();
    for (const FollowedFile* file : m_read) {
        waitingSince = std::min(waitingSince, file->completeAt());
    }
    m_report.noteNews(m_table.takeNews());
    m_report.noteStored(batch.readings(), m_table.newReadings(), waitingSince);
    m_lastProgress = Clock::now();
    return true;
}

Forwarder::Turn Forwarder::keepRead()
{
    bool isFull = false;
    for (FollowedFile* file : m_read) {
        file->keepRead();
        const bool isDamaged =
            std::find(m_damaged.cbegin(), m_damaged.cend(), file) != m_damaged.cend();
        isFull = isFull || (!isDamaged && !file->isComplete());
        if (!isDamaged && file->isComplete() && !file->hasSpoiltNames()) {
            m_files.noteWhole(*file);
        }
    }
    for (const FollowedFile* file : m_damaged) {
        m_files.setAside(*file);
    }
    return isFull ? Turn::Full : Turn::Through;
}

/// Closes the session, since its state is unknown, and lets some time pass before the next one. At the start
/// a wrong name or a missing right is a slip; later, someone is at work on the server.
void Forwarder::noteFailure(bool isSlip)
{
    m_server.close();
    if (isInterrupted()) {
        return;
    }
    m_errorText = QStringLiteral("The server does not take readings: %1.").arg(m_table.errorText());
    m_isHopeless = isSlip || (m_setup.once && !m_server.isConflict());
    if (!m_isHopeless) {
        m_pause = std::clamp<Clock::duration>(2 * m_pause, kFirstPause, kLongestPause);
        m_nextTry = Clock::now() + m_pause;
        m_report.noteFault(m_errorText);
    }
}

/// Whether the files that cannot be read now have been waited for long enough.
bool Forwarder::isStuck()
{
    if (Clock::now() - m_lastProgress < kFilePatience) {
        return false;
    }
    m_errorText =
        QStringLiteral("%1 cannot be read: it is locked, or there is no right to read it.")
            .arg(m_files.unread().join(QStringLiteral(", ")));
    return true;
}

} // namespace scnstore
