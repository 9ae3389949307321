#pragma once

namespace scn {

class InstrumentDisplay;
class LinkWatch;

/// Searches all slots for modules and enters them in the slot registers. A slot without an answer keeps its
/// registers. Any thread; blocks.
void searchModules(LinkWatch& link, const InstrumentDisplay& display);

} // namespace scn
