#pragma once

#include "visa/visatable.h"

/// Where the seven VISA operations come from.
namespace VisaBinding {

/// The table in use. The first call looks for the platform's VISA library (on Linux `libvisa.so`,
/// where the dynamic linker finds it; `visa64.dll` or `visa32.dll`; the framework on macOS) and
/// binds its operations; where there is none, or one that lacks an operation, it is the provider
/// that is linked in. The library stays loaded until the process ends. Any thread; the first call
/// may come before main().
const VisaTable& table();

/// Puts another table in the place of the one found, or the one found back with a null pointer.
/// A set-up call for tests: no other thread may be using VISA meanwhile, and sessions that are
/// open keep the handles of the table that opened them.
void setTable(const VisaTable* replacement);

} // namespace VisaBinding
