#pragma once

#include <QChar>
#include <QString>

class QLineEdit;
class QWidget;

namespace scn {

/// A line edit for a number with a fixed count of digits. It can tell its own changes of the text
/// from the user's. GUI thread.
class DigitEdit
{
public:
    /// The edit belongs to `parent`.
    DigitEdit(int digits, QWidget* parent);

    QLineEdit* edit() const { return m_edit; }

    /// The number with leading zeros.
    QString padded(int number) const;

    /// Sets the text; wasOwnChange() is then true once.
    void setText(const QString& text);

    /// True when this object made the text change being handled.
    bool wasOwnChange();

    /// The text with the character at the cursor replaced.
    QString textWith(QChar digit) const;

    /// Makes the character at `position` a zero and puts the cursor at it.
    void zero(int position);

    /// Removes all but digits, and surplus digits, from the edit's `text`. True if that changed it.
    bool removeOthers(const QString& text);

    /// Width of `number` in the style sheet's font.
    int widthOf(int number) const;

private:
    QLineEdit* m_edit;
    int m_digits;
    bool m_ownChange = false;
};

} // namespace scn
