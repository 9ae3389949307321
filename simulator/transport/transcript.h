#pragma once

#include <fstream>
#include <string>

namespace scnsim {

/// The transcript of the dialogue, one line per message, flushed at once:
///     2024-01-02T03:04:05.678 tcp > *IDN?
///     2024-01-02T03:04:05.678 tcp < SCN,SCN4070A,MY00000042,01.02-sim
/// local time, port, ">" for received, "<" for sent, "!" for a note, then the message without its
/// terminator. Bytes that are not printable ASCII are written as \xHH, a backslash as \\.
class Transcript
{
public:
    enum class Direction { Received, Sent, Note };

    /// Creates or truncates the file.
    bool open(const std::string& path);

    /// Writes one line; does nothing unless a file is open.
    void write(const std::string& port, Direction direction, const std::string& line);

private:
    std::ofstream m_file;
};

} // namespace scnsim
