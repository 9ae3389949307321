#pragma once

#include "storetool/forward/followedfile.h"
#include "storetool/forward/readingbatch.h"
#include "storetool/forward/serverconnection.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace scnstore {

/// The tables in the database: the readings of all instruments, and the places that their files are at.
class ReadingTable
{
public:
    explicit ReadingTable(ServerConnection& server)
        : m_server(server)
    {
    }

    /// Creates what a new session needs, and the tables if there are none yet. False on failure; the server
    /// then knows why.
    bool prepare();

    /// Reads the places in these tables of an instrument's files.
    bool loadPlaces(const QByteArray& instrument, const QList<QByteArray>& tables,
                    FollowedFile::KnownPlaces* places);

    /// Stores a batch in one transaction. What the table has already is left as it is.
    bool store(const ReadingBatch& batch);

    /// Why the last call failed.
    QString errorText() const;

    /// The readings of the last batch that were new to the table.
    qint64 newReadings() const { return m_newReadings; }

    /// Sentences about what it stored that nobody was told yet.
    QStringList takeNews();

private:
    bool fits();
    bool ensurePartitions(const QSet<qint64>& days);
    bool ensurePartition(qint64 day);
    bool ensureRest(const QSet<qint64>& days);
    bool createPartition(const QByteArray& name, const QByteArray& bounds, bool* isRightMissing);
    bool merge(const ReadingBatch& batch);

    ServerConnection& m_server;
    bool m_isPartitioned = false;
    QSet<qint64> m_days; ///< Those that need no partition any more.
    qint64 m_newReadings = 0;
    QSet<qint64> m_uncreated; ///< Those that this role made no partition for.
    QStringList m_news;
    bool m_hasToldRest = false;
};

} // namespace scnstore
