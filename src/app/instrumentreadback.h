#pragma once

#include "channels/commfunc.h"

class LinkWatch;

namespace scn {

class InstrumentDisplay;

/// Asks the instrument for its state and has it shown. A question without an answer reads as a default.
///
/// Runs on any thread and blocks it: it asks there, in the order of the instrument's dialogue, and shows
/// through the link, on the GUI thread.
class InstrumentReadBack
{
public:
    InstrumentReadBack(LinkWatch& link, InstrumentDisplay& display);

    /// Connects to the instrument named by g_resourceName and finds its modules. True when it has
    /// answered, to the last question; g_instrumentConnected says so, too.
    bool discover();

    /// Reads everything back.
    void readAll();

    /// Reads the function of one channel, then its options.
    void readChannel(int channel);

    /// Reads the options of one channel, which are those of this function index.
    void readOptions(int function, int channel);

private:
    void readScanList();
    void readTriggerSettings();
    void readTriggerSource();
    void readInterval();
    void readSweepCount();
    void readUsbLogging();
    void endScan();
    void setClock();
    void askStoredStates();

    LinkWatch& m_link;
    InstrumentDisplay& m_display;
    CommFunc m_catalogue;
};

} // namespace scn
