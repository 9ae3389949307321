#pragma once

#include "overlay/locktiming.h"

#include <QGraphicsView>

#include <memory>

/// A grey veil over a page, with a bar that must be held for a second to remove it. It starts
/// locked and hidden; the caller decides where to show it. While visible, it follows its page's
/// size and the bar stays in the visible part. GUI thread.
class LockableDataCollectionView : public QGraphicsView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LockableDataCollectionView)

public:
    explicit LockableDataCollectionView(QWidget* parent = nullptr);
    ~LockableDataCollectionView() override;

    /// Locks again with a fresh veil and hides the view; a running fade ends without a signal.
    void lock();

    bool isLocked() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// How long to hold the bar, in ms.
    void setUnlockHoldTime(int ms);

    /// Replaces the hold time and the time of the fade, from the next press or fade on.
    void setTiming(const scn::LockTiming& timing);

    /// Creates the veil of a locked view that has none.
    void ensureVeil();

public slots:
    /// Locks unless already locked.
    void globalLock();

    /// Fades the veil out if locked, as if the bar had been held.
    void globalUnlock();

signals:
    /// The veil has faded out.
    void unlocked();
    void locked();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private slots:
    void onUnlockButtonPressed();
    void onUnlockButtonReleased();
    void handleUnlockTimerTimeout();

private:
    struct State;

    void makeVeil();
    void removeVeil();
    void layOutBar();
    QRectF visiblePart() const;
    void fadeOut();
    void onFadeFinished();

    std::unique_ptr<State> m_state;
};
