#include "app/linkwatch.h"

#include "common/guigate.h"
#include "instrument/exchange.h"

#include <utility>

namespace scn {

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
    const QString reply = exchange(command, result);
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
    exchangeAll(commands, [&](ExchangeResult result) {
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

void LinkWatch::undo(const std::function<void()>& step) const
{
    m_gate->run(step);
}

bool LinkWatch::goesOn() const
{
    return !m_isLost && m_gate->isOpen();
}

void LinkWatch::note(ExchangeResult result, const QString& command)
{
    if (result == ExchangeResult::TimedOut) {
        m_silence += kExchangeTimeout;
    } else if (command.contains(QLatin1Char('?'))) {
        // Not for a plain command, which a silent instrument accepts, too.
        m_silence = std::chrono::milliseconds(0);
    }
    m_isLost = result == ExchangeResult::Lost || m_silence > kLongestSilence;
}

} // namespace scn
