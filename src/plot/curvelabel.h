#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

class QwtPlotCurve;

/// The tag of a curve beside a plot: the channel number and an arrow towards the plot. It reports drags
/// and leaves moving to its owner. GUI thread.
class CurveLabel : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CurveLabel)

public:
    /// `curve` only identifies the tag; it is neither owned nor dereferenced.
    CurveLabel(const QString& text, QwtPlotCurve* curve, QWidget* parent);

    QString text() const { return m_text; }
    QwtPlotCurve* curve() const { return m_curve; }
    QColor color() const { return m_color; }

    /// Display offset of the curve in y units.
    double value() const { return m_value; }
    void setValue(double value);

    void setColor(const QColor& color);

signals:
    void labelPressed(CurveLabel* label);
    void dragStarted();
    /// Movement since the last report, in pixels; positive is down.
    void dragged(int deltaY);
    void dragEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void endDrag();

    QString m_text;
    QwtPlotCurve* m_curve;
    double m_value = 0.0;
    QColor m_color = Qt::lightGray;
    bool m_dragging = false;
    int m_lastX = 0;
    int m_lastY = 0;
};
