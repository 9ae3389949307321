#pragma once

#include "storetool/forward/batchtablereader.h"
#include "storetool/forward/dayfileconnection.h"
#include "storetool/forward/filesignature.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <chrono>
#include <map>
#include <memory>

namespace scnstore {

/// An open day file and what of it has been forwarded.
class FollowedFile
{
public:
    using Clock = std::chrono::steady_clock;

    /// The places in the tables of a file, by the table's name, as the server has them.
    using KnownPlaces = QHash<QByteArray, QVector<TablePlace>>;

    /// What a look at the file came to.
    enum class Outcome {
        Unchanged,
        Read,
        Busy, ///< It was written to meanwhile: nothing was read.
        Damaged,
    };

    /// The signature is that of the file before it was opened.
    FollowedFile(const QString& path, const QByteArray& instrument, const FileSignature& signature,
                 std::unique_ptr<DayFileConnection> connection);

    /// Adds readings that were not forwarded to the batch, at most `limit`, from one short transaction.
    Outcome read(ReadingBatch& batch, int limit);

    /// What was read last is in the database, or it is not and will be read again.
    void keepRead();
    void dropRead();

    /// The names of the tables that readings are in.
    QList<QByteArray> tables() const;

    /// Whether the server must be asked for places before the file can be read.
    bool needsPlaces() const { return m_needsPlaces; }
    void takePlaces(const KnownPlaces& places);

    /// The server may be at other places than this program believes.
    void forgetPlaces();

    /// Whether all there is has been forwarded.
    bool isComplete() const { return m_isComplete; }

    /// All that was written before this moment has been forwarded.
    Clock::time_point completeAt() const { return m_completeAt; }

    /// When the file had something new last.
    Clock::time_point lastNews() const { return m_lastNews; }

    const QString& path() const { return m_path; }
    const QByteArray& instrument() const { return m_instrument; }
    const FileSignature& signature() const { return m_signature; }
    bool hasMoved() const { return m_connection->hasMoved(); }
    DayFileConnection::Mode mode() const { return m_connection->mode(); }

    /// Whether the file must be opened anew: it is written to in a way that this connection cannot follow.
    bool isStale() const;

    /// Whether a curve has a name that the server does not take as it is.
    bool hasSpoiltNames() const { return m_hasSpoiltNames; }

    /// Readings that cannot be forwarded, since their time is none.
    int unusableReadings() const;

private:
    Outcome readTables(ReadingBatch& batch, int limit);
    bool lookThrough(ReadingBatch& batch, int limit);
    bool learnTables();
    bool readTable(const QByteArray& name, qint64 lastNumber, int end, ReadingBatch& batch);
    bool readUnnumbered(int end, ReadingBatch& batch);
    BatchTableReader& reader(const QByteArray& table);
    bool loadNames();
    bool loadUnnumbered();
    bool isSpoilt() const;

    const QString m_path;
    const QByteArray m_instrument;
    const std::unique_ptr<DayFileConnection> m_connection;
    /// Ends before the connection, with the statements.
    std::map<QByteArray, BatchTableReader> m_tables;
    BatchTableReader::CurveNames m_names;
    QList<QByteArray> m_unnumbered; ///< Tables that SQLite keeps no last number for.
    KnownPlaces m_places;
    FileSignature m_signature;
    qint64 m_dataVersion = -1;
    qint64 m_dataVersionRead = -1;
    qint64 m_schemaVersion = -1;
    int m_patience = 0;
    bool m_gotLog = false;
    bool m_needsPlaces = true;
    bool m_isComplete = false;
    bool m_readAll = false;
    bool m_sawDamage = false;
    bool m_hasSpoiltNames = false;
    Clock::time_point m_readAt;
    Clock::time_point m_completeAt = Clock::now();
    Clock::time_point m_lastNews = Clock::now();
};

} // namespace scnstore
