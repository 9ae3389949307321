#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

/// An application that counts the time that its event loop waits for events.
class MeteredApplication : public QApplication
{
    Q_OBJECT

public:
    MeteredApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    /// Time waited since the start, ns.
    static qint64 waitedNs();

private:
    void beginWait();
    void endWait();

    QElapsedTimer m_clock;
    /// Where the wait that is going on began; -1 when there is none.
    qint64 m_waitBeginNs = -1;
    qint64 m_waitedNs = 0;
};

/// Measures how busy the GUI thread is while this object lives: the share of time
/// between leaving and entering the wait for events of a MeteredApplication, and the largest gap of a
/// 10 ms heartbeat. GUI thread.
class GuiLoad : public QObject
{
    Q_OBJECT

public:
    GuiLoad();

    /// Share of the time so far, 0 to 1.
    double busyShare() const;

    /// Both in one line.
    QString report() const;

private:
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceBeat;
    QTimer m_heartbeat;
    qint64 m_waitedAtStart;
    qint64 m_largestGapMs = 0;
};
