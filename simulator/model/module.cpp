#include "model/module.h"

#include <cstdio>

namespace scnsim {

namespace {

constexpr FunctionSet functions(Function first, Function last)
{
    FunctionSet set = 0;
    for (int f = static_cast<int>(first); f <= static_cast<int>(last); ++f) {
        set |= functionBit(static_cast<Function>(f));
    }
    return set;
}

using F = Function;

constexpr FunctionSet kBridges = functions(F::StrainQuarter, F::StrainFullBendingPoisson);
constexpr FunctionSet kTwoWireBasics = functions(F::VoltageDc, F::Resistance);
constexpr FunctionSet kTwoWireSensors = functionBit(F::Rtd) | functionBit(F::Thermistor) |
                                        functionBit(F::Capacitance) | functionBit(F::Diode) |
                                        functionBit(F::StrainDirect) | kBridges;

constexpr FunctionSet kListB = kTwoWireBasics | functionBit(F::Thermocouple) | kBridges;
constexpr FunctionSet kListA = kListB | functionBit(F::Resistance4W);
constexpr FunctionSet kListC = functions(F::VoltageDc, F::StrainFullBendingPoisson);
constexpr FunctionSet kListG = kTwoWireBasics | kTwoWireSensors;
constexpr FunctionSet kListD = kListG | functionBit(F::Thermocouple);
constexpr FunctionSet kListI = functionBit(F::CurrentDc) | functionBit(F::CurrentAc);
constexpr FunctionSet kListV = functionBit(F::VoltageDc) | functionBit(F::VoltageAc);

/// Channels up to a position share a set of functions; a module has up to three such groups.
struct ChannelGroup
{
    int lastPosition;
    FunctionSet functions;
};

struct ModuleType
{
    int type;
    int channels;
    ChannelGroup groups[3];
};

constexpr ModuleType kModules[] = {
    {0, 20, {{10, kListA}, {20, kListB}, {20, 0}}},
    {1, 22, {{10, kListC}, {20, kListD}, {22, kListI}}},
    {2, 16, {{8, kListC}, {16, kListD}, {16, 0}}},
    {3, 20, {{20, 0}, {20, 0}, {20, 0}}},
    {4, 32, {{32, 0}, {32, 0}, {32, 0}}},
    {5, 2, {{2, 0}, {2, 0}, {2, 0}}},
    {6, 4, {{4, 0}, {4, 0}, {4, 0}}},
    {7, 4, {{4, 0}, {4, 0}, {4, 0}}},
    {8, 40, {{40, kListG}, {40, 0}, {40, 0}}},
    {9, 4, {{4, 0}, {4, 0}, {4, 0}}},
    {10, 12, {{12, 0}, {12, 0}, {12, 0}}},
    {11, 24, {{24, 0}, {24, 0}, {24, 0}}},
    {12, 24, {{24, 0}, {24, 0}, {24, 0}}},
    {13, 1, {{1, 0}, {1, 0}, {1, 0}}},
    {14, 8, {{8, kListI}, {8, 0}, {8, 0}}},
    {15, 8, {{8, kListV}, {8, 0}, {8, 0}}},
    {16, 8, {{8, kListV}, {8, 0}, {8, 0}}},
};

constexpr ModuleType kUnknownModule = {-1, 1, {{1, 0}, {1, 0}, {1, 0}}};

/// The module whose last two channels measure current and are never paired.
constexpr int kTypeWithCurrentChannels = 1;

const ModuleType& rowOf(int type)
{
    for (const ModuleType& row : kModules) {
        if (row.type == type) {
            return row;
        }
    }
    return kUnknownModule;
}

} // namespace

int module::channelCount(int type)
{
    return rowOf(type).channels;
}

FunctionSet module::functionsAt(int type, int position)
{
    for (const ChannelGroup& group : rowOf(type).groups) {
        if (position <= group.lastPosition) {
            return group.functions;
        }
    }
    return 0;
}

int module::bankSize(int type)
{
    const int half = (channelCount(type) - 1) / 2;
    return type == kTypeWithCurrentChannels ? half : half + 1;
}

std::string module::modelText(int type)
{
    char text[32];
    std::snprintf(text, sizeof text, "SCN4%03dA", type);
    return text;
}

} // namespace scnsim
