#include "channels/commfunc.h"

#include "app/globals.h"
#include "common/channelnumber.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

enum class RangeFamily { None, Voltage, Resistance, Capacitance, Current };

constexpr RangeFamily kNoRange = RangeFamily::None;
constexpr RangeFamily kVoltage = RangeFamily::Voltage;

constexpr char kThermocoupleType[] = "TEMP:TRAN:TC:TYPE %1,(@%2)";
constexpr char kThermistorType[] = "TEMP:TRAN:THER:TYPE %1,(@%2)";
constexpr char kFourWireThermistorType[] = "TEMP:TRAN:FTH:TYPE %1,(@%2)";

/// One row of the catalogue; the row number is the function index.
struct FunctionRow
{
    const char* displayName;
    const char* funcArgument;
    const char* scpiHeader;
    const char* baseUnit;
    int defaultUnitRow;
    uchar panelKind;
    RangeFamily ranges;
    const char* typeCommand = "";
    const char* typeArgument = "";
};

// FUNC argument and option header differ for some functions, and the diode's header is spelt unlike
// its function. Row 9 of the display units, where capacitance starts, is a temperature: farads have
// no row of their own.
constexpr std::array<FunctionRow, 34> kFunctions = {{
    {"直流电压", "VOLT", "VOLT:DC", "Vdc", 2, 0, kVoltage},
    {"交流电压", "VOLT:AC", "VOLT:AC", "Vac", 3, 1, kVoltage},
    {"周期", "PER", "PER:VOLT", "s", 6, 2, kVoltage},
    {"频率", "FREQ", "FREQ:VOLT", "Hz", 5, 2, kVoltage},
    {"双线ohm", "RES", "RES", "Ohm", 4, 3, RangeFamily::Resistance},
    {"四线ohm", "FRES", "FRES", "Ohm", 4, 3, RangeFamily::Resistance},
    {"热电偶(类型B)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "B"},
    {"热电偶(类型E)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "E"},
    {"热电偶(类型J)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "J"},
    {"热电偶(类型K)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "K"},
    {"热电偶(类型N)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "N"},
    {"热电偶(类型R)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "R"},
    {"热电偶(类型S)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "S"},
    {"热电偶(类型T)", "TEMP:TC", "TEMP:TC", "°C", 1, 4, kNoRange, kThermocoupleType, "T"},
    {"温度二线制RTD", "TEMP:RTD", "TEMP:RTD", "°C", 1, 5, kNoRange},
    {"温度四线制RTD", "TEMP:FRTD", "TEMP:FRTD", "°C", 1, 5, kNoRange},
    {"热敏电阻(2.2K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, kNoRange, kThermistorType, "+2252"},
    {"热敏电阻(5K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, kNoRange, kThermistorType, "+5000"},
    {"热敏电阻(10K)", "TEMP:THER", "TEMP:THER", "°C", 1, 6, kNoRange, kThermistorType, "+10000"},
    {"4线制热敏电阻(2.2K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, kNoRange, kFourWireThermistorType,
     "+2252"},
    {"4线制热敏电阻(5K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, kNoRange, kFourWireThermistorType,
     "+5000"},
    {"4线制热敏电阻(10K)", "TEMP:FTH", "TEMP:FTH", "°C", 1, 6, kNoRange, kFourWireThermistorType,
     "+10000"},
    {"电容", "CAP", "CAP", "F", 9, 8, RangeFamily::Capacitance},
    {"二极管", "DIOD", "DIDD", "Vdc", 2, 9, kNoRange},
    {"直接应变", "STR:DIR", "STR:VOLT", "e", 14, 7, kNoRange},
    {"4线直接应变", "STR:FDIR", "STR:VOLT", "e", 14, 7, kNoRange},
    {"四分之一(弯曲)", "STR:QUAR", "STR:VOLT", "e", 14, 10, kVoltage},
    {"半桥(弯曲)", "STR:HALF:BEND", "STR:VOLT", "e", 14, 10, kVoltage},
    {"半桥(柏松)", "STR:HALF:POIS", "STR:VOLT", "e", 14, 11, kVoltage},
    {"全桥(弯曲)", "STR:FULL:BEND", "STR:VOLT", "e", 14, 10, kVoltage},
    {"全桥(柏松)", "STR:FULL:POIS", "STR:VOLT", "e", 14, 11, kVoltage},
    {"全桥(弯曲柏松)", "STR:FULL:BEND:POIS", "STR:VOLT", "e", 14, 11, kVoltage},
    {"直流电流", "CURR", "CURR:DC", "Adc", 7, 12, RangeFamily::Current},
    {"交流电流", "CURR:AC", "CURR:AC", "Aac", 8, 1, RangeFamily::Current},
}};

/// A name that FUNC? can return, and the function that it stands for.
struct ReportedName
{
    const char* name;
    int functionIndex;
};

// The bare name of a family stands for one member of it: thermocouple type B, thermistor 10K.
constexpr std::array<ReportedName, 23> kReportedNames = {{
    {"VOLT", 0},
    {"VOLT:AC", 1},
    {"PER", 2},
    {"FREQ", 3},
    {"RES", 4},
    {"FRES", 5},
    {"TEMP:TC", 6},
    {"TEMP:RTD", 14},
    {"TEMP:FRTD", 15},
    {"TEMP:THER", 18},
    {"TEMP:FTH", 21},
    {"CAP", 22},
    {"DIOD", 23},
    {"STR:DIR", 24},
    {"STR:FDIR", 25},
    {"STR:QUAR", 26},
    {"STR:HALF:BEND", 27},
    {"STR:HALF:POIS", 28},
    {"STR:FULL:BEND", 29},
    {"STR:FULL:POIS", 30},
    {"STR:FULL:BEND:POIS", 31},
    {"CURR", 32},
    {"CURR:AC", 33},
}};

constexpr char kNone[] = "无";
constexpr char kAutomaticRange[] = "自动";

constexpr int kMaxRangeRows = 8;

/// The fixed ranges of a family, behind the automatic one. Row r stands for base * 10^(r - 1).
struct RangeRow
{
    RangeFamily family;
    double base;
    std::array<const char*, kMaxRangeRows> texts;
};

constexpr std::array<RangeRow, 4> kRanges = {{
    {RangeFamily::Voltage, 0.1, {"+/-100mV", "+/-1V", "+/-10V", "+/-100V", "+/-300V"}},
    {RangeFamily::Resistance, 100.0, {"100", "1K", "10K", "100K", "1M", "10M", "100M", "1G"}},
    {RangeFamily::Capacitance, 1e-9, {"1nF", "10nF", "100nF", "1μF", "10μF", "100μF"}},
    {RangeFamily::Current, 1e-6, {"1μA", "10μA", "100μA", "1mA", "10mA", "100mA", "1A"}},
}};

constexpr std::array<double, 10> kDecades = {0.1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};

// The top voltage range is no decade.
constexpr int kTopVoltageRow = 5;
constexpr double kTopVoltage = 300.0;

constexpr std::array<const char*, 14> kUnits = {"°C",  "Vdc", "Vac", "Ohm", "Hz",  "s", "Adc",
                                                "Aac", "°F",  "K",   "dB",  "dBm", "W", "e"};

struct IndexSpan
{
    int first;
    int last;
};

/// Which functions a channel offers, by the letter of the list.
enum class FunctionSet { Nothing, NoneEntry, A, B, C, D, G, I, V };

struct FunctionSetRow
{
    FunctionSet set;
    std::array<IndexSpan, 5> spans;
    int spanCount;
};

constexpr std::array<FunctionSetRow, 7> kFunctionSets = {{
    {FunctionSet::A, {{{0, 13}, {26, 31}}}, 2},
    {FunctionSet::B, {{{0, 4}, {6, 13}, {26, 31}}}, 3},
    {FunctionSet::C, {{{0, 31}}}, 1},
    {FunctionSet::D, {{{0, 4}, {6, 14}, {16, 18}, {22, 24}, {26, 31}}}, 5},
    {FunctionSet::G, {{{0, 4}, {14, 14}, {16, 18}, {22, 24}, {26, 31}}}, 5},
    {FunctionSet::I, {{{32, 33}}}, 1},
    {FunctionSet::V, {{{0, 1}}}, 1},
}};

/// Positions of a module that share one list; positions in no span offer nothing.
struct PositionSpan
{
    int first;
    int last;
    FunctionSet set;
};

constexpr int kAnyPosition = 99;

struct ModuleRow
{
    int moduleType;
    int lastChannelIndex;
    std::array<PositionSpan, 3> positions;
};

constexpr PositionSpan kUnused = {1, 0, FunctionSet::Nothing};

constexpr std::array<PositionSpan, 3> everywhere(FunctionSet set)
{
    return {{{0, kAnyPosition, set}, kUnused, kUnused}};
}

constexpr std::array<ModuleRow, 18> kModules = {{
    {-1, -1, everywhere(FunctionSet::NoneEntry)},
    {0, 19, {{{1, 10, FunctionSet::A}, {11, 20, FunctionSet::B}, kUnused}}},
    {1, 21, {{{1, 10, FunctionSet::C}, {11, 20, FunctionSet::D}, {21, 22, FunctionSet::I}}}},
    {2, 15, {{{1, 8, FunctionSet::C}, {9, 16, FunctionSet::D}, kUnused}}},
    {3, 19, everywhere(FunctionSet::NoneEntry)},
    {4, 31, everywhere(FunctionSet::NoneEntry)},
    {5, 1, everywhere(FunctionSet::NoneEntry)},
    {6, 3, everywhere(FunctionSet::NoneEntry)},
    {7, 3, everywhere(FunctionSet::NoneEntry)},
    {8, 39, everywhere(FunctionSet::G)},
    {9, 3, everywhere(FunctionSet::NoneEntry)},
    {10, 11, everywhere(FunctionSet::NoneEntry)},
    {11, 23, everywhere(FunctionSet::Nothing)},
    {12, 23, everywhere(FunctionSet::Nothing)},
    {13, 0, everywhere(FunctionSet::NoneEntry)},
    {14, 7, everywhere(FunctionSet::I)},
    {15, 7, everywhere(FunctionSet::V)},
    {16, 7, everywhere(FunctionSet::V)},
}};

constexpr int kTypeWithUnpairedCurrentChannels = 1;

const FunctionRow* functionRow(int functionIndex)
{
    const bool known = functionIndex >= 0 && functionIndex < static_cast<int>(kFunctions.size());
    return known ? &kFunctions[static_cast<std::size_t>(functionIndex)] : nullptr;
}

const RangeRow* rangeRow(int functionIndex)
{
    const FunctionRow* function = functionRow(functionIndex);
    if (!function) {
        return nullptr;
    }
    const auto row =
        std::find_if(kRanges.cbegin(), kRanges.cend(), [function](const RangeRow& candidate) {
            return candidate.family == function->ranges;
        });
    return row != kRanges.cend() ? &*row : nullptr;
}

const ModuleRow* moduleRow(int moduleType)
{
    const auto row =
        std::find_if(kModules.cbegin(), kModules.cend(), [moduleType](const ModuleRow& candidate) {
            return candidate.moduleType == moduleType;
        });
    return row != kModules.cend() ? &*row : nullptr;
}

FunctionSet functionSetAt(const ModuleRow& module, int position)
{
    const auto span =
        std::find_if(module.positions.cbegin(), module.positions.cend(),
                     [position](const PositionSpan& candidate) {
                         return candidate.first <= position && position <= candidate.last;
                     });
    return span != module.positions.cend() ? span->set : FunctionSet::Nothing;
}

QStringList namesOf(FunctionSet set)
{
    QStringList names;
    for (const FunctionSetRow& row : kFunctionSets) {
        if (row.set != set) {
            continue;
        }
        for (int span = 0; span < row.spanCount; ++span) {
            const IndexSpan indices = row.spans[static_cast<std::size_t>(span)];
            for (int index = indices.first; index <= indices.last; ++index) {
                names.append(CommFunc::tr(functionRow(index)->displayName));
            }
        }
    }
    return names;
}

bool isTemperature(int functionIndex)
{
    constexpr int kFirstThermocouple = 6;
    constexpr int kLastThermistor = 21;
    return functionIndex >= kFirstThermocouple && functionIndex <= kLastThermistor;
}

bool isSlot(int slot)
{
    return slot >= 1 && slot <= kSlotCount;
}

QMap<int, FuncCommand> makeFuncCommands()
{
    QMap<int, FuncCommand> commands;
    int index = 0;
    for (const FunctionRow& row : kFunctions) {
        commands.insert(index, {QString::fromLatin1(row.funcArgument),
                                QString::fromLatin1(row.typeCommand),
                                QString::fromLatin1(row.typeArgument)});
        ++index;
    }
    return commands;
}

} // namespace

const QMap<int, FuncCommand> funcCommands = makeFuncCommands();

CommFunc::CommFunc(QObject* parent)
    : QObject(parent)
{
    int index = 0;
    for (const FunctionRow& row : kFunctions) {
        m_functionIndices.insert(tr(row.displayName), index);
        ++index;
    }
    for (const ReportedName& reported : kReportedNames) {
        m_functionIndices.insert(QString::fromLatin1(reported.name), reported.functionIndex);
    }
}

QString CommFunc::moduleName(int moduleType) const
{
    constexpr int kWidth = 2;
    constexpr int kDecimal = 10;
    const QLatin1Char zero('0');
    return QStringLiteral("SCN40%1:%2-Channel Armature Multiplexer")
        .arg(moduleType, kWidth, kDecimal, zero)
        .arg(lastChannelIndex(moduleType) + 1, kWidth, kDecimal, zero);
}

int CommFunc::lastChannelIndex(int moduleType) const
{
    const ModuleRow* module = moduleRow(moduleType);
    return module ? module->lastChannelIndex : 0;
}

int CommFunc::moduleTypeFromModel(const QString& model) const
{
    static const QRegularExpression firstNumber(QStringLiteral("\\d+"));
    constexpr int kTypesPerSeries = 1000;
    bool fits = false;
    const int number = firstNumber.match(model).captured().toInt(&fits);
    return fits ? number % kTypesPerSeries : -1;
}

int CommFunc::bankSize(uchar slot) const
{
    if (!isSlot(slot) || !slotPresent[slot]) {
        return 0;
    }
    const int moduleType = slotModuleType[slot];
    const int half = lastChannelIndex(moduleType) / 2;
    // Its two current channels lie behind the paired ones.
    return moduleType == kTypeWithUnpairedCurrentChannels ? half : half + 1;
}

QString CommFunc::scpiHeader(int functionIndex) const
{
    const FunctionRow* row = functionRow(functionIndex);
    return row ? QString::fromLatin1(row->scpiHeader) : QStringLiteral("VOLT:DC");
}

QString CommFunc::baseUnit(int functionIndex) const
{
    const FunctionRow* row = functionRow(functionIndex);
    return row ? QString::fromUtf8(row->baseUnit) : QStringLiteral("Vdc");
}

uchar CommFunc::optionPanelKind(int functionIndex) const
{
    const FunctionRow* row = functionRow(functionIndex);
    return row ? row->panelKind : uchar{0};
}

bool CommFunc::isFourWire(int functionIndex) const
{
    constexpr std::array<int, 6> fourWireFunctions = {5, 15, 19, 20, 21, 25};
    return std::find(fourWireFunctions.cbegin(), fourWireFunctions.cend(), functionIndex) !=
           fourWireFunctions.cend();
}

int CommFunc::defaultUnitIndex(int functionIndex) const
{
    const FunctionRow* row = functionRow(functionIndex);
    return row ? row->defaultUnitRow : 0;
}

double CommFunc::rangeValue(int functionIndex, int rangeRowNumber) const
{
    const RangeRow* ranges = rangeRow(functionIndex);
    if (!ranges || rangeRowNumber < 0 || rangeRowNumber >= static_cast<int>(kDecades.size())) {
        return 0.0;
    }
    if (ranges->family == RangeFamily::Voltage && rangeRowNumber == kTopVoltageRow) {
        return kTopVoltage;
    }
    return ranges->base * kDecades[static_cast<std::size_t>(rangeRowNumber)];
}

int CommFunc::rangeRowForValue(int functionIndex, double value) const
{
    const RangeRow* ranges = rangeRow(functionIndex);
    if (!ranges) {
        return -1;
    }
    // The instrument writes the top range exactly.
    if (ranges->family == RangeFamily::Voltage && value == kTopVoltage) {
        return kTopVoltageRow;
    }
    constexpr double kRelativePrecision = 1e12;
    const double ratio = value / ranges->base;
    const auto decade = std::find_if(kDecades.cbegin(), kDecades.cend(), [ratio](double power) {
        return std::abs(ratio - power) * kRelativePrecision <= std::min(std::abs(ratio), power);
    });
    return decade != kDecades.cend() ? static_cast<int>(decade - kDecades.cbegin()) : -1;
}

QStringList CommFunc::functionList(int channel) const
{
    const auto number = scn::ChannelNumber::fromLabel(channel);
    const int slot = number.slot();
    const ModuleRow* module = isSlot(slot) ? moduleRow(slotModuleType[slot]) : nullptr;
    const FunctionSet set =
        module ? functionSetAt(*module, number.position()) : FunctionSet::NoneEntry;
    if (set != FunctionSet::NoneEntry) {
        return namesOf(set);
    }
    // "No module" is not a text of the user's language.
    const bool noModule = module && module->moduleType < 0;
    return {noModule ? QString::fromUtf8(kNone) : tr(kNone)};
}

QStringList CommFunc::rangeList(int functionIndex) const
{
    const RangeRow* ranges = rangeRow(functionIndex);
    if (!ranges) {
        return {};
    }
    QStringList texts{tr(kAutomaticRange)};
    for (const char* text : ranges->texts) {
        if (text) {
            texts.append(QString::fromUtf8(text));
        }
    }
    return texts;
}

QStringList CommFunc::temperatureUnitList(int functionIndex) const
{
    if (!isTemperature(functionIndex)) {
        return {};
    }
    return {QStringLiteral("C"), QStringLiteral("F"), QStringLiteral("K")};
}

QStringList CommFunc::scaleFunctionList(int functionIndex) const
{
    constexpr int kDcVoltage = 0;
    constexpr int kDcCurrent = 32;
    QStringList names{QStringLiteral("SCAL"), QStringLiteral("PCT")};
    if (functionIndex == kDcVoltage || functionIndex == kDcCurrent) {
        names << QStringLiteral("DBM") << QStringLiteral("DB");
    }
    return names;
}

QStringList CommFunc::unitList() const
{
    QStringList units{tr(kNone)};
    for (const char* unit : kUnits) {
        units.append(QString::fromUtf8(unit));
    }
    return units;
}

int CommFunc::functionIndex(const QString& name)
{
    // An unknown name is entered with index 0.
    return m_functionIndices[name];
}
