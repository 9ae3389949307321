#include "app/inputreaderthread.h"

#include "app/linesplitter.h"

InputReaderThread::InputReaderThread(QObject* parent, std::chrono::milliseconds poll)
    : QThread(parent)
    , m_poll(poll)
{
}

void InputReaderThread::stop()
{
    const QMutexLocker locker(&m_mutex);
    m_stop = true;
    m_input.interrupt();
}

bool InputReaderThread::stopRequested()
{
    const QMutexLocker locker(&m_mutex);
    return m_stop;
}

void InputReaderThread::deliver(const QStringList& lines)
{
    for (const QString& line : lines) {
        if (!line.isEmpty()) {
            emit newInputReceived(line);
        }
    }
}

void InputReaderThread::run()
{
    scn::LineSplitter splitter;
    bool atEnd = false;
    while (!stopRequested()) {
        if (atEnd) {
            // The launcher is gone. The program goes on; this thread idles until stopped.
            msleep(static_cast<unsigned long>(m_poll.count()));
            continue;
        }
        QByteArray bytes;
        switch (m_input.read(bytes, m_poll)) {
        case scn::StandardInput::Status::Data:
            deliver(splitter.feed(bytes));
            break;
        case scn::StandardInput::Status::Quiet:
            break;
        case scn::StandardInput::Status::End:
            deliver(splitter.finish());
            atEnd = true;
            break;
        }
    }
}
