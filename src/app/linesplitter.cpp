#include "app/linesplitter.h"

#include <utility>

namespace {

QString lineText(QByteArray line)
{
    if (line.endsWith('\r'))
        line.chop(1);
    // With its length: a zero byte is a character like others and makes no line shorter.
    return QString::fromLocal8Bit(line.constData(), line.size());
}

} // namespace

QStringList LineSplitter::feed(const QByteArray& bytes)
{
    QStringList lines;
    int start = 0;
    for (int end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', start)) {
        m_pending.append(bytes.constData() + start, end - start);
        lines.append(lineText(std::exchange(m_pending, QByteArray())));
        start = end + 1;
    }
    m_pending.append(bytes.constData() + start, bytes.size() - start);
    return lines;
}

QStringList LineSplitter::finish()
{
    if (m_pending.isEmpty())
        return {};
    return {lineText(std::exchange(m_pending, QByteArray()))};
}
