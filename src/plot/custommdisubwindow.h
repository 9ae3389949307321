#pragma once

#include <QMdiSubWindow>
#include <QPoint>
#include <QRect>

class CustomTitleBar;
class QVBoxLayout;

/// The frameless shell of a workspace window. Its own title bar drags it, maximises it, and collapses it
/// to a small tile that shows its icon. A click anywhere inside raises it. Closing it deletes it with its
/// content. GUI thread.
class CustomMdiSubWindow : public QMdiSubWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomMdiSubWindow)

public:
    CustomMdiSubWindow(const QString& iconPath, QWidget* parent);
    ~CustomMdiSubWindow() override;

    /// Text of the bar and of the window itself.
    void setTitle(const QString& title);

    /// Adds the view and takes ownership. Null is ignored.
    void setContentWidget(QWidget* widget);
    QWidget* contentWidget() const { return m_contentWidget; }

    /// The parent that setContentWidget() gives a view.
    QWidget* contentParent() const { return m_contentArea; }

    /// Makes this the active window of its area; nothing happens outside an area.
    void activate();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private slots:
    /// Collapses the window to a tile.
    void onMaximizeClicked();
    /// Opens a tile where it is; otherwise toggles between maximised and normal.
    void onMinimizeToTitleBar();

private:
    void buildShell(const QString& iconPath);
    void connectTitleBar();
    void onStateChanged(Qt::WindowStates before, Qt::WindowStates now);
    void watch(QWidget* root);
    void takeBack();
    void openTile();
    void takeFocusFromPress();
    bool isOnTitleBar(const QPoint& globalPos) const;
    QRect dragBounds() const;

    CustomTitleBar* m_titleBar = nullptr;
    QWidget* m_holder = nullptr;
    QVBoxLayout* m_holderLayout = nullptr;
    QWidget* m_contentArea = nullptr;
    QVBoxLayout* m_contentLayout = nullptr;
    QWidget* m_contentWidget = nullptr;
    bool m_dragging = false;
    QPoint m_pressGlobal;
    QPoint m_pressWindowPos;
    bool m_isMaximized = false;
    bool m_hasFocus = false;
    QRect m_normalGeometry;
    bool m_collapsed = false;
};
