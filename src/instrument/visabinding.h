#pragma once

#include "visa/visatable.h"

/// Source of the seven VISA operations.
namespace scn::visabinding {

/// The table in use. The first call looks for the platform's VISA library (`libvisa.so` on the dynamic
/// linker's path on Linux; `visa64.dll` or `visa32.dll`; the framework on macOS) and binds its
/// operations. If there is none, or it lacks an operation, the built-in provider is used. The library
/// stays loaded until the process ends. Any thread; may be called before main().
const visa::VisaTable& table();

/// Replaces the table in use; null restores the one found. For tests, during set-up: no other thread may
/// be using VISA, and open sessions keep the handles of the table that opened them.
void setTable(const visa::VisaTable* replacement);

} // namespace scn::visabinding
