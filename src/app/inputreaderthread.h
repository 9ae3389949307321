#pragma once

#include <QMutex>
#include <QString>
#include <QThread>

/// Reads the launcher's commands from standard input, one per line. Nothing else reads that stream.
class InputReaderThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputReaderThread)

public:
    explicit InputReaderThread(QObject* parent);

    /// Asks the thread to end, which it does within its polling interval. Any thread.
    void stop();

signals:
    /// A non-empty line. Emitted on this thread.
    void newInputReceived(QString data);

protected:
    void run() override;

private:
    bool stopRequested();
    void deliver(const QStringList& lines);

    QMutex m_mutex; ///< guards only the flag
    bool m_stop = false;
};
