#pragma once

#include "overlay/locktiming.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

class LockableDataCollectionView;

namespace scn {
class InputBarrier;
}

/// Watches pages and puts the process's one lock overlay over the page that the pointer enters
/// while locking is on. Locked pages accept no keys, wherever the pointer is: the focus may still
/// be in one. GUI thread.
class WindowLockManager : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WindowLockManager)

public:
    /// The timing goes to the overlay, which all managers share: the newest manager's holds.
    explicit WindowLockManager(QObject* parent = nullptr, const scn::LockTiming& timing = {});
    ~WindowLockManager() override;

    /// Watches the page. Null or a known page is ignored; a page may be deleted.
    void registerWindow(QWidget* window);

    /// Turns locking on or off; on covers the page under the pointer at once.
    void setLockEnabled(bool on);

    /// Locks the overlay again; it appears when the pointer next enters a page.
    void lockView();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The user has held the bar long enough.
    void unlocked();

private slots:
    void onWindowEntered();
    void onWindowLeft();
    void hideLockView();

private:
    LockableDataCollectionView* overlay();
    void layOver(QWidget* window);
    void enter(QWidget* window);
    void leave(QWidget* window);
    void updateCurrentWindow();
    bool covers(const QWidget& widget) const;

    const scn::LockTiming m_timing;
    std::unique_ptr<scn::InputBarrier> m_barrier;
    QPointer<LockableDataCollectionView> m_lockView;
    QList<QPointer<QWidget>> m_windows;
    QPointer<QWidget> m_currentWindow;
    bool m_enabled = false;
};
