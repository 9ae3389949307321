#include "app/instrumentreadback.h"

#include "app/channeloptionsreadback.h"
#include "app/instrumentdisplay.h"
#include "app/linkwatch.h"
#include "app/modulesearch.h"
#include "channels/functionnames.h"
#include "channels/scanlist.h"
#include "common/channelnumber.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <cmath>
#include <limits>

namespace scn {

namespace {

/// SCPI's infinity: a count without end.
constexpr double kScpiInfinity = 9.9e37;
constexpr int kStoredStates = 5;

/// Truncates a numeric reply to an int, clamped to its range.
int cutToInt(const QString& reply)
{
    using Limits = std::numeric_limits<int>;
    const double value = reply.toDouble();
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

/// Parses a reply; none for a source that the program does not show.
std::optional<TriggerChoice> triggerSource(const QString& reply)
{
    if (reply == QLatin1String("IMM")) {
        return TriggerChoice::Immediate;
    }
    if (reply.startsWith(QLatin1String("ALAR"))) {
        return TriggerChoice::Alarm;
    }
    if (reply == QLatin1String("TIM")) {
        return TriggerChoice::Timer;
    }
    return std::nullopt;
}

/// All channels of all modules found.
QList<int> moduleChannels()
{
    QList<int> channels;
    for (int slot = 1; slot <= kSlotCount; ++slot) {
        for (int row = 0; slotPresent[slot] && row <= slotLastChannel[slot]; ++row) {
            channels.append(ChannelNumber::fromRow(slot, row).label());
        }
    }
    return channels;
}

} // namespace

InstrumentReadBack::InstrumentReadBack(LinkWatch& link, InstrumentDisplay& display)
    : m_link(link)
    , m_display(display)
{
}

bool InstrumentReadBack::discover()
{
    if (!g_visa->connectDevice(g_resourceName)) {
        qWarning().noquote() << "仪器未打开:" << g_visa->lastError();
        return false;
    }
    m_link.ask(QStringLiteral("*CLS"));
    QString identity = m_link.ask(QStringLiteral("*IDN?"));
    identity.replace(QLatin1Char(','), QLatin1Char(' '));
    m_link.show([&identity] { g_instrumentId = identity; });
    if (identity.isEmpty()) {
        qWarning() << "仪器无应答";
        return false;
    }
    qInfo().noquote() << "仪器已连接:" << identity;
    g_instrumentConnected = true;
    // First of all: the search and the read-back may take long.
    m_link.show([this] { m_display.instrumentFound(); });
    searchModules(m_link, m_display);
    if (m_link.isLost()) {
        g_instrumentConnected = false;
    }
    return !m_link.isLost();
}

void InstrumentReadBack::readAll()
{
    readScanList();
    readTriggerSettings();
    setClock();
    askStoredStates();
    m_link.show([this] { m_display.readBackDone(); });
}

void InstrumentReadBack::readScanList()
{
    if (!g_instrumentConnected) {
        return;
    }
    m_link.ask(QStringLiteral("STAT:OPER:EVEN?"));
    const ScanListReply reply = decodeScanListReply(m_link.ask(QStringLiteral("ROUT:SCAN?")));
    QList<int> channels;
    m_link.show([this, &reply, &channels] {
        if (!reply.isEmptyList) {
            m_display.showScanList(reply.channels);
        }
        channels = moduleChannels();
    });
    for (const int channel : qAsConst(channels)) {
        if (!m_link.goesOn()) {
            return;
        }
        readChannel(channel);
    }
}

void InstrumentReadBack::readChannel(int channel)
{
    m_link.ask(QStringLiteral("ROUT:CHAN:LAB? (@%1)").arg(channel));
    QString reply = m_link.ask(QStringLiteral("FUNC? (@%1)").arg(channel));
    reply.remove(QLatin1Char('"'));
    const QString displayName = displayNameOfFunction(
        reply, channel, [this](const QString& query) { return m_link.ask(query); });
    bool hasRow = false;
    m_link.show([this, channel, &displayName, &hasRow] {
        hasRow = m_display.showFunction(channel, displayName);
    });
    if (hasRow) {
        // By the reported name, not the displayed one: it stands for one member of a sensor family.
        readOptions(m_catalogue.functionIndex(reply), channel);
    }
}

void InstrumentReadBack::readOptions(int function, int channel)
{
    ChannelOptionsReadBack(m_link, m_display, function, channel).run();
}

void InstrumentReadBack::readTriggerSettings()
{
    if (!g_instrumentConnected) {
        return;
    }
    readTriggerSource();
    readSweepCount();
    readUsbLogging();
    m_link.ask(QStringLiteral("ROUT:MON:STAT?"));
    endScan();
}

void InstrumentReadBack::readTriggerSource()
{
    const std::optional<TriggerChoice> source =
        triggerSource(m_link.ask(QStringLiteral("TRIG:SOUR?")));
    if (!source) {
        return;
    }
    m_link.show([this, source] { m_display.showTriggerSource(*source); });
    if (source == TriggerChoice::Timer) {
        readInterval();
    }
}

void InstrumentReadBack::readInterval()
{
    const std::chrono::seconds interval(cutToInt(m_link.ask(QStringLiteral("TRIG:TIM?"))));
    m_link.show([this, interval] { m_display.showInterval(interval); });
}

void InstrumentReadBack::readSweepCount()
{
    const QString reply = m_link.ask(QStringLiteral("TRIG:COUN?"));
    std::optional<int> count;
    if (!(reply.toDouble() >= kScpiInfinity)) {
        count = cutToInt(reply);
    }
    m_link.show([this, count] { m_display.showSweepCount(count); });
}

void InstrumentReadBack::readUsbLogging()
{
    const bool logsToUsb = m_link.ask(QStringLiteral("MMEM:LOG:ENAB?")).toInt() != 0;
    m_link.show([this, logsToUsb] { m_display.showUsbLogging(logsToUsb); });
    const bool limitsRows = m_link.ask(QStringLiteral("MMEM:FORM:READ:RLIM?")).toInt() != 0;
    m_link.show([this, limitsRows] { m_display.showRowLimitOn(limitsRows); });
    const int rowLimit = cutToInt(m_link.ask(QStringLiteral("MMEM:FORM:READ:RLIM:COUN?")));
    m_link.show([this, rowLimit] { m_display.showRowLimit(rowLimit); });
}

/// A scan found running is stopped, never adopted.
void InstrumentReadBack::endScan()
{
    if (m_link.ask(QStringLiteral("STAT:OPER:COND?")) != QLatin1String("+256")) {
        m_link.ask(QStringLiteral("ABOR"));
    }
}

/// Sets the instrument's clock to the computer's.
void InstrumentReadBack::setClock()
{
    if (!g_instrumentConnected) {
        return;
    }
    const QDateTime now = QDateTime::currentDateTime();
    m_link.ask(QStringLiteral("SYST:DATE %1").arg(now.toString(QStringLiteral("yyyy,MM,dd"))));
    m_link.ask(QStringLiteral("SYST:TIME %1").arg(now.toString(QStringLiteral("hh,mm,ss.zzz"))));
}

/// Asks for the stored states; the answers are not used.
void InstrumentReadBack::askStoredStates()
{
    m_link.ask(QStringLiteral("SYST:PERS:MOD:DEF?"));
    m_link.ask(QStringLiteral("SYST:PERS:MOD?"));
    for (int state = 1; state <= kStoredStates; ++state) {
        m_link.ask(QStringLiteral("MEM:STAT:NAME? %1").arg(state));
        m_link.ask(QStringLiteral("MEM:STAT:VAL? %1").arg(state));
    }
}

} // namespace scn
