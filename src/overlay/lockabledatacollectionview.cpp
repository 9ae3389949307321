#include "overlay/lockabledatacollectionview.h"

#include "common/threadassert.h"
#include "overlay/lockbar.h"
#include "overlay/viewportcover.h"

#include <QGraphicsOpacityEffect>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QPointer>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTimer>

namespace {

const QColor kVeilColour(50, 50, 50, 180);
const QRectF kFirstVeilRect(0, 0, 400, 200);

/// The veil is below the bar, also when recreated.
constexpr qreal kVeilZ = -1;

} // namespace

struct LockableDataCollectionView::State
{
    QGraphicsScene* scene = nullptr;
    QGraphicsRectItem* veil = nullptr;
    std::unique_ptr<scn::LockBar> bar;
    QTimer unlockTimer;
    bool isLocked = true;
    scn::LockTiming timing;
    QPointer<QPropertyAnimation> fade; ///< Null unless the veil is fading.
    QList<QPointer<QWidget>> holders;  ///< The page and what it lies in, while the view is on show.
};

LockableDataCollectionView::LockableDataCollectionView(QWidget* parent)
    : QGraphicsView(parent)
    , m_state(std::make_unique<State>())
{
    assertGuiThread();
    setSceneRect(QRectF());
    setResizeAnchor(QGraphicsView::AnchorViewCenter);
    setWindowFlags(Qt::Widget);
    setAttribute(Qt::WA_TranslucentBackground);
    setStyleSheet(QStringLiteral("background-color: rgba(50, 50, 50, 180);"));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    m_state->unlockTimer.setParent(this); // found among the children
    m_state->scene = new QGraphicsScene(this);
    setScene(m_state->scene);
    setRenderHint(QPainter::Antialiasing);
    makeVeil();
    m_state->bar = std::make_unique<scn::LockBar>(m_state->scene);
    layOutBar();

    connect(m_state->bar->button(), &QPushButton::pressed, this,
            &LockableDataCollectionView::onUnlockButtonPressed);
    connect(m_state->bar->button(), &QPushButton::released, this,
            &LockableDataCollectionView::onUnlockButtonReleased);
    connect(&m_state->unlockTimer, &QTimer::timeout, this,
            &LockableDataCollectionView::handleUnlockTimerTimeout);
    hide();
}

LockableDataCollectionView::~LockableDataCollectionView()
{
    // The base class still deletes the scene and its bar, whose signals use the state.
    delete m_state->fade.data();
    delete m_state->scene;
}

void LockableDataCollectionView::makeVeil()
{
    const QRectF sceneRect = m_state->scene->sceneRect();
    m_state->veil = new QGraphicsRectItem(sceneRect.isEmpty() ? kFirstVeilRect : sceneRect);
    m_state->veil->setBrush(QBrush(kVeilColour, Qt::SolidPattern));
    m_state->veil->setPen(Qt::NoPen);
    m_state->veil->setZValue(kVeilZ);
    m_state->scene->addItem(m_state->veil);
}

void LockableDataCollectionView::removeVeil()
{
    if (m_state->fade) {
        m_state->fade->stop();
        // It is deleted later; until then it must not count as a fade in progress.
        m_state->fade.clear();
    }
    if (m_state->veil) {
        m_state->scene->removeItem(m_state->veil);
        delete m_state->veil;
        m_state->veil = nullptr;
    }
}

void LockableDataCollectionView::layOutBar()
{
    m_state->bar->layOut(m_state->scene->sceneRect(), visiblePart());
}

/// The visible part of the view: its page may be in a scroll area. All of it while hidden.
QRectF LockableDataCollectionView::visiblePart() const
{
    if (!isVisible()) {
        return m_state->scene->sceneRect();
    }
    QRect part = rect();
    for (const QWidget* widget = this; !widget->isWindow(); widget = widget->parentWidget()) {
        const QWidget* holder = widget->parentWidget();
        part &= QRect(mapFrom(holder, QPoint(0, 0)), holder->size());
    }
    return part;
}

