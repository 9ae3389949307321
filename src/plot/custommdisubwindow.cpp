#include "plot/custommdisubwindow.h"

#include "common/threadassert.h"
#include "plot/customtitlebar.h"
#include "plot/windowborder.h"
#include "plot/windowplace.h"

#include <QApplication>
#include <QMdiArea>
#include <QMouseEvent>
#include <QScreen>
#include <QVBoxLayout>

namespace {
constexpr int kTitleBarHeight = 35;
constexpr int kContentMargin = 5;
} // namespace

CustomMdiSubWindow::CustomMdiSubWindow(const QString& iconPath, QWidget* parent)
    : QMdiSubWindow(parent)
{
    assertGuiThread();
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_DeleteOnClose);
    setStyleSheet(QStringLiteral("background: transparent;"));
    buildShell(iconPath);
    connectTitleBar();
    connect(this, &QMdiSubWindow::windowStateChanged, this, &CustomMdiSubWindow::onStateChanged);
    watch(m_holder);
}

CustomMdiSubWindow::~CustomMdiSubWindow()
{
    assertGuiThread();
    const QList<QWidget*> widgets = m_holder->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        widget->removeEventFilter(this);
    }
    m_holder->removeEventFilter(this);
    m_titleBar->disconnect(this);
    // Only `destroyed` stays connected: the workspace uses it to forget the window.
    disconnect(this, &QMdiSubWindow::windowStateChanged, nullptr, nullptr);
    disconnect(this, &QMdiSubWindow::aboutToActivate, nullptr, nullptr);
    disconnect(this, &QWidget::windowTitleChanged, nullptr, nullptr);
}

void CustomMdiSubWindow::setTitle(const QString& title)
{
    assertGuiThread();
    m_titleBar->setTitle(title);
    setWindowTitle(title);
}

void CustomMdiSubWindow::setContentWidget(QWidget* widget)
{
    assertGuiThread();
    if (!widget) {
        return;
    }
    m_contentWidget = widget;
    if (m_contentLayout->indexOf(widget) != -1) {
        return;
    }
    m_contentLayout->addWidget(widget);
    watch(widget);
}

void CustomMdiSubWindow::activate()
{
    assertGuiThread();
    if (QMdiArea* area = mdiArea()) {
        area->setActiveSubWindow(this);
    }
}

bool CustomMdiSubWindow::eventFilter(QObject* watched, QEvent* event)
{
    assertGuiThread();
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::MouseButtonPress && widget && isAncestorOf(widget)) {
        takeFocusFromPress();
        return false;
    }
    return QMdiSubWindow::eventFilter(watched, event);
}

void CustomMdiSubWindow::mousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (!isOnTitleBar(event->globalPos())) {
        QMdiSubWindow::mousePressEvent(event);
        return;
    }
    setFocus();
    m_dragging = true;
    m_pressGlobal = event->globalPos();
    m_pressWindowPos = pos();
    event->accept();
}

void CustomMdiSubWindow::mouseReleaseEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (event->button() == Qt::LeftButton) {
        m_dragging = false;
    }
    QMdiSubWindow::mouseReleaseEvent(event);
}

void CustomMdiSubWindow::mouseMoveEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (!m_dragging) {
        QMdiSubWindow::mouseMoveEvent(event);
        return;
    }
    const QPoint topLeft = m_pressWindowPos + event->globalPos() - m_pressGlobal;
    move(scn::heldInArea(topLeft, width(), dragBounds()));
    event->accept();
}

void CustomMdiSubWindow::focusInEvent(QFocusEvent* event)
{
    assertGuiThread();
    m_hasFocus = true;
    QMdiSubWindow::focusInEvent(event);
    update();
}

void CustomMdiSubWindow::focusOutEvent(QFocusEvent* event)
{
    assertGuiThread();
    m_hasFocus = false;
    QMdiSubWindow::focusOutEvent(event);
    update();
}

void CustomMdiSubWindow::paintEvent(QPaintEvent* event)
{
    assertGuiThread();
    QMdiSubWindow::paintEvent(event);
    const QMdiArea* area = mdiArea();
    scn::drawWindowBorder(this, area && area->activeSubWindow() == this);
}

void CustomMdiSubWindow::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QMdiSubWindow::showEvent(event);
    if (!m_collapsed && !isMaximized()) {
        m_normalGeometry = frameGeometry();
    }
}

void CustomMdiSubWindow::changeEvent(QEvent* event)
{
    assertGuiThread();
    const bool stateChanged = event->type() == QEvent::WindowStateChange;
    if (stateChanged && !m_collapsed && !m_isMaximized && isMaximized()) {
        // The base class is about to enlarge the window.
        m_normalGeometry = frameGeometry();
    }
    QMdiSubWindow::changeEvent(event);
    if (stateChanged) {
        m_isMaximized = isMaximized();
        update();
    }
}

