#pragma once

#include <QString>

namespace scn {

/// A display unit as the unit boxes spell it, from the instrument's reply.
QString unitOnScreen(const QString& reply);

/// A display unit as the instrument spells it, without the quotes.
QString unitOnWire(const QString& unit);

} // namespace scn
