#include "launcher/endedpage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace scnlauncher {

EndedPage::EndedPage(QWidget* parent)
    : QWidget(parent)
    , m_sentence(new QLabel(this))
    , m_lastWords(new QPlainTextEdit(this))
{
    m_sentence->setObjectName(QStringLiteral("pageTitle"));
    m_sentence->setWordWrap(true);
    m_lastWords->setObjectName(QStringLiteral("lastWords"));
    m_lastWords->setReadOnly(true);
    auto* again = new QPushButton(tr("重新启动"), this);
    again->setObjectName(QStringLiteral("startAgain"));
    auto* other = new QPushButton(tr("选择其他仪器"), this);
    other->setObjectName(QStringLiteral("chooseOther"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(again);
    buttons->addWidget(other);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_sentence);
    layout->addWidget(new QLabel(tr("它最后的输出："), this));
    layout->addWidget(m_lastWords);
    layout->addLayout(buttons);
    connect(again, &QPushButton::clicked, this, &EndedPage::startAgain);
    connect(other, &QPushButton::clicked, this, &EndedPage::chooseOther);
}

void EndedPage::showEnd(const QString& sentence, const QStringList& lastWords)
{
    m_sentence->setText(sentence);
    m_lastWords->setPlainText(lastWords.join(QLatin1Char('\n')));
}

} // namespace scnlauncher
