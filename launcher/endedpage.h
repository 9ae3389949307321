#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace scnlauncher {

/// What is left of an instrument that is no longer open, or could not be opened.
struct EndReport
{
    /// The resource and the identity.
    QString subject;
    QString sentence;
    QStringList lastWords;
    /// False if it never ran; then it has no log.
    bool hasRun = false;
};

/// Tells how a child has ended by itself, or why there is none.
class EndedPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EndedPage)

public:
    explicit EndedPage(QWidget* parent);

    void showEnd(const EndReport& report);

signals:
    void startAgain();
    void chooseOther();
    void openLog();

private:
    QLabel* m_subject;
    QLabel* m_sentence;
    QLabel* m_wordsTitle;
    QPlainTextEdit* m_lastWords;
    QPushButton* m_again;
    QPushButton* m_log;
};

} // namespace scnlauncher
