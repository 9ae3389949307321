#pragma once

#include "launcher/childstatus.h"

#include <QWidget>

#include <chrono>

class QLabel;
class QPushButton;

namespace scn {
class PathLabel;
} // namespace scn

namespace scnlauncher {

class TextRow;

/// One line that tells how things stand with a child.
class StateLine : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StateLine)

public:
    static constexpr int kHeight = 30;

    explicit StateLine(QWidget* parent);

    /// `failure` is what is known of a failed open, which may be more than the child's log says.
    void showStatus(const QString& resource, const ChildStatus& status, OpenFailure failure);
    /// Where the child's data is.
    void showFolder(const QString& folder);
    /// The rate of a serial line, in baud; nothing is shown for 0.
    void showSerialRate(int rate);
    /// How long ago the child's last line came; -1 ms if none has.
    void showSilence(std::chrono::milliseconds silence);
    /// Why runs are not kept; nothing is shown if they are.
    void showKeepingProblem(const QString& problem);

signals:
    void openLog();
    void openFolder();
    void chooseOther();

private:
    QPushButton* addButton(const QString& text, const char* name);

    TextRow* m_texts;
    scn::PathLabel* m_resource;
    scn::PathLabel* m_serialRate;
    scn::PathLabel* m_identity;
    scn::PathLabel* m_state;
    scn::PathLabel* m_critical;
    scn::PathLabel* m_keeping;
    scn::PathLabel* m_folder;
    QLabel* m_silence;
    QPushButton* m_openFolder;
};

} // namespace scnlauncher
