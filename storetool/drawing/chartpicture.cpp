#include "storetool/drawing/chartpicture.h"

#include "common/channelnumber.h"
#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "plot/curveoffsetcontroller.h"
#include "plot/curvesamples.h"
#include "plot/curvetable.h"
#include "plot/plotsetup.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storage/curvestatistics.h"
#include "storetool/drawing/picturelegend.h"
#include "storetool/drawing/picturescale.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPen>
#include <QVBoxLayout>
#include <qwt_interval.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>

#include <algorithm>

namespace scnstore {
namespace {

constexpr int kMargin = 10;

/// Width of a plot whose range is a single moment: that of a new chart.
constexpr qint64 kLeastSpanMs = 60000;

QVector<PictureLegend::Entry> legendOf(const QStringList& curves)
{
    QVector<PictureLegend::Entry> entries;
    for (const QString& curve : curves) {
        entries.append({curve, ColorSelectButton::paletteColor(entries.size())});
    }
    return entries;
}

} // namespace

int ChartPicture::mostCurves()
{
    return scn::CurveTable::kRowCount;
}

ChartPicture::ChartPicture(CurveDataDB& store, const PictureContent& content, const QSize& size)
    : m_store(store)
    , m_plot(new CCurvePlot(this))
    , m_tags(new CurveOffsetController(m_plot, this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(kMargin);
    auto* plotRow = new QHBoxLayout;
    plotRow->addWidget(m_tags);
    plotRow->addWidget(m_plot);
    plotRow->addWidget(new PictureScale(*m_plot, this));
    layout->addLayout(plotRow, 1);
    layout->addWidget(
        new PictureLegend(legendOf(content.curves), size.width() - 2 * kMargin, this));
    resize(size);

    // The time stays where it is, whatever the clock says.
    m_plot->setFollowTime(false);
    const qint64 end = content.end > content.start ? content.end : content.start + kLeastSpanMs;
    m_plot->setAxisScale(QwtPlot::xBottom, static_cast<double>(content.start),
                         static_cast<double>(end));
    addCurves(content);
}

ChartPicture::~ChartPicture()
{
    // Its curves point at the series.
    delete m_plot;
}

void ChartPicture::addCurves(const PictureContent& content)
{
    for (const QString& name : content.curves) {
        const QColor color = ColorSelectButton::paletteColor(m_curves.size());
        m_series.push_back(std::make_unique<CurveSeriesData>(name, &m_store));
        m_curves.append(m_plot->addCurve(m_series.back().get(), color,
                                         QString::number(scn::labelOfChannelText(name))));
        m_curves.constLast()->setPen(scn::curvePen(color));
    }
}

bool ChartPicture::hasRoom() const
{
    return size().expandedTo(layout()->minimumSize()) == size();
}

bool ChartPicture::load(const std::function<bool()>& isGivenUp)
{
    show();
    while (m_plot->isLoading()) {
        if (isGivenUp()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    addTags();
    return !isGivenUp();
}

/// Each stands at the mean of what is shown, where a chart has that of the newest readings.
void ChartPicture::addTags()
{
    m_plot->checkAxisRangeChange();
    for (QwtPlotCurve* curve : qAsConst(m_curves)) {
        const scn::CurveSamples samples(curve);
        if (samples.pointCount() == 0) {
            continue;
        }
        m_tags->addCurveLabel(curve->title().text(), curve, curve->pen().color(),
                              scn::statisticsOf(samples.points(), samples.pointCount()).mean);
        // Keeps it within the strip.
        m_tags->setLabelValue(curve, 0.0);
    }
}

bool ChartPicture::isWhole() const
{
    return std::all_of(m_series.cbegin(), m_series.cend(), [](const auto& series) {
        return series->isUsable() && series->storedState().doubts == 0;
    });
}

bool ChartPicture::hasReadings() const
{
    const QwtInterval time = m_plot->axisInterval(QwtPlot::xBottom);
    return std::any_of(m_curves.cbegin(), m_curves.cend(), [&time](const QwtPlotCurve* curve) {
        const scn::CurveSamples samples(curve);
        return std::any_of(samples.points(), samples.points() + samples.pointCount(),
                           [&time](const QPointF& sample) { return time.contains(sample.x()); });
    });
}

void ChartPicture::paintLines()
{
    auto* canvas = static_cast<QwtPlotCanvas*>(m_plot->canvas());
    canvas->setPaintAttribute(QwtPlotCanvas::BackingStore, false);
    // Or it paints its background as pixels.
    canvas->setAttribute(Qt::WA_OpaquePaintEvent, false);
}

} // namespace scnstore
