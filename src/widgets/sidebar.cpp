#include "widgets/sidebar.h"

#include "common/threadassert.h"
#include "widgets/customsidebutton.h"

#include <QEasingCurve>
#include <QHBoxLayout>
#include <QPixmap>
#include <QPropertyAnimation>
#include <QVBoxLayout>

#include <algorithm>

namespace {

/// Width of the shut bar, in pixels.
constexpr int kClosedWidth = 20;
constexpr int kInitialOpenWidth = 100;
constexpr int kSlideMs = 300;

/// Orientations of a side button.
constexpr int kColumn = 0;
constexpr int kRow = 1;

} // namespace

SideBar::SideBar(QWidget* parent)
    : QWidget(parent)
    , m_showBtn(new CustomSideButton(this))
    , m_hideBtn(new CustomSideButton(this))
    , m_content(new QWidget(this))
    , m_mainLayout(new QHBoxLayout(this))
    , m_stripLayout(new QVBoxLayout)
    , m_panelLayout(new QVBoxLayout)
    , m_openAnimation(makeAnimation())
    , m_closeAnimation(makeAnimation())
    , m_openWidth(kInitialOpenWidth)
{
    assertGuiThread();
    setAttribute(Qt::WA_StyledBackground);
    setWindowFlag(Qt::FramelessWindowHint);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    buildLayouts();
    m_content->hide();
    m_showBtn->hide();

    connect(m_closeAnimation, &QPropertyAnimation::finished, this, &SideBar::onHideAnimFinished);
    connect(m_showBtn, &QPushButton::clicked, this, &SideBar::onShowBtnClicked);
    connect(m_hideBtn, &QPushButton::clicked, this, &SideBar::onHideBtnClicked);
    m_content->setStyleSheet(QStringLiteral("background-color: rgb(68, 68, 68); border: none;"));
    setOpenWidth(kInitialOpenWidth);
}

void SideBar::buildLayouts()
{
    for (QBoxLayout* layout :
         {static_cast<QBoxLayout*>(m_mainLayout), static_cast<QBoxLayout*>(m_stripLayout),
          static_cast<QBoxLayout*>(m_panelLayout)}) {
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
    }
    m_hideBtn->setFixedWidth(kClosedWidth);
    m_hideBtn->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    m_stripLayout->addWidget(m_hideBtn);

    m_showBtn->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_content->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_panelLayout->addWidget(m_showBtn);
    m_panelLayout->addWidget(m_content);

    m_mainLayout->addLayout(m_panelLayout);
    m_mainLayout->addLayout(m_stripLayout);
}

QPropertyAnimation* SideBar::makeAnimation()
{
    auto* animation = new QPropertyAnimation(this, QByteArrayLiteral("minimumWidth"), this);
    animation->setDuration(kSlideMs);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    return animation;
}

void SideBar::setSide(bool side)
{
    assertGuiThread();
    m_side = side;
    const QPixmap left(QStringLiteral(":/dark/arrow_left.png"));
    const QPixmap right(QStringLiteral(":/dark/arrow_right.png"));
    m_showBtn->setPixmap(m_side ? right : left);
    m_hideBtn->setPixmap(m_side ? left : right);
    m_showBtn->setOrientation(kRow);
    m_hideBtn->setOrientation(kColumn);
}

void SideBar::setOpenWidth(int width)
{
    assertGuiThread();
    m_openWidth = std::max(width, kClosedWidth);
    setMinimumWidth(kClosedWidth);
    setMaximumWidth(m_openWidth);
    m_content->setMaximumWidth(m_openWidth - kClosedWidth);
    updateGeometry();
}

void SideBar::setTitle(const QString& title)
{
    assertGuiThread();
    m_hideBtn->setText(title);
    m_showBtn->setText(title);
    m_hideBtn->setVertical(true);
    m_showBtn->setVertical(false);
}

int SideBar::currentWidth() const
{
    const bool sliding = m_openAnimation->state() == QAbstractAnimation::Running ||
                         m_closeAnimation->state() == QAbstractAnimation::Running;
    return m_open && !sliding ? m_openWidth : minimumWidth();
}

QSize SideBar::sizeHint() const
{
    return QSize(currentWidth(), QWidget::sizeHint().height());
}

QSize SideBar::minimumSizeHint() const
{
    return QSize(currentWidth(), QWidget::minimumSizeHint().height());
}

void SideBar::onShowBtnClicked()
{
    assertGuiThread();
    if (m_closeAnimation->state() == QAbstractAnimation::Running || !m_open) {
        return;
    }
    m_openAnimation->stop();
    m_hideBtn->hide();
    m_closeAnimation->setStartValue(m_openWidth);
    m_closeAnimation->setEndValue(kClosedWidth);
    m_closeAnimation->start();
}

void SideBar::onHideBtnClicked()
{
    assertGuiThread();
    if (m_openAnimation->state() == QAbstractAnimation::Running || m_open) {
        return;
    }
    m_content->show();
    m_showBtn->show();
    m_hideBtn->hide();
    m_openAnimation->setStartValue(kClosedWidth);
    m_openAnimation->setEndValue(m_openWidth);
    m_open = true;
    m_openAnimation->start();
}

void SideBar::onHideAnimFinished()
{
    assertGuiThread();
    m_content->hide();
    m_showBtn->hide();
    m_hideBtn->show();
    m_open = false;
    updateGeometry();
}
