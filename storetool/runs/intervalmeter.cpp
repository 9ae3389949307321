#include "storetool/runs/intervalmeter.h"

#include <algorithm>

namespace scnstore {
namespace {

constexpr int kListedGaps = 10;
constexpr qint64 kKeptDigits = 1024;

bool isLonger(const ReadingGap& left, const ReadingGap& right)
{
    return left.length() > right.length();
}

} // namespace

qint64 IntervalMeter::rounded(qint64 length)
{
    qint64 unit = 1;
    while (length / unit >= kKeptDigits) {
        unit *= 2;
    }
    return length / unit * unit;
}

void IntervalMeter::add(const ReadingGap& interval)
{
    Class& alike = m_classes[rounded(interval.length())];
    alike = {alike.count == 0 ? interval.length() : alike.length, alike.count + 1};
    ++m_total;
    if (m_longest.size() == kListedGaps && !isLonger(interval, m_longest.constLast())) {
        return;
    }
    m_longest.insert(std::upper_bound(m_longest.begin(), m_longest.end(), interval, isLonger),
                     interval);
    m_longest.resize(std::min(m_longest.size(), kListedGaps));
}

qint64 IntervalMeter::usual() const
{
    qint64 seen = 0;
    for (const Class& alike : m_classes) {
        seen += alike.count;
        if (2 * seen >= m_total) {
            return alike.length;
        }
    }
    return 0;
}

qint64 IntervalMeter::gaps(int factor) const
{
    qint64 gaps = 0;
    for (auto alike = m_classes.upperBound(factor * usual()); alike != m_classes.cend(); ++alike) {
        gaps += alike->count;
    }
    return gaps;
}

QVector<ReadingGap> IntervalMeter::longestGaps(int factor) const
{
    const auto size = std::min<qint64>(gaps(factor), static_cast<qint64>(m_longest.size()));
    return m_longest.mid(0, static_cast<int>(size));
}

} // namespace scnstore
