#include "widgets/digitedit.h"

#include <QFontMetrics>
#include <QLineEdit>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace scn {

DigitEdit::DigitEdit(int digits, QWidget* parent)
    : m_edit(new QLineEdit(parent))
    , m_digits(digits)
{
    m_edit->setStyleSheet(QStringLiteral("QLineEdit {border: none;padding: 0px;"
                                         "background:#171717;font-size: 10px;border-radius: 0;}"));
    m_edit->setAlignment(Qt::AlignRight);
    m_edit->setMaxLength(digits);
}

QString DigitEdit::padded(int number) const
{
    return QStringLiteral("%1").arg(number, m_digits, 10, QLatin1Char('0'));
}

void DigitEdit::setText(const QString& text)
{
    // Without a change there is no textChanged() to clear the mark.
    if (text == m_edit->text()) {
        return;
    }
    m_ownChange = true;
    m_edit->setText(text);
}

bool DigitEdit::wasOwnChange()
{
    return std::exchange(m_ownChange, false);
}

QString DigitEdit::textWith(QChar digit) const
{
    QString text = m_edit->text();
    text[m_edit->cursorPosition()] = digit;
    return text;
}

void DigitEdit::zero(int position)
{
    QString text = m_edit->text();
    text[position] = QLatin1Char('0');
    setText(text);
    m_edit->setCursorPosition(position);
}

bool DigitEdit::removeOthers(const QString& text)
{
    static const QRegularExpression notADigit(QStringLiteral("[^0-9]"));
    QString digits = text;
    digits.remove(notADigit);
    digits.truncate(m_digits);
    if (digits == text) {
        return false;
    }
    const int removed = text.size() - digits.size();
    const int cursor = m_edit->cursorPosition();
    setText(digits);
    m_edit->setCursorPosition(std::max(0, cursor - removed));
    return true;
}

int DigitEdit::widthOf(int number) const
{
    // The style sheet's font counts, not the inherited one.
    m_edit->ensurePolished();
    return m_edit->fontMetrics().horizontalAdvance(padded(number));
}

} // namespace scn
