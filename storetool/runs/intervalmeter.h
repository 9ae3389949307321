#pragma once

#include <QMap>
#include <QVector>

namespace scnstore {

/// An interval without a reading.
struct ReadingGap
{
    qint64 from = 0; ///< The readings beside it, ms since the epoch.
    qint64 to = 0;

    qint64 length() const { return to - from; }
};

/// The intervals between the readings of one curve, in memory that does not grow with their number:
/// they are counted by their lengths, and told apart by ten binary digits.
class IntervalMeter
{
public:
    void add(const ReadingGap& interval);

    /// The median of the intervals; 0 if there are none.
    qint64 usual() const;

    /// How many intervals are longer than `factor` times the usual one.
    qint64 gaps(int factor) const;

    /// The longest of those gaps, longest first, ten at most.
    QVector<ReadingGap> longestGaps(int factor) const;

private:
    /// Intervals of nearly the same length.
    struct Class
    {
        qint64 length = 0; ///< Of the first of them.
        qint64 count = 0;
    };

    static qint64 rounded(qint64 length);

    QMap<qint64, Class> m_classes; ///< By rounded length.
    qint64 m_total = 0;
    QVector<ReadingGap> m_longest; ///< Longest first.
};

} // namespace scnstore
