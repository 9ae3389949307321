#pragma once

#include <QByteArray>
#include <QList>

namespace scnlauncher {

/// Cuts a stream of bytes into lines. Of a line that is too long the beginning is kept, with a mark at its
/// end, so that a child that never ends its line costs no memory.
class LineCutter
{
public:
    static constexpr int kLongestLine = 64 * 1024;

    /// What follows the kept beginning of a line that is too long.
    static QByteArray cutMark();
    static bool isCut(const QByteArray& line) { return line.endsWith(cutMark()); }

    /// The lines that these bytes complete, without their ends.
    QList<QByteArray> take(const QByteArray& bytes);

    /// The unfinished last line, which is then forgotten.
    QByteArray takeRest();

private:
    void append(const char* bytes, int count, QList<QByteArray>& lines);

    QByteArray m_pending;
    bool m_skips = false; ///< the beginning of this line is out, the rest is dropped
};

} // namespace scnlauncher
