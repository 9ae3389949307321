#include "acquisition/readdata.h"

#include "acquisition/recorddecoder.h"
#include "instrument/cdevicevisa.h"
#include "instrument/exchange.h"
#include "state/globals.h"

#include <QDebug>

#include <algorithm>

namespace {

constexpr int kFetchRetries = 6;
constexpr int kSilenceRetries = 6;

/// Readings per fetch. A reply of more than 40959 bytes is lost as a whole, and the instrument has
/// already deleted its readings; a record takes 50 bytes, 51 with a long unit.
constexpr int kLargestFetch = 800;

/// The same on a serial line, which carries 28800 bytes within an exchange's time-out.
constexpr int kLargestSerialFetch = 500;

const QLatin1String kEventQuery("STAT:OPER:EVEN?");
const QLatin1String kScanEndedCondition("+256");
const QLatin1String kInUseEvent("+2048");

ReadData* s_instance = nullptr;

enum class Event { Silence, InUse, Other };

Event eventOf(const QString& reply)
{
    if (reply.isEmpty()) {
        return Event::Silence;
    }
    return reply == kInUseEvent ? Event::InUse : Event::Other;
}

} // namespace

ReadData* ReadData::instance()
{
    if (!s_instance) {
        s_instance = new ReadData;
    }
    return s_instance;
}

ReadData::ReadData()
{
    // Queued signals need the type, even if the program has not registered it yet.
    qRegisterMetaType<QList<MeasurementData>>();
}

ReadData::~ReadData()
{
    if (s_instance == this) {
        s_instance = nullptr;
    }
}

void ReadData::setTiming(const scn::ReadDataTiming& timing)
{
    Q_ASSERT(!isRunning());
    m_timing = timing;
}

void ReadData::stop()
{
    m_running.store(false, std::memory_order_relaxed);
    m_sleeper.wake();
}

QList<MeasurementData> ReadData::parseResponse(const QString& reply) const
{
    return decodeResponse(reply);
}

MeasurementData ReadData::parseRecord(const QStringList& fields) const
{
    return decodeRecord(fields);
}

void ReadData::run()
{
    // The flag is set after the first sleep, so a stop during it has no effect.
    const auto start = m_timing.clock.now() + m_timing.startDelay;
    while (sleepTowards(start)) {
    }
    // The thread can be terminated only in its waits: unwinding out of a log line would end the
    // process, and out of a signal it could leave the GUI thread's event loop locked.
    setTerminationEnabled(false);
    m_running.store(true, std::memory_order_relaxed);
    do {
        bool leftReadings = false;
        if (g_scanRunning.load(std::memory_order_relaxed)) {
            leftReadings = pollReadings();
        }
        if (instrumentLost()) {
            emit sigUseInst();
            m_running.store(false, std::memory_order_relaxed);
        }
        // After a stall the backlog is fetched without a pause.
        if (!leftReadings) {
            pause(m_timing.passDelay);
        }
    } while (m_running.load(std::memory_order_relaxed));
}

/// A pass of a running scan: fetches the stored readings, then checks whether the scan has ended. A
/// pass that found readings never ends the scan, so the last ones are drained first. True if the
/// fetch succeeded and left readings behind.
bool ReadData::pollReadings()
{
    const int count = ask(QStringLiteral("DATA:POIN?")).toInt();
    const int most = g_visa->isSerial() ? kLargestSerialFetch : kLargestFetch;
    bool isFetched = false;
    if (count != 0) {
        isFetched = fetchReadings(std::min(count, most));
        pause(m_timing.settleDelay);
    }
    const bool isIdle = ask(QStringLiteral("STAT:OPER:COND?")) == kScanEndedCondition;
    if (count == 0 && isIdle) {
        g_scanRunning.store(false, std::memory_order_relaxed);
        emit sigStopScan();
    }
    pause(m_timing.settleDelay);
    return isFetched && count > most;
}

/// Fetches `count` readings, with up to six more tries while nothing can be decoded. Readings that
/// the instrument still holds come with the next pass. False if nothing was fetched.
bool ReadData::fetchReadings(int count)
{
    bool isFetched = fetchBatch(count);
    for (int retry = 0; retry < kFetchRetries && !isFetched; ++retry) {
        pause(m_timing.fetchRetryDelay);
        isFetched = fetchBatch(count);
    }
    return isFetched;
}

/// One try; false if no record could be decoded.
bool ReadData::fetchBatch(int count)
{
    const QList<MeasurementData> batch = parseResponse(ask(QStringLiteral("R? %1").arg(count)));
    if (batch.isEmpty()) {
        return false;
    }
    emit sigSendMeasure(batch);
    return true;
}

/// Queries the event register. True if the instrument reports use elsewhere, or answers neither
/// this query nor six more; any answer to those means that it is there, whatever it says.
bool ReadData::instrumentLost()
{
    const Event event = eventOf(ask(kEventQuery));
    if (event != Event::Silence) {
        return event == Event::InUse;
    }
    for (int retry = 0; retry < kSilenceRetries; ++retry) {
        pause(m_timing.silenceDelay);
        if (eventOf(ask(kEventQuery)) != Event::Silence) {
            return false;
        }
    }
    return true;
}

/// One exchange. The thread may be terminated here, as in its sleeps.
QString ReadData::ask(const QString& query)
{
    scn::ExchangeResult result{};
    setTerminationEnabled(true);
    const QString reply = scn::exchange(query, result);
    setTerminationEnabled(false);
    if (result == scn::ExchangeResult::Overflowed) {
        qWarning().noquote() << "响应超出接收缓冲区，已丢弃:" << query;
    }
    return reply;
}

/// Sleeps until the time is over or the running flag is cleared.
void ReadData::pause(std::chrono::milliseconds time)
{
    const auto end = m_timing.clock.now() + time;
    while (m_running.load(std::memory_order_relaxed) && sleepTowards(end)) {
    }
}

/// One sleep until this moment; stop() cuts it short. False if there is nothing left to sleep. The
/// thread may be terminated here, so callers hold nothing that would have to be released.
bool ReadData::sleepTowards(std::chrono::steady_clock::time_point end)
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(end - m_timing.clock.now());
    if (left <= milliseconds::zero()) {
        return false;
    }
    setTerminationEnabled(true);
    m_timing.clock.sleep(m_sleeper, left);
    setTerminationEnabled(false);
    return true;
}
