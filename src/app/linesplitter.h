#pragma once

#include <QByteArray>
#include <QStringList>

/// Cuts a stream of bytes into lines. A line ends at a line feed or at carriage return and line
/// feed; its text is in the locale's encoding. A line of more than 64 KiB in front of its line feed is
/// dropped with a warning, and never gathered.
class LineSplitter
{
public:
    /// Adds bytes of the stream and gives the lines that they complete, in order, empty ones too.
    QStringList feed(const QByteArray& bytes);

    /// The unfinished last line at the end of the stream: none, or one.
    QStringList finish();

private:
    void gather(const char* bytes, int size);

    QByteArray m_pending;
    bool m_isTooLong = false; ///< The pending line is being dropped.
};
