#pragma once

#include "visa/visatypes.h"

#include <QObject>
#include <QRecursiveMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <functional>

/// How an exchange ended.
enum class ExchangeResult {
    Done,       ///< the command is written and its reply, if it has one, is read
    TimedOut,   ///< the instrument did not take the command, or did not reply, in time
    Lost,       ///< there is no connection any more
    Overflowed, ///< the reply filled the buffer, and what was read of it is lost
    Failed,     ///< otherwise
};

/// The one gate to the instrument: it owns the VISA resource manager and the instrument session
/// and performs each exchange on the calling thread. Every operation may be called on any thread;
/// one recursive mutex is held for a whole exchange, so two threads never interleave a command and
/// its reply. Signals are emitted on the calling thread while that mutex is held.
///
/// Failures are results: the operation returns an empty text or false, lastError() tells why, and
/// errorOccurred() is emitted. A failed exchange leaves the session connected.
class CDeviceVisa : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CDeviceVisa)

public:
    /// The program's one object, made at the first call and never destroyed. Cheap; any thread.
    static CDeviceVisa* instance();

    /// Opens the default VISA resource manager. When that fails lastError() tells the reason.
    explicit CDeviceVisa(QObject* parent);
    ~CDeviceVisa() override;

    /// Opens the session of a VISA resource and sets it up: 57600 baud, 8 data bits, no parity and
    /// one stop bit on a serial resource, replies that end at a line feed on all. A session that
    /// is open is closed first. False when the resource cannot be opened.
    bool connectDevice(const QString& resource);

    /// Closes the session, if one is open. The resource manager stays open.
    void disconnectDevice();

    /// Closes the session without waiting for the exchange that is under way, which fails then; so
    /// do all until the next connectDevice(). May block where a platform's VISA library does.
    void interrupt();

    bool isConnected();

    /// Whether the session opened last is one on a serial port.
    bool isSerial();

    /// One exchange: writes the command with a line feed behind it and, when the command has a
    /// question mark anywhere, reads one reply of up to 40959 bytes. Returns the reply without
    /// white space at its ends; empty for a plain command and on every failure. Blocks up to
    /// timeoutMs milliseconds for the writing and again for the reading; a negative time-out is
    /// taken as 0.
    QString sendCommand(const QString& command, int timeoutMs);

    /// The same, telling how the exchange ended.
    QString sendCommand(const QString& command, int timeoutMs, ExchangeResult& result);

    /// One sendCommand() for each command, in order, and one result for each. Other threads may
    /// exchange between them.
    QVector<QString> sendCommands(const QStringList& commands, int timeoutMs);

    /// The same, asking after each exchange whether to go on. The results of commands that are not
    /// sent are empty.
    QVector<QString> sendCommands(const QStringList& commands, int timeoutMs,
                                  const std::function<bool(ExchangeResult)>& goesOn);

    /// Text of the last failure; empty when nothing has failed yet. A success does not clear it.
    QString lastError();

signals:
    void commandCompleted(const QString& command, const QString& response);
    void commandsCompleted(const QStringList& commands, const QVector<QString>& responses);
    void errorOccurred(const QString& errorMessage);

private:
    void configureSession();
    ExchangeResult writeCommand(const QString& command);
    ExchangeResult readResponse(QString& response);
    QByteArray statusText(ViObject object, ViStatus status) const;
    void fail(const QString& message);

    ViSession m_resourceManager = 0;
    std::atomic<ViSession> m_session{0}; ///< interrupt() takes it without the mutex.
    QString m_lastError;
    QRecursiveMutex m_mutex;
    bool m_connected = false;
    bool m_serial = false;
};
