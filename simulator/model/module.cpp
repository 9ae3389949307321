#include "model/module.h"

#include <cstdio>

namespace scnsim {

namespace {

using K = ChannelKind;

/// Channels up to a position are of one kind; a module has up to three such groups.
struct ChannelGroup
{
    int lastPosition;
    ChannelKind kind;
};

struct ModuleType
{
    int type;
    int channels;
    ChannelGroup groups[3];
};

constexpr ModuleType kModules[] = {
    {0, 20, {{10, K::A}, {20, K::B}, {20, K::Switch}}},
    {1, 22, {{10, K::C}, {20, K::D}, {22, K::I}}},
    {2, 16, {{8, K::C}, {16, K::D}, {16, K::Switch}}},
    {3, 20, {{20, K::Switch}, {20, K::Switch}, {20, K::Switch}}},
    {4, 32, {{32, K::Switch}, {32, K::Switch}, {32, K::Switch}}},
    {5, 2, {{2, K::Switch}, {2, K::Switch}, {2, K::Switch}}},
    {6, 4, {{4, K::Switch}, {4, K::Switch}, {4, K::Switch}}},
    {7, 4, {{4, K::Switch}, {4, K::Switch}, {4, K::Switch}}},
    {8, 40, {{40, K::G}, {40, K::Switch}, {40, K::Switch}}},
    {9, 4, {{4, K::Switch}, {4, K::Switch}, {4, K::Switch}}},
    {10, 12, {{12, K::Switch}, {12, K::Switch}, {12, K::Switch}}},
    {11, 24, {{24, K::Switch}, {24, K::Switch}, {24, K::Switch}}},
    {12, 24, {{24, K::Switch}, {24, K::Switch}, {24, K::Switch}}},
    {13, 1, {{1, K::Switch}, {1, K::Switch}, {1, K::Switch}}},
    {14, 8, {{8, K::I}, {8, K::Switch}, {8, K::Switch}}},
    {15, 8, {{8, K::V}, {8, K::Switch}, {8, K::Switch}}},
    {16, 8, {{8, K::V}, {8, K::Switch}, {8, K::Switch}}},
};

constexpr ModuleType kUnknownModule = {-1, 1, {{1, K::Switch}, {1, K::Switch}, {1, K::Switch}}};

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

ChannelKind module::kindAt(int type, int position)
{
    for (const ChannelGroup& group : rowOf(type).groups) {
        if (position <= group.lastPosition) {
            return group.kind;
        }
    }
    return K::Switch;
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
