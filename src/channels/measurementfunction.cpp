#include "channels/measurementfunction.h"

#include <cstring>
#include <iterator>

namespace scn {

namespace {

using U = DisplayUnit;
using P = PanelKind;
using R = RangeFamily;
using L = FunctionList;

constexpr Wiring k2W = Wiring::TwoWire;
constexpr Wiring k4W = Wiring::FourWire;
constexpr Decibels kDb = Decibels::Yes;
constexpr Decibels kNoDb = Decibels::No;

template <typename... Lists>
constexpr FunctionLists in(Lists... lists)
{
    return (bitOf(lists) | ...);
}

constexpr FunctionLists kABCDGV = in(L::A, L::B, L::C, L::D, L::G, L::V);
constexpr FunctionLists kABCDG = in(L::A, L::B, L::C, L::D, L::G);
constexpr FunctionLists kAC = in(L::A, L::C);
constexpr FunctionLists kABCD = in(L::A, L::B, L::C, L::D);
constexpr FunctionLists kCDG = in(L::C, L::D, L::G);
constexpr FunctionLists kC = in(L::C);
constexpr FunctionLists kI = in(L::I);

constexpr SensorFamily kThermocouples = {
    "TEMP:TRAN:TC:TYPE %1,(@%2)",
    "TEMP:TRAN:TC:TYPE? (@%1)",
    SensorReply::Letter,
    "TC",
    "B",
    "B",
    "热电偶(类型%1)",
};

constexpr SensorFamily kThermistors = {
    "TEMP:TRAN:THER:TYPE %1,(@%2)",
    "TEMP:TRAN:THER:TYPE? (@%1)",
    SensorReply::Ohms,
    "THER",
    "+5000",
    "+10000",
    nullptr,
};

// The instrument reports "THER" for four-wire thermistors too, and expects this spelling of the query.
constexpr SensorFamily kFourWireThermistors = {
    "TEMP:TRAN:FTH:TYPE %1,(@%2)",
    "TEMP:TRAN:fth:TYPE? (@%1)",
    SensorReply::Ohms,
    "THER",
    "+5000",
    "+10000",
    nullptr,
};

// Indices are fixed: add a new function at the end. Some headers differ from the name; the diode's is
// spelt unlike it. Farads are not among the display units, so capacitance starts on a temperature.
// clang-format off
constexpr MeasurementFunction kFunctions[] = {
    {"直流电压", "VOLT", "VOLT:DC", "Vdc", U::DcVolt, P::DcVoltage, R::Voltage, k2W, kDb, kABCDGV},
    {"交流电压", "VOLT:AC", "VOLT:AC", "Vac", U::AcVolt, P::AcAmplitude, R::Voltage, k2W, kNoDb, kABCDGV},
    {"周期", "PER", "PER:VOLT", "s", U::Second, P::CycleTime, R::Voltage, k2W, kNoDb, kABCDG},
    {"频率", "FREQ", "FREQ:VOLT", "Hz", U::Hertz, P::CycleTime, R::Voltage, k2W, kNoDb, kABCDG},
    {"双线ohm", "RES", "RES", "Ohm", U::Ohm, P::Resistance, R::Resistance, k2W, kNoDb, kABCDG},
    {"四线ohm", "FRES", "FRES", "Ohm", U::Ohm, P::Resistance, R::Resistance, k4W, kNoDb, kAC},
    {"热电偶(类型B)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "B"},
    {"热电偶(类型E)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "E"},
    {"热电偶(类型J)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "J"},
    {"热电偶(类型K)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "K"},
    {"热电偶(类型N)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "N"},
    {"热电偶(类型R)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "R"},
    {"热电偶(类型S)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "S"},
    {"热电偶(类型T)", "TEMP:TC", "TEMP:TC", "°C", U::Celsius, P::Thermocouple, R::None, k2W, kNoDb, kABCD, &kThermocouples, "T"},
    {"温度二线制RTD", "TEMP:RTD", "TEMP:RTD", "°C", U::Celsius, P::Rtd, R::None, k2W, kNoDb, kCDG},
    {"温度四线制RTD", "TEMP:FRTD", "TEMP:FRTD", "°C", U::Celsius, P::Rtd, R::None, k4W, kNoDb, kC},
    {"热敏电阻(2.2K)", "TEMP:THER", "TEMP:THER", "°C", U::Celsius, P::Thermistor, R::None, k2W, kNoDb, kCDG, &kThermistors, "+2252"},
    {"热敏电阻(5K)", "TEMP:THER", "TEMP:THER", "°C", U::Celsius, P::Thermistor, R::None, k2W, kNoDb, kCDG, &kThermistors, "+5000"},
    {"热敏电阻(10K)", "TEMP:THER", "TEMP:THER", "°C", U::Celsius, P::Thermistor, R::None, k2W, kNoDb, kCDG, &kThermistors, "+10000"},
    {"4线制热敏电阻(2.2K)", "TEMP:FTH", "TEMP:FTH", "°C", U::Celsius, P::Thermistor, R::None, k4W, kNoDb, kC, &kFourWireThermistors, "+2252"},
    {"4线制热敏电阻(5K)", "TEMP:FTH", "TEMP:FTH", "°C", U::Celsius, P::Thermistor, R::None, k4W, kNoDb, kC, &kFourWireThermistors, "+5000"},
    {"4线制热敏电阻(10K)", "TEMP:FTH", "TEMP:FTH", "°C", U::Celsius, P::Thermistor, R::None, k4W, kNoDb, kC, &kFourWireThermistors, "+10000"},
    {"电容", "CAP", "CAP", "F", U::Fahrenheit, P::Capacitance, R::Capacitance, k2W, kNoDb, kCDG},
    {"二极管", "DIOD", "DIDD", "Vdc", U::DcVolt, P::Diode, R::None, k2W, kNoDb, kCDG},
    {"直接应变", "STR:DIR", "STR:VOLT", "e", U::Strain, P::DirectStrain, R::None, k2W, kNoDb, kCDG},
    {"4线直接应变", "STR:FDIR", "STR:VOLT", "e", U::Strain, P::DirectStrain, R::None, k4W, kNoDb, kC},
    {"四分之一(弯曲)", "STR:QUAR", "STR:VOLT", "e", U::Strain, P::BendingBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"半桥(弯曲)", "STR:HALF:BEND", "STR:VOLT", "e", U::Strain, P::BendingBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"半桥(柏松)", "STR:HALF:POIS", "STR:VOLT", "e", U::Strain, P::PoissonBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"全桥(弯曲)", "STR:FULL:BEND", "STR:VOLT", "e", U::Strain, P::BendingBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"全桥(柏松)", "STR:FULL:POIS", "STR:VOLT", "e", U::Strain, P::PoissonBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"全桥(弯曲柏松)", "STR:FULL:BEND:POIS", "STR:VOLT", "e", U::Strain, P::PoissonBridge, R::Voltage, k2W, kNoDb, kABCDG},
    {"直流电流", "CURR", "CURR:DC", "Adc", U::DcAmpere, P::DcCurrent, R::Current, k2W, kDb, kI},
    {"交流电流", "CURR:AC", "CURR:AC", "Aac", U::AcAmpere, P::AcAmplitude, R::Current, k2W, kNoDb, kI},
};
// clang-format on

} // namespace

FunctionTable measurementFunctions()
{
    return {std::begin(kFunctions), static_cast<int>(std::size(kFunctions))};
}

const MeasurementFunction* functionAt(int index)
{
    const bool isKnown = index >= 0 && index < static_cast<int>(std::size(kFunctions));
    return isKnown ? &kFunctions[index] : nullptr;
}

PanelKind panelOf(int index)
{
    const MeasurementFunction* function = functionAt(index);
    return function ? function->panel : PanelKind::DcVoltage;
}

bool isTemperature(const MeasurementFunction& function)
{
    switch (function.panel) {
    case PanelKind::Thermocouple:
    case PanelKind::Rtd:
    case PanelKind::Thermistor:
        return true;
    default:
        return false;
    }
}

bool ownsBareName(const MeasurementFunction& function)
{
    const SensorFamily* family = function.sensor;
    return !family || std::strcmp(function.sensorType, family->bareNameType) == 0;
}

} // namespace scn
