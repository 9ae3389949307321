#pragma once

#include "support/streamclient_posix.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The simulator as a process of its own, with a transcript, as long as this object lives.
class SimulatedInstrument
{
public:
    enum class Transport { Tcp, PseudoTerminal };

    /// Starts it on one transport; `options` are further options such as "--slots".
    explicit SimulatedInstrument(Transport transport, const QStringList& options = {});
    ~SimulatedInstrument();

    /// Its VISA resource; empty when it did not start.
    QString resource() const { return m_resource; }

    /// The port of its TCP transport; 0 on a pseudo-terminal.
    quint16 port() const;

    qint64 processId() const { return m_process.processId(); }

    /// Gives the control port an order; the answer.
    QString order(const QString& line);

    /// The lines that the instrument has received so far, in order.
    QStringList received() const { return lines(QStringLiteral(" > ")); }
    /// The lines that the instrument has sent so far, in order.
    QStringList sent() const { return lines(QStringLiteral(" < ")); }
    /// The lines that it has sent since it received a line for the last time.
    QStringList sentSince(const QString& received) const;
    /// The faults that have acted so far, in order.
    QStringList faults() const { return lines(QStringLiteral(" ! ")); }

    /// Stops serving at once, as if switched off.
    void switchOff();
    /// Stops answering and goes on, as if hung.
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
