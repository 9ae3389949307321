#pragma once

#include "acquisition/measurementdata.h"
#include "acquisition/readdatatiming.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <chrono>

/// The acquisition thread. It runs as long as the window lives and the instrument is in use. While a
/// scan runs (g_scanRunning) it drains the instrument's reading memory about once a second and hands
/// the readings out in batches; scan or no scan, it watches whether the instrument has been taken away.
///
/// The object itself belongs to the GUI thread; the signals are emitted on the acquisition thread.
class ReadData : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReadData)

public:
    /// The one object of the process, made without a parent when there is none. Whoever ends the
    /// thread deletes it; the next call makes a new one. GUI thread only.
    static ReadData* instance();

    ReadData();
    ~ReadData() override;

    /// Replaces the waits and their clock. Only while the thread does not run.
    void setTiming(const scn::ReadDataTiming& timing);

    /// Clears the running flag: a sleep of the loop ends early and the thread ends with its pass.
    /// A stop within the first second after start() is overwritten by the thread. Any thread.
    void stop();

    /// True while the loop goes on: from a second after start() until it has found a loss or was
    /// told to stop. Any thread.
    bool isPolling() const { return isRunning() && m_running.load(std::memory_order_relaxed); }

    /// Decodes the instrument's reply to a fetch; see decodeResponse(). Pure, any thread.
    QList<MeasurementData> parseResponse(const QString& reply) const;

    /// Decodes the nine fields of one record; see decodeRecord(). Pure, any thread.
    MeasurementData parseRecord(const QStringList& fields) const;

signals:
    /// The instrument has ended the scan and all its readings have been handed out.
    void sigStopScan();

    /// The instrument is in use by somebody else, or silent; the thread ends after this.
    void sigUseInst();

    /// A batch of readings in the order of the instrument's reply; never empty.
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
    void pause(std::chrono::milliseconds time) const;

    scn::ReadDataTiming m_timing;
    std::atomic<bool> m_running{false};
};
