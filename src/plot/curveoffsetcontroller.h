#pragma once

#include <QColor>
#include <QList>
#include <QMap>
#include <QString>
#include <QWidget>

class CCurvePlot;
class CurveLabel;
class QwtPlotCurve;

/// The strip left of a plot that stands in for a y scale. It holds one tag per curve at the height of
/// the curve's average plus its display offset; dragging a tag shifts the curve on the display and
/// never in the store. Heights follow the strip's own height, not the canvas'.
///
/// Curves are told apart by their address alone, so one that has been deleted does no harm here.
/// GUI thread.
class CurveOffsetController : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CurveOffsetController)

public:
    /// `plot` is the source of the y bounds; it may be null and is not owned.
    CurveOffsetController(CCurvePlot* plot, QWidget* parent);

    /// Adds the tag of a curve at the height of `baseValue`, in y units. Nothing happens for a null
    /// curve or one that has a tag.
    void addCurveLabel(const QString& text, QwtPlotCurve* curve, const QColor& color,
                       double baseValue);

    /// Offset that a tag stands for, in y units. A curve without a tag is ignored, and reads as 0.
    void setLabelValue(QwtPlotCurve* curve, double value);
    double labelValue(QwtPlotCurve* curve) const;

    /// A curve without a tag is ignored by each of these.
    void hideCurveLabel(QwtPlotCurve* curve);
    void showCurveLabel(QwtPlotCurve* curve);
    void setLabelColor(QwtPlotCurve* curve, const QColor& color);

    /// Removes all tags; the base levels of their curves are kept.
    void clearLabels();

    /// Takes the y bounds from another plot from now on. Null leaves the bounds as they are.
    void setPlot(CCurvePlot* plot);

    QSize minimumSizeHint() const override;

signals:
    /// A tag was dragged: the curve's new display offset in y units.
    void offsetChanged(QwtPlotCurve* curve, double offset);

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void onLabelPressed(CurveLabel* label);
    void onDragStarted();
    void onLabelDragged(int deltaY);
    void onDragEnded();

private:
    void connectPlot();
    void onYAxisRangeChanged(double yMin, double yMax);
    void placeLabels();
    void placeLabel(QwtPlotCurve* curve, CurveLabel* label);
    int valueToPixel(double value, double base) const;

    QWidget* m_labelLayer;
    QMap<QwtPlotCurve*, CurveLabel*> m_labels;
    QList<QwtPlotCurve*> m_labelOrder;
    CurveLabel* m_activeLabel = nullptr;
    CCurvePlot* m_plot;
    double m_defaultBase = 0.0;
    double m_yMin = 0.0;
    double m_yMax = 1.0;
    QMap<QwtPlotCurve*, double> m_baseValues;
};
