#pragma once

#include <qwt_plot_panner.h>

/// Drags a plot's time axis live, in whole steps of its ticks: horizontally only, with any mouse button.
/// GUI thread.
class CustomPanner : public QwtPlotPanner
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomPanner)

public:
    explicit CustomPanner(QWidget* canvas);

    /// Whether to pan in whole steps (the default) or freely, as the library does.
    void setSnapToTicks(bool on);

    /// Hiding the canvas ends a drag: the release goes elsewhere.
    bool eventFilter(QObject* object, QEvent* event) override;

signals:
    /// The time axis has moved by a whole number of steps. Hides the base's panned(int, int): name either
    /// one with qOverload.
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
