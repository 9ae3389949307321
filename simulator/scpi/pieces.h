#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace scnsim {

/// The pieces between the separators; one, which may be empty, in a text without any.
std::vector<std::string> split(std::string_view text, char separator);

/// The pieces with the separator between each two of them; empty ones at the beginning are dropped.
std::string joined(const std::vector<std::string>& pieces, char separator);

} // namespace scnsim
