#pragma once

#include <QString>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QSpacerItem;

/// The title bar of a workspace window: a title and three buttons or, while the window is a tile, just
/// its icon. GUI thread.
class CustomTitleBar : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomTitleBar)

public:
    CustomTitleBar(const QString& iconPath, QWidget* parent);

    void setTitle(const QString& title);

    /// Shows the icon instead of the title and the buttons, or the reverse.
    void setCollapsed(bool collapsed);

signals:
    void minimizeClicked();
    /// Also emitted on a double click of the left button on the bar.
    void maximizeClicked();
    void closeClicked();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QPushButton* makeButton(const QString& iconPath, const QString& toolTip);

    QHBoxLayout* m_layout;
    QLabel* m_iconLabel;
    QLabel* m_titleLabel;
    QSpacerItem* m_spacer;
    QPushButton* m_minimizeButton;
    QPushButton* m_maximizeButton;
    QPushButton* m_closeButton;
};
