#pragma once

#include "instrument/cdevicevisa.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <functional>

namespace scn {

/// How long the instrument may take to accept a command, and then to reply.
constexpr std::chrono::milliseconds kExchangeTimeout{5000};

/// Sends a command to the program's instrument and returns the trimmed reply to a query. Empty for a
/// plain command and on every failure. Any thread; blocks.
QString exchange(const QString& command);

/// The same; `result` says how the exchange ended.
QString exchange(const QString& command, ExchangeResult& result);

/// One exchange() per command, in order, until `goesOn` returns false. Commands that are not sent have
/// empty replies.
QVector<QString> exchangeAll(const QStringList& commands,
                             const std::function<bool(ExchangeResult)>& goesOn);

} // namespace scn
