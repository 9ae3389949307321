#include "channels/scalefunction.h"

#include <algorithm>
#include <iterator>

namespace scn {

namespace {

constexpr const char* kNames[] = {"SCAL", "PCT", "DBM", "DB"};

} // namespace

QString nameOf(ScaleFunction function)
{
    return QString::fromLatin1(kNames[static_cast<int>(function)]);
}

ScaleFunction scaleFunctionOf(const QString& name)
{
    const auto* const* found =
        std::find_if(std::begin(kNames), std::end(kNames),
                     [&name](const char* known) { return name == QLatin1String(known); });
    return found != std::end(kNames) ? static_cast<ScaleFunction>(found - std::begin(kNames))
                                     : ScaleFunction::Linear;
}

} // namespace scn
