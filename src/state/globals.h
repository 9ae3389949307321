#pragma once

#include <QMap>
#include <QString>

#include <atomic>
#include <memory>

class CDeviceVisa;
class CurveSeriesData;

/// The program's shared state. All of it exists before main() and for the life of the process. Only
/// the two flags may be used on any thread; everything else belongs to the GUI thread unless its
/// line says otherwise.

/// VISA resource of the instrument; set by entry from the command line.
extern QString g_resourceName;

/// Reply to *IDN? with commas replaced by blanks; empty until the instrument has answered.
extern QString g_instrumentId;

/// The instrument has answered *IDN? and is not known to be lost.
extern std::atomic<bool> g_instrumentConnected;

/// A scan is in progress. Set on the GUI thread, cleared there or by the acquisition thread.
extern std::atomic<bool> g_scanRunning;

/// The one instrument session; usable on any thread.
extern CDeviceVisa* const g_visa;

/// Scan list: channel number (100 * slot + position) to display unit.
extern QMap<int, QString> g_scanChannels;

/// Live series of the scan by channel number.
extern QMap<int, std::shared_ptr<CurveSeriesData>> g_curveSeries;

/// Start and end of the last scan, local time, "yyyy MM dd hh mm ss".
extern QString g_scanStartText;
extern QString g_scanEndText;

/// Slots are counted from 1 to 15; element 0 is not used.
constexpr int kSlotCount = 15;

/// The slot has answered the module query with a model. Never cleared.
extern bool slotPresent[kSlotCount + 1];

/// Module type of a slot's module.
extern int slotModuleType[kSlotCount + 1];

/// Index of the last channel of a slot's module, counted from 0.
extern int slotLastChannel[kSlotCount + 1];
