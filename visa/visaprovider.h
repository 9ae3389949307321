#pragma once

#include "visa/visatable.h"

namespace scn::visa {

/// The VISA provider for machines without a platform VISA library: the seven operations for serial
/// ports and plain TCP connections (parseResourceName() tells the resource strings). They may be
/// called on any thread and block only in poll(). docs/visa.md tells what they do beyond the
/// standard and what they leave out.
const VisaTable& providerVisaTable();

} // namespace scn::visa
