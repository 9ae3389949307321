#pragma once

#include <QWidget>

class QVBoxLayout;

namespace scnlauncher {

/// The launcher's window. It embeds the child's frameless window by its native handle.
class LauncherWindow : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LauncherWindow)

public:
    LauncherWindow();

    /// Embeds the child's window, releasing an earlier one.
    void embed(qulonglong handle, const QColor& color);

signals:
    /// The user wants to close the window, which stays until the child has ended.
    void closing();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QVBoxLayout* m_layout;
    QWidget* m_content;
    qulonglong m_handle = 0;
};

} // namespace scnlauncher
