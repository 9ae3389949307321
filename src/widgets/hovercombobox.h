#pragma once

#include <QComboBox>

/// A combo box that opens when the pointer enters it and closes when the pointer leaves.
class HoverComboBox : public QComboBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HoverComboBox)

public:
    explicit HoverComboBox(QWidget* parent = nullptr);

    /// Also called when the user chooses a row.
    void hidePopup() override;

protected:
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    bool m_popupOpen = false;
};
