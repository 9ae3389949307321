#pragma once

class LinkWatch;

namespace scn {

class InstrumentDisplay;

/// Finds the modules and enters them in the slot registers. A slot that does not answer keeps what is
/// known of it. Any thread; blocks.
void searchModules(LinkWatch& link, const InstrumentDisplay& display);

} // namespace scn
