#pragma once

#include "app/channelform.h"
#include "app/channelrow.h"
#include "app/channeltable.h"
#include "app/fourwirepartners.h"
#include "app/scanmarks.h"
#include "support/fakeinstrument.h"

#include <QWidget>

/// The channel table without the window: a module of two banks of eight channels in slot 1, which measure all but
/// currents, on a scripted instrument. Begins with the shared state of a fresh process.
class TableBench
{
public:
    TableBench();
    ~TableBench();
    TableBench(const TableBench&) = delete;
    TableBench& operator=(const TableBench&) = delete;

    /// Shows a channel's row to the hand.
    void showRow(int channel);

    bool isTicked(int channel) const;
    void tick(int channel) const;

    /// True if the user can use the row.
    bool isRowEnabled(int channel) const;

    FakeInstrument instrument;
    QWidget window;
    scn::ChannelForm form;
    scn::ChannelTable table{form};
    int announcements = 0; ///< of a changed scan list
    scn::ScanMarks marks{table, [this] { ++announcements; }};
    scn::FourWirePartners partners{table, marks};
};
