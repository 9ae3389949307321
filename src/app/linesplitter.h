#pragma once

#include <QByteArray>
#include <QStringList>

namespace scn {

/// Splits a byte stream into lines. A line ends with LF or CR LF and is in the locale's encoding. A line
/// longer than 64 KiB is dropped with a warning and never held in memory.
class LineSplitter
{
public:
    /// Adds bytes and returns the lines that they complete, in order, including empty ones.
    QStringList feed(const QByteArray& bytes);

    /// Returns the unfinished last line at the end of the stream, if there is one.
    QStringList finish();

private:
    void gather(const char* bytes, int size);

    QByteArray m_pending;
    bool m_isTooLong = false; ///< The pending line is being dropped.
};

} // namespace scn
