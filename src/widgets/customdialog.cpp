#include "widgets/customdialog.h"

#include "common/threadassert.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>

namespace {

constexpr int kTitleBarHeight = 32;
constexpr int kCloseButtonSize = 28;
constexpr int kTitleMargin = 10;
constexpr int kContentMargin = 10;
constexpr QSize kSmallestSize(300, 200);

} // namespace

CustomDialog::CustomDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint)
{
    assertGuiThread();
    setModal(true);
    setMinimumSize(kSmallestSize);
    setStyleSheet(QStringLiteral("CustomDialog { border: 1px solid rgb(87, 87, 87); }"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addWidget(buildTitleBar());
    auto* body = new QWidget(this);
    m_contentLayout = new QVBoxLayout(body);
    m_contentLayout->setContentsMargins(kContentMargin, kContentMargin, kContentMargin,
                                        kContentMargin);
    layout->addWidget(body, 1);
}

QWidget* CustomDialog::buildTitleBar()
{
    m_titleBar = new QWidget(this);
    m_titleBar->setFixedHeight(kTitleBarHeight);
    m_titleBar->setObjectName(QStringLiteral("titleBar"));
    m_titleBar->setStyleSheet(QStringLiteral("#titleBar { background-color: rgb(23, 23, 23); }"));

    m_titleLabel = new QLabel(m_titleBar);
    m_titleLabel->setStyleSheet(
        QStringLiteral("color: white; font-weight: bold; background: transparent;"));

    auto* closeButton = new QPushButton(QStringLiteral("×"), m_titleBar);
    closeButton->setFixedSize(kCloseButtonSize, kCloseButtonSize);
    closeButton->setAutoDefault(false);
    closeButton->setStyleSheet(QStringLiteral(
        "QPushButton { background: transparent; border: none; color: white; font-size: 16px; }"
        "QPushButton:hover { background: rgb(87, 87, 87); }"));
    connect(closeButton, &QPushButton::clicked, this, &CustomDialog::onCloseClicked);

    auto* layout = new QHBoxLayout(m_titleBar);
    layout->setContentsMargins(kTitleMargin, 0, 2, 0);
    layout->addWidget(m_titleLabel, 1);
    layout->addWidget(closeButton);
    return m_titleBar;
}

void CustomDialog::setContent(QWidget* widget)
{
    assertGuiThread();
    while (const std::unique_ptr<QLayoutItem> item{m_contentLayout->takeAt(0)}) {
        QWidget* old = item->widget();
        if (old && old != widget) {
            // A slot of the old content may be the caller: the content must outlive it.
            old->hide();
            old->deleteLater();
        }
    }
    if (widget) {
        widget->setStyleSheet(QStringLiteral("color: white;"));
        m_contentLayout->addWidget(widget);
        widget->show();
    }
}

void CustomDialog::setTitle(const QString& title)
{
    assertGuiThread();
    m_titleLabel->setText(title);
}

void CustomDialog::onCloseClicked()
{
    assertGuiThread();
    close();
}

void CustomDialog::mousePressEvent(QMouseEvent* event)
{
    assertGuiThread();
    m_dragging = event->button() == Qt::LeftButton && m_titleBar->geometry().contains(event->pos());
    if (!m_dragging) {
        QDialog::mousePressEvent(event);
        return;
    }
    m_dragOffset = event->globalPos() - frameGeometry().topLeft();
    event->accept();
}

void CustomDialog::mouseMoveEvent(QMouseEvent* event)
{
    assertGuiThread();
    if (!m_dragging || !(event->buttons() & Qt::LeftButton)) {
        m_dragging = false;
        QDialog::mouseMoveEvent(event);
        return;
    }
    move(event->globalPos() - m_dragOffset);
    event->accept();
}

void CustomDialog::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QDialog::showEvent(event);
    const QWidget* owner = parentWidget();
    if (!owner) {
        return;
    }
    const QRect around = owner->isWindow() ? owner->frameGeometry()
                                           : QRect(owner->mapToGlobal(QPoint(0, 0)), owner->size());
    QRect frame = frameGeometry();
    frame.moveCenter(around.center());
    move(frame.topLeft());
}
