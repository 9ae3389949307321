#include "storage/nonowningcurvedata.h"

#include "storage/curveseriesdata.h"

NonOwningCurveData::NonOwningCurveData(CurveSeriesData* series)
    : m_series(series)
{
}

size_t NonOwningCurveData::size() const
{
    return m_series ? m_series->size() : 0;
}

QPointF NonOwningCurveData::sample(size_t i) const
{
    return m_series ? m_series->sample(i) : QPointF();
}

QRectF NonOwningCurveData::boundingRect() const
{
    return m_series ? m_series->boundingRect() : QRectF();
}
