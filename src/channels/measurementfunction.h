#pragma once

#include <QtGlobal>

namespace scn {

/// Which options a function has. The numbers are those that CommFunc::optionPanelKind() gives.
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

/// Kinds of fixed ranges that functions share.
enum class RangeFamily { None, Voltage, Resistance, Capacitance, Current };

/// The display units in the order in which unit boxes list them.
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

/// What a position of a module offers: nothing at all, the entry "none", or the list of a letter.
enum class FunctionList : unsigned { Nothing, NoneEntry, A, B, C, D, G, I, V };

/// A set of function lists, one bit each.
using FunctionLists = unsigned;

constexpr FunctionLists bitOf(FunctionList list)
{
    return 1U << static_cast<unsigned>(list);
}

/// How the instrument tells sensors of one family apart.
enum class SensorReply {
    Letter, ///< the letter of a thermocouple
    Ohms,   ///< a thermistor's resistance at 25 °C, in any spelling of the number
};

/// Sensors that the instrument measures with one function and a sensor type.
struct SensorFamily
{
    const char* typeCommand; ///< two markers: type, channel
    const char* typeQuery;   ///< one marker: channel
    SensorReply reply;

    /// The transducer kind for which the sensor type is asked. With another kind the channel counts
    /// as one with `fallbackType`.
    const char* transducer;
    const char* fallbackType;

    /// The type that the bare function name stands for.
    const char* bareNameType;

    /// Display name with a marker for a type that has no row; null where such a sensor has no name.
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

/// What a temperature sensor is measured with: the instrument is asked for its transducer.
bool isTemperature(const MeasurementFunction& function);

/// True for the function that its bare name stands for. A name that sensor types share stands for one of
/// them.
bool ownsBareName(const MeasurementFunction& function);

} // namespace scn
