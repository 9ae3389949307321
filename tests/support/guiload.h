#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

/// An application that counts the time its event loop spends in handling events, rather than in
/// waiting for them.
class MeteredApplication : public QApplication
{
    Q_OBJECT

public:
    MeteredApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    /// Time spent in events since the start, ns.
    static qint64 busyNs();

private:
    QElapsedTimer m_clock;
    int m_depth = 0;
    qint64 m_busy = 0;
};

/// Measures how busy the GUI thread is while this object lives: the share of time that a
/// MeteredApplication spends in events, and the largest gap of a 10 ms heartbeat. GUI thread.
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
    qint64 m_busyAtStart;
    qint64 m_largestGapMs = 0;
};
