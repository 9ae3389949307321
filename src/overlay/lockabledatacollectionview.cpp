#include "overlay/lockabledatacollectionview.h"

#include "common/threadassert.h"
#include "overlay/viewportcover.h"

#include <QFontMetrics>
#include <QGraphicsOpacityEffect>
#include <QGraphicsProxyWidget>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QPointer>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int kBarHeight = 50;

constexpr int kBarTextSize = 16;
constexpr int kSmallBarTextSize = 11; ///< Below this size, widen the bar instead.
constexpr int kLeastBarTextSize = 9;  ///< Still readable.
constexpr int kBarTextMargin = 12;    ///< Left and right of the text together.

const QColor kVeilColour(50, 50, 50, 180);
const QRectF kFirstVeilRect(0, 0, 400, 200);

/// The veil is below the bar, also when recreated.
constexpr qreal kVeilZ = -1;

QString holdToUnlockText()
{
    return LockableDataCollectionView::tr("点击并按住解锁,并清除数据");
}

QString barStyle(int textSize)
{
    return QStringLiteral("color:#13C4FF;font-weight:bold;font-size:%1px;").arg(textSize);
}

/// Bar width that shows its longer text completely.
int barWidthFor(QFont font, int textSize)
{
    font.setBold(true);
    font.setPixelSize(textSize);
    return QFontMetrics(font).horizontalAdvance(holdToUnlockText()) + kBarTextMargin;
}

struct BarFit
{
    qreal width;
    int textSize;
};

/// The bar is half as wide as the veil; if its text would be too small there, it gets the width the
/// text needs. `room` is the visible part of the veil's width.
BarFit fitBar(const QFont& font, qreal veilWidth, qreal room)
{
    const auto largestText = [&font](qreal width, int from, int to) {
        int size = from;
        while (size >= to && barWidthFor(font, size) > width) {
            --size;
        }
        return size;
    };
    const qreal half = veilWidth / 2;
    const qreal width = std::min(half, room);
    const int size = largestText(width, kBarTextSize, kSmallBarTextSize);
    if (size >= kSmallBarTextSize) {
        return {width, size};
    }
    const int wideSize = largestText(room, kBarTextSize, kLeastBarTextSize);
    if (wideSize >= kLeastBarTextSize) {
        return {static_cast<qreal>(barWidthFor(font, wideSize)), wideSize};
    }
    return {half, kBarTextSize};
}

/// The start of a length nearest to `wanted` within a room; centred if it does not fit.
qreal placeWithin(qreal wanted, qreal length, qreal roomStart, qreal roomLength)
{
    if (length > roomLength) {
        return roomStart + (roomLength - length) / 2;
    }
    return std::clamp(wanted, roomStart, roomStart + roomLength - length);
}

} // namespace

struct LockableDataCollectionView::State
{
    QGraphicsScene* scene = nullptr;
    QGraphicsRectItem* veil = nullptr;
    QPushButton* unlockButton = nullptr;
    QGraphicsProxyWidget* unlockButtonProxy = nullptr;
    QTimer unlockTimer;
    bool isLocked = true;
    int holdMs = 0;
    int fadeMs = 0;
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

    setTiming(scn::LockTiming());
    m_state->unlockTimer.setParent(this); // found among the children
    m_state->scene = new QGraphicsScene(this);
    setScene(m_state->scene);
    setRenderHint(QPainter::Antialiasing);
    makeVeil();
    makeBar();

    connect(m_state->unlockButton, &QPushButton::pressed, this,
            &LockableDataCollectionView::onUnlockButtonPressed);
    connect(m_state->unlockButton, &QPushButton::released, this,
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

void LockableDataCollectionView::makeBar()
{
    m_state->unlockButton = new QPushButton(holdToUnlockText());
    m_state->unlockButton->setStyleSheet(barStyle(kBarTextSize));
    m_state->unlockButtonProxy = m_state->scene->addWidget(m_state->unlockButton);
    m_state->unlockButtonProxy->setPos(0, 0);
    // The bar keeps half of the width on a narrow page too, even if its text needs more.
    m_state->unlockButtonProxy->setMinimumSize(0, 0);
    layOutBar();
}

void LockableDataCollectionView::layOutBar()
{
    const QRectF whole = m_state->scene->sceneRect();
    const QRectF room = visiblePart();
    const BarFit fit = fitBar(m_state->unlockButton->font(), whole.width(), room.width());
    const QString style = barStyle(fit.textSize);
    if (m_state->unlockButton->styleSheet() != style) {
        m_state->unlockButton->setStyleSheet(style);
    }
    const qreal left =
        placeWithin((whole.width() - fit.width) / 2, fit.width, room.left(), room.width());
    const qreal top =
        placeWithin((whole.height() - kBarHeight) / 2, kBarHeight, room.top(), room.height());
    m_state->unlockButtonProxy->setGeometry(QRectF(left, top, fit.width, kBarHeight));
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
    m_state->unlockButton->setText(holdToUnlockText());
    emit locked();
    hide();
}

bool LockableDataCollectionView::isLocked() const
{
    return m_state->isLocked;
}

void LockableDataCollectionView::setUnlockHoldTime(int ms)
{
    m_state->holdMs = ms;
}

void LockableDataCollectionView::setTiming(const scn::LockTiming& timing)
{
    m_state->holdMs = static_cast<int>(timing.hold.count());
    m_state->fadeMs = static_cast<int>(timing.fade.count());
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
    m_state->unlockTimer.start(m_state->holdMs);
    m_state->unlockButton->setText(tr("正在解锁..."));
}

void LockableDataCollectionView::onUnlockButtonReleased()
{
    assertGuiThread();
    if (m_state->unlockTimer.isActive()) {
        m_state->unlockTimer.stop();
        m_state->unlockButton->setText(holdToUnlockText());
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
    m_state->fade->setDuration(m_state->fadeMs);
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
