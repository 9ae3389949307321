#pragma once

#include "overlay/locktiming.h"

#include <QGraphicsView>

#include <memory>

/// A grey veil over a page, with a bar that must be held for a second to take it away.
/// It starts locked and hidden; who shows it decides where. While on show it follows its page's
/// size, and the bar keeps to what can be seen of the page. It belongs to the GUI thread.
class LockableDataCollectionView : public QGraphicsView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LockableDataCollectionView)

public:
    explicit LockableDataCollectionView(QWidget* parent = nullptr);
    ~LockableDataCollectionView() override;

    /// Locks anew with a fresh veil and hides the view; a fade that is under way ends unheard.
    void lock();

    bool isLocked() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// How long the bar must be held, in ms.
    void setUnlockHoldTime(int ms);

    /// Replaces the hold time and the time of the fade, from the next press or fade on.
    void setTiming(const scn::LockTiming& timing);

    /// Makes the veil of a locked view that has none.
    void ensureVeil();

public slots:
    /// Locks unless locked already.
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
    void makeBar();
    void layOutBar();
    QRectF visiblePart() const;
    void fadeOut();
    void onFadeFinished();

    std::unique_ptr<State> m_state;
};
