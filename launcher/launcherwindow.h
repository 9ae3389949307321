#pragma once

#include <QWidget>

class QVBoxLayout;

/// The launcher's window: hosts the child's frameless window by its native handle.
class LauncherWindow : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LauncherWindow)

public:
    LauncherWindow();

    /// Takes the child's window in; an earlier one is let go.
    void embed(qulonglong handle, const QColor& color);

signals:
    /// The user closes the window; the child is to be ended before the handler returns.
    void closing();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QVBoxLayout* m_layout;
    QWidget* m_content;
    qulonglong m_handle = 0;
};
