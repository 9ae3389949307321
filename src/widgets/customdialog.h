#pragma once

#include <QDialog>
#include <QPoint>

class QLabel;
class QVBoxLayout;

/// A modal, frameless dialog: a title bar of its own, which drags it, above one content widget.
class CustomDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomDialog)

public:
    explicit CustomDialog(QWidget* parent = nullptr);

    /// Replaces the content and takes ownership of the widget. The old content is deleted once
    /// control is back in the event loop. Null leaves the body empty.
    void setContent(QWidget* widget);

    /// Text of the title bar.
    void setTitle(const QString& title);

public slots:
    void onCloseClicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* buildTitleBar();

    QWidget* m_titleBar = nullptr;
    QLabel* m_titleLabel = nullptr;
    QVBoxLayout* m_contentLayout = nullptr;
    bool m_dragging = false;
    QPoint m_dragOffset; ///< From the dialog's top-left corner to the pointer.
};
