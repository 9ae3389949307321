#include "overlay/recoveryform.h"

#include "overlay/overlayplace.h"

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include <algorithm>

namespace scn {

namespace {

constexpr double kWidth = 0.6; ///< Largest width of the text, of the overlay's.
constexpr double kTop = 0.3;   ///< Top of the text, of the overlay's height.
constexpr double kButtonTop = 0.5;

} // namespace

RecoveryForm::RecoveryForm(QWidget* overlay)
    : m_overlay(overlay)
    , m_label(new QLabel(tr("应用程序将在恢复通信时与仪器同步。"), overlay))
    , m_button(new QPushButton(tr("恢复"), overlay))
{
    m_label->setStyleSheet(
        QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; "
                       "text-align: center; }"));
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setWordWrap(true);
    m_button->setStyleSheet(QStringLiteral(
        "QPushButton{ color: white; background-color: #333333; border: 1px solid #666666; "
        "font: 14px '微软雅黑'; padding: 6px 12px; border-radius: 4px; } "
        "QPushButton:hover{ background-color: #444444; }"
        "QPushButton:pressed{ background-color: #555555; }"));
}

void RecoveryForm::show()
{
    m_label->show();
    m_button->show();
}

void RecoveryForm::hide()
{
    m_label->hide();
    m_button->hide();
}

void RecoveryForm::place()
{
    // isHidden(), not isVisible(): the layout counts before the overlay itself is on show.
    if (!m_label->isHidden()) {
        placeLabel();
    }
    if (!m_button->isHidden()) {
        m_button->adjustSize();
        m_button->move(centredLeft(m_overlay->width(), m_button->width()),
                       static_cast<int>(m_overlay->height() * kButtonTop));
    }
}

void RecoveryForm::placeLabel()
{
    // An earlier, smaller width would limit the size hint.
    m_label->setMinimumWidth(0);
    m_label->setMaximumWidth(QWIDGETSIZE_MAX);
    m_label->ensurePolished();
    const int widest = static_cast<int>(m_overlay->width() * kWidth);
    m_label->setFixedWidth(std::min(widest, m_label->sizeHint().width()));
    m_label->resize(m_label->width(), m_label->heightForWidth(m_label->width()));
    m_label->move(centredLeft(m_overlay->width(), m_label->width()),
                  static_cast<int>(m_overlay->height() * kTop));
}

} // namespace scn
