#include "launcher/stateline.h"

#include "launcher/textrow.h"
#include "widgets/pathlabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVariant>

#include <ratio>

namespace scnlauncher {
namespace {

constexpr int kMargin = 6;
constexpr int kSpacing = 16;

/// Whose text is whole where not all of them are.
enum Rank {
    StateRank,
    IdentityRank,
    CriticalRank,
    KeepingRank,
    ResourceRank,
    RateRank,
    FolderRank
};
constexpr int kIdentityShare = 420;
constexpr int kCriticalShare = 120;
constexpr int kKeepingShare = 120;
constexpr int kResourceShare = 100;
constexpr int kFolderShare = 80;

QString stateText(const QString& resource, const ChildStatus& status, OpenFailure failure)
{
    switch (status.link()) {
    case ChildStatus::Link::Connecting:
        return StateLine::tr("正在连接");
    case ChildStatus::Link::Failed:
        return failureSentence(failure, resource);
    case ChildStatus::Link::Lost:
        return StateLine::tr("连接已丢失，请检查电缆和电源");
    case ChildStatus::Link::Connected:
        break;
    }
    if (status.isOtherKind()) {
        return StateLine::tr("这不是 SCN4070A，请选择其他仪器");
    }
    return status.isScanning() ? StateLine::tr("正在扫描") : StateLine::tr("空闲");
}

} // namespace

StateLine::StateLine(QWidget* parent)
    : QWidget(parent)
    , m_texts(new TextRow(this))
    , m_resource(m_texts->addText(QStringLiteral("resourceLabel"), ResourceRank, kResourceShare))
    , m_serialRate(m_texts->addText(QStringLiteral("serialRate"), RateRank, QWIDGETSIZE_MAX))
    , m_identity(m_texts->addText(QStringLiteral("identity"), IdentityRank, kIdentityShare))
    , m_state(m_texts->addText(QStringLiteral("state"), StateRank, QWIDGETSIZE_MAX))
    , m_critical(m_texts->addText(QStringLiteral("critical"), CriticalRank, kCriticalShare))
    , m_keeping(m_texts->addText(QStringLiteral("keeping"), KeepingRank, kKeepingShare))
    , m_folder(m_texts->addText(QStringLiteral("folder"), FolderRank, kFolderShare))
    , m_silence(new QLabel(this))
{
    setFixedHeight(kHeight);
    m_silence->setObjectName(QStringLiteral("silence"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, 0, kMargin, 0);
    layout->setSpacing(kSpacing);
    layout->addWidget(m_texts, 1);
    layout->addWidget(m_silence);
    connect(addButton(tr("选择其他仪器"), "chooseOther"), &QPushButton::clicked, this,
            &StateLine::chooseOther);
    m_openFolder = addButton(tr("数据"), "openFolder");
    connect(m_openFolder, &QPushButton::clicked, this, &StateLine::openFolder);
    connect(addButton(tr("日志"), "log"), &QPushButton::clicked, this, &StateLine::openLog);
}

QPushButton* StateLine::addButton(const QString& text, const char* name)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(QLatin1String(name));
    // The keyboard stays with the embedded window.
    button->setFocusPolicy(Qt::NoFocus);
    layout()->addWidget(button);
    return button;
}

void StateLine::showStatus(const QString& resource, const ChildStatus& status, OpenFailure failure)
{
    const QString state = stateText(resource, status, failure);
    m_texts->setText(m_resource, resource);
    m_texts->setText(m_identity, status.identity());
    m_texts->setText(m_state, state);
    m_texts->setText(m_critical, status.lastCritical());
    // It stays, and may be old.
    m_critical->setToolTip(
        QStringLiteral("%1 %2").arg(status.lastCriticalTime(), status.lastCritical()).trimmed());
    const bool isWell = status.link() == ChildStatus::Link::Connecting ||
                        (status.link() == ChildStatus::Link::Connected && !status.isOtherKind());
    m_state->setProperty("trouble", !isWell);
    // A style sheet looks at a property only when told to.
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
    m_state->setToolTip(
        status.failureText().isEmpty() ? state : state + QLatin1Char('\n') + status.failureText());
}

void StateLine::showKeepingProblem(const QString& problem)
{
    m_texts->setText(m_keeping, problem);
}

void StateLine::showFolder(const QString& folder)
{
    m_texts->setText(m_folder, tr("数据目录 %1").arg(folder));
    m_openFolder->setToolTip(tr("打开数据目录 %1").arg(folder));
}

void StateLine::showSerialRate(int rate)
{
    m_texts->setText(m_serialRate, rate > 0 ? tr("%1 波特").arg(rate) : QString());
}

void StateLine::showSilence(std::chrono::milliseconds silence)
{
    if (silence.count() < 0) {
        m_silence->setText(tr("尚无日志"));
        return;
    }
    using Days = std::chrono::duration<qint64, std::ratio<86400>>;
    const qint64 days = std::chrono::duration_cast<Days>(silence).count();
    const qint64 hours = std::chrono::duration_cast<std::chrono::hours>(silence).count();
    const qint64 minutes = std::chrono::duration_cast<std::chrono::minutes>(silence).count();
    const qint64 seconds = std::chrono::duration_cast<std::chrono::seconds>(silence).count();
    const QString ago = days > 0      ? tr("%1 天").arg(days)
                        : hours > 0   ? tr("%1 小时").arg(hours)
                        : minutes > 0 ? tr("%1 分钟").arg(minutes)
                                      : tr("%1 秒").arg(seconds);
    m_silence->setText(tr("上次日志 %1前").arg(ago));
}

} // namespace scnlauncher
