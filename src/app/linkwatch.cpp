#include "app/linkwatch.h"

#include "common/guigate.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"

#include <utility>

namespace {

constexpr int kExchangeTimeoutMs = 5000;
constexpr int kLongestSilenceMs = 60000;

} // namespace

LinkWatch::LinkWatch(std::shared_ptr<GuiGate> gate)
    : m_gate(std::move(gate))
{
}

QString LinkWatch::ask(const QString& command)
{
    if (!goesOn()) {
        return {};
    }
    ExchangeResult result{};
    const QString reply = g_visa->sendCommand(command, kExchangeTimeoutMs, result);
    note(result, command);
    return reply;
}

bool LinkWatch::askAll(const QStringList& commands)
{
    if (commands.isEmpty() || !goesOn()) {
        return true;
    }
    bool allTimedOut = true;
    auto command = commands.cbegin();
    g_visa->sendCommands(commands, kExchangeTimeoutMs, [&](ExchangeResult result) {
        allTimedOut = allTimedOut && result == ExchangeResult::TimedOut;
        note(result, *command++);
        return goesOn();
    });
    return !allTimedOut;
}

void LinkWatch::show(const std::function<void()>& step) const
{
    if (goesOn()) {
        m_gate->run(step);
    }
}

bool LinkWatch::goesOn() const
{
    return !m_isLost && m_gate->isOpen();
}

void LinkWatch::note(ExchangeResult result, const QString& command)
{
    if (result == ExchangeResult::TimedOut) {
        m_silenceMs += kExchangeTimeoutMs;
    } else if (command.contains(
                   QLatin1Char('?'))) { // a command is taken by a silent instrument, too
        m_silenceMs = 0;
    }
    m_isLost = result == ExchangeResult::Lost || m_silenceMs > kLongestSilenceMs;
}
