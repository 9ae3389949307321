#include "model/function.h"

namespace scnsim {

namespace {

using F = Function;
using O = Option;
constexpr O kNo = Option::Count;

// clang-format off
constexpr FunctionInfo kFunctions[kFunctionCount] = {
    {F::VoltageDc, "VOLTage[:DC]", "Vdc", "Vdc", false, O::VoltDcNplc, kNo, kNo, O::VoltDcRange, O::VoltDcRangeAuto},
    {F::VoltageAc, "VOLTage:AC", "Vac", "Vac", false, kNo, O::VoltAcBand, kNo, O::VoltAcRange, O::VoltAcRangeAuto},
    {F::Period, "PERiod[:VOLTage]", "s", "s", false, kNo, O::PeriodBand, kNo, O::PeriodRange, O::PeriodRangeAuto},
    {F::Frequency, "FREQuency[:VOLTage]", "Hz", "Hz", false, kNo, O::FreqBand, kNo, O::FreqRange, O::FreqRangeAuto},
    {F::Resistance, "RESistance", "Ohm", "Ohm", false, O::ResNplc, kNo, O::ResCompensation, O::ResRange, O::ResRangeAuto},
    {F::Resistance4W, "FRESistance", "Ohm", "Ohm", true, O::FresNplc, kNo, O::FresCompensation, O::FresRange, O::FresRangeAuto},
    {F::Thermocouple, "TEMPerature:TCouple", "C", "#C", false, O::TempNplc, kNo, kNo, kNo, kNo},
    {F::Rtd, "TEMPerature:RTD", "C", "#C", false, O::TempNplc, kNo, kNo, kNo, kNo},
    {F::Rtd4W, "TEMPerature:FRTD", "C", "#C", true, O::TempNplc, kNo, kNo, kNo, kNo},
    {F::Thermistor, "TEMPerature:THERmistor", "C", "#C", false, O::TempNplc, kNo, kNo, kNo, kNo},
    {F::Thermistor4W, "TEMPerature:FTHermistor", "C", "#C", true, O::TempNplc, kNo, kNo, kNo, kNo},
    {F::Capacitance, "CAPacitance", "F", "F", false, kNo, kNo, kNo, O::CapRange, O::CapRangeAuto},
    {F::Diode, "DIODe", "Vdc", "Vdc", false, O::DiodeNplc, kNo, kNo, kNo, kNo},
    {F::StrainDirect, "STRain:DIRect", "e", "e", false, O::StrainNplc, kNo, kNo, kNo, kNo},
    {F::StrainDirect4W, "STRain:FDIRect", "e", "e", true, O::StrainNplc, kNo, kNo, kNo, kNo},
    {F::StrainQuarter, "STRain:QUARter", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::StrainHalfBending, "STRain:HALF:BENDing", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::StrainHalfPoisson, "STRain:HALF:POISson", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::StrainFullBending, "STRain:FULL:BENDing", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::StrainFullPoisson, "STRain:FULL:POISson", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::StrainFullBendingPoisson, "STRain:FULL:BENDing:POISson", "e", "e", false, O::StrainNplc, kNo, kNo, O::StrainRange, O::StrainRangeAuto},
    {F::CurrentDc, "CURRent[:DC]", "Adc", "Adc", false, O::CurrDcNplc, kNo, kNo, O::CurrDcRange, O::CurrDcRangeAuto},
    {F::CurrentAc, "CURRent:AC", "Aac", "Aac", false, kNo, O::CurrAcBand, kNo, O::CurrAcRange, O::CurrAcRangeAuto},
    {F::None, "NONE", "", "", false, kNo, kNo, kNo, kNo, kNo},
};
// clang-format on

constexpr FunctionSet kTemperatures = functionBit(F::Thermocouple) | functionBit(F::Rtd) |
                                      functionBit(F::Rtd4W) | functionBit(F::Thermistor) |
                                      functionBit(F::Thermistor4W);

} // namespace

const FunctionInfo& functionInfo(Function function)
{
    return kFunctions[static_cast<unsigned>(function)];
}

bool isTemperature(Function function)
{
    return (kTemperatures & functionBit(function)) != 0;
}

} // namespace scnsim