void LockableDataCollectionView::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QGraphicsView::showEvent(event);
    for (QWidget* widget = this; !widget->isWindow();) {
        widget = widget->parentWidget();
        m_state->holders.append(widget);
        widget->installEventFilter(this);
    }
    layOutBar();
}

void LockableDataCollectionView::hideEvent(QHideEvent* event)
{
    assertGuiThread();
    for (const QPointer<QWidget>& holder : qAsConst(m_state->holders)) {
        if (holder) {
            holder->removeEventFilter(this);
        }
    }
    m_state->holders.clear();
    QGraphicsView::hideEvent(event);
}

bool LockableDataCollectionView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move) {
        if (watched == parentWidget()) {
            setGeometry(parentWidget()->rect());
        }
        layOutBar();
    }
    return QGraphicsView::eventFilter(watched, event);
}

void LockableDataCollectionView::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    const QMargins margins = viewportCoverMargins(*this);
    if (margins != viewportMargins()) {
        setViewportMargins(margins);
    }
    QGraphicsView::resizeEvent(event);
    const QRectF whole(0, 0, width(), height());
    m_state->scene->setSceneRect(whole);
    if (m_state->veil) {
        m_state->veil->setRect(whole);
    }
    layOutBar();
}

void LockableDataCollectionView::lock()
{
    assertGuiThread();
    removeVeil();
    makeVeil();
    m_state->isLocked = true;
    m_state->bar->askForHold();
    emit locked();
    hide();
}

bool LockableDataCollectionView::isLocked() const
{
    return m_state->isLocked;
}

void LockableDataCollectionView::setUnlockHoldTime(int ms)
{
    m_state->timing.hold = std::chrono::milliseconds(ms);
}

void LockableDataCollectionView::setTiming(const scn::LockTiming& timing)
{
    m_state->timing = timing;
}

void LockableDataCollectionView::ensureVeil()
{
    assertGuiThread();
    if (!m_state->veil && m_state->isLocked) {
        makeVeil();
        layOutBar();
    }
}

void LockableDataCollectionView::globalLock()
{
    if (!m_state->isLocked) {
        lock();
    }
}

void LockableDataCollectionView::globalUnlock()
{
    if (m_state->isLocked) {
        fadeOut();
    }
}

void LockableDataCollectionView::onUnlockButtonPressed()
{
    assertGuiThread();
    // A press while the veil is going, or gone, must not count against the next lock.
    if (m_state->fade || !m_state->isLocked) {
        return;
    }
    m_state->unlockTimer.setTimerType(Qt::PreciseTimer);
    m_state->unlockTimer.start(m_state->timing.hold);
    m_state->bar->tellOfUnlocking();
}

void LockableDataCollectionView::onUnlockButtonReleased()
{
    assertGuiThread();
    if (m_state->unlockTimer.isActive()) {
        m_state->unlockTimer.stop();
        m_state->bar->askForHold();
    }
}

void LockableDataCollectionView::handleUnlockTimerTimeout()
{
    assertGuiThread();
    m_state->unlockTimer.stop();
    fadeOut();
}

void LockableDataCollectionView::fadeOut()
{
    assertGuiThread();
    if (m_state->fade || !m_state->veil) {
        return;
    }
    auto* effect = new QGraphicsOpacityEffect;
    m_state->veil->setGraphicsEffect(effect);
    m_state->fade = new QPropertyAnimation(effect, QByteArrayLiteral("opacity"), this);
    m_state->fade->setDuration(static_cast<int>(m_state->timing.fade.count()));
    m_state->fade->setStartValue(1.0);
    m_state->fade->setEndValue(0.0);
    connect(m_state->fade, &QPropertyAnimation::finished, this,
            &LockableDataCollectionView::onFadeFinished, Qt::DirectConnection);
    m_state->fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void LockableDataCollectionView::onFadeFinished()
{
    m_state->fade.clear();
    removeVeil();
    m_state->isLocked = false;
    emit unlocked();
}
