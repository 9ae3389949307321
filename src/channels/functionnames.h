#pragma once

#include <QString>

#include <functional>

namespace scn {

/// One exchange with the instrument: takes a query, returns the trimmed reply (empty on failure).
using InstrumentQuery = std::function<QString(const QString& query)>;

/// Display name of the function that a channel measures, as CommFunc::functionList() spells it. `reply`
/// is the answer to FUNC? without its quotes. For temperature sensors the transducer and the sensor type
/// are queried through `ask`. Empty for a reply or a sensor type without a display name.
QString displayNameOfFunction(const QString& reply, int channel, const InstrumentQuery& ask);

} // namespace scn
