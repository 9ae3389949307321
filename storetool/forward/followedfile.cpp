#include "storetool/forward/followedfile.h"

#include "storetool/forward/copybuffer.h"

#include <sqlite3.h>

#include <algorithm>

namespace scnstore {

namespace {

/// A commit in the middle of an unlocked read spoils it: the next try asks for less.
constexpr int kFewestReadings = 200;
constexpr int kMostHalvings = 8;

const QByteArray kLastNumbers = QByteArrayLiteral(
    "SELECT name, seq FROM sqlite_sequence WHERE name GLOB 'curve_[0-9]*_batch_[0-9]*' "
    "AND name NOT GLOB '*[^a-z0-9_]*' ORDER BY name");

QByteArray textOf(sqlite3_stmt* row, int column)
{
    const auto* const text =
        reinterpret_cast<const char*>(sqlite3_column_text(row, column)); // UTF-8
    return QByteArray(text, sqlite3_column_bytes(row, column));
}

} // namespace

FollowedFile::FollowedFile(const QString& path, const QByteArray& instrument,
                           const FileSignature& signature,
                           std::unique_ptr<DayFileConnection> connection)
    : m_path(path)
    , m_instrument(instrument)
    , m_connection(std::move(connection))
    , m_signature(signature)
{
}

FollowedFile::Outcome FollowedFile::read(ReadingBatch& batch, int limit)
{
    // Taken first: whatever comes later is looked for again.
    const FileSignature signature = hasMoved() ? m_signature : fileSignature(m_path);
    const Clock::time_point now = Clock::now();
    const qint64 version = m_connection->dataVersion();
    if (version < 0 && m_connection->sawDamage()) {
        return Outcome::Damaged;
    }
    m_gotLog = version < 0 && m_connection->sawLog();
    if (version < 0 || isStale()) {
        m_isComplete = false;
        return Outcome::Busy;
    }
    if (version == m_dataVersion && m_isComplete) {
        m_signature = signature;
        m_completeAt = now;
        return Outcome::Unchanged;
    }
    m_isComplete = false;
    m_lastNews = now;
    m_readAt = now;
    m_dataVersionRead = version;
    const ReadingBatch::Mark mark = batch.mark();
    const Outcome outcome =
        readTables(batch, std::max(limit >> std::min(m_patience, kMostHalvings), kFewestReadings));
    if (outcome == Outcome::Busy || isSpoilt()) {
        batch.returnTo(mark);
        dropRead();
        ++m_patience;
        return Outcome::Busy;
    }
    m_patience = 0;
    m_signature = signature;
    return outcome;
}

/// Whether something was written in the middle of the last read.
bool FollowedFile::isSpoilt() const
{
    return m_connection->mode() == DayFileConnection::Mode::Unlocked
               ? m_connection->dataVersion() != m_dataVersionRead
               : isStale();
}

bool FollowedFile::isStale() const
{
    const bool isStill = m_connection->mode() == DayFileConnection::Mode::Still;
    return m_gotLog || (isStill && !hasMoved() && fileSignature(m_path) != m_signature);
}

FollowedFile::Outcome FollowedFile::readTables(ReadingBatch& batch, int limit)
{
    if (!m_connection->begin()) {
        return Outcome::Busy;
    }
    m_sawDamage = false;
    const bool isRead = lookThrough(batch, limit);
    const bool isDamaged = m_sawDamage || (!isRead && m_connection->sawDamage());
    m_connection->end();
    if (isDamaged) {
        return Outcome::Damaged;
    }
    return isRead ? Outcome::Read : Outcome::Busy;
}

bool FollowedFile::lookThrough(ReadingBatch& batch, int limit)
{
    const qint64 schema = m_connection->number("PRAGMA schema_version");
    if (schema < 0) {
        return false;
    }
    if (schema != m_schemaVersion) {
        for (auto& [name, table] : m_tables) {
            table.doubt();
        }
    }
    m_readAll = true;
    if (m_connection->number("SELECT 1 FROM sqlite_master WHERE name = 'sqlite_sequence'") != 1) {
        return !m_connection->sawDamage(); // no table with readings yet
    }
    if (schema != m_schemaVersion && !loadNames()) {
        return false;
    }
    const Statement numbers = m_connection->prepare(kLastNumbers);
    if (!numbers) {
        return false;
    }
    const int first = batch.readings();
    int code = SQLITE_DONE;
    while ((code = sqlite3_step(numbers.get())) == SQLITE_ROW) {
        const QByteArray name = textOf(numbers.get(), 0);
        const qint64 lastNumber = sqlite3_column_int64(numbers.get(), 1);
        BatchTableReader& table = reader(name);
        if (!table.hasNews(lastNumber)) {
            continue;
        }
        const int left = limit - (batch.readings() - first);
        if (left <= 0) {
            m_readAll = false;
            break;
        }
        BatchTableReader::Outcome outcome = BatchTableReader::Outcome::Failed;
        if (table.isVerified() || table.verify(*m_connection, m_places.value(name))) {
            outcome = table.read(*m_connection, m_instrument, m_names, lastNumber, left, batch);
        }
        if (outcome == BatchTableReader::Outcome::Failed) {
            if (!m_connection->sawDamage()) {
                return false;
            }
            m_sawDamage = true; // the other tables may be whole
        }
        m_readAll = m_readAll && outcome != BatchTableReader::Outcome::More;
    }
    m_schemaVersion = schema;
    return code == SQLITE_DONE || code == SQLITE_ROW;
}

BatchTableReader& FollowedFile::reader(const QByteArray& table)
{
    return m_tables.try_emplace(table, table).first->second;
}

bool FollowedFile::loadNames()
{
    const Statement names = m_connection->prepare("SELECT curve_id, name FROM curve_info");
    if (!names) {
        return !m_connection->sawDamage(); // a file without a catalogue
    }
    int code = SQLITE_DONE;
    while ((code = sqlite3_step(names.get())) == SQLITE_ROW) {
        const QByteArray stored = textOf(names.get(), 1);
        const QByteArray name = storableText(stored);
        m_hasSpoiltNames = m_hasSpoiltNames || name != stored;
        m_names.insert(sqlite3_column_int64(names.get(), 0), name);
    }
    return code == SQLITE_DONE;
}

void FollowedFile::keepRead()
{
    for (auto& [name, table] : m_tables) {
        table.keep();
    }
    if (m_readAll) {
        m_isComplete = true;
        m_dataVersion = m_dataVersionRead;
        m_completeAt = m_readAt;
    }
}

void FollowedFile::dropRead()
{
    for (auto& [name, table] : m_tables) {
        table.drop();
    }
    m_isComplete = false;
    m_readAll = false;
    m_schemaVersion = -1; // what was learnt from a spoilt read may be wrong
}

QList<QByteArray> FollowedFile::tables() const
{
    QList<QByteArray> names;
    const Statement numbers = m_connection->prepare(kLastNumbers);
    while (numbers && sqlite3_step(numbers.get()) == SQLITE_ROW) {
        names.append(textOf(numbers.get(), 0));
    }
    return names;
}

void FollowedFile::takePlaces(const KnownPlaces& places)
{
    m_places = places;
    m_needsPlaces = false;
}

void FollowedFile::forgetPlaces()
{
    m_tables.clear();
    m_needsPlaces = true;
    m_isComplete = false;
    m_schemaVersion = -1;
}

int FollowedFile::unusableReadings() const
{
    int count = 0;
    for (const auto& [name, table] : m_tables) {
        count += table.unusableRows();
    }
    return count;
}

} // namespace scnstore
