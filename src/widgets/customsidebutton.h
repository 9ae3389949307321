#pragma once

#include <QPushButton>

class QBoxLayout;
class QLabel;
class RotatedLabel;

/// A flat button with an icon and a text, in a row or a column; the text can run downwards.
class CustomSideButton : public QPushButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomSideButton)

public:
    explicit CustomSideButton(QWidget* parent = nullptr);

    /// 0 stacks icon and text in a column, 1 puts them in a row.
    void setOrientation(int orientation);

    void setText(const QString& text);

    /// Rotates the text by 90 degrees.
    void setVertical(bool vertical);

    /// Sets the icon, scaled to fit 15 x 15 pixels.
    void setPixmap(const QPixmap& pixmap);

private:
    void rebuildLayout();

    int m_orientation = 0;
    QLabel* m_iconLabel;
    RotatedLabel* m_textLabel;
    QBoxLayout* m_layout;
};
