#include "storetool/exports/longrows.h"

#include <QDateTime>

#include <charconv>

namespace scnstore {
namespace {

constexpr qint64 kMinuteMs = 60000;
constexpr qint64 kSecondMs = 1000;
constexpr int kInitialBytes = 300000;

void appendDigits(QByteArray& text, qint64 number, int digits)
{
    for (qint64 unit = digits == 3 ? 100 : 10; unit > 0; unit /= 10) {
        text.append(static_cast<char>('0' + number / unit % 10));
    }
}

} // namespace

LongRows::LongRows(const QString& separator)
    : m_separator(separator.toUtf8())
{
    m_text.reserve(kInitialBytes); // from then on clear() keeps the memory
}

void LongRows::addTitles()
{
    m_text += "time" + m_separator + "channel" + m_separator + "value" + m_separator + "unit\n";
}

LongRows::CurveFields LongRows::fieldsOf(const QString& curve) const
{
    const QString channel = curve.section(QLatin1Char('('), 0, 0);
    QString unit = curve.mid(channel.size() + 1);
    unit.chop(1);
    return {quoted(channel), quoted(unit)};
}

void LongRows::addRow(qint64 time, const CurveFields& curve, double value)
{
    constexpr int kLongestValue = 32;
    char digits[kLongestValue];
    const char* const end = std::to_chars(digits, digits + kLongestValue, value).ptr;
    appendTime(time);
    m_text.append(m_separator).append(curve.channel).append(m_separator);
    m_text.append(digits, static_cast<int>(end - digits));
    m_text.append(m_separator).append(curve.unit).append('\n');
}

QByteArray LongRows::quoted(const QString& field) const
{
    QByteArray bytes = field.toUtf8();
    if (!bytes.contains(m_separator) && !bytes.contains('"') && !bytes.contains('\n')) {
        return bytes;
    }
    return '"' + bytes.replace("\"", "\"\"") + '"';
}

/// The zone's rules are asked once a minute: clocks change only at the edge of one.
void LongRows::appendTime(qint64 time)
{
    if (!m_isMinuteKnown || time < m_minuteStart || time - m_minuteStart >= kMinuteMs) {
        const QDateTime local = QDateTime::fromMSecsSinceEpoch(time);
        m_minuteText = local.toString(QStringLiteral("yyyy-MM-ddThh:mm:")).toLatin1();
        m_offsetText = local.toOffsetFromUtc(local.offsetFromUtc())
                           .toString(Qt::ISODate)
                           .mid(QStringLiteral("yyyy-MM-ddThh:mm:ss").size())
                           .toLatin1();
        m_minuteStart = time - local.time().second() * kSecondMs - local.time().msec();
        m_isMinuteKnown = true;
    }
    m_text.append(m_minuteText);
    appendDigits(m_text, (time - m_minuteStart) / kSecondMs, 2);
    m_text.append('.');
    appendDigits(m_text, (time - m_minuteStart) % kSecondMs, 3);
    m_text.append(m_offsetText);
}

} // namespace scnstore
