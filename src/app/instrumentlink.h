#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace scn {

class GuiGate;
class InstrumentDisplay;
class InstrumentReadBack;
class LinkWatch;

/// The window's part of a recovery. Each step runs on the GUI thread.
struct RecoverySteps
{
    std::function<void()> fail;
    std::function<bool()>
        buildPages; ///< the instrument has answered; true if that completes the recovery
    std::function<void()> finish;
};

/// The window's link to the instrument: runs read-backs on the GUI thread, notices the loss of the link and
/// recovers it on a helper thread. GUI thread.
class InstrumentLink
{
public:
    /// `onLost` runs on every loss. `display` must live until the gate is closed.
    InstrumentLink(std::shared_ptr<GuiGate> gate, InstrumentDisplay& display,
                   std::function<void()> onLost);
    ~InstrumentLink();
    InstrumentLink(const InstrumentLink&) = delete;
    InstrumentLink& operator=(const InstrumentLink&) = delete;

    /// Connects and searches for modules. Returns false if there is no instrument. Blocks.
    bool discover();

    // Read-backs. Each blocks, and gives the link up if it finds it dead.
    void readAll();
    void readChannel(int channel);
    void readOptions(int function, int channel);

    /// Marks the link as lost.
    void giveUp();

    /// Reconnects on a helper thread and reads everything back.
    void recover(const RecoverySteps& steps);

    /// Sends a command and waits for the exchange. Sends nothing between a loss and its recovery, which reads
    /// everything back.
    static void send(const QString& command);

private:
    void readBack(const std::function<void(InstrumentReadBack&)>& questions);

    const std::shared_ptr<GuiGate> m_gate;
    InstrumentDisplay& m_display;
    const std::function<void()> m_onLost;
    std::shared_ptr<LinkWatch> m_watch; ///< shared by all read-backs until a loss
};

} // namespace scn
