#include "launcher/endedpage.h"

#include "widgets/pathlabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kFolderLines = 2;

} // namespace

EndedPage::EndedPage(QWidget* parent)
    : QWidget(parent)
    , m_subject(new QLabel(this))
    , m_sentence(new QLabel(this))
    , m_wordsTitle(new QLabel(tr("它最后的输出："), this))
    , m_lastWords(new QPlainTextEdit(this))
    , m_again(new QPushButton(this))
    , m_folder(new scn::PathLabel(kFolderLines, QWIDGETSIZE_MAX, this))
    , m_log(new QPushButton(tr("日志"), this))
    , m_openFolder(new QPushButton(tr("数据"), this))
{
    m_subject->setObjectName(QStringLiteral("subject"));
    m_subject->setTextFormat(Qt::PlainText);
    m_subject->setWordWrap(true);
    m_sentence->setObjectName(QStringLiteral("pageTitle"));
    m_sentence->setWordWrap(true);
    m_lastWords->setObjectName(QStringLiteral("lastWords"));
    m_lastWords->setReadOnly(true);
    m_again->setObjectName(QStringLiteral("startAgain"));
    m_folder->setObjectName(QStringLiteral("endedFolder"));
    m_openFolder->setObjectName(QStringLiteral("openEndedFolder"));
    m_log->setObjectName(QStringLiteral("endedLog"));
    auto* other = new QPushButton(tr("选择其他仪器"), this);
    other->setObjectName(QStringLiteral("chooseOther"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_openFolder);
    buttons->addWidget(m_log);
    buttons->addWidget(m_again);
    buttons->addWidget(other);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_subject);
    layout->addWidget(m_sentence);
    layout->addWidget(m_folder);
    layout->addWidget(m_wordsTitle);
    layout->addWidget(m_lastWords, 1);
    // Takes the room where there are no last words.
    layout->addStretch();
    layout->addLayout(buttons);
    connect(m_again, &QPushButton::clicked, this, &EndedPage::startAgain);
    connect(m_openFolder, &QPushButton::clicked, this, &EndedPage::openFolder);
    connect(m_log, &QPushButton::clicked, this, &EndedPage::openLog);
    connect(other, &QPushButton::clicked, this, &EndedPage::chooseOther);
}

void EndedPage::showEnd(const EndReport& report)
{
    m_subject->setText(report.subject);
    m_sentence->setText(report.sentence);
    m_lastWords->setPlainText(report.lastWords.join(QLatin1Char('\n')));
    m_lastWords->setVisible(!report.lastWords.isEmpty());
    m_wordsTitle->setVisible(!report.lastWords.isEmpty());
    const bool hasRun = !report.folder.isEmpty();
    m_folder->setText(tr("数据目录 %1").arg(report.folder));
    m_folder->setVisible(hasRun);
    m_openFolder->setVisible(hasRun);
    m_again->setText(hasRun ? tr("重新启动") : tr("重试"));
    m_log->setVisible(hasRun);
}

} // namespace scnlauncher
