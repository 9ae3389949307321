#pragma once

#include "launcher/instrumentchild.h"
#include "launcher/instrumentchoice.h"

namespace scnlauncher {

/// What the claim and the log of an instrument are named after.
QString placeNameOf(const InstrumentChoice& choice);

/// The log of the children of an instrument whose data is in `folder`: simulated ones share a name.
QString logPathOf(const InstrumentChoice& choice, const QString& folder);

/// The child to start for an instrument; `resource` is that of a simulated one too.
InstrumentChild::Call callFor(const InstrumentChoice& choice, const QString& resource,
                              const std::shared_ptr<ChildClaim>& claim);

} // namespace scnlauncher
