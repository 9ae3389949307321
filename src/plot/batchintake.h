#pragma once

#include "acquisition/measurementdata.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

namespace scn {

/// Stores the batches of the acquisition in the series of g_curveSeries, in the order of arrival. While a scan
/// is running it works in slices: a full batch takes some 40 ms, and the event loop comes round in between. At
/// most the rest of one batch is ever waiting. GUI thread.
class BatchIntake : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BatchIntake)

public:
    /// Told of each batch, once all of it is stored.
    using BatchStored = std::function<void(const MeasurementData& last)>;

    /// A series that the store has refused is offered again that often.
    BatchIntake(std::chrono::milliseconds registrationInterval, BatchStored batchStored);

    /// Stores what is left of the batch before, and begins with this one. An empty batch is ignored.
    void take(const QList<MeasurementData>& batch);

    /// Stores at once what is left. While a reading is being stored, the rest follows it without a pause.
    void finish();

private:
    void proceed(std::chrono::milliseconds budget);
    void storeNext();
    void registerSeriesAgain();

    const std::chrono::milliseconds m_registrationInterval;
    const BatchStored m_batchStored;
    QList<QList<MeasurementData>> m_batches; ///< The first is being stored.
    int m_next = 0;                          ///< Index of its next reading.
    bool m_isStoring = false;
    QDeadlineTimer m_sliceEnd;
    QTimer m_turn;
    QElapsedTimer m_sinceRegistration; ///< since the last attempt; invalid before the first
};

} // namespace scn
