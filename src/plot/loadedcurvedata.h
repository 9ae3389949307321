#pragma once

#include "storage/nonowningcurvedata.h"
#include "storage/storedchanges.h"

#include <QPointF>
#include <QRectF>
#include <QVector>

#include <optional>

namespace scn {

/// What a curve asks its series for.
struct CurveView
{
    qint64 start; ///< Milliseconds since the epoch.
    qint64 end;
    int maxPoints; ///< 0 or less: no limit.
    double offset; ///< Added to each y.
};

/// What was loaded, and from what.
struct CurveLoad
{
    CurveView view;
    std::optional<StoredState> state; ///< What was stored then, if the points are from the store.
    QVector<QPointF> measured;        ///< In that case, the points without the offset.
    QVector<QPointF> points;
    double offset;
};

/// What one curve of one chart shows of a series that other charts may show too. A series has a single
/// set of points on display, that of the last to load it; the curve keeps the points and the offset of
/// its own load. Before its chart begins to load it, it shows what the series has on display.
///
/// The points are shared with the series, not copied. GUI thread.
class LoadedCurveData : public NonOwningCurveData
{
public:
    using NonOwningCurveData::NonOwningCurveData;

    /// Its chart begins to load it: until that load is shown there is nothing on display.
    void expectLoad() { m_expectsLoad = true; }

    /// Has the series load the view and keeps its points; see CurveSeriesData::loadWindow(). Nothing is
    /// loaded if that would give the points kept already, but for the offset. There must be a series.
    void load(const CurveView& view);

    /// The first half of load(): what is to be shown then, if anything. Opening a file handles events, so the
    /// curve may be gone afterwards.
    std::optional<CurveLoad> fetchAnew(const CurveView& view);

    /// Whether load() would read from the store.
    bool needsStore(const CurveView& view) const;

    /// Loads as load() does, but leaves on display what is there.
    CurveLoad fetch(const CurveView& view) const;

    /// Puts what was fetched on display.
    void show(const CurveLoad& load) { m_shown = load; }

    /// The points on display, oldest first: x in ms, y with the offset.
    const QVector<QPointF>& points() const;

    /// The offset in points().
    double offset() const;

    size_t size() const override;
    QPointF sample(size_t i) const override;
    QRectF boundingRect() const override;

private:
    std::optional<StoredState> storedFor(const CurveView& view) const;
    bool wouldRepeat(const CurveView& view, const StoredState& state) const;
    void shift(double offset);

    /// The display of the series, or none if that may be another chart's.
    const CurveSeriesData* borrowed() const { return m_expectsLoad ? nullptr : series(); }

    std::optional<CurveLoad> m_shown;
    bool m_expectsLoad = false;
};

} // namespace scn
