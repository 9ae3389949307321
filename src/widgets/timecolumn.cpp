#include "widgets/timecolumn.h"

#include "common/threadassert.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QStackedLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

/// Largest height of an arrow and of the title, in pixels.
constexpr int kCapHeight = 12;
constexpr int kTitleWeight = 50;
constexpr int kTitlePointSize = 6;

/// Room beside the digits, in pixels; more where the separator is a decimal point.
constexpr int kRoom = 15;
constexpr int kRoomAfterPoint = 25;

QToolButton* makeArrow(Qt::ArrowType arrow, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setArrowType(arrow);
    button->setMaximumHeight(kCapHeight);
    // An arrow that took the focus would end the editing, and hide itself with it.
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    button->setStyleSheet(QStringLiteral("QToolButton { padding: 0px; border: none; }"));
    return button;
}

bool isPlainDigit(const QKeyEvent& event)
{
    constexpr Qt::KeyboardModifiers kCommands =
        Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return event.key() >= Qt::Key_0 && event.key() <= Qt::Key_9 && !(event.modifiers() & kCommands);
}

} // namespace

TimeColumn::TimeColumn(const QString& title, int min, int max, int digits, const QString& separator,
                       bool first, QWidget* parent)
    : QWidget(parent)
    , m_min(min)
    , m_max(max)
    , m_value(min)
    , m_digits(digits)
    , m_separator(separator)
    , m_first(first)
{
    assertGuiThread();
    // The focus goes on to the digits; not by Tab, or Shift+Tab would never get out of them.
    setFocusPolicy(Qt::ClickFocus);

    buildTop(title);
    QWidget* row = buildRow();
    buildBottom();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(m_topStack);
    layout->addWidget(row);
    layout->addLayout(m_bottomStack);

    connect(m_topButton, &QToolButton::clicked, this, &TimeColumn::inc);
    connect(m_bottomButton, &QToolButton::clicked, this, &TimeColumn::dec);
    connect(m_edit, &QLineEdit::textChanged, this, &TimeColumn::onTextChanged);
    connect(m_edit, &QLineEdit::editingFinished, this, &TimeColumn::onEditingFinished);
    m_edit->installEventFilter(this);
    setGuardedText(padded(m_value));
    showArrows(false);
}

void TimeColumn::buildTop(const QString& title)
{
    m_topButton = makeArrow(Qt::UpArrow, this);
    m_topLabel = new QLabel(title, this);
    m_topLabel->setAlignment(Qt::AlignCenter);
    QFont font = m_topLabel->font();
    font.setWeight(kTitleWeight);
    font.setPointSize(kTitlePointSize);
    m_topLabel->setFont(font);
    m_topLabel->setMaximumHeight(kCapHeight);
    m_topLabel->setStyleSheet(QStringLiteral("padding: 0px;"));

    m_topStack = new QStackedLayout;
    m_topStack->addWidget(m_topLabel);
    m_topStack->addWidget(m_topButton);
}

void TimeColumn::buildBottom()
{
    m_bottomButton = makeArrow(Qt::DownArrow, this);
    m_bottomLabel = new QLabel(this);
    m_bottomLabel->setStyleSheet(QStringLiteral("border: none;"));

    m_bottomStack = new QStackedLayout;
    m_bottomStack->addWidget(m_bottomLabel);
    m_bottomStack->addWidget(m_bottomButton);
}

QWidget* TimeColumn::buildRow()
{
    auto* row = new QWidget(this);
    auto* separator = new QLabel(m_separator, row);
    separator->setStyleSheet(QStringLiteral("background:#171717;font-size: 9px;border-radius: 0;"));
    separator->setVisible(!m_first);

    m_edit = new QLineEdit(row);
    m_edit->setStyleSheet(QStringLiteral("QLineEdit {border: none;padding: 0px;"
                                         "background:#171717;font-size: 10px;border-radius: 0;}"));
    m_edit->setAlignment(Qt::AlignRight);
    m_edit->setMaxLength(m_digits);

    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(separator);
    layout->addWidget(m_edit);
    return row;
}

void TimeColumn::setValue(int value)
{
    assertGuiThread();
    const int clamped = std::max(m_min, std::min(value, m_max));
    if (clamped == m_value) {
        return;
    }
    m_value = clamped;
    setGuardedText(padded(clamped));
    m_edit->end(false);
    updateWidth();
    emit valueChanged(clamped);
}

void TimeColumn::setRange(int min, int max)
{
    assertGuiThread();
    m_min = min;
    m_max = max;
    setValue(m_value);
}

void TimeColumn::focusFirstDigit()
{
    assertGuiThread();
    m_edit->setFocus();
    m_edit->home(false);
}

void TimeColumn::focusBehindLastDigit()
{
    assertGuiThread();
    m_edit->setFocus();
    m_edit->end(false);
}

void TimeColumn::inc()
{
    setValue(m_value + 1);
}

void TimeColumn::dec()
{
    setValue(m_value - 1);
}

