#pragma once

#include <QString>

namespace scn {

/// The version of the program and of the launcher, "1.2.3".
QString versionText();

} // namespace scn