void CustomMdiSubWindow::onMaximizeClicked()
{
    assertGuiThread();
    if (m_collapsed) {
        return;
    }
    if (isMaximized()) {
        takeBack();
    }
    m_normalGeometry = frameGeometry();
    setGeometry(scn::tileAt(scn::heldToPositive(m_normalGeometry.topLeft())));
    m_contentArea->hide();
    m_collapsed = true;
    m_titleBar->setCollapsed(true);
    setWindowState(windowState() & ~Qt::WindowMaximized);
}

void CustomMdiSubWindow::onMinimizeToTitleBar()
{
    assertGuiThread();
    if (m_collapsed) {
        openTile();
    } else if (isMaximized()) {
        takeBack();
    } else {
        showMaximized();
    }
}

void CustomMdiSubWindow::buildShell(const QString& iconPath)
{
    m_holder = new QWidget(this);
    // The window's transparency is inherited by popup lists, which have nothing behind them.
    m_holder->setStyleSheet(QStringLiteral("QComboBoxPrivateContainer, QComboBox QAbstractItemView "
                                           "{ background-color: #19232D; border-radius: 0; }"));
    m_holderLayout = new QVBoxLayout(m_holder);
    m_holderLayout->setContentsMargins(0, 0, 0, 0);
    m_holderLayout->setSpacing(0);

    m_titleBar = new CustomTitleBar(iconPath, m_holder);
    m_holderLayout->addWidget(m_titleBar);

    m_contentArea = new QWidget(m_holder);
    m_contentLayout = new QVBoxLayout(m_contentArea);
    m_contentLayout->setContentsMargins(kContentMargin, kContentMargin, kContentMargin,
                                        kContentMargin);
    m_contentLayout->setSpacing(kContentMargin);
    m_holderLayout->addWidget(m_contentArea);

    setWidget(m_holder);
}

/// The names are crossed on purpose: the first button collapses, the second and a double click maximise.
void CustomMdiSubWindow::connectTitleBar()
{
    connect(m_titleBar, &CustomTitleBar::minimizeClicked, this,
            &CustomMdiSubWindow::onMaximizeClicked);
    connect(m_titleBar, &CustomTitleBar::maximizeClicked, this,
            &CustomMdiSubWindow::onMinimizeToTitleBar);
    connect(m_titleBar, &CustomTitleBar::closeClicked, this, &CustomMdiSubWindow::close);
}

/// When a window becomes active, the base class gives the focus to one of its controls. Those of a tile
/// are hidden, and without the focus in any window Ctrl+Tab goes no further.
void CustomMdiSubWindow::onStateChanged(Qt::WindowStates before, Qt::WindowStates now)
{
    assertGuiThread();
    if (m_collapsed && (now & ~before & Qt::WindowActive)) {
        setFocus();
    }
}

/// Makes this window see mouse presses on `root` and on all of its current children.
void CustomMdiSubWindow::watch(QWidget* root)
{
    root->installEventFilter(this);
    const QList<QWidget*> widgets = root->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        widget->installEventFilter(this);
    }
}

/// Makes a maximised window normal. The base class would make it as high as its content asks for, and a
/// chart asks for more than a new window has.
void CustomMdiSubWindow::takeBack()
{
    const QRect place = m_normalGeometry; // being shown again overwrites it
    showNormal();
    setGeometry(place);
}

void CustomMdiSubWindow::openTile()
{
    setGeometry(QRect(scn::heldToPositive(pos()), m_normalGeometry.size()));
    m_collapsed = false;
    m_titleBar->setMinimumHeight(kTitleBarHeight);
    m_contentArea->show();
    m_titleBar->setCollapsed(false);
    showNormal();
    setFocus();
}

/// The press has already focused its target. When the window takes the focus, the base class passes it to
/// the widget that had it last, so the target gets it back afterwards.
void CustomMdiSubWindow::takeFocusFromPress()
{
    QWidget* target = QApplication::focusWidget();
    setFocus();
    activate();
    if (target && isAncestorOf(target) && !target->hasFocus()) {
        target->setFocus(Qt::MouseFocusReason);
    }
}

bool CustomMdiSubWindow::isOnTitleBar(const QPoint& globalPos) const
{
    const QRect bar(m_titleBar->mapTo(this, QPoint()), m_titleBar->size());
    return bar.contains(mapFromGlobal(globalPos));
}

/// The rectangle that holds a dragged window.
QRect CustomMdiSubWindow::dragBounds() const
{
    const QMdiArea* area = mdiArea();
    return area ? area->contentsRect() : QApplication::primaryScreen()->availableGeometry();
}
