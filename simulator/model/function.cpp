#include "model/function.h"

#include <algorithm>
#include <iterator>

namespace scnsim {

namespace {

using K = ChannelKind;
using O = Option;
using R = RangeOf;
using S = SignalShape;
using W = PowerFrom;

constexpr Leads k2W = Leads::Two;
constexpr Leads k4W = Leads::Four;
constexpr O kNo = Option::Count;
constexpr TimeOptions kFixedTime = {};
constexpr RangeOptions kNoRange = {};
constexpr Signal kNoSignal = {};

template <typename... Kinds>
constexpr ChannelKinds setOf(Kinds... kinds)
{
    return (... | bitOf(kinds));
}

constexpr ChannelKinds kNowhere = 0;
constexpr ChannelKinds kABCDGV = setOf(K::A, K::B, K::C, K::D, K::G, K::V);
constexpr ChannelKinds kABCDG = setOf(K::A, K::B, K::C, K::D, K::G);
constexpr ChannelKinds kABCD = setOf(K::A, K::B, K::C, K::D);
constexpr ChannelKinds kAC = setOf(K::A, K::C);
constexpr ChannelKinds kCDG = setOf(K::C, K::D, K::G);
constexpr ChannelKinds kC = setOf(K::C);
constexpr ChannelKinds kI = setOf(K::I);

// A channel starts with the first function of its kind.
// clang-format off
constexpr FunctionInfo kFunctions[] = {
    {"VOLTage[:DC]", "Vdc", "Vdc", k2W, kABCDGV, {O::VoltDcNplc}, {O::VoltDcRange, O::VoltDcRangeAuto, R::Reading}, {S::Discharging, 1, 0.25, 0.02, 1e-4, 0.02}, nullptr, W::Voltage},
    {"VOLTage:AC", "Vac", "Vac", k2W, kABCDGV, {kNo, O::VoltAcBand}, {O::VoltAcRange, O::VoltAcRangeAuto, R::Reading}, {S::Drifting, 2, 0.1, 0.02, 5e-4, 0}},
    {"PERiod[:VOLTage]", "s", "s", k2W, kABCDG, {kNo, O::PeriodBand}, {O::PeriodRange, O::PeriodRangeAuto, R::Input}, {S::Drifting, 0.02, 0.001, 1e-3, 1e-6, 0}},
    {"FREQuency[:VOLTage]", "Hz", "Hz", k2W, kABCDG, {kNo, O::FreqBand}, {O::FreqRange, O::FreqRangeAuto, R::Input}, {S::Drifting, 50, 10, 1e-3, 1e-6, 0}},
    {"RESistance", "Ohm", "Ohm", k2W, kABCDG, {O::ResNplc, kNo, O::ResCompensation}, {O::ResRange, O::ResRangeAuto, R::Reading}, {S::Drifting, 100, 100, 0.005, 1e-5, 2e-3}},
    {"FRESistance", "Ohm", "Ohm", k4W, kAC, {O::FresNplc, kNo, O::FresCompensation}, {O::FresRange, O::FresRangeAuto, R::Reading}, {S::Drifting, 100, 100, 0.005, 1e-6, 1e-3}},
    {"TEMPerature:TCouple", "C", "#C", k2W, kABCD, {O::TempNplc}, kNoRange, {S::Heated, 21, 0, 0, 1e-3, 0.05}, "TC"},
    {"TEMPerature:RTD", "C", "#C", k2W, kCDG, {O::TempNplc}, kNoRange, {S::Drifting, 22, 0.5, 0.05, 2e-4, 5e-3}, "RTD"},
    {"TEMPerature:FRTD", "C", "#C", k4W, kC, {O::TempNplc}, kNoRange, {S::Drifting, 22, 0.5, 0.05, 1e-4, 2e-3}, "RTD"},
    {"TEMPerature:THERmistor", "C", "#C", k2W, kCDG, {O::TempNplc}, kNoRange, {S::Drifting, 23, 0.4, 0.05, 5e-4, 1e-3}, "THER"},
    {"TEMPerature:FTHermistor", "C", "#C", k4W, kC, {O::TempNplc}, kNoRange, {S::Drifting, 23, 0.4, 0.05, 3e-4, 1e-3}, "THER"},
    {"CAPacitance", "F", "F", k2W, kCDG, kFixedTime, {O::CapRange, O::CapRangeAuto, R::Reading}, {S::Drifting, 1e-7, 1e-8, 0.003, 1e-4, 0}},
    {"DIODe", "Vdc", "Vdc", k2W, kCDG, {O::DiodeNplc}, kNoRange, {S::Drifting, 0.6, 0.002, 0.01, 1e-5, 1e-3}},
    {"STRain:DIRect", "e", "e", k2W, kCDG, {O::StrainNplc}, kNoRange, {S::Drifting, 1e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:FDIRect", "e", "e", k4W, kC, {O::StrainNplc}, kNoRange, {S::Drifting, 1e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:QUARter", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 2e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:HALF:BENDing", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 2e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:HALF:POISson", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 2e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:FULL:BENDing", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 4e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:FULL:POISson", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 4e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"STRain:FULL:BENDing:POISson", "e", "e", k2W, kABCDG, {O::StrainNplc}, {O::StrainRange, O::StrainRangeAuto, R::Input}, {S::Drifting, 4e-4, 1e-5, 0.2, 1e-3, 0.02}},
    {"CURRent[:DC]", "Adc", "Adc", k2W, kI, {O::CurrDcNplc}, {O::CurrDcRange, O::CurrDcRangeAuto, R::Reading}, {S::Drifting, 0.01, 0.002, 0.02, 1e-4, 5e-3}, nullptr, W::Current},
    {"CURRent:AC", "Aac", "Aac", k2W, kI, {kNo, O::CurrAcBand}, {O::CurrAcRange, O::CurrAcRangeAuto, R::Reading}, {S::Drifting, 0.02, 0.002, 0.02, 5e-4, 0}},
};

constexpr FunctionInfo kNoFunction =
    {"NONE", "", "", k2W, kNowhere, kFixedTime, kNoRange, kNoSignal};
// clang-format on

} // namespace

FunctionRows functions()
{
    return {std::begin(kFunctions), std::end(kFunctions)};
}

const FunctionInfo& noFunction()
{
    return kNoFunction;
}

const FunctionInfo& initialFunction(ChannelKind kind)
{
    const auto* const first =
        std::find_if(std::begin(kFunctions), std::end(kFunctions),
                     [kind](const FunctionInfo& function) { return offers(kind, function); });
    return first != std::end(kFunctions) ? *first : kNoFunction;
}

} // namespace scnsim
