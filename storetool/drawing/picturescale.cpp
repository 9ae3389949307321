#include "storetool/drawing/picturescale.h"

#include "plot/ccurveplot.h"

#include <QPainter>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>

namespace scnstore {
namespace {

constexpr int kWidth = 60;
constexpr int kFontPointSize = 8;
constexpr int kDigits = 6;

} // namespace

PictureScale::PictureScale(const CCurvePlot& plot, QWidget* parent)
    : QWidget(parent)
    , m_plot(plot)
{
    setFixedWidth(kWidth);
}

void PictureScale::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    QFont font = painter.font();
    font.setPointSize(kFontPointSize);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::WindowText));
    const QwtScaleMap pixels = m_plot.canvasMap(QwtPlot::yLeft);
    const QwtScaleDiv scale = m_plot.axisScaleDiv(QwtPlot::yLeft);
    const int height = painter.fontMetrics().height();
    for (const double value : scale.ticks(QwtScaleDiv::MajorTick)) {
        const QPoint inCanvas(0, qRound(pixels.transform(value)));
        const int y = mapFrom(window(), m_plot.canvas()->mapTo(window(), inCanvas)).y();
        painter.drawText(QRect(0, y - height / 2, width(), height),
                         Qt::AlignLeft | Qt::AlignVCenter, QString::number(value, 'g', kDigits));
    }
}

} // namespace scnstore
