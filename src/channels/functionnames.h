#pragma once

#include <QString>

#include <functional>

namespace scn {

/// One exchange with the instrument: takes a query, gives the trimmed reply (empty on failure).
using InstrumentQuery = std::function<QString(const QString& query)>;

/// Display name of the function that a channel measures, as CommFunc::functionList() spells it.
/// `reply` is the answer to FUNC? without its quotes. For temperature sensors the sensor type is asked
/// for through `ask`, in the order in which the instrument expects it. Empty for a reply or a sensor
/// type that has no display name.
QString displayNameOfFunction(const QString& reply, int channel, const InstrumentQuery& ask);

} // namespace scn

using scn::displayNameOfFunction;
using scn::InstrumentQuery;
