#include "widgets/arrowcell.h"

#include <QLabel>
#include <QStackedLayout>
#include <QToolButton>

namespace scn {

namespace {

QToolButton* makeArrow(Qt::ArrowType arrow, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setArrowType(arrow);
    button->setMaximumHeight(ArrowCell::kHeight);
    // Taking the focus would end the editing and hide the arrow.
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    button->setStyleSheet(QStringLiteral("QToolButton { padding: 0px; border: none; }"));
    return button;
}

} // namespace

ArrowCell::ArrowCell(Qt::ArrowType arrow, const QString& text, QWidget* parent)
    : m_button(makeArrow(arrow, parent))
    , m_label(new QLabel(text, parent))
    , m_stack(new QStackedLayout)
{
    m_stack->addWidget(m_label);
    m_stack->addWidget(m_button);
}

void ArrowCell::showArrow(bool on)
{
    m_stack->setCurrentWidget(on ? static_cast<QWidget*>(m_button) : m_label);
}

} // namespace scn
