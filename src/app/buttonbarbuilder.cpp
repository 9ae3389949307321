#include "app/buttonbarbuilder.h"

#include "common/threadassert.h"
#include "widgets/imagebutton.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QTimer>

namespace scn {

namespace {

constexpr int kBarHeight = 40;

} // namespace

ButtonBarForm ButtonBarBuilder::build(QWidget* parent)
{
    assertGuiThread();
    m_form = {};
    m_form.m_buttonBar = new QWidget(parent);
    m_form.m_buttonBar->setStyleSheet(QStringLiteral("background:rgb(43,43,43);"));
    m_form.m_buttonBar->setFixedHeight(kBarHeight);
    m_form.m_buttonBarLayout = new QHBoxLayout(m_form.m_buttonBar);
    m_form.m_buttonBarLayout->setContentsMargins(0, 0, 0, 0);
    m_form.m_buttonBarLayout->setSpacing(0);

    m_form.m_startButton = addButton(QIcon(QStringLiteral(":/image/start.png")), tr("开始"),
                                     QSize(60, 40), QSize(100, 40));
    m_form.m_startButton->setToolTip(tr("开始或停止扫描；开始时删除本仪器上次扫描的数据"));
    m_form.m_buttonBarLayout->addItem(
        new QSpacerItem(0, 0, QSizePolicy::Expanding, QSizePolicy::Minimum));
    m_form.m_exportButton = addButton(QIcon(QStringLiteral(":/image/derive.png")), tr("导出"),
                                      QSize(50, 40), QSize(90, 40));
    m_form.m_exportButton->setToolTip(tr("将扫描数据导出为 CSV 文件"));

    m_form.m_runningLabel = new QLabel(tr("数据记录正在运行.."), m_form.m_buttonBar);
    m_form.m_runningLabel->setMinimumHeight(kBarHeight);
    m_form.m_runningLabel->hide();
    m_form.m_storeWatch = new QTimer(parent);
    return m_form;
}

ImageButton* ButtonBarBuilder::addButton(const QIcon& icon, const QString& text,
                                         const QSize& iconSize, const QSize& size)
{
    auto* button = new ImageButton(text, m_form.m_buttonBar);
    button->setObjectName(QStringLiteral("imageButton"));
    button->setLeftIcon(icon);
    button->setIconSize(iconSize);
    button->setFixedSize(size);
    m_form.m_buttonBarLayout->addWidget(button);
    return button;
}

} // namespace scn
