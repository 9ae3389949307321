#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace scn {
class PathLabel;
} // namespace scn

namespace scnlauncher {

/// What is left of an instrument that is no longer open, or could not be opened.
struct EndReport
{
    /// The resource and the identity.
    QString subject;
    QString sentence;
    QStringList lastWords;
    /// Where the data is; empty if it never ran: then it has no log either.
    QString folder;
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
    void openFolder();

private:
    QLabel* m_subject;
    QLabel* m_sentence;
    QLabel* m_wordsTitle;
    QPlainTextEdit* m_lastWords;
    QPushButton* m_again;
    scn::PathLabel* m_folder;
    QPushButton* m_log;
    QPushButton* m_openFolder;
};

} // namespace scnlauncher
