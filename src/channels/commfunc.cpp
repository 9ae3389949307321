#include "channels/commfunc.h"

#include "channels/measurementfunction.h"
#include "channels/moduletable.h"
#include "channels/rangefamily.h"
#include "channels/scalefunction.h"
#include "common/channelnumber.h"
#include "state/globals.h"

#include <QRegularExpression>

namespace {

using scn::FunctionList;
using scn::MeasurementFunction;
using scn::ScaleFunction;

constexpr char kNone[] = "无";
constexpr char kAutomaticRange[] = "自动";

/// The rows of scn::DisplayUnit but the first, "none".
constexpr const char* kUnits[] = {"°C",  "Vdc", "Vac", "Ohm", "Hz",  "s", "Adc",
                                  "Aac", "°F",  "K",   "dB",  "dBm", "W", "e"};

QStringList namesOf(FunctionList list)
{
    QStringList names;
    for (const MeasurementFunction& function : scn::measurementFunctions()) {
        if ((function.lists & bitOf(list)) != 0) {
            names.append(CommFunc::tr(function.displayName));
        }
    }
    return names;
}

bool isSlot(int slot)
{
    return slot >= 1 && slot <= kSlotCount;
}

QMap<int, FuncCommand> makeFuncCommands()
{
    QMap<int, FuncCommand> commands;
    int index = 0;
    for (const MeasurementFunction& function : scn::measurementFunctions()) {
        const char* typeCommand = function.sensor ? function.sensor->typeCommand : "";
        commands.insert(index,
                        {QString::fromLatin1(function.scpiName), QString::fromLatin1(typeCommand),
                         QString::fromLatin1(function.sensorType)});
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
    for (const MeasurementFunction& function : scn::measurementFunctions()) {
        m_functionIndices.insert(tr(function.displayName), index);
        if (ownsBareName(function)) {
            m_functionIndices.insert(QString::fromLatin1(function.scpiName), index);
        }
        ++index;
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
    const scn::ModuleRow* module = scn::moduleOfType(moduleType);
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
    const scn::ModuleRow* module = scn::moduleOfType(slotModuleType[slot]);
    return module ? module->bankSize() : 1;
}

QString CommFunc::scpiHeader(int functionIndex) const
{
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    return function ? QString::fromLatin1(function->header) : QStringLiteral("VOLT:DC");
}

QString CommFunc::baseUnit(int functionIndex) const
{
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    return function ? QString::fromUtf8(function->baseUnit) : QStringLiteral("Vdc");
}

uchar CommFunc::optionPanelKind(int functionIndex) const
{
    return static_cast<uchar>(scn::panelOf(functionIndex));
}

bool CommFunc::isFourWire(int functionIndex) const
{
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    return function && function->wiring == scn::Wiring::FourWire;
}

int CommFunc::defaultUnitIndex(int functionIndex) const
{
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    return function ? static_cast<int>(function->defaultUnit) : 0;
}

double CommFunc::rangeValue(int functionIndex, int rangeRow) const
{
    const scn::FixedRanges* ranges = scn::rangesOf(scn::functionAt(functionIndex));
    return ranges ? ranges->valueOf(rangeRow) : 0.0;
}

int CommFunc::rangeRowForValue(int functionIndex, double value) const
{
    const scn::FixedRanges* ranges = scn::rangesOf(scn::functionAt(functionIndex));
    return ranges ? ranges->rowOf(value) : -1;
}

QStringList CommFunc::functionList(int channel) const
{
    const auto number = scn::ChannelNumber::fromLabel(channel);
    const int slot = number.slot();
    const scn::ModuleRow* module = isSlot(slot) ? scn::moduleOfType(slotModuleType[slot]) : nullptr;
    const FunctionList list = module ? module->listAt(number.position()) : FunctionList::NoneEntry;
    if (list != FunctionList::NoneEntry) {
        return namesOf(list);
    }
    // The entry for "no module" is not translated.
    const bool noModule = module && module->moduleType == scn::kNoModuleType;
    return {noModule ? QString::fromUtf8(kNone) : tr(kNone)};
}

QStringList CommFunc::rangeList(int functionIndex) const
{
    const scn::FixedRanges* ranges = scn::rangesOf(scn::functionAt(functionIndex));
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
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    if (!function || !isTemperature(*function)) {
        return {};
    }
    return {QStringLiteral("C"), QStringLiteral("F"), QStringLiteral("K")};
}

QStringList CommFunc::scaleFunctionList(int functionIndex) const
{
    const MeasurementFunction* function = scn::functionAt(functionIndex);
    QStringList names{nameOf(ScaleFunction::Linear), nameOf(ScaleFunction::Percent)};
    if (function && function->decibels == scn::Decibels::Yes) {
        names << nameOf(ScaleFunction::Dbm) << nameOf(ScaleFunction::Db);
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
    // operator[] enters an unknown name with index 0.
    return m_functionIndices[name];
}
