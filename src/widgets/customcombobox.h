#pragma once

#include <QComboBox>
#include <QSize>
#include <QStringList>

class CustomItemDelegate;

/// A combo box whose popup is exactly as wide as the box and can space its rows.
///
/// The popup is some ten widgets, so it is created when the box is first used: a large channel table pays nothing
/// for the popups that nobody opens.
class CustomComboBox : public QComboBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomComboBox)

public:
    explicit CustomComboBox(QWidget* parent = nullptr);

    /// Appends the items.
    void addFunctionItems(const QStringList& items);

    /// Added to each row's height in the popup, in pixels.
    int itemSpacing() const { return m_itemSpacing; }

    /// List of the popup. Hides the function of the base class, which would create a list of its own.
    QAbstractItemView* view() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    void showPopup() override;

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
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makePopup();
    void fitPopupToBox();
    QSize measured() const;

    CustomItemDelegate* m_delegate;
    int m_itemSpacing;
    bool m_hasPopup = false;
    bool m_hasBeenShown = false;

    // Invalid until measured.
    mutable QSize m_sizeHint;
    mutable QSize m_minimumSizeHint;
};
