#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace scnstore {

/// The lines of a long export, collected in memory: time, channel, value, unit. The time is local, in
/// milliseconds and with its offset; the value has as many digits as tell it from every other number.
class LongRows
{
public:
    explicit LongRows(const QString& separator);

    void addTitles();

    /// The channel and the unit of "101(Vdc)", each quoted if it has to be, for addRow().
    struct CurveFields
    {
        QByteArray channel;
        QByteArray unit;
    };
    CurveFields fieldsOf(const QString& curve) const;

    void addRow(qint64 time, const CurveFields& curve, double value);

    const QByteArray& text() const { return m_text; }

    /// Clears the text but keeps its memory.
    void clear() { m_text.resize(0); }

private:
    QByteArray quoted(const QString& field) const;
    void appendTime(qint64 time);

    QByteArray m_separator;
    QByteArray m_text;
    QByteArray m_minuteText;  ///< "yyyy-MM-ddThh:mm:" of the minute below.
    QByteArray m_offsetText;  ///< "+08:00", of that minute.
    qint64 m_minuteStart = 0; ///< Its first millisecond.
    bool m_isMinuteKnown = false;
};

} // namespace scnstore
