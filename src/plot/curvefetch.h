#pragma once

#include "plot/loadedcurvedata.h"
#include "storage/curveread.h"

namespace scn {

/// A load of one curve from the store, in slices. What the curve shows stays; the series shows what is
/// loaded once it is through. GUI thread.
class CurveFetch
{
public:
    /// The files that it opens are kept open in `files`, which outlives it.
    CurveFetch(const LoadedCurveData& curve, const CurveView& view, HeldFiles& files);

    /// True once all is there. The series must still exist.
    bool proceed(ReadSlice& slice);

    /// What was loaded, once all is there.
    CurveLoad result() const;

private:
    CurveSeriesData* m_series;
    CurveView m_view;
    StoredState m_state; ///< From before the first slice.
    CurveRead m_read;
};

} // namespace scn
