#include "state/globals.h"

#include "instrument/cdevicevisa.h"
#include "storage/curveseriesdata.h"

// The fallback names one USB instrument; entry clears it before anything reads it.
QString g_resourceName = QStringLiteral("USB0::0x049F::0x606E::392769d769216474::0::INSTR");
QString g_instrumentId;
std::atomic<bool> g_instrumentConnected{false};
std::atomic<bool> g_scanRunning{false};
CDeviceVisa* const g_visa = CDeviceVisa::instance();
QMap<int, QString> g_scanChannels;
QMap<int, std::shared_ptr<CurveSeriesData>> g_curveSeries;
QString g_scanStartText;
QString g_scanEndText;

bool slotPresent[kSlotCount + 1] = {};
int slotModuleType[kSlotCount + 1] = {};
int slotLastChannel[kSlotCount + 1] = {};
