#pragma once

#include <QColor>
#include <QList>
#include <QMap>
#include <QString>
#include <QWidget>

class CCurvePlot;
class CurveLabel;
class QwtPlotCurve;

/// The strip to the left of a plot, in place of a y scale. It holds one tag per curve, at the height of
/// the curve's average plus its display offset. Dragging a tag shifts the displayed curve, never the
/// stored data. Heights follow the strip's own height, not the canvas'.
///
/// The strip misses reports that another plot has just made (see CCurvePlot::yAxisRangeChanged()), so it also
/// reads the y bounds whenever its plot sets others.
///
/// Curves are identified by address only, so a deleted one does no harm. GUI thread.
class CurveOffsetController : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CurveOffsetController)

public:
    /// `plot` supplies the y bounds; it may be null and is not owned.
    CurveOffsetController(CCurvePlot* plot, QWidget* parent);

    /// Adds a curve's tag at the height of `baseValue`, in y units. Ignored for a null curve or one that
    /// has a tag.
    void addCurveLabel(const QString& text, QwtPlotCurve* curve, const QColor& color,
                       double baseValue);

    /// The offset a tag shows, in y units; 0, and ignored when set, for a curve without a tag.
    void setLabelValue(QwtPlotCurve* curve, double value);
    double labelValue(QwtPlotCurve* curve) const;

    // Ignored for a curve without a tag.
    void hideCurveLabel(QwtPlotCurve* curve);
    void showCurveLabel(QwtPlotCurve* curve);
    void setLabelColor(QwtPlotCurve* curve, const QColor& color);

    /// Removes all tags but keeps the base levels of their curves.
    void clearLabels();

    /// Takes the y bounds from another plot from now on; null keeps the current bounds.
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
    void readRange();
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
