#include "transport/transcript.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace scnsim {

namespace {

std::string localTime()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto sinceEpoch = now.time_since_epoch();
    const auto ms = std::chrono::floor<std::chrono::milliseconds>(sinceEpoch).count() % 1000;
    char date[32];
    // The program is single-threaded.
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", std::localtime(&seconds));
    char text[48];
    std::snprintf(text, sizeof text, "%s.%03d", date, static_cast<int>(ms));
    return text;
}

char markOf(Transcript::Direction direction)
{
    switch (direction) {
    case Transcript::Direction::Received:
        return '>';
    case Transcript::Direction::Sent:
        return '<';
    case Transcript::Direction::Note:
        break;
    }
    return '!';
}

std::string printable(const std::string& line)
{
    std::string text;
    for (const char c : line) {
        if (c == '\\') {
            text += "\\\\";
        } else if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
            text += escape;
        }
    }
    return text;
}

} // namespace

bool Transcript::open(const std::string& path)
{
    m_file.open(path, std::ios::out | std::ios::trunc);
    return m_file.is_open();
}

void Transcript::write(const std::string& port, Direction direction, const std::string& line)
{
    if (m_file.is_open()) {
        m_file << localTime() << ' ' << port << ' ' << markOf(direction) << ' ' << printable(line)
               << '\n'
               << std::flush;
    }
}

} // namespace scnsim
