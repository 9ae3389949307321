#pragma once

#include <QMutex>
#include <QString>
#include <QThread>

/// Reads the launcher's commands from standard input, one per line. The only reader of that stream.
class InputReaderThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputReaderThread)

public:
    explicit InputReaderThread(QObject* parent);

    /// Asks the thread to leave; it does so within its polling time. Callable on any thread.
    void stop();

signals:
    /// A non-empty line. Emitted on the reading thread.
    void newInputReceived(QString data);

protected:
    void run() override;

private:
    bool stopRequested();
    void deliver(const QStringList& lines);

    QMutex m_mutex; ///< guards the flag alone
    bool m_stop = false;
};
