#include "storetool/forward/readingtable.h"

#include "storetool/console/interrupt.h"

#include <QDate>
#include <QDateTime>

#include <algorithm>
#include <utility>

namespace scnstore {

namespace {

/// A database that has no letters for the units of some curves would refuse them in the middle of a run.
const QByteArray kTryEncoding = QByteArrayLiteral("SELECT 'Ω℃'");

/// The value is part of the key: after the clock was set back, two readings can have the same time.
const QByteArray kCreateReading =
    QByteArrayLiteral("CREATE TABLE reading ("
                      "instrument text COLLATE \"C\" NOT NULL, "
                      "curve text COLLATE \"C\" NOT NULL, "
                      "time timestamptz NOT NULL, "
                      "value double precision NOT NULL, "
                      "PRIMARY KEY (instrument, curve, time, value)) PARTITION BY RANGE (time)");

const QByteArray kCreatePlace =
    QByteArrayLiteral("CREATE TABLE reading_place ("
                      "instrument text COLLATE \"C\" NOT NULL, "
                      "source text COLLATE \"C\" NOT NULL, "
                      "first_time bigint NOT NULL, "
                      "last_id bigint NOT NULL, "
                      "last_time bigint NOT NULL, "
                      "last_value double precision NOT NULL, "
                      "PRIMARY KEY (instrument, source, first_time)) WITH (fillfactor = 50)");

/// The session's own tables, which what is new goes to first.
const QByteArray kCreateIncoming =
    QByteArrayLiteral("CREATE TEMPORARY TABLE incoming_reading ("
                      "instrument text, curve text, time timestamptz, value double precision) "
                      "ON COMMIT DELETE ROWS; "
                      "CREATE TEMPORARY TABLE incoming_place ("
                      "instrument text, source text, first_time bigint, last_id bigint, "
                      "last_time bigint, last_value double precision) ON COMMIT DELETE ROWS");

/// In one order, so that two programs with the same files do not wait for each other.
const QByteArray kMergeReadings =
    QByteArrayLiteral("INSERT INTO reading (instrument, curve, time, value) "
                      "SELECT instrument, curve, time, value FROM incoming_reading "
                      "ORDER BY instrument, curve, time, value "
                      "ON CONFLICT (instrument, curve, time, value) DO NOTHING");

/// Files of one content can be in a batch together; the earlier place is the safe one.
const QByteArray kMergePlaces = QByteArrayLiteral(
    "INSERT INTO reading_place "
    "(instrument, source, first_time, last_id, last_time, last_value) "
    "SELECT DISTINCT ON (instrument, source, first_time) "
    "instrument, source, first_time, last_id, last_time, last_value FROM incoming_place "
    "ORDER BY instrument, source, first_time, last_id "
    "ON CONFLICT (instrument, source, first_time) DO UPDATE SET last_id = excluded.last_id, "
    "last_time = excluded.last_time, last_value = excluded.last_value");

/// Two programs must not create the same thing at once. The number is this program's own.
const QByteArray kLockSchema = QByteArrayLiteral("SELECT pg_advisory_xact_lock(4070)");

/// What the server says of a row that no partition takes.
const QByteArray kNoPartition = QByteArrayLiteral("23514");

const QByteArray kMissingRight = QByteArrayLiteral("42501");

/// What the server says where the rows of a day may have a place already: the partition is there, another one
/// has its range, a default partition has its rows, or partitions are an administrator's to make.
bool mayBeCovered(const QByteArray& code)
{
    return code == "42809" || code == "42P17" || code == kNoPartition || code == kMissingRight;
}

/// Midnight, UTC, of a day counted from the epoch, and the name of its partition.
struct Day
{
    explicit Day(qint64 number)
    {
        const QDate date = QDate(1970, 1, 1).addDays(number);
        // The years before the first have no zero.
        const bool isBefore = date.year() < 0;
        const QByteArray year = QByteArray::number(qAbs(date.year())).rightJustified(4, '0');
        const QByteArray month = QByteArray::number(date.month()).rightJustified(2, '0');
        const QByteArray day = QByteArray::number(date.day()).rightJustified(2, '0');
        name = "reading_" + year + month + day + (isBefore ? "_bc" : "");
        midnight = year + '-' + month + '-' + day + " 00:00:00+00" + (isBefore ? " BC" : "");
    }

