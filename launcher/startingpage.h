#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <chrono>

class QLabel;
class QPushButton;

namespace scn {
class PathLabel;
} // namespace scn

namespace scnlauncher {

/// What is shown until the child's window is there, and while it ends.
class StartingPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StartingPage)

public:
    /// A read-back over a slow serial line takes longer, but by then a user wonders.
    static constexpr std::chrono::seconds kLongStart{20};

    explicit StartingPage(QWidget* parent, std::chrono::milliseconds longStart = kLongStart);

    void showStarting(const QString& resource);
    void showEnding();
    /// The data goes to that folder, which is not where one would look for it.
    void notePlace(const QString& folder);
    /// What has gone wrong stays until the next start.
    void noteRefusedWindow(const QString& reason);
    void noteCutLine();

signals:
    void cancelled();

private:
    void updateTime();
    void setPlace(const QString& sentence);

    QLabel* m_title;
    QLabel* m_time;
    scn::PathLabel* m_place;
    QLabel* m_note;
    QPushButton* m_cancel;
    const std::chrono::milliseconds m_longStart;
    QElapsedTimer m_since;
    QTimer m_ticks;
};

} // namespace scnlauncher
