#include "widgets/flatbuttonstyle.h"

namespace scn {

QString flatButtonStyle()
{
    return QStringLiteral(R"(
QPushButton { background: #232323; color: #E0E1E3; border: none; border-radius: 4px; }
QPushButton:checked { background: #60798B; }
QPushButton:hover { background: #54687A; }
QPushButton:disabled { color: #9DA9B5; }
)");
}

} // namespace scn
