#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <chrono>

/// An application that measures how long its event loop waits for events.
class MeteredApplication : public QApplication
{
    Q_OBJECT

public:
    MeteredApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    /// Total time waited, in ns.
    static qint64 waitedNs();

private:
    void beginWait();
    void endWait();

    QElapsedTimer m_clock;
    /// Start of the current wait; -1 if there is none.
    qint64 m_waitBeginNs = -1;
    qint64 m_waitedNs = 0;
};

/// Measures how busy the GUI thread is while this exists: the share of time outside a
/// MeteredApplication's wait for events, and the largest gap in a 10 ms heartbeat. GUI thread.
class GuiLoad : public QObject
{
    Q_OBJECT

public:
    GuiLoad();

    /// Share of time so far, 0 to 1.
    double busyShare() const;

    /// The largest gap so far.
    std::chrono::milliseconds largestGap() const
    {
        return std::chrono::milliseconds(m_largestGapMs);
    }

    /// Both figures in one line.
    QString report() const;

private:
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceBeat;
    QTimer m_heartbeat;
    qint64 m_waitedAtStart;
    qint64 m_largestGapMs = 0;
};
