#include "storetool/forward/followedfile.h"

#include "storetool/forward/copybuffer.h"

#include <sqlite3.h>

#include <algorithm>

namespace scnstore {

namespace {

/// A commit in the middle of an unlocked read spoils it: the next try asks for less.
constexpr int kFewestReadings = 200;
constexpr int kMostHalvings = 8;

const QByteArray kIsBatchTable =
    QByteArrayLiteral("name GLOB 'curve_[0-9]*_batch_[0-9]*' AND name NOT GLOB '*[^a-z0-9_]*' ");

const QByteArray kHasNumbers =
    QByteArrayLiteral("SELECT 1 FROM sqlite_master WHERE name = 'sqlite_sequence'");

const QByteArray kLastNumbers =
    "SELECT name, seq FROM sqlite_sequence WHERE " + kIsBatchTable + "ORDER BY name";

/// A table that never had a row has no last number.
const QByteArray kUnnumbered = "SELECT name FROM sqlite_master WHERE type = 'table' AND " +
                               kIsBatchTable +
                               "AND name NOT IN (SELECT name FROM sqlite_sequence) ORDER BY name";

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
    const bool isDamaged = isRead ? m_sawDamage && m_readAll : m_connection->sawDamage();
    m_connection->end();
    if (isDamaged) {
        return Outcome::Damaged; // the rest of the file has been read
    }
    return isRead ? Outcome::Read : Outcome::Busy;
}

bool FollowedFile::lookThrough(ReadingBatch& batch, int limit)
{
    m_readAll = true;
    if (m_connection->number(kHasNumbers) != 1) {
        return !m_connection->sawDamage(); // no table with readings yet
    }
    const Statement numbers = learnTables() ? m_connection->prepare(kLastNumbers) : nullptr;
    if (!numbers) {
        return false;
    }
    const int end = batch.readings() + limit;
    int code = SQLITE_DONE;
    while (m_readAll && (code = sqlite3_step(numbers.get())) == SQLITE_ROW) {
        const QByteArray name = textOf(numbers.get(), 0);
        m_unnumbered.removeOne(name);
        if (!readTable(name, sqlite3_column_int64(numbers.get(), 1), end, batch)) {
            return false;
        }
    }
    return (code == SQLITE_DONE || code == SQLITE_ROW) && readUnnumbered(end, batch);
}

/// Learns the names again if tables were created or dropped.
bool FollowedFile::learnTables()
{
    const qint64 schema = m_connection->number("PRAGMA schema_version");
    if (schema < 0 || schema == m_schemaVersion) {
        return schema >= 0;
    }
    for (auto& [name, table] : m_tables) {
        table.doubt();
    }
    if (!loadNames() || !loadUnnumbered()) {
        return false;
    }
    m_schemaVersion = schema;
    return true;
}

/// Adds what is new in a table, up to the batch's `end`. False if the file cannot be read now.
bool FollowedFile::readTable(const QByteArray& name, qint64 lastNumber, int end,
                             ReadingBatch& batch)
{
    BatchTableReader& table = reader(name);
    if (!table.hasNews(lastNumber)) {
        return true;
    }
    const int left = end - batch.readings();
    if (left <= 0) {
        m_readAll = false;
        return true;
    }
    BatchTableReader::Outcome outcome = BatchTableReader::Outcome::Failed;
    if (table.isVerified() || table.verify(*m_connection, m_places.value(name))) {
        outcome = table.read(*m_connection, m_instrument, m_names, lastNumber, left, batch);
    }
    if (outcome == BatchTableReader::Outcome::Failed) {
        if (!m_connection->sawDamage() && !m_connection->sawMisfit()) {
            return false;
        }
        m_sawDamage = true; // the other tables may be whole
    }
    m_readAll = m_readAll && outcome != BatchTableReader::Outcome::More;
    return true;
}

/// Rows without a last number have lost it.
bool FollowedFile::readUnnumbered(int end, ReadingBatch& batch)
{
    for (const QByteArray& name : qAsConst(m_unnumbered)) {
        const qint64 lastNumber = m_connection->number("SELECT max(id) FROM \"" + name + '"');
        if (lastNumber == 0) {
            continue;
        }
        m_sawDamage = true;
        if (!readTable(name, lastNumber, end, batch)) {
            return false;
        }
    }
    return true;
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

bool FollowedFile::loadUnnumbered()
{
    m_unnumbered.clear();
    const Statement names = m_connection->prepare(kUnnumbered);
    int code = SQLITE_ERROR;
    while (names && (code = sqlite3_step(names.get())) == SQLITE_ROW) {
        m_unnumbered.append(textOf(names.get(), 0));
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
    for (const QByteArray& sql : {kLastNumbers, kUnnumbered}) {
        const Statement tables = m_connection->prepare(sql);
        while (tables && sqlite3_step(tables.get()) == SQLITE_ROW) {
            names.append(textOf(tables.get(), 0));
        }
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
