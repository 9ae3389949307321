#include "storage/timeslice.h"

#include "storage/shardnaming.h"

#include <QDateTime>

#include <algorithm>

namespace scn {

namespace {

/// Changes of the clock are at least this far apart and each falls into one such window.
constexpr qint64 kWindowMs = 900000;

int offsetFromUtc(qint64 timestamp)
{
    return QDateTime::fromMSecsSinceEpoch(timestamp).offsetFromUtc();
}

bool sameOffset(qint64 first, qint64 timestamp, qint64 last)
{
    const int offset = offsetFromUtc(timestamp);
    return offsetFromUtc(first) == offset && offsetFromUtc(last) == offset;
}

qint64 windowStart(qint64 timestamp)
{
    const qint64 rest = timestamp % kWindowMs;
    return timestamp - (rest < 0 ? rest + kWindowMs : rest);
}

} // namespace

TimeSlice timeSliceFor(qint64 timestamp)
{
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(timestamp);
    TimeSlice slice;
    slice.first = timestamp;
    slice.last = timestamp;
    slice.dateKey = local.toString(QStringLiteral("yyyyMMdd"));
    slice.batchStart = alignToBatchStart(timestamp);
    slice.batchName = makeBatchName(timestamp);
    slice.ownFile = QDateTime::fromMSecsSinceEpoch(slice.batchStart).date() == local.date();
    if (timestamp < slice.batchStart || timestamp - slice.batchStart >= kBatchLengthMs) {
        return slice; // the start was repaired: the facts hold for this moment only
    }
    if (!slice.ownFile) {
        return slice;
    }

    qint64 first = slice.batchStart;
    qint64 last = slice.batchStart + kBatchSpanMs;
    if (!sameOffset(first, timestamp, last)) {
        first = std::max(first, windowStart(timestamp));
        last = std::min(last, windowStart(timestamp) + kWindowMs - 1);
        if (!sameOffset(first, timestamp, last)) {
            return slice;
        }
    }
    // With a constant offset, the local date advances with the time.
    const qint64 midnight = timestamp - local.time().msecsSinceStartOfDay();
    slice.first = std::max(first, midnight);
    slice.last = std::min(last, midnight + kDayLengthMs - 1);
    return slice;
}

} // namespace scn
