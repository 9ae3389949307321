#include "export/csvrows.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <exception>

namespace scn {

namespace {

constexpr qint64 kMinuteMs = 60000;
constexpr qint64 kSecondMs = 1000;
/// Decimals.
constexpr int kPrecision = 15;
constexpr int kInitialBytes = 65536;
/// "-1.797693134862316E+308" is the longest value; 20 characters hold any 64-bit number.
constexpr int kLongestValue = 24;
constexpr int kLongestNumber = 20;
constexpr int kTimeLength = 19;
/// Position of the exponent's letter after the sign: one digit, the point, fifteen digits.
constexpr int kExponentPlace = 17;

char* append(char* out, const QByteArray& text)
{
    return std::copy(text.cbegin(), text.cend(), out);
}

/// Whether the value may lie halfway between two texts. Qt then rounds away from zero, the C++
/// library to even. A value with exactly one digit more than the text is a fraction of at most 24
/// binary places.
bool mayBeHalfway(double value)
{
    constexpr double kPlaces = 16777216.0;
    const double scaled = value * kPlaces;
    return std::trunc(scaled) == scaled && std::trunc(value) != value;
}

char* appendValue(char* out, double value)
{
    if (mayBeHalfway(value)) {
        return append(out, QByteArray::number(value, 'E', kPrecision));
    }
    // Adding zero removes the sign of a negative zero.
    const auto end = std::to_chars(out, out + kLongestValue, value + 0.0,
                                   std::chars_format::scientific, kPrecision)
                         .ptr;
    char* const digits = *out == '-' ? out + 1 : out;
    if (end - digits > kExponentPlace) {
        digits[kExponentPlace] = 'E';
    } else { // "inf"
        std::transform(digits, end, digits,
                       [](char letter) { return static_cast<char>(letter - 'a' + 'A'); });
    }
    return end;
}

} // namespace

std::size_t SampleBlock::rows() const
{
    std::size_t longest = 0;
    for (const SampleColumn& column : columns) {
        longest = std::max(longest, column.size());
    }
    return longest;
}

CsvRows::CsvRows(const QString& separator)
    : m_separator(separator.toUtf8())
{
    m_text.reserve(kInitialBytes); // from then on clear() keeps the memory
}

bool CsvRows::writeCsvRow(qint64 rowNumber, const SampleBlock& block, std::size_t row)
{
    try {
        appendRow(rowNumber, block, row);
        return true;
    } catch (const std::exception& failure) {
        qWarning() << "[写入CSV] 失败：" << failure.what();
        return false;
    }
}

void CsvRows::appendRow(qint64 rowNumber, const SampleBlock& block, std::size_t row)
{
    const int before = m_text.size();
    const auto fields = static_cast<int>(block.columns.size());
    m_text.resize(before + kLongestNumber + m_separator.size() + kTimeLength +
                  fields * (m_separator.size() + kLongestValue) + 1);
    char* const begin = m_text.data();
    char* out = std::to_chars(begin + before, begin + m_text.size(), rowNumber).ptr;
    out = append(out, m_separator);
    if (!block.columns.empty() && row < block.columns.front().size()) {
        out = appendTime(out, block.columns.front()[row].timestamp);
    }
    for (const SampleColumn& column : block.columns) {
        out = append(out, m_separator);
        if (row < column.size()) {
            out = appendValue(out, column[row].value);
        }
    }
    *out++ = '\n';
    m_text.resize(static_cast<int>(out - begin));
}

/// The zone's rules are queried once a minute: clocks change only at the edge of one.
char* CsvRows::appendTime(char* out, qint64 timestamp)
{
    if (!m_minuteKnown || timestamp < m_minuteStart || timestamp - m_minuteStart >= kMinuteMs) {
        const QDateTime local = QDateTime::fromMSecsSinceEpoch(timestamp);
        m_minuteText = local.toString(QStringLiteral("yyyy-MM-dd hh:mm:")).toLatin1();
        m_minuteStart = timestamp - local.time().second() * kSecondMs - local.time().msec();
        m_minuteKnown = true;
    }
    out = append(out, m_minuteText);
    const auto second = static_cast<int>((timestamp - m_minuteStart) / kSecondMs);
    *out++ = static_cast<char>('0' + second / 10);
    *out++ = static_cast<char>('0' + second % 10);
    return out;
}

} // namespace scn
