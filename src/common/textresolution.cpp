#include "common/textresolution.h"

#include <QByteArray>

namespace scn {

void assumeResolution()
{
    // The environment decides, where it says something.
    constexpr char kVariable[] = "QT_FONT_DPI";
    if (!qEnvironmentVariableIsSet(kVariable)) {
        qputenv(kVariable, "96");
    }
}

} // namespace scn
