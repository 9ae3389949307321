#pragma once

#include "export/curvecursor.h"
#include "export/exportresult.h"
#include "storage/samplecolumn.h"
#include "storetool/exports/exportjob.h"
#include "storetool/exports/longrows.h"

#include <cstddef>
#include <memory>
#include <vector>

class QFileDevice;

namespace scnstore {

/// Writes one line for each reading, of all curves in order of time; readings of one moment in the order
/// of the curves. Memory does not grow with the number of readings.
class LongExport
{
public:
    /// The device is open.
    LongExport(const ExportJob& job, QFileDevice& device);

    ExportResult run();

private:
    /// The readings of one curve, some of them read ahead.
    struct Source
    {
        std::unique_ptr<scn::CurveCursor> cursor;
        LongRows::CurveFields curve;
        scn::SampleColumn samples;
        std::size_t next = 0;

        /// Whether there is a next sample; reads some ahead if need be.
        bool prepare();
        const scn::Sample& sample() const { return samples[next]; }
    };

    ExportResult openSources();
    ExportResult writeRows();
    bool hasFailed() const;
    bool flush();

    const ExportJob& m_job;
    QFileDevice& m_device;
    LongRows m_rows;
    std::vector<Source> m_sources;
};

} // namespace scnstore
