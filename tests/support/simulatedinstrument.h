#pragma once

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

    /// The lines that the instrument has received so far, in order.
    QStringList received() const { return lines(QStringLiteral(" > ")); }
    /// The lines that the instrument has sent so far, in order.
    QStringList sent() const { return lines(QStringLiteral(" < ")); }

    /// Stops serving at once, as if switched off.
    void switchOff();
    /// Stops answering and goes on, as if hung.
    void freeze();
    void thaw();

private:
    QStringList lines(const QString& direction) const;

    QTemporaryDir m_directory;
    QProcess m_process;
    QString m_resource;
};
