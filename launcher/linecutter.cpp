#include "launcher/linecutter.h"

#include <algorithm>

namespace scnlauncher {

QByteArray LineCutter::cutMark()
{
    return QByteArrayLiteral(" ...(行过长，已截断)");
}

QList<QByteArray> LineCutter::take(const QByteArray& bytes)
{
    QList<QByteArray> lines;
    int begin = 0;
    for (int end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', begin)) {
        append(bytes.constData() + begin, end - begin, lines);
        if (!m_skips) {
            lines.append(takeRest());
        }
        m_skips = false;
        begin = end + 1;
    }
    append(bytes.constData() + begin, bytes.size() - begin, lines);
    return lines;
}

QByteArray LineCutter::takeRest()
{
    QByteArray line;
    line.swap(m_pending);
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

/// Adds to the pending line; one that becomes too long goes out at once.
void LineCutter::append(const char* bytes, int count, QList<QByteArray>& lines)
{
    if (m_skips) {
        return;
    }
    const int room = kLongestLine - m_pending.size();
    m_pending.append(bytes, std::min(count, room));
    if (count > room) {
        lines.append(takeRest() + cutMark());
        m_skips = true;
    }
}

} // namespace scnlauncher
