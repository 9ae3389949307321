#include "launcher/embeddedwindow.h"

#include "launcher/nativewindows.h"

#include <QApplication>
#include <QEvent>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kRetryMs = 50;
/// How long it is looked after that no window manager takes the window out, and how often.
constexpr int kLookMs = 100;
constexpr int kLooks = 50;

} // namespace

EmbeddedWindow::EmbeddedWindow(const NativeWindows& windows, qulonglong handle, const QColor& color,
                               QWidget* parent)
    : QWidget(parent)
    , m_windows(windows)
    , m_handle(handle)
    , m_child(QWindow::fromWinId(static_cast<WId>(handle)))
    , m_looksLeft(kLooks)
{
    QPalette background = palette();
    background.setColor(QPalette::Window, color);
    setPalette(background);
    setAutoFillBackground(true);
    auto* container = QWidget::createWindowContainer(m_child, this);
    m_retry.setSingleShot(true);
    m_retry.setInterval(kRetryMs);
    connect(&m_retry, &QTimer::timeout, this, &EmbeddedWindow::giveKeyboard);
    connect(&m_looks, &QTimer::timeout, this, &EmbeddedWindow::keepInside);
    m_looks.start(kLookMs);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(container);
    qApp->installNativeEventFilter(this);
}

EmbeddedWindow::~EmbeddedWindow()
{
    qApp->removeNativeEventFilter(this);
}

bool EmbeddedWindow::nativeEventFilter(const QByteArray& eventType, void* message, long*)
{
    if (m_watched && NativeWindows::isFocusIn(eventType, message, m_watched->winId())) {
        m_retry.start();
    }
    return false;
}

bool EmbeddedWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_watched && event->type() == QEvent::Move) {
        tellPlace();
    } else if (watched == m_watched && event->type() == QEvent::WindowActivate) {
        giveKeyboard();
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
    giveKeyboard();
}

void EmbeddedWindow::keepInside()
{
    if (--m_looksLeft == 0) {
        m_looks.stop();
    }
    if (!isVisible() || !m_child || !m_child->parent()) {
        return;
    }
    const double scale = devicePixelRatioF();
    const QRect place((QPointF(m_child->position()) * scale).toPoint(),
                      (QSizeF(m_child->size()) * scale).toSize());
    if (m_windows.putBack(m_handle, m_child->parent()->winId(), place)) {
        tellPlace();
        giveKeyboard();
    }
}

/// Window managers know the launcher's window only, and give it the keyboard.
void EmbeddedWindow::giveKeyboard()
{
    const bool isDue =
        isVisible() && window()->isActiveWindow() && !QApplication::activeModalWidget();
    if (isDue && !m_windows.giveKeyboard(m_handle)) {
        m_retry.start();
    }
}

void EmbeddedWindow::tellPlace()
{
    if (isVisible()) {
        m_windows.tellPlace(m_handle);
    }
}

} // namespace scnlauncher
