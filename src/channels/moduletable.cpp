#include "channels/moduletable.h"

#include <algorithm>

namespace scn {

namespace {

constexpr int kAnyPosition = 99;
constexpr PositionSpan kUnused = {1, 0, FunctionList::Nothing};

constexpr std::array<PositionSpan, 3> everywhere(FunctionList list)
{
    return {{{0, kAnyPosition, list}, kUnused, kUnused}};
}

constexpr std::array<ModuleRow, 18> kModules = {{
    {kNoModuleType, -1, everywhere(FunctionList::NoneEntry)},
    {0, 19, {{{1, 10, FunctionList::A}, {11, 20, FunctionList::B}, kUnused}}},
    {1, 21, {{{1, 10, FunctionList::C}, {11, 20, FunctionList::D}, {21, 22, FunctionList::I}}}},
    {2, 15, {{{1, 8, FunctionList::C}, {9, 16, FunctionList::D}, kUnused}}},
    {3, 19, everywhere(FunctionList::NoneEntry)},
    {4, 31, everywhere(FunctionList::NoneEntry)},
    {5, 1, everywhere(FunctionList::NoneEntry)},
    {6, 3, everywhere(FunctionList::NoneEntry)},
    {7, 3, everywhere(FunctionList::NoneEntry)},
    {8, 39, everywhere(FunctionList::G)},
    {9, 3, everywhere(FunctionList::NoneEntry)},
    {10, 11, everywhere(FunctionList::NoneEntry)},
    {11, 23, everywhere(FunctionList::Nothing)},
    {12, 23, everywhere(FunctionList::Nothing)},
    {13, 0, everywhere(FunctionList::NoneEntry)},
    {14, 7, everywhere(FunctionList::I)},
    {15, 7, everywhere(FunctionList::V)},
    {16, 7, everywhere(FunctionList::V)},
}};

constexpr int kTypeWithUnpairedCurrentChannels = 1;

} // namespace

FunctionList ModuleRow::listAt(int position) const
{
    const auto* const span = std::find_if(
        positions.cbegin(), positions.cend(), [position](const PositionSpan& candidate) {
            return candidate.first <= position && position <= candidate.last;
        });
    return span != positions.cend() ? span->list : FunctionList::Nothing;
}

int ModuleRow::bankSize() const
{
    const int half = lastChannelIndex / 2;
    // Its two current channels follow the paired ones.
    return moduleType == kTypeWithUnpairedCurrentChannels ? half : half + 1;
}

const ModuleRow* moduleOfType(int moduleType)
{
    const auto* const row =
        std::find_if(kModules.cbegin(), kModules.cend(), [moduleType](const ModuleRow& candidate) {
            return candidate.moduleType == moduleType;
        });
    return row != kModules.cend() ? row : nullptr;
}

} // namespace scn
