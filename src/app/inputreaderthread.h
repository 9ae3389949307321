#pragma once

#include "app/standardinput.h"
#include "app/windowtiming.h"

#include <QMutex>
#include <QString>
#include <QThread>

#include <chrono>

/// Reads the launcher's commands from standard input, one per line. Nothing else reads that stream.
class InputReaderThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputReaderThread)

public:
    /// After the end of the input the thread checks every `poll` whether it is to end.
    explicit InputReaderThread(QObject* parent,
                               std::chrono::milliseconds poll = scn::LauncherTiming().inputPoll);

    /// Asks the thread to end: at once, or within its polling interval after the end of the input. Any thread.
    void stop();

signals:
    /// A non-empty line. Emitted on this thread.
    void newInputReceived(QString data);

protected:
    void run() override;

private:
    bool stopRequested();
    void deliver(const QStringList& lines);

    const std::chrono::milliseconds m_poll;
    scn::StandardInput m_input;
    QMutex m_mutex; ///< guards only the flag
    bool m_stop = false;
};
