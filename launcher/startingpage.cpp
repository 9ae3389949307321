#include "launcher/startingpage.h"

#include "widgets/pathlabel.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kTickMs = 1000;
constexpr int kBarWidth = 360;
constexpr int kPlaceLines = 3;
constexpr int kPlaceWidth = 800;

} // namespace

StartingPage::StartingPage(QWidget* parent, std::chrono::milliseconds longStart)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_time(new QLabel(this))
    , m_place(new scn::PathLabel(kPlaceLines, kPlaceWidth, this))
    , m_note(new QLabel(this))
    , m_cancel(new QPushButton(tr("取消"), this))
    , m_longStart(longStart)
{
    m_title->setObjectName(QStringLiteral("pageTitle"));
    m_place->setObjectName(QStringLiteral("place"));
    m_note->setObjectName(QStringLiteral("problem"));
    m_note->setWordWrap(true);
    m_note->setAlignment(Qt::AlignCenter);
    m_cancel->setObjectName(QStringLiteral("cancel"));
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setFixedWidth(kBarWidth);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();
    for (QWidget* part : {static_cast<QWidget*>(m_title), static_cast<QWidget*>(bar),
                          static_cast<QWidget*>(m_time)}) {
        layout->addWidget(part, 0, Qt::AlignHCenter);
    }
    layout->addWidget(m_place, 0, Qt::AlignHCenter);
    layout->addWidget(m_note);
    layout->addWidget(m_cancel, 0, Qt::AlignHCenter);
    layout->addStretch();
    connect(m_cancel, &QPushButton::clicked, this, &StartingPage::cancelled);
    connect(&m_ticks, &QTimer::timeout, this, &StartingPage::updateTime);
}

void StartingPage::showStarting(const QString& resource)
{
    m_title->setText(tr("正在打开 %1").arg(resource));
    setPlace({});
    m_note->clear();
    m_cancel->show();
    m_since.start();
    m_ticks.start(kTickMs);
    updateTime();
}

void StartingPage::showEnding()
{
    m_title->setText(tr("正在结束..."));
    setPlace({});
    m_note->clear();
    m_cancel->hide();
    m_since.start();
    m_ticks.start(kTickMs);
    updateTime();
}

void StartingPage::setPlace(const QString& sentence)
{
    m_place->setText(sentence);
    m_place->setVisible(!sentence.isEmpty());
}

void StartingPage::notePlace(const QString& folder)
{
    setPlace(tr("程序所在的目录不能存放数据，或正被使用。这台仪器的数据存放在 %1。").arg(folder));
}

void StartingPage::noteRefusedWindow(const QString& reason)
{
    m_note->setText(reason + tr("窗口未被嵌入；请取消，并检查所启动的程序。"));
}

void StartingPage::noteCutLine()
{
    m_note->setText(tr("程序的一行输出没有结尾，已截断。请取消，并检查所启动的程序。"));
}

void StartingPage::updateTime()
{
    const qint64 elapsed = m_since.elapsed();
    const QString time = tr("已用 %1 秒").arg(elapsed / 1000);
    m_time->setText(elapsed < m_longStart.count() || m_cancel->isHidden()
                        ? time
                        : time + tr("。程序还没有显示窗口：仪器应答慢时请继续等待，否则请取消"));
}

} // namespace scnlauncher
