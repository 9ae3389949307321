#include "channels/functionnames.h"

#include "channels/commfunc.h"
#include "channels/measurementfunction.h"

#include <algorithm>

namespace scn {

namespace {

using Row = const MeasurementFunction*;

/// The first function with this name; null if there is none.
Row functionOfName(const QString& scpiName)
{
    const FunctionTable table = measurementFunctions();
    Row const row =
        std::find_if(table.begin(), table.end(), [&scpiName](const MeasurementFunction& function) {
            return scpiName == QLatin1String(function.scpiName);
        });
    return row != table.end() ? row : nullptr;
}

bool isSensorType(const MeasurementFunction& function, const QString& reply)
{
    const QString type = QString::fromLatin1(function.sensorType);
    switch (function.sensor->reply) {
    case SensorReply::Letter:
        return reply == type;
    case SensorReply::Ohms:
        return reply.toDouble() == type.toDouble();
    }
    return false;
}

/// The function for a sensor type of a family; null for a type without a row.
Row functionOfSensor(const SensorFamily* family, const QString& type)
{
    const FunctionTable table = measurementFunctions();
    Row const row =
        std::find_if(table.begin(), table.end(), [&](const MeasurementFunction& function) {
            return function.sensor == family && isSensorType(function, type);
        });
    return row != table.end() ? row : nullptr;
}

QString displayName(Row function)
{
    return function ? CommFunc::tr(function->displayName) : QString();
}

/// Display name of a sensor whose type the instrument has reported.
QString sensorName(const SensorFamily* family, const QString& type)
{
    Row const function = functionOfSensor(family, type);
    if (function || !family->otherName) {
        return displayName(function);
    }
    return CommFunc::tr(QString::fromUtf8(family->otherName).arg(type).toUtf8().constData());
}

} // namespace

QString displayNameOfFunction(const QString& reply, int channel, const InstrumentQuery& ask)
{
    Row const function = functionOfName(reply);
    if (!function || !isTemperature(*function)) {
        return displayName(function);
    }
    // Queried for every temperature sensor, needed or not.
    const QString transducer = ask(QStringLiteral("TEMP:TRAN:TYPE? (@%1)").arg(channel));
    const SensorFamily* const family = function->sensor;
    if (!family) {
        return displayName(function);
    }
    if (transducer != QLatin1String(family->transducer)) {
        return displayName(functionOfSensor(family, QString::fromLatin1(family->fallbackType)));
    }
    return sensorName(family, ask(QString::fromLatin1(family->typeQuery).arg(channel)));
}

} // namespace scn
