#include "widgets/customlineedit.h"

#include "common/threadassert.h"

#include <utility>

CustomLineEdit::CustomLineEdit(QWidget* parent)
    : CustomLineEdit(QString(), parent)
{
}

CustomLineEdit::CustomLineEdit(const QString& text, QWidget* parent)
    : QLineEdit(text, parent)
{
    assertGuiThread();
    connect(this, &QLineEdit::textEdited, this, &CustomLineEdit::onTextEdited);
    connect(this, &QLineEdit::returnPressed, this, &CustomLineEdit::onReturnPressed);
}

void CustomLineEdit::onTextEdited(const QString& text)
{
    Q_UNUSED(text)
    m_edited = true;
}

void CustomLineEdit::onReturnPressed()
{
    assertGuiThread();
    if (!m_edited || text() == m_textAtFocusIn) {
        return;
    }
    // Cleared before the signal: a slot may take the focus, which must not report the change again.
    m_edited = false;
    m_textAtFocusIn = text();
    emit textChangedAndFocusOut(text());
}

void CustomLineEdit::focusInEvent(QFocusEvent* event)
{
    assertGuiThread();
    m_textAtFocusIn = text();
    m_edited = false;
    QLineEdit::focusInEvent(event);
}

void CustomLineEdit::focusOutEvent(QFocusEvent* event)
{
    assertGuiThread();
    QLineEdit::focusOutEvent(event);
    const bool edited = std::exchange(m_edited, false);
    if (!edited || text() == m_textAtFocusIn) {
        return;
    }
    m_textAtFocusIn = text();
    emit textChangedAndFocusOut(text());
}
