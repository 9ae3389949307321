#pragma once

#include "support/streamclient_posix.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The simulator as a process, with a transcript.
class SimulatedInstrument
{
public:
    enum class Transport { Tcp, PseudoTerminal };

    /// Starts it on one transport; `options` are further options such as "--slots".
    explicit SimulatedInstrument(Transport transport, const QStringList& options = {});
    ~SimulatedInstrument();

    /// Its VISA resource; empty if it did not start.
    QString resource() const { return m_resource; }

    /// The port of its TCP transport; 0 on a pseudo-terminal.
    quint16 port() const;

    qint64 processId() const { return m_process.processId(); }

    /// Sends the control port an order; returns the answer.
    QString order(const QString& line);

    /// All lines that the instrument has received, in order.
    QStringList received() const { return lines(QStringLiteral(" > ")); }
    /// Those before the first such line; all without one.
    QStringList receivedBefore(const QString& line) const;
    /// All lines that the instrument has sent, in order.
    QStringList sent() const { return lines(QStringLiteral(" < ")); }
    /// The lines it has sent since it last received a line.
    QStringList sentSince(const QString& received) const;
    /// The faults that have taken effect, in order.
    QStringList faults() const { return lines(QStringLiteral(" ! ")); }

    /// Stops answering but keeps running, as if hung.
    void freeze();
    void thaw();

private:
    QString readyLine();
    QStringList lines(const QString& direction, const QString& since = {}) const;

    QTemporaryDir m_directory;
    QProcess m_process;
    QString m_resource;
    StreamClient m_control;
};
