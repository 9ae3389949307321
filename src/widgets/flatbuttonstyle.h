#pragma once

#include <QString>

namespace scn {

/// Style sheet of flat dark buttons.
QString flatButtonStyle();

} // namespace scn
