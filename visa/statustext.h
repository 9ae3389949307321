#pragma once

#include "visa/visatypes.h"

#include <string>

namespace scn::visa {

/// The text of a completion code: the code's published name and what it means, in English and
/// ASCII, shorter than kViStatusTextSize. A code that is not known gives its number.
std::string statusText(ViStatus status);

/// Whether statusText() has a text of its own for the code.
bool isKnownStatus(ViStatus status);

} // namespace scn::visa
