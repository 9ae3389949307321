#pragma once

#include <fstream>
#include <string>

namespace scnsim {

/// A log file of the dialogue, one line for each line of it, written out at once:
///     2024-01-02T03:04:05.678 tcp > *IDN?
///     2024-01-02T03:04:05.678 tcp < SCN,SCN4070A,MY00000042,01.02-sim
/// local time, port, ">" for what came in, "<" for what went out and "!" for a note, the line
/// without its terminator. Bytes that are not printable ASCII stand as \xHH, a backslash as \\.
class Transcript
{
public:
    enum class Direction { Received, Sent, Note };

    /// Begins the file anew.
    bool open(const std::string& path);

    /// Does nothing unless a file is open.
    void write(const std::string& port, Direction direction, const std::string& line);

private:
    std::ofstream m_file;
};

} // namespace scnsim
