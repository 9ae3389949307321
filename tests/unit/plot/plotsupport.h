#pragma once

#include "plot/ccurveplot.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "support/settle.h"
#include "support/timerhand.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QTimer>
#include <QVector>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>
#include <qwt_interval.h>
#include <qwt_scale_engine.h>

#include <functional>
#include <memory>
#include <vector>

/// What the tests of the plot share: a plot that counts its replots, series over a store of their
/// own, and input as a user makes it.
namespace plotsupport {

/// Noon of today, ms since the epoch: readings of today go into a day file that is there already.
inline qint64 noonToday()
{
    return QDateTime(QDate::currentDate(), QTime(12, 0)).toMSecsSinceEpoch();
}

/// A plot that counts how often it is drawn anew.
class CountingPlot : public CCurvePlot
{
public:
    void replot() override
    {
        ++replots;
        CCurvePlot::replot();
    }

    int replots = 0;
};

/// A scale engine that lets something happen while its plot sets the axis.
class InterruptingEngine : public QwtLinearScaleEngine
{
public:
    QwtScaleDiv divideScale(double x1, double x2, int maxMajorSteps, int maxMinorSteps,
                            double stepSize) const override
    {
        if (interruption) {
            interruption();
        }
        return QwtLinearScaleEngine::divideScale(x1, x2, maxMajorSteps, maxMinorSteps, stepSize);
    }

    std::function<void()> interruption;
};

/// Series over a store below the test program. Registering a name takes a while, so each series
/// serves test after test.
class SeriesPool
{
public:
    /// `directoryName`: name of the store's directory, one per test program.
    explicit SeriesPool(const QString& directoryName)
        : m_directoryName(directoryName)
    {
        directory().removeRecursively();
    }

    ~SeriesPool()
    {
        CurveDataDB::shutdown();
        directory().removeRecursively();
    }

    Q_DISABLE_COPY_MOVE(SeriesPool)

    /// Empty series `index`: nothing in memory, on display or in the store. It keeps the range that
    /// it was last asked to load as its visible range, 0 to 0 at first.
    CurveSeriesData* empty(size_t index)
    {
        CurveSeriesData* series = get(m_empty, index, 201);
        series->loadWindow(0, 0, 1, 0.0);
        return series;
    }

    /// Series `index` with `points` on display and in memory, shifted by `offset`. What it had
    /// before is left in the store.
    CurveSeriesData* loaded(size_t index, const QVector<QPointF>& points, double offset = 0.0)
    {
        CurveSeriesData* series = get(m_loaded, index, 101);
        series->clear();
        series->addPoints(points);
        if (!points.isEmpty()) {
            series->loadWindow(qint64(points.first().x()), qint64(points.last().x()), 0, offset);
        }
        return series;
    }

private:
    QDir directory() const
    {
        return QDir(QCoreApplication::applicationDirPath() + QLatin1Char('/') + m_directoryName);
    }

    using Series = std::vector<std::unique_ptr<CurveSeriesData>>;

    CurveSeriesData* get(Series& series, size_t index, size_t firstChannel) const
    {
        while (series.size() <= index) {
            const QString name = QStringLiteral("%1(VDC)").arg(firstChannel + series.size());
            series.push_back(std::make_unique<CurveSeriesData>(name, m_directoryName));
        }
        return series[index].get();
    }

    QString m_directoryName;
    Series m_empty;
    Series m_loaded;
};

inline QwtInterval timeBounds(const QwtPlot& plot)
{
    return plot.axisInterval(QwtPlot::xBottom);
}

inline QwtInterval valueBounds(const QwtPlot& plot)
{
    return plot.axisInterval(QwtPlot::yLeft);
}

/// Bounds of the time axis as whole milliseconds: compared as doubles, a millisecond more or less
/// would pass for equal.
inline qint64 lowerMs(const QwtPlot& plot)
{
    return qRound64(timeBounds(plot).minValue());
}

inline qint64 upperMs(const QwtPlot& plot)
{
    return qRound64(timeBounds(plot).maxValue());
}

/// The timer of `plot` that runs the reload (single-shot), or the one that runs the range check.
inline QTimer* timerOf(const CCurvePlot& plot, bool singleShot)
{
    for (QTimer* timer : plot.findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (timer->isSingleShot() == singleShot) {
            return timer;
        }
    }
    return nullptr;
}

/// Lets the reload that is armed begin.
inline void reloadNow(const CCurvePlot& plot)
{
    runOut(timerOf(plot, true));
}

/// Lets the time pass in which an armed reload runs, and those that range checks arm after it.
inline void passReloads(const CCurvePlot& plot)
{
    for (int check = 0; check < 5; ++check) {
        for (const bool isReload : {false, true}) {
            QTimer* const timer = timerOf(plot, isReload);
            if (timer->isActive()) {
                runOut(timer);
            }
        }
        QCoreApplication::processEvents();
    }
}

/// Shows `plot` and delivers the events of being shown.
inline bool showSettled(QWidget& plot)
{
    plot.show();
    const bool exposed = QTest::qWaitForWindowExposed(&plot);
    settle();
    return exposed;
}

/// Turns the wheel over the middle of the canvas of a shown plot; a positive `notches` is away from
/// the user. The window finds out what lies there, as it does for a user.
inline void turnWheel(QwtPlot& plot, int notches)
{
    const QPoint pos = plot.canvas()->mapTo(plot.window(), plot.canvas()->rect().center());
    QWheelEvent event(pos, plot.window()->mapToGlobal(pos), QPoint(), QPoint(0, 120 * notches),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(plot.window()->windowHandle(), &event);
}

/// A mouse on the window of a plot. Positions are those of the canvas where it lies at that moment:
/// the labels of the time axis can shift it.
class Mouse
{
public:
    explicit Mouse(QwtPlot& plot)
        : m_plot(plot)
    {
    }

    void press(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton)
    {
        m_inWindow = m_plot.canvas()->mapTo(m_plot.window(), pos);
        QTest::mousePress(window(), button, Qt::NoModifier, m_inWindow);
    }

    void move(const QPoint& pos)
    {
        m_inWindow = m_plot.canvas()->mapTo(m_plot.window(), pos);
        QTest::mouseMove(window(), m_inWindow);
    }

    /// Releases the button where the mouse is.
    void release(Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseRelease(window(), button, Qt::NoModifier, m_inWindow);
    }

private:
    QWindow* window() const { return m_plot.window()->windowHandle(); }

    QwtPlot& m_plot;
    QPoint m_inWindow;
};

} // namespace plotsupport
