#include "model/configuration.h"

namespace scnsim {

ChannelSettings::ChannelSettings(const FunctionInfo& initial)
    : function(&initial)
    , options(initialOptions())
    , scaledUnit(initial.scaledUnit)
{
}

} // namespace scnsim
