#pragma once

#include "plot/ccurveplot.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QTimer>
#include <QVector>

#include <memory>
#include <vector>

/// How long something took, and how long it kept the processor.
struct TimeTaken
{
    double ms;
    double processorMs;
};

/// A chart on stored readings, used as by a hand, and a heartbeat of its thread. The day files have
/// curves named by rawCurveName().
class PastViews : public QObject
{
public:
    /// A chart of the first `shown` of the `curves` curves in the files of a directory.
    PastViews(const QString& directory, int curves, int shown);
    ~PastViews() override;
    Q_DISABLE_COPY_MOVE(PastViews)

    /// Views from one time to another (ms since the epoch), both in the files. Returns the time to
    /// the pixels.
    TimeTaken show(qint64 from, qint64 to);

    /// Turns the wheel over the chart by one notch or drags it by some pixels. Returns the time from then
    /// to the pixels of the view that this leads to.
    TimeTaken turnWheel(int notches);
    TimeTaken drag(int pixels);

    /// Lets the program do what it does while nothing happens.
    void waitUntilIdle();

    /// Begins to store a reading of each curve ten times a second.
    void startScan();

    /// Longest time between beats so far, less the interval, and most processor time.
    TimeTaken largestGap() const { return m_largestGap; }

    /// Longest time from when readings were due until all were stored.
    double largestDelayMs() const { return m_largestDelayMs; }

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void beginGesture();
    TimeTaken timeToPixels();
    const QVector<QPointF>& loadedPoints(int curve) const;
    bool isViewLoaded() const;
    void wait(qint64 milliseconds);
    void beat();
    void storeReadings();

    std::unique_ptr<CurveDataDB> m_store;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
    int m_shown;
    CCurvePlot m_plot;
    QVector<QPointF> m_former; ///< The first curve's points before the gesture.
    QTimer m_heart;
    QTimer m_scan;
    QElapsedTimer m_sinceGesture;
    double m_processorMsBefore = 0.0;
    QElapsedTimer m_sinceBeat;
    QElapsedTimer m_sinceScan;
    qint64 m_sweeps = 0;
    double m_processorMsAtBeat = 0.0;
    TimeTaken m_largestGap{0.0, 0.0};
    double m_largestDelayMs = 0.0;
    bool m_isPainted = false;
};
