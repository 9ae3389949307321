#pragma once

#include "visa/visatypes.h"

#include <string>

namespace scn::visa {

/// The text of a completion code: its published name and its meaning, in ASCII, shorter than
/// kViStatusTextSize. An unknown code gives its number.
std::string statusText(ViStatus status);

/// Whether statusText() knows the code.
bool isKnownStatus(ViStatus status);

} // namespace scn::visa
