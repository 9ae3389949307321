#pragma once

#include <QString>

namespace scn {

/// A moment's names, and the span of moments that share them.
struct TimeSlice
{
    qint64 first = 0;      ///< First millisecond the facts hold for.
    qint64 last = -1;      ///< Last millisecond the facts hold for; before first: holds nothing.
    QString dateKey;       ///< "yyyyMMdd" of the local date.
    qint64 batchStart = 0; ///< alignToBatchStart() of every moment in the slice.
    QString batchName;     ///< makeBatchName() of every moment in the slice.
    bool ownFile = false;  ///< The batch starts on the slice's own date.

    bool contains(qint64 timestamp) const { return timestamp >= first && timestamp <= last; }
};

/// The slice around a timestamp (ms since the epoch). It is as wide as the batch, narrower around a
/// change of the clock, and one millisecond wide where the batch's start had to be repaired, so
/// that each repair is logged.
TimeSlice timeSliceFor(qint64 timestamp);

/// Caches the last slice: asking for moments of one batch formats its names once. Not thread-safe.
class TimeSliceCache
{
public:
    /// The slice of the timestamp; the reference is valid until the next call.
    const TimeSlice& at(qint64 timestamp)
    {
        if (!m_slice.contains(timestamp)) {
            m_slice = timeSliceFor(timestamp);
        }
        return m_slice;
    }

private:
    TimeSlice m_slice;
};

} // namespace scn
