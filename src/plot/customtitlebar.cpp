#include "plot/customtitlebar.h"

#include "common/threadassert.h"
#include "widgets/flatbuttonstyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>
#include <QPushButton>

namespace {
constexpr int kMinimumHeight = 35;
constexpr int kIconSide = 50;
constexpr int kIconLabelSide = 60;
constexpr int kSpacerSide = 20;
constexpr int kButtonGap = 5;
constexpr QMargins kMargins(8, 2, 8, 0);

QPixmap titleIcon(const QString& iconPath)
{
    const QPixmap pixmap(iconPath);
    return pixmap.isNull() ? pixmap : pixmap.scaled(kIconSide, kIconSide, Qt::KeepAspectRatio);
}
} // namespace

CustomTitleBar::CustomTitleBar(const QString& iconPath, QWidget* parent)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
    , m_iconLabel(new QLabel(this))
    , m_titleLabel(new QLabel(this))
    , m_spacer(
          new QSpacerItem(kSpacerSide, kSpacerSide, QSizePolicy::Expanding, QSizePolicy::Minimum))
    , m_minimizeButton(makeButton(QStringLiteral(":/dark/window_minimize.png"), tr("收起为图标")))
    , m_maximizeButton(makeButton(QStringLiteral(":/dark/window_undock.png"), tr("最大化或还原")))
    , m_closeButton(makeButton(QStringLiteral(":/dark/window_close.png"), tr("关闭")))
{
    assertGuiThread();
    // The window's transparency is inherited by tool tips, which have nothing behind them. The same rule for the
    // whole window makes a chart open half as slowly again.
    setStyleSheet(QStringLiteral("QToolTip { background-color: #346792; }"));
    setMinimumHeight(kMinimumHeight);

    m_iconLabel->setPixmap(titleIcon(iconPath));
    m_iconLabel->setFixedSize(kIconLabelSide, kIconLabelSide);
    m_iconLabel->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_iconLabel->setAlignment(Qt::AlignCenter);
    m_iconLabel->hide();

    m_titleLabel->setStyleSheet(QStringLiteral("color: white; font-size: 14px;"));
    m_titleLabel->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);

    m_layout->setContentsMargins(kMargins);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_titleLabel);
    m_layout->addWidget(m_iconLabel);
    m_layout->addSpacerItem(m_spacer);
    m_layout->addWidget(m_minimizeButton);
    m_layout->addSpacing(kButtonGap);
    m_layout->addWidget(m_maximizeButton);
    m_layout->addSpacing(kButtonGap);
    m_layout->addWidget(m_closeButton);

    connect(m_minimizeButton, &QPushButton::clicked, this, &CustomTitleBar::minimizeClicked);
    connect(m_maximizeButton, &QPushButton::clicked, this, &CustomTitleBar::maximizeClicked);
    connect(m_closeButton, &QPushButton::clicked, this, &CustomTitleBar::closeClicked);
}

void CustomTitleBar::setTitle(const QString& title)
{
    assertGuiThread();
    m_titleLabel->setText(title);
}

void CustomTitleBar::setCollapsed(bool collapsed)
{
    assertGuiThread();
    m_iconLabel->setVisible(collapsed);
    m_titleLabel->setVisible(!collapsed);
    m_minimizeButton->setVisible(!collapsed);
    m_maximizeButton->setVisible(!collapsed);
    m_closeButton->setVisible(!collapsed);
}

void CustomTitleBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (event->button() == Qt::LeftButton && rect().contains(event->pos())) {
        emit maximizeClicked();
        event->accept();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

QPushButton* CustomTitleBar::makeButton(const QString& iconPath, const QString& toolTip)
{
    auto* button = new QPushButton(this);
    button->setIcon(QIcon(iconPath));
    button->setToolTip(toolTip);
    button->setStyleSheet(scn::flatButtonStyle());
    // A new window gives the focus to its first control, and Space would collapse it.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}
