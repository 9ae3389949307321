#pragma once

#include "visa/visatable.h"

namespace scn::visa {

/// The VISA provider for machines without a platform VISA library: the seven operations for serial
/// ports and plain TCP connections (see parseResourceName() for the resource strings). Any thread
/// may call them, and they block only in poll(). docs/visa.md lists their additions to the standard
/// and what they leave out.
const VisaTable& providerVisaTable();

} // namespace scn::visa
