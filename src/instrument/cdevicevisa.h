#pragma once

#include "visa/visatypes.h"

#include <QObject>
#include <QRecursiveMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <functional>

namespace scn {

/// How an exchange ended.
enum class ExchangeResult {
    Done,       ///< the command is written and its reply, if it has one, is read
    TimedOut,   ///< the instrument did not accept the command, or did not reply, in time
    Lost,       ///< the connection is gone
    Overflowed, ///< the reply filled the buffer and is lost
    Failed,     ///< anything else
};

} // namespace scn

/// The gate to the instrument: it owns the VISA resource manager and the session, and performs each
/// exchange on the calling thread. Every operation may be called on any thread; a recursive mutex is
/// held for a whole exchange, so threads never interleave commands and replies. Signals are emitted on
/// the calling thread with that mutex held.
///
/// Failures are results: the operation returns an empty text or false, lastError() says why, and
/// errorOccurred() is emitted. A failed exchange leaves the session connected.
class CDeviceVisa : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CDeviceVisa)

public:
    /// The program's only object, created on the first call and never destroyed. Cheap; any thread.
    static CDeviceVisa* instance();

    /// Opens the default VISA resource manager. If that fails, lastError() says why.
    explicit CDeviceVisa(QObject* parent);
    ~CDeviceVisa() override;

    /// Opens a session on a VISA resource and configures it: 57600 baud, 8 data bits, no parity and one
    /// stop bit on a serial resource; replies end at a line feed. An open session is closed first.
    /// False if the resource cannot be opened.
    bool connectDevice(const QString& resource);

    /// Closes the session, if any. The resource manager stays open.
    void disconnectDevice();

    /// Closes the session without waiting for the exchange in progress. That one fails, and so do all
    /// others until the next connectDevice(). Blocks if the platform's VISA library does.
    void interrupt();

    bool isConnected();

    /// Whether the last session opened is on a serial port.
    bool isSerial();

    /// One exchange: writes the command and a line feed and, if the command contains a question mark,
    /// reads one reply of up to 40959 bytes. Returns the trimmed reply; empty for a plain command and
    /// on every failure. Blocks up to timeoutMs for writing and again for reading; a negative time-out
    /// counts as 0.
    QString sendCommand(const QString& command, int timeoutMs);

    /// The same; `result` says how the exchange ended.
    QString sendCommand(const QString& command, int timeoutMs, scn::ExchangeResult& result);

    /// One sendCommand() per command, in order. Other threads may exchange in between.
    QVector<QString> sendCommands(const QStringList& commands, int timeoutMs);

    /// The same, asking after each exchange whether to go on. Commands that are not sent have empty
    /// replies.
    QVector<QString> sendCommands(const QStringList& commands, int timeoutMs,
                                  const std::function<bool(scn::ExchangeResult)>& goesOn);

    /// Text of the last failure; empty if nothing has failed yet. A success does not clear it.
    QString lastError();

signals:
    void commandCompleted(const QString& command, const QString& response);
    void commandsCompleted(const QStringList& commands, const QVector<QString>& responses);
    void errorOccurred(const QString& errorMessage);

private:
    void configureSession();
    scn::ExchangeResult writeCommand(const QString& command);
    scn::ExchangeResult readResponse(QString& response);
    QByteArray statusText(scn::visa::ViObject object, scn::visa::ViStatus status) const;
    void fail(const QString& message);

    scn::visa::ViSession m_resourceManager = 0;
    std::atomic<scn::visa::ViSession> m_session{0}; ///< interrupt() takes it without the mutex.
    QString m_lastError;
    QRecursiveMutex m_mutex;
    bool m_connected = false;
    bool m_serial = false;
};
