#pragma once

#include "channels/commfunc.h"

namespace scn {

class InstrumentDisplay;
class LinkWatch;

/// Reads the instrument's state and shows it. An unanswered query reads as a default.
///
/// Any thread, which it blocks: queries run on it, and the link shows their replies on the GUI thread. The order
/// of the queries is fixed.
class InstrumentReadBack
{
public:
    InstrumentReadBack(LinkWatch& link, InstrumentDisplay& display);

    /// Connects to g_resourceName and searches for modules. Returns true, and sets g_instrumentConnected, if the
    /// link has held to the end.
    bool discover();

    /// Reads everything back.
    void readAll();

    /// Reads back a channel: its function, then the options.
    void readChannel(int channel);

    /// Reads back the options that this function index has.
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
