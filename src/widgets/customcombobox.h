#pragma once

#include <QComboBox>
#include <QStringList>

class CustomItemDelegate;

/// A combo box whose popup is exactly as wide as the box and can space its rows.
class CustomComboBox : public QComboBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomComboBox)

public:
    explicit CustomComboBox(QWidget* parent = nullptr);

    /// Puts the items behind the present last row.
    void addFunctionItems(const QStringList& items);

    /// Added to each row's height in the popup, in pixels.
    int itemSpacing() const { return m_itemSpacing; }

public slots:
    /// Spaces the popup's rows by so many pixels; the present value changes nothing.
    void setItemSpacing(int spacing);

    /// Keeps the popup's current row at the row of the box, also while the popup is open.
    void onCurrentIndexChanged(int index);

signals:
    void itemSpacingChanged(int spacing);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitPopupToBox();

    CustomItemDelegate* m_delegate;
    int m_itemSpacing;
};
