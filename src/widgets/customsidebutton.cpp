#include "widgets/customsidebutton.h"

#include "common/threadassert.h"
#include "widgets/rotatedlabel.h"

#include <QBoxLayout>
#include <QLabel>

#include <memory>

namespace {

constexpr int kOrientationRow = 1;

/// Side of the icon, in pixels.
constexpr int kPixmapSize = 15;

/// Side of the spacer after the labels, in pixels.
constexpr int kSpacerSize = 20;

} // namespace

CustomSideButton::CustomSideButton(QWidget* parent)
    : QPushButton(parent)
    , m_iconLabel(new QLabel(this))
    , m_textLabel(new RotatedLabel(this))
    , m_layout(new QBoxLayout(QBoxLayout::TopToBottom, this))
{
    assertGuiThread();
    setFlat(true);
    setCheckable(false);
    // The dark style sheet gives labels a background and padding of their own.
    setStyleSheet(QStringLiteral("QLabel { background: transparent; padding: 0px; }"));

    for (QLabel* label : {m_iconLabel, static_cast<QLabel*>(m_textLabel)}) {
        label->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum);
        label->setMinimumSize(0, 0);
        label->setAlignment(Qt::AlignCenter);
    }
    m_iconLabel->setScaledContents(true);
    m_textLabel->setStyleSheet(QStringLiteral("font-size:12px;"));

    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    rebuildLayout();
}

void CustomSideButton::setOrientation(int orientation)
{
    assertGuiThread();
    m_orientation = orientation;
    rebuildLayout();
}

void CustomSideButton::setText(const QString& text)
{
    assertGuiThread();
    m_textLabel->setText(text);
    rebuildLayout();
}

void CustomSideButton::setVertical(bool vertical)
{
    assertGuiThread();
    m_textLabel->setVertical(vertical);
    rebuildLayout();
}

void CustomSideButton::setPixmap(const QPixmap& pixmap)
{
    assertGuiThread();
    m_iconLabel->setPixmap(pixmap);
    if (pixmap.isNull()) {
        return;
    }
    m_iconLabel->setPixmap(
        pixmap.scaled(kPixmapSize, kPixmapSize, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    m_iconLabel->setFixedSize(kPixmapSize, kPixmapSize);
}

void CustomSideButton::rebuildLayout()
{
    while (const std::unique_ptr<QLayoutItem> item{m_layout->takeAt(0)}) {
    }
    const bool row = m_orientation == kOrientationRow;
    m_layout->setDirection(row ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_layout->addWidget(m_iconLabel, 0);
    m_layout->addWidget(m_textLabel, 0);
    m_layout->addItem(new QSpacerItem(kSpacerSize, kSpacerSize,
                                      row ? QSizePolicy::Expanding : QSizePolicy::Minimum,
                                      row ? QSizePolicy::Minimum : QSizePolicy::Expanding));
    updateGeometry();
}
