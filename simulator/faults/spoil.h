#pragma once

#include "faults/fault.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace scnsim {

/// Random bytes, none of them a line feed. The same seed gives the same bytes everywhere.
std::string garbage(std::size_t bytes, std::uint64_t seed);

/// The reply repeated up to this many bytes; a longer reply is returned unchanged.
std::string oversized(const std::string& reply, std::size_t bytes);

/// A fetched batch with all record fields on, one record damaged. The block length stays correct.
/// @return none if the reply is no such batch
std::optional<std::string> withBadRecord(const std::string& reply, BadRecordForm form);

} // namespace scnsim
