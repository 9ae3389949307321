#include "launcher/embeddedwindow.h"

#include "launcher/nativewindows.h"

#include <QEvent>
#include <QVBoxLayout>
#include <QWindow>

namespace scnlauncher {

EmbeddedWindow::EmbeddedWindow(const NativeWindows& windows, qulonglong handle, const QColor& color,
                               QWidget* parent)
    : QWidget(parent)
    , m_windows(windows)
    , m_handle(handle)
{
    QPalette background = palette();
    background.setColor(QPalette::Window, color);
    setPalette(background);
    setAutoFillBackground(true);
    QWindow* child = QWindow::fromWinId(static_cast<WId>(handle));
    m_container = QWidget::createWindowContainer(child, this);
    m_container->setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_container);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_container);
}

bool EmbeddedWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_watched && event->type() == QEvent::Move) {
        tellPlace();
    }
    return QWidget::eventFilter(watched, event);
}

void EmbeddedWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_watched != window()) {
        m_watched = window();
        m_watched->installEventFilter(this);
    }
    // While its tab was hidden the window may have moved.
    tellPlace();
    setFocus();
}

void EmbeddedWindow::tellPlace()
{
    if (isVisible()) {
        m_windows.tellPlace(m_handle,
                            QRect(m_container->mapToGlobal(QPoint(0, 0)), m_container->size()));
    }
}

} // namespace scnlauncher
