#pragma once

namespace scnstore {

/// How many databases this process can have open, after asking the system for as many descriptors as it
/// allows.
int mostOpenDatabases();

} // namespace scnstore
