#pragma once

#include "storage/nonowningcurvedata.h"
#include "storage/storedchanges.h"

#include <QPointF>
#include <QRectF>
#include <QVector>

#include <optional>

namespace scn {

/// What one curve of one chart shows of a series that other charts may show too. A series has a single
/// set of points on display, that of the last to load it; the curve keeps the points and the offset of
/// its own load. Until its first load it shows what the series has on display.
///
/// The points are shared with the series, not copied. GUI thread.
class LoadedCurveData : public NonOwningCurveData
{
public:
    using NonOwningCurveData::NonOwningCurveData;

    /// Has the series load its points from `start` to `end` (ms since the epoch), at most `maxPoints`,
    /// and keeps them; see CurveSeriesData::loadWindow(). Nothing is loaded if that would give the points
    /// kept already. There must be a series.
    void load(qint64 start, qint64 end, int maxPoints, double offset);

    /// The points on display, oldest first: x in ms, y with the offset.
    const QVector<QPointF>& points() const;

    /// The offset in points().
    double offset() const;

    size_t size() const override;
    QPointF sample(size_t i) const override;
    QRectF boundingRect() const override;

private:
    /// A load from the store, and the state of what was stored then.
    struct StoredLoad
    {
        qint64 start;
        qint64 end;
        int maxPoints;
        double offset;
        StoredState state;
    };

    bool wouldRepeat(const StoredLoad& load) const;

    bool m_loaded = false;
    QVector<QPointF> m_points;
    double m_offset = 0.0;
    std::optional<StoredLoad> m_storedLoad; ///< Where the points come from, if not from memory.
};

} // namespace scn
