#pragma once

#include <QChar>
#include <QString>

class QLineEdit;
class QWidget;

namespace scn {

/// The line edit of a number with a fixed count of digits. It tells its own changes of the text from
/// the user's. GUI thread.
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

    /// True when the text change under way is this object's.
    bool wasOwnChange();

    /// The text with the character at the cursor replaced.
    QString textWith(QChar digit) const;

    /// Makes the character at `position` a zero and puts the cursor at it.
    void zero(int position);

    /// Removes from the edit's `text` what is no digit, and the digits that are too many. True when
    /// something went.
    bool removeOthers(const QString& text);

    /// Width of `number` in the style sheet's font.
    int widthOf(int number) const;

private:
    QLineEdit* m_edit;
    int m_digits;
    bool m_ownChange = false;
};

} // namespace scn