    QByteArray name;
    QByteArray midnight;
};

/// Whether a reading can have been taken on a day. The clocks of two places differ by a day at most.
bool isPlausible(qint64 day)
{
    const QDate date = QDate(1970, 1, 1).addDays(day);
    return date >= QDate(2020, 1, 1) && date <= QDateTime::currentDateTimeUtc().date().addDays(2);
}

quint64 bitsFrom(const QByteArray& hex)
{
    return hex.toULongLong(nullptr, 16);
}

} // namespace

bool ReadingTable::prepare()
{
    m_days.clear();
    m_uncreated.clear();
    // Only a missing table is created: the right to create is not needed where an administrator has done it.
    const auto ensure = [this](const QByteArray& table, const QByteArray& create) {
        return m_server.run("SELECT to_regclass('" + table + "') IS NOT NULL") &&
               (m_server.rows().value(0).value(0) == "t" || m_server.run(create));
    };
    if (!m_server.run(kTryEncoding) || !m_server.run("BEGIN") || !m_server.run(kLockSchema) ||
        !ensure("reading", kCreateReading) || !ensure("reading_place", kCreatePlace) ||
        !m_server.run(kCreateIncoming) || !m_server.run("COMMIT") || !fits() ||
        !m_server.run("SELECT relkind FROM pg_class WHERE oid = 'reading'::regclass")) {
        return false;
    }
    m_isPartitioned = m_server.rows().value(0).value(0) == "p";
    return true;
}

/// Whether the tables, which someone else may have created, have the columns and the keys, and the role its
/// rights. The server plans the statements and does not run them.
bool ReadingTable::fits()
{
    return m_server.run("EXPLAIN " + kMergeReadings) && m_server.run("EXPLAIN " + kMergePlaces);
}

bool ReadingTable::loadPlaces(const QByteArray& instrument, const QList<QByteArray>& tables,
                              FollowedFile::KnownPlaces* places)
{
    const QByteArray names = '{' + tables.join(',') + '}';
    if (!m_server.run("SELECT source, first_time, last_id, last_time, "
                      "encode(float8send(last_value), 'hex') FROM reading_place "
                      "WHERE instrument = $1 AND source = ANY ($2::text[])",
                      {instrument, names})) {
        return false;
    }
    for (const ServerConnection::Row& row : m_server.rows()) {
        (*places)[row[0]].append(
            {row[1].toLongLong(), row[2].toLongLong(), row[3].toLongLong(), bitsFrom(row[4])});
    }
    return true;
}

bool ReadingTable::store(const ReadingBatch& batch)
{
    return (!m_isPartitioned || ensurePartitions(batch.days())) && m_server.run("BEGIN") &&
           merge(batch) && m_server.run("COMMIT");
}

/// Times that are garbage would make a partition each, until no query has room for their locks.
bool ReadingTable::ensurePartitions(const QSet<qint64>& days)
{
    constexpr int kMostNewDays = 200;
    const QSet<qint64> newDays = days - m_days;
    const bool isCrowd = newDays.size() > kMostNewDays;
    QSet<qint64> strange;
    for (const qint64 day : newDays) {
        if (isCrowd && !isPlausible(day)) {
            strange.insert(day);
            continue;
        }
        if (isInterrupted() || !ensurePartition(day)) {
            return false;
        }
        m_days.insert(day);
    }
    return strange.isEmpty() || ensureRest(strange);
}

/// What has no day of its own is together.
bool ReadingTable::ensureRest(const QSet<qint64>& days)
{
    bool isRightMissing = false;
    if (!createPartition("reading_rest", "DEFAULT", &isRightMissing)) {
        return false;
    }
    if (isRightMissing) {
        m_uncreated += days;
        return true;
    }
    if (!m_hasToldRest) {
        m_hasToldRest = true;
        m_news.append(QStringLiteral("The readings of %1 days go into reading_rest together: a "
                                     "clock is wrong, or a file is damaged.")
                          .arg(days.size()));
    }
    return true;
}

QStringList ReadingTable::takeNews()
{
    return std::exchange(m_news, {});
}

QString ReadingTable::errorText() const
{
    if (m_server.errorCode() != kNoPartition || m_uncreated.isEmpty()) {
        return m_server.errorText();
    }
    const qint64 day = *std::min_element(m_uncreated.cbegin(), m_uncreated.cend());
    return QStringLiteral(
               "no partition takes the readings of %1, and this role may not create one: %2")
        .arg(QDate(1970, 1, 1).addDays(day).toString(Qt::ISODate), m_server.errorText());
}

bool ReadingTable::merge(const ReadingBatch& batch)
{
    m_newReadings = 0;
    if (!m_server.copy("COPY incoming_reading FROM STDIN WITH (FORMAT binary)",
                       batch.readingRows().whole()) ||
        !m_server.copy("COPY incoming_place FROM STDIN WITH (FORMAT binary)",
                       batch.placeRows().whole()) ||
        !m_server.run(kMergeReadings)) {
        return false;
    }
    m_newReadings = m_server.changedRows();
    return m_server.run(kMergePlaces);
}

bool ReadingTable::ensurePartition(qint64 day)
{
    const Day first(day);
    const Day next(day + 1);
    bool isRightMissing = false;
    if (!createPartition(first.name,
                         "FOR VALUES FROM ('" + first.midnight + "') TO ('" + next.midnight + "')",
                         &isRightMissing)) {
        return false;
    }
    if (isRightMissing) {
        m_uncreated.insert(day);
    }
    return true;
}

/// Made beside the table and then attached, which unlike a creation in place lets others go on reading.
/// True, too, if its rows may have a place elsewhere.
bool ReadingTable::createPartition(const QByteArray& name, const QByteArray& bounds,
                                   bool* isRightMissing)
{
    if (!m_server.run("SELECT 1 FROM pg_inherits WHERE inhparent = 'reading'::regclass "
                      "AND inhrelid = to_regclass('" +
                      name + "')")) {
        return false;
    }
    if (!m_server.rows().isEmpty()) {
        return true;
    }
    if (!m_server.run("BEGIN") || !m_server.run(kLockSchema)) {
        return false;
    }
    if (m_server.run("CREATE TABLE IF NOT EXISTS " + name + " (LIKE reading INCLUDING ALL)") &&
        m_server.run("ALTER TABLE reading ATTACH PARTITION " + name + ' ' + bounds)) {
        return m_server.run("COMMIT");
    }
    *isRightMissing = m_server.errorCode() == kMissingRight;
    return mayBeCovered(m_server.errorCode()) && m_server.run("ROLLBACK");
}

} // namespace scnstore
