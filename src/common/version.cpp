#include "common/version.h"

namespace scn {

QString versionText()
{
    return QStringLiteral(SCN_VERSION);
}

} // namespace scn
