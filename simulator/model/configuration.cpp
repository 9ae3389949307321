#include "model/configuration.h"

namespace scnsim {

ChannelSettings::ChannelSettings(Function initialFunction)
    : function(initialFunction)
    , options(initialOptions())
    , scaledUnit(functionInfo(initialFunction).scaledUnit)
{
}

} // namespace scnsim
