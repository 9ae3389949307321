#include "instrument/exchange.h"

namespace scn {

namespace {

constexpr int kExchangeTimeoutMs = static_cast<int>(kExchangeTimeout.count());

} // namespace

QString exchange(const QString& command)
{
    return CDeviceVisa::instance()->sendCommand(command, kExchangeTimeoutMs);
}

QString exchange(const QString& command, ExchangeResult& result)
{
    return CDeviceVisa::instance()->sendCommand(command, kExchangeTimeoutMs, result);
}

QVector<QString> exchangeAll(const QStringList& commands,
                             const std::function<bool(ExchangeResult)>& goesOn)
{
    return CDeviceVisa::instance()->sendCommands(commands, kExchangeTimeoutMs, goesOn);
}

} // namespace scn
