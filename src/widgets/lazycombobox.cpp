#include "widgets/lazycombobox.h"

#include "common/threadassert.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QFontMetricsF>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QtMath>

#include <algorithm>

namespace scn {

namespace {

/// A box without items is as wide as this many letters.
constexpr int kEmptyBoxLetters = 7;

/// In pixels.
constexpr int kLeastTextHeight = 14;
constexpr int kTextMargin = 1;

} // namespace

LazyComboBox::LazyComboBox(QWidget* parent)
    : QComboBox(parent)
{
    assertGuiThread();
}

QAbstractItemView* LazyComboBox::view() const
{
    if (!m_hasPopup) {
        const_cast<LazyComboBox*>(this)->makePopup();
    }
    return QComboBox::view();
}

void LazyComboBox::makePopup()
{
    m_hasPopup = true;
    furnishPopup();
    for (const QEvent::Type type : {QEvent::StyleChange, QEvent::FontChange}) {
        QEvent missed(type);
        QComboBox::changeEvent(&missed);
    }
    popupMade();
}

void LazyComboBox::showPopup()
{
    assertGuiThread();
    view();
    QComboBox::showPopup();
}

void LazyComboBox::mousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    view();
    QComboBox::mousePressEvent(event);
}

void LazyComboBox::keyPressEvent(QKeyEvent* event)
{
    assertGuiThread();
    view();
    QComboBox::keyPressEvent(event);
}

/// The base class creates its popup to tell it of a new style or font.
void LazyComboBox::changeEvent(QEvent* event)
{
    const bool isNewStyle = event->type() == QEvent::StyleChange;
    const bool isForPopup = isNewStyle || event->type() == QEvent::FontChange;
    if (isForPopup) {
        m_sizeHint = QSize();
    }
    if (isNewStyle) {
        m_minimumSizeHint = QSize();
    }
    if (isForPopup && !m_hasPopup) {
        // Not the base class's, on purpose: it would create the popup.
        QWidget::changeEvent(event); // NOLINT(bugprone-parent-virtual-call)
    } else {
        QComboBox::changeEvent(event);
    }
}

// The base class measures itself again only in the events that create its popup. A size stays here for as long as
// it would there: the hint until a new style, a new font or the first show, the minimum until a new style.

QSize LazyComboBox::sizeHint() const
{
    if (!m_sizeHint.isValid()) {
        m_sizeHint = measured();
    }
    return m_sizeHint;
}

QSize LazyComboBox::minimumSizeHint() const
{
    if (!m_minimumSizeHint.isValid()) {
        m_minimumSizeHint = measured();
    }
    return m_minimumSizeHint;
}

/// Room for the longest text.
QSize LazyComboBox::measured() const
{
    const QFontMetrics metrics = fontMetrics();
    int width = count() > 0 ? 0 : kEmptyBoxLetters * metrics.horizontalAdvance(QLatin1Char('x'));
    for (int row = 0; row < count(); ++row) {
        width = std::max(width, metrics.boundingRect(itemText(row)).width());
    }
    const int height = std::max(qCeil(QFontMetricsF(metrics).height()), kLeastTextHeight);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_ComboBox, &option,
                                     QSize(width, height + 2 * kTextMargin), this);
}

void LazyComboBox::showEvent(QShowEvent* event)
{
    assertGuiThread();
    if (!m_hasBeenShown) {
        m_hasBeenShown = true;
        m_sizeHint = QSize();
    }
    QComboBox::showEvent(event);
}

} // namespace scn
