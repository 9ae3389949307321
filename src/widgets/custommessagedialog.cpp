#include "widgets/custommessagedialog.h"

#include "common/threadassert.h"
#include "widgets/pathlabel.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

#include <array>

namespace {

struct MessageKind
{
    const char* title;
    bool hasIcon;
    QStyle::StandardPixmap icon;
};

/// By kind. A warning shows no icon; its entry is not read.
constexpr std::array<MessageKind, 3> kMessageKinds = {{
    {QT_TRANSLATE_NOOP("CustomMessageDialog", "警告"), false, QStyle::SP_MessageBoxWarning},
    {QT_TRANSLATE_NOOP("CustomMessageDialog", "错误"), true, QStyle::SP_MessageBoxCritical},
    {QT_TRANSLATE_NOOP("CustomMessageDialog", "信息"), true, QStyle::SP_MessageBoxInformation},
}};

constexpr int kIconSize = 24;
constexpr int kCloseButtonSize = 22;
constexpr int kSmallestHeight = 44;
/// Keeps a list of files on the screen.
constexpr int kTextLines = 8;
constexpr int kTextWidth = 560;

/// Above this duration, in ms, a timer that is a few per cent off will do.
constexpr int kCoarseFromMs = 2000;

const MessageKind& messageKind(int kind)
{
    const bool known = kind >= 0 && kind < static_cast<int>(kMessageKinds.size());
    return kMessageKinds[static_cast<std::size_t>(known ? kind : 0)];
}

} // namespace

CustomMessageDialog* CustomMessageDialog::instance(QWidget* parent)
{
    assertGuiThread();
    static QPointer<CustomMessageDialog> box;
    if (!box) {
        box = new CustomMessageDialog(parent);
    }
    return box;
}

CustomMessageDialog::CustomMessageDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_iconLabel(new QLabel(this))
    , m_textLabel(new scn::PathLabel(kTextLines, kTextWidth, this))
    , m_hideTimer(new QTimer(this))
{
    setModal(false);
    setMinimumHeight(kSmallestHeight);
    setStyleSheet(QStringLiteral(
        "CustomMessageDialog { background-color: rgb(87, 87, 87); }"
        "QLabel { color: white; font-size: 12px; background: transparent; }"
        "QPushButton { color: white; font-size: 12px; background: transparent; border: none; }"
        "QPushButton:hover { background: rgb(120, 120, 120); }"));

    auto* closeButton = new QPushButton(QStringLiteral("X"), this);
    closeButton->setFixedSize(kCloseButtonSize, kCloseButtonSize);
    closeButton->setAutoDefault(false);
    connect(closeButton, &QPushButton::clicked, this, &QWidget::close);

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_iconLabel);
    layout->addWidget(m_textLabel, 1);
    layout->addWidget(closeButton, 0, Qt::AlignVCenter);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    m_hideTimer->setSingleShot(true);
    connect(m_hideTimer, &QTimer::timeout, this, &QWidget::hide);
}

void CustomMessageDialog::showMessage(const QString& text, int kind, int msec)
{
    assertGuiThread();
    const MessageKind& row = messageKind(kind);
    setWindowTitle(tr(row.title));
    m_iconLabel->setPixmap(row.hasIcon ? style()->standardIcon(row.icon).pixmap(kIconSize)
                                       : QPixmap());
    m_iconLabel->setVisible(row.hasIcon);
    m_textLabel->setText(text);

    // The timer of the message replaced must not close this one.
    m_hideTimer->stop();
    show();
    raise();
    if (msec > 0) {
        m_hideTimer->setTimerType(msec < kCoarseFromMs ? Qt::PreciseTimer : Qt::CoarseTimer);
        m_hideTimer->start(msec);
    }
}
