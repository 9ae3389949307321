#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace scnlauncher {

/// What is left of a child that has ended by itself: how, and its last words.
class EndedPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EndedPage)

public:
    explicit EndedPage(QWidget* parent);

    void showEnd(const QString& sentence, const QStringList& lastWords);

signals:
    void startAgain();
    void chooseOther();

private:
    QLabel* m_sentence;
    QPlainTextEdit* m_lastWords;
};

} // namespace scnlauncher
