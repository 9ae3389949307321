#include "model/configuration.h"

namespace scnsim {

ChannelSettings::ChannelSettings(Function initialFunction)
    : function(initialFunction)
    , options()
    , scaledUnit(functionInfo(initialFunction).scaledUnit)
{
    for (std::size_t i = 0; i < kOptionCount; ++i) {
        options[i] = optionInfo(static_cast<Option>(i)).initial;
    }
}

} // namespace scnsim
