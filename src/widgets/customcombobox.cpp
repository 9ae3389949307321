#include "widgets/customcombobox.h"

#include "common/threadassert.h"
#include "widgets/customitemdelegate.h"

#include <QListView>

namespace {

/// Row spacing of a new box, and the view's own space around rows, in pixels.
constexpr int kInitialItemSpacing = 4;

} // namespace

CustomComboBox::CustomComboBox(QWidget* parent)
    : LazyComboBox(parent)
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
    if (hasPopup()) {
        view()->update();
    }
    emit itemSpacingChanged(spacing);
}

void CustomComboBox::onCurrentIndexChanged(int index)
{
    assertGuiThread();
    if (hasPopup()) {
        view()->setCurrentIndex(model()->index(index, modelColumn(), rootModelIndex()));
    }
}

void CustomComboBox::furnishPopup()
{
    auto* list = new QListView(this);
    list->setSpacing(kInitialItemSpacing);
    list->setUniformItemSizes(true);
    setView(list);
    // A view comes with a delegate of its own, so ours is set after the view.
    setItemDelegate(m_delegate);
}

void CustomComboBox::popupMade()
{
    view()->setCurrentIndex(model()->index(currentIndex(), modelColumn(), rootModelIndex()));
    fitPopupToBox();
}

void CustomComboBox::showEvent(QShowEvent* event)
{
    assertGuiThread();
    LazyComboBox::showEvent(event);
    fitPopupToBox();
}

void CustomComboBox::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    LazyComboBox::resizeEvent(event);
    fitPopupToBox();
}

void CustomComboBox::fitPopupToBox()
{
    if (!hasPopup()) {
        return;
    }
    view()->setMinimumWidth(width());
    view()->setMaximumWidth(width());
    // The style would make the frame around the view as wide as the longest text.
    view()->parentWidget()->setMaximumWidth(width());
}
