#include "plot/batchintake.h"

#include "common/threadassert.h"
#include "state/globals.h"
#include "storage/curveseriesdata.h"

#include <QScopedValueRollback>

#include <utility>

namespace scn {

namespace {

using std::chrono::milliseconds;

/// What a slice may take, and the pause after it. Without a pause the event loop would handle everything else
/// first for as long as there is something else.
constexpr milliseconds kSlice{8};
constexpr milliseconds kPause{1};

constexpr milliseconds kWhole{-1};

/// The first readings of a batch, a sweep of most scans, are there at once, however long that takes.
constexpr int kReadingsAtOnce = 60;

} // namespace

BatchIntake::BatchIntake(milliseconds registrationInterval, BatchStored batchStored)
    : m_registrationInterval(registrationInterval)
    , m_batchStored(std::move(batchStored))
{
    assertGuiThread();
    m_turn.setSingleShot(true);
    m_turn.setInterval(kPause);
    connect(&m_turn, &QTimer::timeout, this, [this] { proceed(kSlice); });
}

void BatchIntake::take(const QList<MeasurementData>& batch)
{
    assertGuiThread();
    if (batch.isEmpty()) {
        return;
    }
    finish();
    m_batches.append(batch);
    // A run that has ended has everything stored, and so has one that is about to begin with an empty store.
    proceed(g_scanRunning.load(std::memory_order_relaxed) ? kSlice : kWhole);
}

void BatchIntake::finish()
{
    assertGuiThread();
    proceed(kWhole);
}

/// Reopening a day file handles events in the middle of a reading: what arrives then has to wait its turn.
void BatchIntake::proceed(milliseconds budget)
{
    const bool isWhole = budget < milliseconds::zero();
    if (!m_isStoring || isWhole) {
        m_sliceEnd = isWhole ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(budget);
    }
    if (m_isStoring) {
        return;
    }
    m_turn.stop();
    const QScopedValueRollback<bool> storing(m_isStoring, true);
    while (!m_batches.isEmpty()) {
        storeNext();
        const bool mayPause = m_next == 0 || m_next >= kReadingsAtOnce;
        if (mayPause && m_sliceEnd.hasExpired() && !m_batches.isEmpty()) {
            m_turn.start();
            return;
        }
    }
}

void BatchIntake::storeNext()
{
    if (m_next == 0) {
        registerSeriesAgain();
    }
    const MeasurementData reading = m_batches.constFirst().at(m_next);
    ++m_next;
    if (const auto series = g_curveSeries.value(reading.channel)) {
        series->addPoint(static_cast<double>(reading.time.toMSecsSinceEpoch()), reading.value);
    }
    if (m_next == m_batches.constFirst().size()) {
        m_next = 0;
        m_batches.removeFirst();
        m_batchStored(reading);
    }
}

/// Registers the series that the store could not take when the run began. After a refusal the others
/// are not tried: each attempt might wait for the store.
void BatchIntake::registerSeriesAgain()
{
    if (m_sinceRegistration.isValid() &&
        !m_sinceRegistration.hasExpired(m_registrationInterval.count())) {
        return;
    }
    // A run that begins in the events of a registration empties the map.
    const auto all = g_curveSeries;
    for (const auto& series : all) {
        if (!series || series->curveId() != -1) {
            continue;
        }
        m_sinceRegistration.start();
        if (!series->registerAgain()) {
            return;
        }
    }
}

} // namespace scn
