#pragma once

#include <QString>

namespace scnlauncher {

class LauncherSettings;

/// The environment variable that tells the program's VISA provider the rate of a serial line.
constexpr const char* kSerialRateVariable = "SCN4070A_SERIAL_RATE";

/// The rate, in baud, of a line for which the user has chosen none: the program's own.
constexpr int kUsualSerialRate = 57600;

/// Whether a resource is a serial line.
bool isSerial(const QString& resource);

/// The rate of a line that is opened without a choice: what the environment says, the rate that it had last, or
/// the usual one. 0 if the resource is no serial line.
int unchosenRate(const QString& resource, const LauncherSettings& settings);

} // namespace scnlauncher
