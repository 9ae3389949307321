#pragma once

#include "widgets/lazycombobox.h"

#include <QStringList>

class CustomItemDelegate;

/// A combo box whose popup is exactly as wide as the box and can space its rows.
class CustomComboBox : public scn::LazyComboBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomComboBox)

public:
    explicit CustomComboBox(QWidget* parent = nullptr);

    /// Appends the items.
    void addFunctionItems(const QStringList& items);

    /// Added to each row's height in the popup, in pixels.
    int itemSpacing() const { return m_itemSpacing; }

public slots:
    /// Sets the extra height of the popup's rows, in pixels.
    void setItemSpacing(int spacing);

    /// Keeps the popup's current row in step with the box, even while the popup is open.
    void onCurrentIndexChanged(int index);

signals:
    void itemSpacingChanged(int spacing);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void furnishPopup() override;
    void popupMade() override;

private:
    void fitPopupToBox();

    CustomItemDelegate* m_delegate;
    int m_itemSpacing;
};
