#include "app/modulesearch.h"

#include "app/instrumentdisplay.h"
#include "app/linkwatch.h"
#include "channels/commfunc.h"
#include "common/channelnumber.h"
#include "state/globals.h"

#include <QStringList>

#include <optional>

namespace scn {

namespace {

/// What is known of a slot.
struct SlotRegisters
{
    bool isPresent = false;
    int type = 0;
    int lastChannel = 0;
};

/// Enters a slot; what was known of it before.
SlotRegisters enterSlot(int slot, const SlotRegisters& registers)
{
    const SlotRegisters before{slotPresent[slot], slotModuleType[slot], slotLastChannel[slot]};
    slotPresent[slot] = registers.isPresent;
    slotModuleType[slot] = registers.type;
    slotLastChannel[slot] = registers.lastChannel;
    return before;
}

/// Asks for the module of one slot; none for an empty slot.
std::optional<SlotRegisters> askModule(LinkWatch& link, int slot)
{
    const CommFunc catalogue;
    const QString model =
        link.ask(QStringLiteral("SYST:CTYP? %1").arg(slot)).section(QLatin1Char(','), 1, 1);
    if (model.size() <= 1) {
        return std::nullopt;
    }
    const int type = catalogue.moduleTypeFromModel(model);
    return SlotRegisters{true, type, catalogue.lastChannelIndex(type)};
}

/// Wakes every channel of a module up; the answers are not used. False when none of them answers.
bool askModuleFunctions(LinkWatch& link, int slot, int lastChannel)
{
    QStringList queries;
    for (int row = 0; row <= lastChannel; ++row) {
        queries.append(
            QStringLiteral("FUNC? (@%1)").arg(ChannelNumber::fromRow(slot, row).label()));
    }
    return link.askAll(queries);
}

} // namespace

void searchModules(LinkWatch& link, const InstrumentDisplay& display)
{
    for (int slot = 1; slot <= kSlotCount && link.goesOn(); ++slot) {
        const std::optional<SlotRegisters> module = askModule(link, slot);
        if (!module) {
            continue;
        }
        SlotRegisters before;
        link.show([slot, &module, &before] { before = enterSlot(slot, *module); });
        if (askModuleFunctions(link, slot, module->lastChannel)) {
            continue;
        }
        // A spoilt reply can read like a module. Every later read-back would wait for the channels of
        // one that is not there, and end as on a dead link.
        link.undo([slot, before, &display] {
            if (!display.hasModule(slot)) {
                enterSlot(slot, before);
            }
        });
    }
}

} // namespace scn
