#include "app/runindicator.h"

#include "app/buttonbarbuilder.h"
#include "common/threadassert.h"
#include "widgets/imagebutton.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QTimer>

namespace scn {

namespace {

/// The running label stands right of the start button.
constexpr int kRunningLabelPosition = 1;

} // namespace

RunIndicator::RunIndicator(const ButtonBarForm& form, std::chrono::milliseconds storeWatch)
    : m_form(form)
    , m_storeWatch(storeWatch)
{
}

void RunIndicator::showStarted()
{
    assertGuiThread();
    m_form.m_startButton->setLeftIcon(QIcon(QStringLiteral(":/image/stop.png")));
    m_form.m_startButton->setText(tr("停止"));
    m_form.m_exportButton->setEnabled(false);
    m_form.m_buttonBarLayout->insertWidget(kRunningLabelPosition, m_form.m_runningLabel);
    showStoreState(false);
    m_form.m_runningLabel->show();
    m_form.m_storeWatch->start(m_storeWatch);
}

void RunIndicator::showIdle()
{
    assertGuiThread();
    m_form.m_startButton->setLeftIcon(QIcon(QStringLiteral(":/image/start.png")));
    m_form.m_startButton->setText(tr("开始"));
    m_form.m_exportButton->setEnabled(true);
    m_form.m_runningLabel->hide();
    m_form.m_storeWatch->stop();
}

void RunIndicator::showStoreState(bool refusesReadings)
{
    assertGuiThread();
    const QString running = tr("数据记录正在运行..");
    m_form.m_runningLabel->setText(refusesReadings ? running + tr("（数据无法保存）") : running);
    m_form.m_runningLabel->setStyleSheet(refusesReadings ? QStringLiteral("color: #FFA500;")
                                                         : QString());
}

} // namespace scn
