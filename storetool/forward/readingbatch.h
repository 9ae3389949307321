#pragma once

#include "storetool/forward/copybuffer.h"
#include "storetool/forward/tableplace.h"

#include <QByteArray>
#include <QSet>

namespace scnstore {

/// Readings of any instruments and the places that the files are at with them: what the server gets in one
/// transaction.
class ReadingBatch
{
public:
    /// A state to return to.
    struct Mark
    {
        int readings = 0;
        int readingBytes = 0;
        int placeBytes = 0;
    };

    /// Adds a reading. False if its time, in milliseconds since the epoch, is none that the server knows.
    bool addReading(const QByteArray& instrument, const QByteArray& curve, qint64 time,
                    double value);

    /// Adds the place in a table of the instrument.
    void addPlace(const QByteArray& instrument, const QByteArray& table, const TablePlace& place);

    Mark mark() const;

    /// Drops what was added since.
    void returnTo(const Mark& mark);

    int readings() const { return m_readingCount; }
    bool isEmpty() const { return m_places.size() == CopyBuffer().size(); }

    const CopyBuffer& readingRows() const { return m_readings; }
    const CopyBuffer& placeRows() const { return m_places; }

    /// The days of the readings, counted from the epoch, in UTC.
    const QSet<qint64>& days() const { return m_days; }

private:
    CopyBuffer m_readings;
    CopyBuffer m_places;
    int m_readingCount = 0;
    QSet<qint64> m_days;
};

} // namespace scnstore
