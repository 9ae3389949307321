#pragma once

#include "channels/measurementfunction.h"

#include <QString>

#include <initializer_list>

namespace scn {

/// The groups of options on a panel, in the order in which defaults are restored.
enum class OptionGroup {
    Nplc,
    LowFrequency,
    Offset,
    Delay,
    InputResistance,
    AutoCheck,
    SetReference,
    RefJunction,
    R0,
    GaugeFactor,
    StrainResistance,
    PoissonRatio,
    DriveVoltage,
    ReferenceResistance,
    DbReference,
    PercentReference,
};

constexpr int kOptionGroupCount = 16;

/// A set of option groups.
class OptionGroups
{
public:
    constexpr OptionGroups() = default;
    constexpr OptionGroups(std::initializer_list<OptionGroup> groups)
    {
        for (const OptionGroup group : groups) {
            m_bits |= bitOf(group);
        }
    }

    constexpr bool contains(OptionGroup group) const { return (m_bits & bitOf(group)) != 0; }

    constexpr OptionGroups operator|(const OptionGroups& other) const
    {
        OptionGroups both;
        both.m_bits = m_bits | other.m_bits;
        return both;
    }

private:
    static constexpr quint32 bitOf(OptionGroup group) { return 1U << static_cast<unsigned>(group); }

    quint32 m_bits = 0;
};

OptionGroups groupsOf(PanelKind kind);

/// Empty for an unknown function index.
OptionGroups groupsOfFunction(int functionIndex);

/// Empty for a scale function without references.
OptionGroups groupsOfScaleFunction(const QString& scaleFunction);

} // namespace scn
