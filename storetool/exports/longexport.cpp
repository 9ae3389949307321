#include "storetool/exports/longexport.h"

#include "export/batchtables.h"
#include "storage/lockpatience.h"
#include "storetool/console/interrupt.h"
#include "storetool/console/progressline.h"

#include <QFileDevice>

#include <algorithm>
#include <atomic>

namespace scnstore {
namespace {

constexpr std::size_t kSamplesAhead = 1000;
/// Text collected before it goes to the device.
constexpr int kWriteBytes = 262144;

} // namespace

LongExport::LongExport(const ExportJob& job, QFileDevice& device)
    : m_job(job)
    , m_device(device)
    , m_rows(job.separator)
{
}

bool LongExport::Source::prepare()
{
    if (next == samples.size()) {
        samples.clear();
        next = 0;
        cursor->read(samples, kSamplesAhead);
    }
    return next < samples.size();
}

ExportResult LongExport::run()
{
    const ExportResult opened = openSources();
    return opened == ExportSuccess ? writeRows() : opened;
}

ExportResult LongExport::openSources()
{
    const scn::LockPatience patience;
    const std::atomic<bool> noStop{false};
    const QMap<int, QString> curves = m_job.store.namesForIds(m_job.curves);
    const scn::BatchTables tables =
        scn::collectTables(m_job.store, curves, m_job.times.start, m_job.times.end, noStop);
    bool failed = tables.failed;
    for (auto curve = curves.cbegin(); curve != curves.cend() && !failed; ++curve) {
        Source source;
        source.cursor = std::make_unique<scn::CurveCursor>(
            m_job.store, curve.key(), tables.byCurve.value(curve.key()), m_job.times.start,
            m_job.times.end, scn::CurveCursor::TimesAndValues);
        source.curve = m_rows.fieldsOf(*curve);
        failed = source.cursor->hasFailed();
        m_sources.push_back(std::move(source));
    }
    if (failed) {
        return ExportDbError;
    }
    const bool hasReadings =
        std::any_of(m_sources.cbegin(), m_sources.cend(),
                    [](const Source& source) { return source.cursor->isValid(); });
    return hasReadings ? ExportSuccess : ExportNoData;
}

/// Merges the curves: the source with the earliest sample is on top of the heap.
ExportResult LongExport::writeRows()
{
    const auto isLater = [this](std::size_t left, std::size_t right) {
        const qint64 leftTime = m_sources[left].sample().timestamp;
        const qint64 rightTime = m_sources[right].sample().timestamp;
        return leftTime != rightTime ? leftTime > rightTime : left > right;
    };
    std::vector<std::size_t> heap;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        if (m_sources[i].prepare()) {
            heap.push_back(i);
        }
    }
    std::make_heap(heap.begin(), heap.end(), isLater);
    ProgressLine progress(QStringLiteral("readings"), m_device.handle());
    qint64 readings = 0;
    m_rows.addTitles();
    while (!heap.empty() && !isInterrupted()) {
        std::pop_heap(heap.begin(), heap.end(), isLater);
        Source& source = m_sources[heap.back()];
        m_rows.addRow(source.sample().timestamp, source.curve, source.sample().value);
        ++source.next;
        ++readings;
        if (source.prepare()) {
            std::push_heap(heap.begin(), heap.end(), isLater);
        } else if (source.cursor->hasFailed()) {
            return ExportDbError;
        } else {
            heap.pop_back();
        }
        if (m_rows.text().size() >= kWriteBytes) {
            if (!flush()) {
                return ExportWriteError;
            }
            progress.show(readings);
        }
    }
    if (isInterrupted()) {
        return ExportCancelled;
    }
    return hasFailed() ? ExportDbError : flush() ? ExportSuccess : ExportWriteError;
}

bool LongExport::hasFailed() const
{
    return std::any_of(m_sources.cbegin(), m_sources.cend(),
                       [](const Source& source) { return source.cursor->hasFailed(); });
}

bool LongExport::flush()
{
    const QByteArray& text = m_rows.text();
    const bool written = m_device.write(text) == text.size();
    m_rows.clear();
    return written;
}

} // namespace scnstore
