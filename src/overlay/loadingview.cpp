#include "overlay/loadingview.h"

#include "common/threadassert.h"
#include "overlay/busyring.h"
#include "overlay/inputbarrier.h"
#include "overlay/overlayplace.h"
#include "overlay/recoveryform.h"
#include "overlay/viewportcover.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QResizeEvent>
#include <QTimer>

#include <algorithm>

using namespace scn;

namespace {

const QColor kCoverColour(40, 40, 40, 220);

} // namespace

struct LoadingView::State
{
    scn::BusyRing ring;
    QTimer timer;
    QString message; ///< Not read: the labels have the texts.
    int mode = Busy;
    bool spinning = false;
    QLabel* loadingLabel = nullptr;
    std::unique_ptr<scn::RecoveryForm> recovery; ///< Null unless the mode is Recovery.
    std::unique_ptr<InputBarrier> barrier;
    bool holdsFocus = false;     ///< From coming up until the focus has been given back.
    QPointer<QWidget> lastFocus; ///< Had the focus when the first of the views came up.
};

LoadingView::LoadingView(int mode, QWidget* parent)
    : QGraphicsView(parent)
    , m_state(std::make_unique<State>())
{
    assertGuiThread();
    m_state->mode = mode;
    setWindowFlags(Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setStyleSheet(QStringLiteral("background: transparent;"));
    setFrameShape(QFrame::NoFrame);
    if (parent) {
        parent->installEventFilter(this);
        setGeometry(parent->rect());
        raise();
    }
    buildControls();
    m_state->barrier =
        std::make_unique<InputBarrier>([this](const QWidget& widget) { return covers(widget); });

    m_state->timer.setParent(this); // found among the children
    m_state->timer.setInterval(scn::BusyRing::kStep);
    connect(
        &m_state->timer, &QTimer::timeout, this,
        [this] {
            m_state->ring.turn();
            // Whatever lies below is painted again too, and charts are expensive.
            viewport()->update(scn::BusyRing::bounds(viewport()->rect()));
        },
        Qt::DirectConnection);
    placeControls();
}

LoadingView::~LoadingView() = default;

void LoadingView::buildControls()
{
    if (m_state->mode == Recovery) {
        m_state->recovery = std::make_unique<scn::RecoveryForm>(this);
        connect(m_state->recovery->button(), &QPushButton::clicked, this,
                &LoadingView::onRecoveryClicked);
    }
    m_state->loadingLabel = new QLabel(tr("正在加载，请稍等..."), this);
    m_state->loadingLabel->setStyleSheet(
        QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; }"));
    m_state->loadingLabel->setAlignment(Qt::AlignCenter);
    m_state->loadingLabel->adjustSize();
    m_state->loadingLabel->setVisible(!m_state->recovery);
}

void LoadingView::placeControls()
{
    if (m_state->recovery) {
        m_state->recovery->place();
    }
    if (!m_state->loadingLabel->isHidden()) {
        placeLoadingLabel();
    }
}

void LoadingView::placeLoadingLabel()
{
    m_state->loadingLabel->adjustSize();
    m_state->loadingLabel->move(scn::centredLeft(width(), m_state->loadingLabel->width()),
                                height() / 2 + std::min(width(), height()) / 8);
}

void LoadingView::showLoading()
{
    assertGuiThread();
    if (m_state->recovery) {
        // Also after a failed recovery: without its button the user could not try again.
        showRecoveryForm();
    }
    if (!isVisible()) {
        if (parentWidget()) {
            setGeometry(parentWidget()->rect());
            placeControls();
            raise();
        }
        show();
    }
    if (m_state->mode == Busy) {
        startSpinning();
    }
}

void LoadingView::showRecoveryForm()
{
    m_state->spinning = false;
    m_state->timer.stop();
    m_state->recovery->show();
    m_state->loadingLabel->hide();
    placeControls();
    viewport()->update();
    takeFocus();
}

void LoadingView::setLoadingText(const QString& text)
{
    assertGuiThread();
    m_state->loadingLabel->setText(text);
    m_state->loadingLabel->adjustSize();
    placeControls();
}

void LoadingView::startSpinning()
{
    assertGuiThread();
    m_state->spinning = true;
    m_state->timer.start();
    viewport()->update();
}

void LoadingView::stopLoading()
{
    assertGuiThread();
    m_state->timer.stop();
    m_state->spinning = false;
    hide();
    if (m_state->recovery) {
        showRecoveryForm();
    }
}

void LoadingView::onRecoveryClicked()
{
    assertGuiThread();
    m_state->recovery->hide();
    m_state->loadingLabel->show();
    placeControls();
    startSpinning();
    emit confirmRequested();
}

bool LoadingView::eventFilter(QObject* watched, QEvent* event)
{
    assertGuiThread();
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        setGeometry(QRect(QPoint(0, 0), static_cast<QResizeEvent*>(event)->size()));
        placeControls();
    }
    // A field that loses the focus to the view must not count that as the end of an edit, which
    // would send a command behind the overlay; nor its return as the start of one.
    if ((event->type() == QEvent::FocusOut || event->type() == QEvent::FocusIn) &&
        watched->isWidgetType() && m_state->holdsFocus && covers(*static_cast<QWidget*>(watched))) {
        return true;
    }
    return QGraphicsView::eventFilter(watched, event);
}

