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

/// The registers of a slot.
struct SlotRegisters
{
    bool isPresent = false;
    int type = 0;
    int lastChannel = 0;
};

/// Sets the registers of a slot and returns the old ones.
SlotRegisters enterSlot(int slot, const SlotRegisters& registers)
{
    const SlotRegisters before{slotPresent[slot], slotModuleType[slot], slotLastChannel[slot]};
    slotPresent[slot] = registers.isPresent;
    slotModuleType[slot] = registers.type;
    slotLastChannel[slot] = registers.lastChannel;
    return before;
}

/// Asks for a slot's module. Returns none for an empty slot.
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

/// Asks every channel of a module; the replies are not used. Returns false if all of them time out.
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
        // A garbled reply can look like a module. Every later read-back would wait for the channels of a
        // module that does not exist, and end as on a dead link.
        link.undo([slot, before, &display] {
            if (!display.hasModule(slot)) {
                enterSlot(slot, before);
            }
        });
    }
}

} // namespace scn
