#pragma once

#include "support/programprocess.h"
#include "support/simulatedinstrument.h"
#include "support/virtualdisplay.h"

#include <QPoint>

/// The program's user: looks at its window and uses the mouse. The window is in the corner of the
/// screen, 1500 x 900 pixels, which the positions below assume.
class ProgramUser
{
public:
    ProgramUser(const VirtualDisplay& display, ProgramProcess& program);

    /// Starts the program on the instrument and waits until its window accepts clicks.
    bool bringUp(const SimulatedInstrument& instrument);

    /// Starts the program and waits until its window is in place.
    bool open(const SimulatedInstrument& instrument);

    /// Waits until the program is working: until this many more status polls have arrived.
    static bool waitForPolls(const SimulatedInstrument& instrument, int count);

    /// Clicks the check box of a channel of the first module; rows count from 0.
    void tickChannel(int row) const;

    /// Clicks the button that starts and stops a scan.
    void clickStart() const;

    /// Ticks the first channels, at most nine; true once the scan list has been sent.
    bool chooseChannels(const SimulatedInstrument& instrument, int count = 4) const;

    /// Ticks the first channels and starts; true when readings are being fetched.
    bool startScan(const SimulatedInstrument& instrument, int channels = 4) const;

    /// Clicks the button that opens the export dialog; true when the dialog is there.
    bool openExportDialog() const;
    /// Clicks the dialog's button that writes the file.
    void clickExportToFile() const;

    /// Whether the overlay of a lost instrument is there with its button.
    bool seesRecoveryButton() const;
    void clickRecovery() const;

private:
    const VirtualDisplay& m_display;
    ProgramProcess& m_program;
};
