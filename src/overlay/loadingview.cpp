#include "overlay/loadingview.h"

#include "common/threadassert.h"
#include "overlay/inputbarrier.h"
#include "overlay/viewportcover.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QResizeEvent>
#include <QTimer>

#include <algorithm>
#include <array>

using namespace scn;

namespace {

constexpr int kBusyMode = 0;
constexpr int kRecoveryMode = 1;

/// The ring turns in 30 steps of 80 ms: 150 degrees a second.
constexpr int kStepMs = 80;
constexpr int kStepDegrees = 12;
constexpr int kFullTurn = 360;

const QColor kCoverColour(40, 40, 40, 220);
const QColor kRingColour(153, 153, 153);
constexpr qreal kRingPenWidth = 4.0;
constexpr qreal kInnerRadius = 0.7; ///< Of the outer radius.
constexpr qreal kRingRise = 20;     ///< Of the ring's centre over the middle, in pixels.

/// Dashes of the two rings: start and length in sixteenths of a degree.
constexpr int kDashLength = 720;
constexpr std::array<int, 3> kOuterDashes = {0, 1920, 3840};
constexpr std::array<int, 3> kInnerDashes = {960, 2880, 4800};

constexpr double kRecoveryWidth = 0.6; ///< Largest width of the recovery text, of the view's.
constexpr double kRecoveryTop = 0.3;   ///< Top of the recovery text, of the view's height.
constexpr double kRecoveryButtonTop = 0.5;

/// Left edge that centres a width in the view's.
int centredLeft(int viewWidth, int width)
{
    return (viewWidth - width) / 2;
}

void drawRing(QPainter& painter, int radius, const std::array<int, 3>& dashes)
{
    const QRect circle(-radius, -radius, 2 * radius, 2 * radius);
    for (const int start : dashes) {
        painter.drawArc(circle, start, kDashLength);
    }
}

} // namespace

struct LoadingView::State
{
    int angle = 0;
    QTimer timer;
    QString message; ///< Not read: the labels have the texts.
    int mode = kBusyMode;
    bool spinning = false;
    QLabel* loadingLabel = nullptr;
    QLabel* recoveryLabel = nullptr;
    QPushButton* recoveryButton = nullptr;
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
    m_state->timer.setInterval(kStepMs);
    connect(
        &m_state->timer, &QTimer::timeout, this,
        [this] {
            m_state->angle = (m_state->angle + kStepDegrees) % kFullTurn;
            viewport()->update();
        },
        Qt::DirectConnection);
    placeControls();
}

LoadingView::~LoadingView() = default;

void LoadingView::buildControls()
{
    if (m_state->mode == kRecoveryMode) {
        buildRecoveryControls();
    }
    m_state->loadingLabel = new QLabel(tr("正在加载，请稍等..."), this);
    m_state->loadingLabel->setStyleSheet(
        QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; }"));
    m_state->loadingLabel->setAlignment(Qt::AlignCenter);
    m_state->loadingLabel->adjustSize();
    m_state->loadingLabel->setVisible(m_state->mode != kRecoveryMode);
}

void LoadingView::buildRecoveryControls()
{
    m_state->recoveryLabel = new QLabel(tr("应用程序将在恢复通信时与仪器同步。"), this);
    m_state->recoveryLabel->setStyleSheet(
        QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; "
                       "text-align: center; }"));
    m_state->recoveryLabel->setAlignment(Qt::AlignCenter);
    m_state->recoveryLabel->setWordWrap(true);

    m_state->recoveryButton = new QPushButton(tr("恢复"), this);
    m_state->recoveryButton->setStyleSheet(QStringLiteral(
        "QPushButton{ color: white; background-color: #333333; border: 1px solid #666666; "
        "font: 14px '微软雅黑'; padding: 6px 12px; border-radius: 4px; } "
        "QPushButton:hover{ background-color: #444444; }"
        "QPushButton:pressed{ background-color: #555555; }"));
    connect(m_state->recoveryButton, &QPushButton::clicked, this, &LoadingView::onRecoveryClicked);
}

void LoadingView::placeControls()
{
    if (m_state->mode == kRecoveryMode) {
        // isHidden(), not isVisible(): the layout counts before the view itself is on show.
        if (!m_state->recoveryLabel->isHidden()) {
            placeRecoveryLabel();
        }
        if (!m_state->recoveryButton->isHidden()) {
            m_state->recoveryButton->adjustSize();
            m_state->recoveryButton->move(centredLeft(width(), m_state->recoveryButton->width()),
                                          static_cast<int>(height() * kRecoveryButtonTop));
        }
    }
    if (!m_state->loadingLabel->isHidden()) {
        placeLoadingLabel();
    }
}

void LoadingView::placeRecoveryLabel()
{
    QLabel* label = m_state->recoveryLabel;
    // An earlier, smaller width would limit the size hint.
    label->setMinimumWidth(0);
    label->setMaximumWidth(QWIDGETSIZE_MAX);
    label->ensurePolished();
    const int widest = static_cast<int>(width() * kRecoveryWidth);
    label->setFixedWidth(std::min(widest, label->sizeHint().width()));
    label->resize(label->width(), label->heightForWidth(label->width()));
    label->move(centredLeft(width(), label->width()), static_cast<int>(height() * kRecoveryTop));
}

void LoadingView::placeLoadingLabel()
{
    m_state->loadingLabel->adjustSize();
    m_state->loadingLabel->move(centredLeft(width(), m_state->loadingLabel->width()),
                                height() / 2 + std::min(width(), height()) / 8);
}

void LoadingView::showLoading()
{
    assertGuiThread();
    if (m_state->mode == kRecoveryMode) {
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
    if (m_state->mode == kBusyMode) {
        startSpinning();
    }
}

void LoadingView::showRecoveryForm()
{
    m_state->spinning = false;
    m_state->timer.stop();
    m_state->recoveryLabel->show();
    m_state->recoveryButton->show();
    m_state->loadingLabel->hide();
    placeControls();
    viewport()->update();
    takeFocus();
}

void LoadingView::setLoadingText(const QString& text)
{
    assertGuiThread();
    if (!m_state->loadingLabel) {
        return;
    }
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
    if (m_state->mode == kRecoveryMode) {
        showRecoveryForm();
    }
}

void LoadingView::onRecoveryClicked()
{
    assertGuiThread();
    m_state->recoveryLabel->hide();
    m_state->recoveryButton->hide();
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
    closePopups();
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

/// An open list or panel of a covered widget would be on top of the view.
void LoadingView::closePopups()
{
    QWidget* popup = QApplication::activePopupWidget();
    while (popup && covers(*popup) && popup->close()) {
        popup = QApplication::activePopupWidget();
    }
}

void LoadingView::takeFocus()
{
    if (!isVisible() || !parentWidget()) {
        return;
    }
    QPushButton* button = m_state->recoveryButton;
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

void LoadingView::paintEvent(QPaintEvent* event)
{
    assertGuiThread();
    Q_UNUSED(event)
    QPainter painter(viewport());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRect whole = viewport()->rect();
    painter.fillRect(whole, kCoverColour);
    if (!m_state->spinning) {
        return;
    }
    const int radius = std::min(whole.width(), whole.height()) / 8;
    painter.setPen(QPen(kRingColour, kRingPenWidth, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin));
    painter.translate(whole.width() * 0.5, whole.height() * 0.5 - kRingRise);
    painter.rotate(m_state->angle);
    drawRing(painter, radius, kOuterDashes);
    drawRing(painter, static_cast<int>(radius * kInnerRadius), kInnerDashes);
}