void LoadingView::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QGraphicsView::showEvent(event);
    setViewportMargins(viewportCoverMargins(*this));
    placeControls();
    if (!parentWidget()) {
        return;
    }
    raise();
    m_state->holdsFocus = true;
    m_state->lastFocus = focusBelow();
    m_state->barrier->raise();
    qApp->installEventFilter(this);
    m_state->barrier->closePopups();
    takeFocus();
}

void LoadingView::hideEvent(QHideEvent* event)
{
    assertGuiThread();
    giveFocusBack();
    m_state->holdsFocus = false;
    qApp->removeEventFilter(this);
    m_state->barrier->lower();
    QGraphicsView::hideEvent(event);
}

/// Whether input for the widget is blocked while the view is up.
bool LoadingView::covers(const QWidget& widget) const
{
    return parentWidget() && !InputBarrier::isWithin(widget, this) &&
           InputBarrier::isWithin(widget, parentWidget());
}

void LoadingView::takeFocus()
{
    if (!isVisible() || !parentWidget()) {
        return;
    }
    QPushButton* button = m_state->recovery ? m_state->recovery->button() : nullptr;
    QWidget* target = button && !button->isHidden() ? static_cast<QWidget*>(button) : this;
    target->setFocus(Qt::OtherFocusReason);
}

/// The window's focus widget. If that is another view, the one it will give the focus back to: it
/// may go before this one.
QWidget* LoadingView::focusBelow() const
{
    QWidget* focus = window()->focusWidget();
    for (const LoadingView* view : window()->findChildren<LoadingView*>()) {
        if (focus && view != this && view->m_state->holdsFocus &&
            InputBarrier::isWithin(*focus, view)) {
            return view->m_state->lastFocus;
        }
    }
    return focus;
}

/// The topmost other view that is up and keeps the focus from its former owner; null if there is
/// none.
LoadingView* LoadingView::nextHolder() const
{
    LoadingView* holder = nullptr;
    for (LoadingView* view : window()->findChildren<LoadingView*>()) {
        const QWidget* last = m_state->lastFocus;
        if (view != this && view->m_state->holdsFocus && view->isVisible() &&
            (!last || view->covers(*last))) {
            holder = view;
        }
    }
    return holder;
}

void LoadingView::giveFocusBack()
{
    const QWidget* focus = window()->focusWidget();
    if (!focus || !InputBarrier::isWithin(*focus, this)) {
        return;
    }
    if (LoadingView* holder = nextHolder()) {
        holder->takeFocus();
        return;
    }
    if (m_state->lastFocus && m_state->lastFocus->isEnabled()) {
        m_state->lastFocus->setFocus(Qt::OtherFocusReason);
    }
}

bool LoadingView::focusNextPrevChild(bool next)
{
    if (!isVisible()) {
        return QGraphicsView::focusNextPrevChild(next);
    }
    takeFocus();
    return true;
}

void LoadingView::paintEvent(QPaintEvent*)
{
    assertGuiThread();
    QPainter painter(viewport());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRect whole = viewport()->rect();
    painter.fillRect(whole, kCoverColour);
    if (m_state->spinning) {
        m_state->ring.paint(painter, whole);
    }
}
