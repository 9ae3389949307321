#include "plot/curvefetch.h"

#include "storage/curveseriesdata.h"

namespace scn {

CurveFetch::CurveFetch(const LoadedCurveData& curve, const CurveView& view, HeldFiles& files)
    : m_series(curve.series())
    , m_view(view)
    , m_state(m_series->storedState())
    , m_read(m_series->beginLoad(view.start, view.end, view.maxPoints, files))
{
}

bool CurveFetch::proceed(ReadSlice& slice)
{
    return m_series->proceedWithLoad(m_read, slice);
}

CurveLoad CurveFetch::result() const
{
    m_series->finishLoad(m_read, m_view.offset);
    return {m_view, m_state, m_read.points(), m_series->visiblePoints(), m_series->yOffset()};
}

} // namespace scn
