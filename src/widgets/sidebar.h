#pragma once

#include <QWidget>

class CustomSideButton;
class QHBoxLayout;
class QPropertyAnimation;
class QVBoxLayout;

/// A panel that slides open and shut. Shut, it is a strip of 20 pixels, and a click opens it. Open, it
/// has a header above the content, and a click there shuts it.
class SideBar : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SideBar)

public:
    explicit SideBar(QWidget* parent = nullptr);

    /// Chooses the side: false for a bar that opens to the right. The arrows point accordingly.
    void setSide(bool side);

    /// Width when open, in pixels, including the strip's 20.
    void setOpenWidth(int width);

    /// Title of the strip, where it runs downwards, and of the header.
    void setTitle(const QString& title);

    /// The panel for the caller's content.
    QWidget* content() const { return m_content; }

    /// The animation alone decides the width, whatever the content asks for.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// Shuts the panel after a click on its header.
    void onShowBtnClicked();

    /// Opens the panel after a click on its strip.
    void onHideBtnClicked();

    void onHideAnimFinished();

private:
    int currentWidth() const;
    void buildLayouts();
    QPropertyAnimation* makeAnimation();

    CustomSideButton* m_showBtn;
    CustomSideButton* m_hideBtn;
    QWidget* m_content;
    QHBoxLayout* m_mainLayout;
    QVBoxLayout* m_stripLayout;
    QVBoxLayout* m_panelLayout;
    QPropertyAnimation* m_openAnimation;
    QPropertyAnimation* m_closeAnimation;
    int m_openWidth;
    bool m_side = false;
    bool m_open = false;
};
