#include "widgets/customcombobox.h"

#include "common/threadassert.h"
#include "widgets/customitemdelegate.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QListView>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QtMath>

#include <algorithm>

namespace {

/// Row spacing of a new box, and the view's own space around rows, in pixels.
constexpr int kInitialItemSpacing = 4;

/// A box without items is as wide as this many letters.
constexpr int kEmptyBoxLetters = 7;

/// In pixels.
constexpr int kLeastTextHeight = 14;
constexpr int kTextMargin = 1;

} // namespace

CustomComboBox::CustomComboBox(QWidget* parent)
    : QComboBox(parent)
    , m_delegate(new CustomItemDelegate(kInitialItemSpacing, this))
    , m_itemSpacing(kInitialItemSpacing)
{
    assertGuiThread();
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &CustomComboBox::onCurrentIndexChanged);
}

void CustomComboBox::addFunctionItems(const QStringList& items)
{
    assertGuiThread();
    insertItems(count(), items);
}

void CustomComboBox::setItemSpacing(int spacing)
{
    assertGuiThread();
    if (spacing == m_itemSpacing) {
        return;
    }
    m_itemSpacing = spacing;
    m_delegate->setSpacing(spacing);
    if (m_hasPopup) {
        view()->update();
    }
    emit itemSpacingChanged(spacing);
}

void CustomComboBox::onCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (m_hasPopup) {
        view()->setCurrentIndex(model()->index(index, modelColumn(), rootModelIndex()));
    }
}

QAbstractItemView* CustomComboBox::view() const
{
    if (!m_hasPopup) {
        const_cast<CustomComboBox*>(this)->makePopup();
    }
    return QComboBox::view();
}

void CustomComboBox::makePopup()
{
    m_hasPopup = true;
    auto* list = new QListView(this);
    list->setSpacing(kInitialItemSpacing);
    list->setUniformItemSizes(true);
    setView(list);
    // A view comes with a delegate of its own, so ours is set after the view.
    setItemDelegate(m_delegate);
    for (const QEvent::Type type : {QEvent::StyleChange, QEvent::FontChange}) {
        QEvent missed(type);
        QComboBox::changeEvent(&missed);
    }
    list->setCurrentIndex(model()->index(currentIndex(), modelColumn(), rootModelIndex()));
    fitPopupToBox();
}

void CustomComboBox::showPopup()
{
    assertGuiThread();
    view();
    QComboBox::showPopup();
}

void CustomComboBox::mousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    view();
    QComboBox::mousePressEvent(event);
}

void CustomComboBox::keyPressEvent(QKeyEvent* event)
{
    assertGuiThread();
    view();
    QComboBox::keyPressEvent(event);
}

/// The base class creates its popup to tell it of a new style or font.
void CustomComboBox::changeEvent(QEvent* event)
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

QSize CustomComboBox::sizeHint() const
{
    if (!m_sizeHint.isValid()) {
        m_sizeHint = measured();
    }
    return m_sizeHint;
}

QSize CustomComboBox::minimumSizeHint() const
{
    if (!m_minimumSizeHint.isValid()) {
        m_minimumSizeHint = measured();
    }
    return m_minimumSizeHint;
}

/// Room for the longest text.
QSize CustomComboBox::measured() const
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

void CustomComboBox::showEvent(QShowEvent* event)
{
    assertGuiThread();
    if (!m_hasBeenShown) {
        m_hasBeenShown = true;
        m_sizeHint = QSize();
    }
    QComboBox::showEvent(event);
    fitPopupToBox();
}

void CustomComboBox::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    QComboBox::resizeEvent(event);
    fitPopupToBox();
}

void CustomComboBox::fitPopupToBox()
{
    if (!m_hasPopup) {
        return;
    }
    view()->setMinimumWidth(width());
    view()->setMaximumWidth(width());
    // The style would make the frame around the view as wide as the longest text.
    view()->parentWidget()->setMaximumWidth(width());
}
