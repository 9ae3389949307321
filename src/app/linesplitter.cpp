#include "app/linesplitter.h"

#include <QDebug>

#include <utility>

namespace scn {
namespace {

constexpr int kLongestLine = 64 * 1024;

QString lineText(QByteArray line)
{
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    // With its length: a zero byte does not end a line.
    return QString::fromLocal8Bit(line.constData(), line.size());
}

} // namespace

QStringList LineSplitter::feed(const QByteArray& bytes)
{
    QStringList lines;
    int start = 0;
    for (int end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', start)) {
        gather(bytes.constData() + start, end - start);
        if (!std::exchange(m_isTooLong, false)) {
            lines.append(lineText(std::exchange(m_pending, QByteArray())));
        }
        start = end + 1;
    }
    gather(bytes.constData() + start, bytes.size() - start);
    return lines;
}

/// Appends to the pending line, or drops it if it gets too long.
void LineSplitter::gather(const char* bytes, int size)
{
    if (m_isTooLong) {
        return;
    }
    if (size <= kLongestLine - m_pending.size()) {
        m_pending.append(bytes, size);
        return;
    }
    qWarning() << "标准输入的一行超过 64 KiB，已丢弃";
    m_pending = QByteArray();
    m_isTooLong = true;
}

QStringList LineSplitter::finish()
{
    if (m_pending.isEmpty()) {
        return {};
    }
    return {lineText(std::exchange(m_pending, QByteArray()))};
}

} // namespace scn
