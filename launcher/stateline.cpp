#include "launcher/stateline.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVariant>

namespace scnlauncher {
namespace {

constexpr int kMargin = 6;
constexpr int kSpacing = 16;

QString stateText(const QString& resource, const ChildStatus& status, OpenFailure failure)
{
    switch (status.link()) {
    case ChildStatus::Link::Connecting:
        return StateLine::tr("正在连接");
    case ChildStatus::Link::Failed:
        return failureSentence(failure, resource);
    case ChildStatus::Link::Lost:
        return StateLine::tr("连接已丢失");
    case ChildStatus::Link::Connected:
        break;
    }
    if (status.isOtherKind()) {
        return StateLine::tr("这不是 SCN4070A");
    }
    return status.isScanning() ? StateLine::tr("正在扫描") : StateLine::tr("空闲");
}

} // namespace

StateLine::StateLine(QWidget* parent)
    : QWidget(parent)
    , m_resource(new QLabel(this))
    , m_identity(new QLabel(this))
    , m_state(new QLabel(this))
    , m_critical(new QLabel(this))
    , m_keeping(new QLabel(this))
    , m_silence(new QLabel(this))
    , m_other(new QPushButton(tr("选择其他仪器"), this))
{
    setFixedHeight(kHeight);
    m_resource->setObjectName(QStringLiteral("resourceLabel"));
    m_identity->setObjectName(QStringLiteral("identity"));
    m_state->setObjectName(QStringLiteral("state"));
    m_critical->setObjectName(QStringLiteral("critical"));
    m_keeping->setObjectName(QStringLiteral("keeping"));
    m_keeping->hide();
    m_silence->setObjectName(QStringLiteral("silence"));
    m_other->setObjectName(QStringLiteral("chooseOther"));
    auto* log = new QPushButton(tr("日志"), this);
    log->setObjectName(QStringLiteral("log"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, 0, kMargin, 0);
    layout->setSpacing(kSpacing);
    for (QLabel* label : {m_resource, m_identity, m_state}) {
        layout->addWidget(label);
    }
    layout->addWidget(m_critical, 1);
    layout->addWidget(m_keeping);
    layout->addWidget(m_silence);
    layout->addWidget(m_other);
    layout->addWidget(log);
    // A long line is cut, and never widens the window.
    for (QLabel* label : {m_resource, m_identity, m_state, m_critical, m_keeping}) {
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        layout->setStretchFactor(label, 1);
        label->setTextFormat(Qt::PlainText);
    }
    // The keyboard stays with the embedded window.
    for (QPushButton* button : {m_other, log}) {
        button->setFocusPolicy(Qt::NoFocus);
    }
    connect(log, &QPushButton::clicked, this, &StateLine::openLog);
    connect(m_other, &QPushButton::clicked, this, &StateLine::chooseOther);
}

void StateLine::showStatus(const QString& resource, const ChildStatus& status, OpenFailure failure)
{
    const QString state = stateText(resource, status, failure);
    const struct
    {
        QLabel* label;
        QString text;
    } rows[] = {{m_resource, resource},
                {m_identity, status.identity()},
                {m_state, state},
                {m_critical, status.lastCritical()}};
    for (const auto& row : rows) {
        row.label->setText(row.text);
        row.label->setToolTip(row.text);
        row.label->setVisible(!row.text.isEmpty());
    }
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
    m_keeping->setText(problem);
    m_keeping->setToolTip(problem);
    m_keeping->setVisible(!problem.isEmpty());
}

void StateLine::showSilence(qint64 ms)
{
    m_silence->setText(ms < 0 ? tr("尚无输出") : tr("上次输出 %1 秒前").arg(ms / 1000));
}

} // namespace scnlauncher
