#pragma once

#include <QtGlobal>

namespace scn {

/// Which options a function has. CommFunc::optionPanelKind() returns these numbers.
enum class PanelKind : uchar {
    DcVoltage = 0,
    AcAmplitude = 1, ///< alternating voltage or current
    CycleTime = 2,   ///< period or frequency
    Resistance = 3,
    Thermocouple = 4,
    Rtd = 5,
    Thermistor = 6,
    DirectStrain = 7,
    Capacitance = 8,
    Diode = 9,
    BendingBridge = 10,
    PoissonBridge = 11,
    DcCurrent = 12,
};

/// Sets of fixed ranges.
enum class RangeFamily { None, Voltage, Resistance, Capacitance, Current };

/// The display units in the order of the unit boxes.
enum class DisplayUnit {
    None,
    Celsius,
    DcVolt,
    AcVolt,
    Ohm,
    Hertz,
    Second,
    DcAmpere,
    AcAmpere,
    Fahrenheit,
    Kelvin,
    Decibel,
    DecibelMilliwatt,
    Watt,
    Strain,
};

enum class Wiring { TwoWire, FourWire };

/// Whether readings can be scaled to decibels.
enum class Decibels { No, Yes };

/// What a position of a module offers: nothing at all, the entry "none", or one of the lists.
enum class FunctionList : unsigned { Nothing, NoneEntry, A, B, C, D, G, I, V };

/// A set of function lists, one bit each.
using FunctionLists = unsigned;

constexpr FunctionLists bitOf(FunctionList list)
{
    return 1U << static_cast<unsigned>(list);
}

/// How the instrument reports a sensor type.
enum class SensorReply {
    Letter, ///< the letter of a thermocouple
    Ohms,   ///< a thermistor's resistance at 25 °C, in any spelling of the number
};

/// Sensors that share one SCPI function and differ in their sensor type.
struct SensorFamily
{
    const char* typeCommand; ///< two markers: type, channel
    const char* typeQuery;   ///< one marker: channel
    SensorReply reply;

    /// The sensor type is queried only for this transducer kind. With any other, the channel counts as
    /// one with `fallbackType`.
    const char* transducer;
    const char* fallbackType;

    /// The type that the shared name from FUNC? stands for.
    const char* bareNameType;

    /// Display name, with a marker, for a type without a row; null if it has no name.
    const char* otherName;
};

/// Everything the program knows about one measurement function.
struct MeasurementFunction
{
    const char* displayName; ///< to be translated in the context of CommFunc
    const char* scpiName;    ///< argument of FUNC, and what FUNC? reports
    const char* header;      ///< prefix of the option commands
    const char* baseUnit;    ///< unit of unscaled readings
    DisplayUnit defaultUnit;
    PanelKind panel;
    RangeFamily ranges;
    Wiring wiring;
    Decibels decibels;
    FunctionLists lists; ///< the lists that offer it
    const SensorFamily* sensor = nullptr;
    const char* sensorType = "";
};

/// The functions by their index.
class FunctionTable
{
public:
    FunctionTable(const MeasurementFunction* first, int size)
        : m_first(first)
        , m_size(size)
    {
    }

    int size() const { return m_size; }
    const MeasurementFunction* begin() const { return m_first; }
    const MeasurementFunction* end() const { return m_first + m_size; }

private:
    const MeasurementFunction* m_first;
    int m_size;
};

FunctionTable measurementFunctions();

/// The function of an index; null for one that is not in the table.
const MeasurementFunction* functionAt(int index);

/// The options of a function; those of direct voltage for an index that is not in the table.
PanelKind panelOf(int index);

/// True for functions of temperature sensors, whose transducer is queried.
bool isTemperature(const MeasurementFunction& function);

/// True for the function that its SCPI name stands for. A name shared by several sensor types stands for
/// one of them.
bool ownsBareName(const MeasurementFunction& function);

} // namespace scn