bool TimeColumn::eventFilter(QObject* watched, QEvent* event)
{
    assertGuiThread();
    if (watched == m_edit) {
        if (event->type() == QEvent::FocusIn) {
            showArrows(true);
        } else if (event->type() == QEvent::FocusOut) {
            // A press on an arrow takes the focus to the column, which gives it back: the arrow stays under
            // the press.
            showArrows(hasFocus());
        } else if (event->type() == QEvent::KeyPress &&
                   handleEditKey(*static_cast<QKeyEvent*>(event))) {
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool TimeColumn::handleEditKey(const QKeyEvent& event)
{
    const int cursor = m_edit->cursorPosition();
    const bool atEnd = cursor >= m_edit->text().size();
    if (isPlainDigit(event)) {
        if (atEnd) {
            emit focusNext();
        } else {
            typeDigit(QLatin1Char(static_cast<char>('0' + (event.key() - Qt::Key_0))));
        }
        return true;
    }
    if (event.key() == Qt::Key_Backspace) {
        if (cursor > 0) {
            zeroDigit(cursor - 1, cursor - 1);
        }
        return true;
    }
    if (event.key() == Qt::Key_Delete) {
        if (!atEnd) {
            zeroDigit(cursor, cursor);
        }
        return true;
    }
    if (event.key() == Qt::Key_Left && cursor == 0) {
        emit focusPrev();
        return true;
    }
    if (event.key() == Qt::Key_Right && atEnd) {
        emit focusNext();
        return true;
    }
    return false;
}

void TimeColumn::typeDigit(QChar digit)
{
    const int cursor = m_edit->cursorPosition();
    QString text = m_edit->text();
    text[cursor] = digit;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && number >= m_min && number <= m_max) {
        setGuardedText(text);
        m_value = number;
        emit valueChanged(number);
    }
    m_edit->setCursorPosition(cursor + 1);
}

void TimeColumn::zeroDigit(int position, int newCursor)
{
    QString text = m_edit->text();
    text[position] = QLatin1Char('0');
    setGuardedText(text);
    m_edit->setCursorPosition(newCursor);
}

void TimeColumn::keyPressEvent(QKeyEvent* event)
{
    assertGuiThread();
    const int key = event->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_Left && key != Qt::Key_Right) {
        // Also what the digits leave over, such as a bare Ctrl: taking the focus for that would
        // end the editing and drop the selection.
        QWidget::keyPressEvent(event);
        return;
    }
    if (!hasFocus()) {
        setFocus();
    }
    if (key == Qt::Key_Up) {
        inc();
    } else if (key == Qt::Key_Down) {
        dec();
    } else if (key == Qt::Key_Left && m_edit->cursorPosition() == 0) {
        emit focusPrev();
    } else if (key == Qt::Key_Right && m_edit->cursorPosition() >= m_edit->text().size()) {
        emit focusNext();
    }
}

void TimeColumn::focusInEvent(QFocusEvent* event)
{
    assertGuiThread();
    Q_UNUSED(event)
    showArrows(true);
    m_edit->setFocus();
}

void TimeColumn::onTextChanged(const QString& text)
{
    assertGuiThread();
    if (m_internalChange) {
        m_internalChange = false;
        return;
    }
    static const QRegularExpression notADigit(QStringLiteral("[^0-9]"));
    QString digits = text;
    digits.remove(notADigit);
    digits.truncate(m_digits);
    if (digits == text) {
        return;
    }
    const int removed = text.size() - digits.size();
    const int cursor = m_edit->cursorPosition();
    setGuardedText(digits);
    m_edit->setCursorPosition(std::max(0, cursor - removed));
    updateWidth();
}

void TimeColumn::onEditingFinished()
{
    assertGuiThread();
    const QString text = m_edit->text();
    bool isNumber = false;
    const int number =
        text.isEmpty() ? QStringLiteral("0").toInt(&isNumber) : text.toInt(&isNumber);
    const QString shown = padded(isNumber ? number : m_value);
    if (shown != text) {
        setGuardedText(shown);
        m_edit->end(false);
    }
    if (isNumber && number >= m_min && number <= m_max) {
        m_value = number;
    }
}

void TimeColumn::setGuardedText(const QString& text)
{
    // Without a change no textChanged() comes that would take the guard back.
    if (text == m_edit->text()) {
        return;
    }
    m_internalChange = true;
    m_edit->setText(text);
}

void TimeColumn::showArrows(bool on)
{
    m_topStack->setCurrentWidget(on ? static_cast<QWidget*>(m_topButton) : m_topLabel);
    m_bottomStack->setCurrentWidget(on ? static_cast<QWidget*>(m_bottomButton) : m_bottomLabel);
    updateWidth();
    layout()->invalidate();
    layout()->activate();
    adjustSize();
}

void TimeColumn::updateWidth()
{
    // The style sheet's font, not the inherited one, counts.
    m_edit->ensurePolished();
    const int digitsWidth = m_edit->fontMetrics().horizontalAdvance(padded(m_max));
    const int room = m_separator == QLatin1String(".") ? kRoomAfterPoint : kRoom;
    setFixedWidth(digitsWidth + room);
}

QString TimeColumn::padded(int value) const
{
    return QStringLiteral("%1").arg(value, m_digits, 10, QLatin1Char('0'));
}
