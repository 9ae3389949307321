#include "launcher/launcherwindow.h"

#include <QCloseEvent>
#include <QLabel>
#include <QVBoxLayout>
#include <QWindow>

namespace scnlauncher {

LauncherWindow::LauncherWindow()
    : m_layout(new QVBoxLayout(this))
    , m_content(new QLabel(tr("正在启动..."), this))
{
    setWindowTitle(QStringLiteral("SCN4070A"));
    static_cast<QLabel*>(m_content)->setAlignment(Qt::AlignCenter);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(m_content);
}

void LauncherWindow::embed(qulonglong handle, const QColor& color)
{
    // The child reports its handle at each show; usually it is the one already embedded.
    if (handle == m_handle) {
        return;
    }
    m_handle = handle;
    QPalette background = palette();
    background.setColor(QPalette::Window, color);
    setPalette(background);

    QWindow* child = QWindow::fromWinId(static_cast<WId>(handle));
    QWidget* container = QWidget::createWindowContainer(child, this);
    delete m_layout->replaceWidget(m_content, container);
    m_content->deleteLater();
    m_content = container;
}

void LauncherWindow::closeEvent(QCloseEvent* event)
{
    emit closing();
    event->ignore();
}

} // namespace scnlauncher
