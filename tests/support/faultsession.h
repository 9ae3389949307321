#pragma once

#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/virtualdisplay.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

/// Base of tests that run the program against a misbehaving instrument: one display for all, and
/// for each test a program and its user. The test creates the instrument.
class FaultSession : public QObject
{
protected:
    using Transport = SimulatedInstrument::Transport;

    /// False if the display did not start.
    bool hasDisplay() const { return !m_display.name().isEmpty(); }
    void beginSession();
    /// Ends the program and the instrument; prints the log of a failed one.
    void endSession(bool hasFailed);

    /// Options of the simulator: one module of eight channels, and how fast it measures.
    static QStringList options(const QStringList& more = {}, int readingsPerSecond = 40);

    /// Polls a condition every tenth of a second.
    static bool waitUntil(const std::function<bool()>& isSo, int timeoutMs);

    /// Sends the instrument an order; false if it is refused.
    bool order(const QString& line);
    /// Waits until a fault has taken effect.
    bool waitForFault(const QString& begin) const;
    /// Clicks stop and waits until the instrument is drained.
    bool stopScan();
    /// Waits until only the status is polled: the instrument is drained.
    bool waitForRest() const;
    /// Clicks the overlay's button and waits until the program works again.
    bool recover();
    /// Tells the program to exit; true if it does.
    bool leave();
    /// The contents of the day files of the instrument's store.
    Readings stored() const;

    /// The program's data directory for the instrument.
    QString storeDirectory() const;

    VirtualDisplay m_display;
    std::unique_ptr<SimulatedInstrument> m_instrument;
    std::unique_ptr<ProgramProcess> m_program;
    std::unique_ptr<ProgramUser> m_user;
};
