#include "launcher/childcall.h"

#include "launcher/childclaim.h"
#include "launcher/childlog.h"
#include "launcher/serialrate.h"

namespace scnlauncher {
namespace {

/// Simulated instruments share a name: each has a port of its own, another one at each start.
const QString kSimulatedPlace = QStringLiteral("simulator");

} // namespace

QString placeNameOf(const InstrumentChoice& choice)
{
    return choice.isSimulated ? kSimulatedPlace : choice.resource;
}

QString logPathOf(const InstrumentChoice& choice, const QString& folder)
{
    return logPathFor(choice.isSimulated ? kSimulatedPlace + folder : choice.resource);
}

InstrumentChild::Call callFor(const InstrumentChoice& choice, const QString& resource,
                              const std::shared_ptr<ChildClaim>& claim)
{
    InstrumentChild::Call call;
    call.program = claim->program();
    call.claim = claim;
    call.resource = resource;
    call.environment = QProcessEnvironment::systemEnvironment();
    if (choice.serialRate > 0) {
        call.environment.insert(QLatin1String(kSerialRateVariable),
                                QString::number(choice.serialRate));
    }
    call.logPath = logPathOf(choice, claim->folder());
    return call;
}

} // namespace scnlauncher
