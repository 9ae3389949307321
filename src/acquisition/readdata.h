#pragma once

#include "acquisition/measurementdata.h"
#include "acquisition/readdatatiming.h"
#include "common/sleeper.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <chrono>

/// The acquisition thread. It runs as long as the window lives and the instrument is in use. During
/// a scan (g_scanRunning) it drains the instrument's reading memory about once a second and emits
/// the readings in batches. At all times it checks whether the instrument is lost.
///
/// The object belongs to the GUI thread; it emits its signals on the acquisition thread.
class ReadData : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReadData)

public:
    /// The process's only object, created on demand without a parent. Whoever ends the thread
    /// deletes it; the next call creates a new one. GUI thread only.
    static ReadData* instance();

    ReadData();
    ~ReadData() override;

    /// Replaces the waits and their clock. Only while the thread is not running.
    void setTiming(const scn::ReadDataTiming& timing);

    /// Clears the running flag: the loop's sleep ends early, and the thread ends after its current
    /// pass. The thread overrides a stop within the first second after start(). Any thread.
    void stop();

    /// True while the loop runs: from one second after start() until a loss or stop(). Any thread.
    bool isPolling() const { return isRunning() && m_running.load(std::memory_order_relaxed); }

    /// Decodes the instrument's reply to a fetch; see decodeResponse(). Pure, any thread.
    QList<MeasurementData> parseResponse(const QString& reply) const;

    /// Decodes the nine fields of one record; see decodeRecord(). Pure, any thread.
    MeasurementData parseRecord(const QStringList& fields) const;

signals:
    /// The instrument has ended the scan, and all its readings have been emitted.
    void sigStopScan();

    /// The instrument is in use elsewhere or does not answer; the thread ends after this.
    void sigUseInst();

    /// A batch of readings in the order of the reply; never empty.
    void sigSendMeasure(QList<MeasurementData> batch);

protected:
    /// The polling loop.
    void run() override;

private:
    bool pollReadings();
    bool fetchReadings(int count);
    bool fetchBatch(int count);
    bool instrumentLost();
    static QString ask(const QString& query);
    void pause(std::chrono::milliseconds time);
    bool sleepTowards(std::chrono::steady_clock::time_point end);

    scn::ReadDataTiming m_timing;
    scn::Sleeper m_sleeper;
    std::atomic<bool> m_running{false};
};
