#pragma once

#include <QString>

#include <functional>
#include <memory>

class GuiGate;
class LinkWatch;

namespace scn {

class InstrumentDisplay;
class InstrumentReadBack;

/// The steps of a recovery that are the window's; each runs on the GUI thread.
struct RecoverySteps
{
    std::function<void()> fail;
    std::function<bool()>
        buildPages; ///< the instrument is there; true when that was all there is to do
    std::function<void()> finish;
};

/// The window's side of the link to the instrument: read-backs on the GUI thread, the loss of the link and
/// its recovery on a helper. All of it is called on the GUI thread.
class InstrumentLink
{
public:
    /// `onLost` runs whenever the link is given up. `display` lives until the gate is closed.
    InstrumentLink(std::shared_ptr<GuiGate> gate, InstrumentDisplay& display,
                   std::function<void()> onLost);
    ~InstrumentLink();
    InstrumentLink(const InstrumentLink&) = delete;
    InstrumentLink& operator=(const InstrumentLink&) = delete;

    /// Finds the instrument and its modules; false without one. Blocks.
    bool discover();

    // A read-back blocks, too. One that finds the link dead gives it up.
    void readAll();
    void readChannel(int channel);
    void readOptions(int function, int channel);

    /// The instrument is not there any more.
    void giveUp();

    /// Looks for the instrument again on a helper and reads everything back.
    void recover(const RecoverySteps& steps);

    /// Sends a command and waits for the exchange. Nothing goes out between a loss and its recovery, which
    /// reads all of it back.
    static void send(const QString& command);

private:
    void readBack(const std::function<void(InstrumentReadBack&)>& questions);

    const std::shared_ptr<GuiGate> m_gate;
    InstrumentDisplay& m_display;
    const std::function<void()> m_onLost;
    std::shared_ptr<LinkWatch> m_watch; ///< of the read-backs, until a loss
};

} // namespace scn
