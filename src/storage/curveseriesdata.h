#pragma once

#include "storage/curvestatistics.h"
#include "storage/heldfiles.h"
#include "storage/storedchanges.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include <qwt_series_data.h>

class CurveDataDB;

namespace scn {
class CurveRead;
class ReadSlice;
} // namespace scn

/// One channel's curve as charts and grids see it. It passes each reading to the store, keeps the
/// newest in memory for the statistics, and holds the points a plot is showing.
///
/// Times are milliseconds since the Unix epoch; as the x of a point they are doubles, truncated
/// towards zero when converted back. GUI thread, except the constructor, which may run anywhere;
/// there is no lock.
class CurveSeriesData : public QwtSeriesData<QPointF>
{
public:
    /// Points kept in memory after each append.
    static constexpr int kMaxRecentPoints = 15000;

    /// Registers `curveName` with the store of `directoryName`. If that fails the series stays empty
    /// until registerAgain() succeeds: points and windows are ignored.
    CurveSeriesData(const QString& curveName, const QString& directoryName);

    /// The same with the caller's store, which must outlive the series; null: no store.
    CurveSeriesData(const QString& curveName, CurveDataDB* store);

    /// Registers a curve refused before, without the delay of a new one. False if it is refused
    /// again; does nothing if it is registered.
    bool registerAgain();

    /// Stores one reading at once and adds it to the points in memory. `x` in ms, `y` as measured.
    void addPoint(double x, double y);

    /// Stores several readings at once and adds them to the points in memory.
    void addPoints(const QVector<QPointF>& points);

    /// Loads the points for a plot from `start` to `end`: all points in memory, if `start` is
    /// within their span extended by 10 s on either side, else what the store has for that range;
    /// thinned to `maxPoints` (0 or less: no limit), with `offset` added to each y. First writes
    /// out and detaches the store. Returns what it read from the store, without the offset.
    QVector<QPointF> loadWindow(qint64 start, qint64 end, int maxPoints, double offset);

    /// Whether loadWindow() takes a window with this start from the points in memory.
    bool isInMemory(qint64 start) const;

    /// The state of the stored points; see CurveDataDB::storedState(). The series is registered.
    scn::StoredState storedState() const;

    /// loadWindow() in slices, for a window that is not in memory: begins a read, goes on with it until
    /// that returns true, and shows what it has. The series is registered.
    scn::CurveRead beginLoad(qint64 start, qint64 end, int maxPoints, scn::HeldFiles& files);
    bool proceedWithLoad(scn::CurveRead& read, scn::ReadSlice& slice);
    void finishLoad(const scn::CurveRead& read, double offset);

    /// CurveDataDB::lookThrough() for this curve. The series is registered.
    bool lookThrough(qint64 start, qint64 end, const scn::HeldFiles& files, scn::ReadSlice& slice);

    /// Whether the curve is registered with a store, so that it can load.
    bool isUsable() const { return m_curveId != -1 && m_store; }

    /// Everything the store has of this curve, without the offset; empty if there is nothing or the
    /// curve is not registered.
    QVector<QPointF> allData() const;

    /// Drops the points in memory and on display and resets the statistics. The store and the
    /// offset are unchanged.
    void clear();

    /// Number of points on display.
    size_t size() const override;

    /// Point `i` on display, with the offset; a zero point if there is none.
    QPointF sample(size_t i) const override;

    /// x from the first to the last point on display, y over all of them; a zero rectangle if there
    /// are none.
    QRectF boundingRect() const override;

    /// Required by the plot library; the series loads by time instead.
    void setRectOfInterest(const QRectF& rect) override;

    /// y of point `i` on display without the offset; 0 if there is no such point.
    double rawValue(int i) const;

    /// Statistics over the points in memory, whatever is on display. Without points: 0, an empty
    /// text, and the initial values of minimum and maximum.
    int count() const;
    double lastValue() const;
    /// Local time of the newest point, "yyyy-MM-dd hh:mm:ss".
    QString lastTimeText() const;
    double minimum() const;
    double maximum() const;
    double sum() const;
    /// The mean; that of the finite values if the sum is not finite.
    double average() const;

    /// Number of the curve in the store's current file; -1 if it could not be registered.
    int curveId() const { return m_curveId; }
    /// The offset added at the last loadWindow().
    double yOffset() const { return m_yOffset; }
    /// The points in memory, oldest first, as measured.
    QVector<QPointF> recentPoints() const;
    /// The points on display, oldest first, with the offset.
    const QVector<QPointF>& visiblePoints() const { return m_visiblePoints; }
    /// Times of the first and last point in memory; 0 if there are none.
    qint64 recentStart() const { return m_recentStart; }
    qint64 recentEnd() const { return m_recentEnd; }
    /// Times of the first and last point on display, or the requested range if it had none.
    qint64 visibleStart() const { return m_visibleStart; }
    qint64 visibleEnd() const { return m_visibleEnd; }

private:
    void trimWindow();
    void pointsAdded();
    void showWindow(qint64 start, qint64 end, const QPointF* points, int count, int maxPoints);
    void showPoints(const QPointF* points, int count, int maxPoints);
    void updateStatistics();
    const scn::CurveStatistics& statistics() const;
    const QPointF* recentData() const { return m_recentPoints.constData() + m_recentOffset; }
    int recentCount() const { return m_recentPoints.size() - m_recentOffset; }

    CurveDataDB* m_store;
    QString m_curveName;
    int m_curveId;
    QVector<QPointF> m_recentPoints;
    // Index of the oldest point still in the window; those before it wait for the next block move.
    int m_recentOffset = 0;
    qint64 m_recentStart = 0;
    qint64 m_recentEnd = 0;
    QVector<QPointF> m_visiblePoints;
    qint64 m_visibleStart = 0;
    qint64 m_visibleEnd = 0;
    double m_yOffset = 0.0;
    // Computed on request, since most readings arrive with nobody looking.
    mutable scn::CurveStatistics m_statistics;
    mutable bool m_statisticsStale = false;
    mutable bool m_boundsStale = true;
};
