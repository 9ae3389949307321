#include "launcher/serialrate.h"

#include "launcher/launchersettings.h"
#include "visa/serialtransport_posix.h"

namespace scnlauncher {

bool isSerial(const QString& resource)
{
    return resource.startsWith(QLatin1String("ASRL"), Qt::CaseInsensitive);
}

int unchosenRate(const QString& resource, const LauncherSettings& settings)
{
    if (!isSerial(resource)) {
        return 0;
    }
    const int set = qEnvironmentVariableIntValue(kSerialRateVariable);
    if (scn::visa::isSerialRate(set)) {
        return set;
    }
    const int last = settings.serialRate(resource);
    return last > 0 ? last : kUsualSerialRate;
}

} // namespace scnlauncher
