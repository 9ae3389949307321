#pragma once

#include "launcher/childstatus.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace scnlauncher {

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
    /// How long ago the child's last line came; -1 if none has.
    void showSilence(qint64 ms);
    /// Why runs are not kept; nothing is shown if they are.
    void showKeepingProblem(const QString& problem);

signals:
    void openLog();
    void chooseOther();

private:
    QLabel* m_resource;
    QLabel* m_identity;
    QLabel* m_state;
    QLabel* m_critical;
    QLabel* m_keeping;
    QLabel* m_silence;
    QPushButton* m_other;
};

} // namespace scnlauncher
