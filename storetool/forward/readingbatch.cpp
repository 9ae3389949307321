#include "storetool/forward/readingbatch.h"

#include <cstring>

namespace scnstore {

namespace {

constexpr int kReadingFields = 4;
constexpr int kPlaceFields = 6;
constexpr qint64 kUsPerMs = 1000;
constexpr qint64 kMsPerDay = 86400000;

/// The server counts from the year 2000.
constexpr qint64 kServerEpochMs = 946684800000;

/// Midnights, the first in 4713 BC and the last in 294276: each day has bounds that the server knows.
constexpr qint64 kFirstTimeMs = -210866716800000;
constexpr qint64 kEndTimeMs = 9224286307200000;

qint64 dayOf(qint64 time)
{
    const qint64 day = time / kMsPerDay;
    return time % kMsPerDay < 0 ? day - 1 : day;
}

} // namespace

bool ReadingBatch::addReading(const QByteArray& instrument, const QByteArray& curve, qint64 time,
                              double value)
{
    if (time < kFirstTimeMs || time >= kEndTimeMs) {
        return false;
    }
    m_readings.startRow(kReadingFields);
    m_readings.putText(instrument);
    m_readings.putText(curve);
    m_readings.putInteger((time - kServerEpochMs) * kUsPerMs);
    m_readings.putDouble(value);
    m_days.insert(dayOf(time));
    ++m_readingCount;
    return true;
}

void ReadingBatch::addPlace(const QByteArray& instrument, const QByteArray& table,
                            const TablePlace& place)
{
    double lastValue = 0.0;
    std::memcpy(&lastValue, &place.lastValueBits, sizeof(lastValue));
    m_places.startRow(kPlaceFields);
    m_places.putText(instrument);
    m_places.putText(table);
    m_places.putInteger(place.firstTime);
    m_places.putInteger(place.lastId);
    m_places.putInteger(place.lastTime);
    m_places.putDouble(lastValue);
}

ReadingBatch::Mark ReadingBatch::mark() const
{
    return {m_readingCount, m_readings.size(), m_places.size()};
}

void ReadingBatch::returnTo(const Mark& mark)
{
    m_readingCount = mark.readings;
    m_readings.truncate(mark.readingBytes);
    m_places.truncate(mark.placeBytes);
}

} // namespace scnstore
