#pragma once

#include "instrument/cdevicevisa.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <functional>

namespace scn {

/// How long the instrument may take to accept a command, and again to reply.
constexpr std::chrono::milliseconds kExchangeTimeout{5000};

/// Sends a command to the program's instrument and returns the trimmed reply to a query. Empty for a
/// plain command and on every failure. Any thread; blocks.
QString exchange(const QString& command);

/// The same, telling how the exchange ended.
QString exchange(const QString& command, ExchangeResult& result);

/// One exchange() per command, in order, until `goesOn` says no. The replies that are missing then
/// are empty.
QVector<QString> exchangeAll(const QStringList& commands,
                             const std::function<bool(ExchangeResult)>& goesOn);

} // namespace scn
