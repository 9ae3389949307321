#pragma once

#include <QWidget>

class CustomSideButton;
class QHBoxLayout;
class QPropertyAnimation;
class QVBoxLayout;

/// A panel that slides open and shut by its width. Shut, it is a strip of 20 pixels that opens it
/// by a click; open, it is a header that shuts it by a click, above the content.
class SideBar : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SideBar)

public:
    explicit SideBar(QWidget* parent = nullptr);

    /// Chooses the way the arrows point: false for a bar that opens to the right.
    void setSide(bool side);

    /// Width when open, in pixels; the strip takes 20 of them from the content.
    void setOpenWidth(int width);

    /// Title on the strip, running downwards, and on the header.
    void setTitle(const QString& title);

    /// The panel to fill.
    QWidget* content() const { return m_content; }

    /// The bar is as wide as its animation says, whatever the content would like.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// A click on the header of the open panel: shuts it.
    void onShowBtnClicked();

    /// A click on the strip of the shut bar: opens it.
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
