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

/// The base of tests that put the program before an instrument that misbehaves: a display for all of
/// them, and for each one a program and the user before it. The test makes the instrument.
class FaultSession : public QObject
{
protected:
    using Transport = SimulatedInstrument::Transport;

    /// False when the display did not start.
    bool hasDisplay() const { return !m_display.name().isEmpty(); }
    void beginSession();
    /// Ends the program and the instrument; shows the log of one that has failed.
    void endSession(bool hasFailed);

    /// Options of the simulator: one module of eight channels, and how fast it measures.
    static QStringList options(const QStringList& more = {}, int readingsPerSecond = 40);

    /// Looks every tenth of a second whether something is so.
    static bool waitUntil(const std::function<bool()>& isSo, int timeoutMs);

    /// Gives the instrument an order; false if it is refused.
    bool order(const QString& line);
    /// Waits until a fault has acted.
    bool waitForFault(const QString& begin) const;
    /// Presses stop and waits until the program has drained the instrument.
    bool stopScan();
    /// Waits until nothing but the status is polled: the instrument has been drained.
    bool waitForRest() const;
    /// Clicks the overlay's button and waits until the program is at work again.
    bool recover();
    /// Tells the program to end; true if it does.
    bool leave();
    /// What stands in the day files of the instrument's store.
    Readings stored() const;

    /// The program's data directory for the instrument.
    QString storeDirectory() const;

    VirtualDisplay m_display;
    std::unique_ptr<SimulatedInstrument> m_instrument;
    std::unique_ptr<ProgramProcess> m_program;
    std::unique_ptr<ProgramUser> m_user;
};
