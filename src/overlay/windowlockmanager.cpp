#include "overlay/windowlockmanager.h"

#include "common/threadassert.h"
#include "overlay/inputbarrier.h"
#include "overlay/lockabledatacollectionview.h"

#include <QEvent>

#include <algorithm>

WindowLockManager::WindowLockManager(QObject* parent, const scn::LockTiming& timing)
    : QObject(parent)
    , m_timing(timing)
    , m_barrier(std::make_unique<scn::InputBarrier>(
          [this](const QWidget& widget) { return covers(widget); }))
{
    assertGuiThread();
    overlay()->hide();
}

WindowLockManager::~WindowLockManager() = default;

LockableDataCollectionView* WindowLockManager::overlay()
{
    // The managers' shared overlay. It is a child of the page it covers, and goes with it.
    static QPointer<LockableDataCollectionView> shared;
    if (!shared) {
        shared = new LockableDataCollectionView;
    }
    if (m_lockView != shared) {
        m_lockView = shared;
        m_lockView->setTiming(m_timing);
        connect(m_lockView, &LockableDataCollectionView::unlocked, this,
                &WindowLockManager::hideLockView);
    }
    return m_lockView;
}

void WindowLockManager::registerWindow(QWidget* window)
{
    assertGuiThread();
    if (!window || m_windows.contains(window)) {
        return;
    }
    m_windows.append(window);
    window->setMouseTracking(true);
    window->installEventFilter(this);
}

void WindowLockManager::setLockEnabled(bool on)
{
    assertGuiThread();
    m_enabled = on;
    if (on) {
        m_barrier->raise();
    } else {
        m_barrier->lower();
        overlay()->lock();
    }
    updateCurrentWindow();
}

void WindowLockManager::lockView()
{
    assertGuiThread();
    if (m_lockView) {
        m_lockView->lock();
    }
}

bool WindowLockManager::eventFilter(QObject* watched, QEvent* event)
{
    assertGuiThread();
    auto* window = qobject_cast<QWidget*>(watched);
    if (window && m_windows.contains(window)) {
        if (event->type() == QEvent::Enter) {
            enter(window);
        } else if (event->type() == QEvent::Leave) {
            leave(window);
        }
    }
    return QObject::eventFilter(watched, event);
}

void WindowLockManager::enter(QWidget* window)
{
    m_currentWindow = window;
    if (m_enabled && overlay()->isLocked()) {
        layOver(window);
    }
}

void WindowLockManager::leave(QWidget* window)
{
    if (m_currentWindow == window) {
        overlay()->hide();
        m_currentWindow.clear();
    }
}

void WindowLockManager::layOver(QWidget* window)
{
    LockableDataCollectionView* view = overlay();
    view->setParent(window);
    view->setGeometry(window->rect());
    view->raise();
    view->show();
}

void WindowLockManager::updateCurrentWindow()
{
    if (!m_currentWindow) {
        return;
    }
    if (m_enabled && overlay()->isLocked()) {
        overlay()->ensureVeil();
        layOver(m_currentWindow);
    } else {
        overlay()->hide();
    }
}

/// Whether the widget's keys are blocked.
bool WindowLockManager::covers(const QWidget& widget) const
{
    if (!m_lockView || !m_lockView->isLocked() || scn::InputBarrier::isWithin(widget, m_lockView)) {
        return false;
    }
    return std::any_of(m_windows.cbegin(), m_windows.cend(), [&widget](const auto& page) {
        return page && scn::InputBarrier::isWithin(widget, page);
    });
}

void WindowLockManager::onWindowEntered()
{
    assertGuiThread();
    if (auto* window = qobject_cast<QWidget*>(sender())) {
        enter(window);
    }
}

void WindowLockManager::onWindowLeft()
{
    assertGuiThread();
    if (auto* window = qobject_cast<QWidget*>(sender())) {
        leave(window);
    }
}

void WindowLockManager::hideLockView()
{
    assertGuiThread();
    overlay()->hide();
    emit unlocked();
}
