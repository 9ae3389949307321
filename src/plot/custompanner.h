#pragma once

#include <qwt_plot_panner.h>

/// Drags the time axis of a plot live, in whole steps of its ticks. It is always horizontal, and
/// any mouse button drags. GUI thread only.
class CustomPanner : public QwtPlotPanner
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomPanner)

public:
    explicit CustomPanner(QWidget* canvas);

    /// Pan in whole steps (the default), or freely as the library does.
    void setSnapToTicks(bool on);

signals:
    /// The time axis has been moved by a whole number of steps. It hides the base's
    /// panned(int, int): name either with qOverload.
    void panned();

protected:
    void widgetMousePressEvent(QMouseEvent* event) override;
    void widgetMouseReleaseEvent(QMouseEvent* event) override;
    void widgetMouseMoveEvent(QMouseEvent* event) override;

protected slots:
    void moveCanvas(int dx, int dy) override;

private:
    void readTimeAxis();

    bool m_snapToTicks = true;
    int m_accumX = 0;
    int m_accumY = 0;
    int m_lastX = 0;
    int m_lastY = 0;
    bool m_dragging = false;
    double m_startLower = 0.0;
    double m_startUpper = 0.0;
    double m_stepSize = 0.0;
};
