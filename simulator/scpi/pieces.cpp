#include "scpi/pieces.h"

namespace scnsim {

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

std::string joined(const std::vector<std::string>& pieces, char separator)
{
    std::string text;
    for (const std::string& piece : pieces) {
        if (!text.empty()) {
            text += separator;
        }
        text += piece;
    }
    return text;
}

} // namespace scnsim
