#pragma once

#include <QIcon>
#include <QPushButton>
#include <QSize>

/// A push button that paints its own icons and text, in one of five arrangements. The text is not the
/// base class's, which stays empty. No setter changes the button's size.
class ImageButton : public QPushButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ImageButton)

public:
    /// Position of the icon relative to the text.
    enum IconPosition { Left = 0, Right = 1, Top = 2, Bottom = 3, LeftAndRight = 4 };
    Q_ENUM(IconPosition)

    explicit ImageButton(QWidget* parent = nullptr);
    explicit ImageButton(const QString& text, QWidget* parent = nullptr);

    /// A button with an icon on each side of its text.
    ImageButton(const QIcon& leftIcon, const QString& text, const QIcon& rightIcon,
                QWidget* parent = nullptr);

    /// The icon for Left, Top and Bottom, and the left one for LeftAndRight.
    QIcon leftIcon() const { return m_leftIcon; }
    void setLeftIcon(const QIcon& icon);

    /// The icon for Right, and the right one for LeftAndRight.
    QIcon rightIcon() const { return m_rightIcon; }
    void setRightIcon(const QIcon& icon);

    QString text() const { return m_text; }
    void setText(const QString& text);

    /// Size of the icons, in pixels.
    QSize iconSize() const { return QSize(m_iconSize.width, m_iconSize.height); }
    void setIconSize(const QSize& size);
    void setIconSize(int width, int height);

    IconPosition iconPosition() const { return m_position; }
    void setIconPosition(IconPosition position);

    /// Gap between icon and text, in pixels.
    int spacing() const { return m_spacing; }
    void setSpacing(int spacing);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// Rectangles of the parts; null for a part that is not painted.
    struct Parts
    {
        QRect leftIcon;
        QRect text;
        QRect rightIcon;
    };

    QSize blockSize(int textWidth, int fontHeight) const;
    Parts placeParts(const QRect& block, int textWidth, int fontHeight) const;
    Parts placeBeside(const QRect& block, int textWidth) const;
    Parts placeStacked(const QRect& block, int fontHeight) const;
    Parts placeBetween(const QRect& block, int textWidth) const;

    QIcon m_leftIcon;
    QIcon m_rightIcon;
    QString m_text;
    struct
    {
        int width = 16;
        int height = 16;
    } m_iconSize;
    IconPosition m_position = Left;
    int m_spacing = 0;
};
