#include "widgets/timecolumn.h"

#include "common/threadassert.h"
#include "widgets/arrowcell.h"
#include "widgets/digitedit.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStackedLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kTitleWeight = 50;
constexpr int kTitlePointSize = 6;

/// Space beside the digits, in pixels; more if the separator is a decimal point.
constexpr int kRoom = 15;
constexpr int kRoomAfterPoint = 25;

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
    // The focus passes on to the digits. Not by Tab, or Shift+Tab would never leave them.
    setFocusPolicy(Qt::ClickFocus);

    buildTop(title);
    QWidget* row = buildRow();
    m_bottom = std::make_unique<scn::ArrowCell>(Qt::DownArrow, QString(), this);
    m_bottom->label()->setStyleSheet(QStringLiteral("border: none;"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(m_top->layout());
    layout->addWidget(row);
    layout->addLayout(m_bottom->layout());

    connect(m_top->button(), &QToolButton::clicked, this, &TimeColumn::inc);
    connect(m_bottom->button(), &QToolButton::clicked, this, &TimeColumn::dec);
    connect(m_edit, &QLineEdit::textChanged, this, &TimeColumn::onTextChanged);
    connect(m_edit, &QLineEdit::editingFinished, this, &TimeColumn::onEditingFinished);
    m_edit->installEventFilter(this);
    m_digitEdit->setText(m_digitEdit->padded(m_value));
    showArrows(false);
}

TimeColumn::~TimeColumn()
{
    // A column that is a window takes the focus from its edit when it is destroyed.
    m_edit->disconnect(this);
}

void TimeColumn::buildTop(const QString& title)
{
    m_top = std::make_unique<scn::ArrowCell>(Qt::UpArrow, title, this);
    QLabel* label = m_top->label();
    label->setAlignment(Qt::AlignCenter);
    QFont font = label->font();
    font.setWeight(kTitleWeight);
    font.setPointSize(kTitlePointSize);
    label->setFont(font);
    label->setMaximumHeight(scn::ArrowCell::kHeight);
    label->setStyleSheet(QStringLiteral("padding: 0px;"));
}

QWidget* TimeColumn::buildRow()
{
    auto* row = new QWidget(this);
    auto* separator = new QLabel(m_separator, row);
    separator->setStyleSheet(QStringLiteral("background:#171717;font-size: 9px;border-radius: 0;"));
    separator->setVisible(!m_first);

    m_digitEdit = std::make_unique<scn::DigitEdit>(m_digits, row);
    m_edit = m_digitEdit->edit();

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
    m_digitEdit->setText(m_digitEdit->padded(clamped));
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
            // A press on an arrow moves the focus to the column, which returns it: the arrow must stay
            // under the pointer.
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
            m_digitEdit->zero(cursor - 1);
        }
        return true;
    }
    if (event.key() == Qt::Key_Delete) {
        if (!atEnd) {
            m_digitEdit->zero(cursor);
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
    const QString text = m_digitEdit->textWith(digit);
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && number >= m_min && number <= m_max) {
        m_digitEdit->setText(text);
        m_value = number;
        emit valueChanged(number);
    }
    m_edit->setCursorPosition(cursor + 1);
}

void TimeColumn::keyPressEvent(QKeyEvent* event)
{
    assertGuiThread();
    const int key = event->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_Left && key != Qt::Key_Right) {
        // Includes what the digits ignore, such as a bare Ctrl: taking the focus for that would end the
        // editing and drop the selection.
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
    if (!m_digitEdit->wasOwnChange() && m_digitEdit->removeOthers(text)) {
        updateWidth();
    }
}

void TimeColumn::onEditingFinished()
{
    assertGuiThread();
    const QString text = m_edit->text();
    bool isNumber = false;
    const int number =
        text.isEmpty() ? QStringLiteral("0").toInt(&isNumber) : text.toInt(&isNumber);
    const QString shown = m_digitEdit->padded(isNumber ? number : m_value);
    if (shown != text) {
        m_digitEdit->setText(shown);
        m_edit->end(false);
    }
    if (isNumber && number >= m_min && number <= m_max) {
        m_value = number;
    }
}

void TimeColumn::showArrows(bool on)
{
    m_top->showArrow(on);
    m_bottom->showArrow(on);
    updateWidth();
    layout()->invalidate();
    layout()->activate();
    adjustSize();
}

void TimeColumn::updateWidth()
{
    const int room = m_separator == QLatin1String(".") ? kRoomAfterPoint : kRoom;
    setFixedWidth(m_digitEdit->widthOf(m_max) + room);
}
