#pragma once

#include <QString>

namespace scn {

/// How a channel scales its readings; in the order of the scale function boxes.
enum class ScaleFunction { Linear, Percent, Dbm, Db };

/// As the instrument spells it.
QString nameOf(ScaleFunction function);

/// The scale function of a name; Linear for an unknown one.
ScaleFunction scaleFunctionOf(const QString& name);

} // namespace scn
