#include "channels/functionnames.h"

#include "channels/commfunc.h"

#include <algorithm>
#include <array>

namespace {

/// How the reply to the sensor type query becomes a part of the display name.
enum class SensorText { None, Letter, KiloOhms };

/// One reply to FUNC? and how it gets its display name.
struct FunctionName
{
    const char* reply;

    /// The display name, or the one of a sensor that is not of the expected kind.
    const char* name;

    /// The transducer kind is asked for, needed or not.
    bool asksTransducer = false;

    /// The transducer kind that has sensor types, null where the kind is of no interest.
    const char* transducer = nullptr;

    const char* sensorQuery = nullptr;
    const char* sensorName = nullptr;
    SensorText sensorText = SensorText::None;
};

// The instrument reports "THER" for four-wire thermistors too, and takes their query in this spelling.
constexpr std::array<FunctionName, 23> kNames = {{
    {"VOLT", "直流电压"},
    {"VOLT:AC", "交流电压"},
    {"PER", "周期"},
    {"FREQ", "频率"},
    {"RES", "双线ohm"},
    {"FRES", "四线ohm"},
    {"TEMP:TC", "热电偶(类型B)", true, "TC", "TEMP:TRAN:TC:TYPE? (@%1)", "热电偶(类型%1)",
     SensorText::Letter},
    {"TEMP:RTD", "温度二线制RTD", true},
    {"TEMP:FRTD", "温度四线制RTD", true},
    {"TEMP:THER", "热敏电阻(5K)", true, "THER", "TEMP:TRAN:THER:TYPE? (@%1)", "热敏电阻(%1K)",
     SensorText::KiloOhms},
    {"TEMP:FTH", "4线制热敏电阻(5K)", true, "THER", "TEMP:TRAN:fth:TYPE? (@%1)",
     "4线制热敏电阻(%1K)", SensorText::KiloOhms},
    {"CAP", "电容"},
    {"DIOD", "二极管"},
    {"STR:DIR", "直接应变"},
    {"STR:FDIR", "4线直接应变"},
    {"STR:QUAR", "四分之一(弯曲)"},
    {"STR:HALF:BEND", "半桥(弯曲)"},
    {"STR:HALF:POIS", "半桥(柏松)"},
    {"STR:FULL:BEND", "全桥(弯曲)"},
    {"STR:FULL:POIS", "全桥(柏松)"},
    {"STR:FULL:BEND:POIS", "全桥(弯曲柏松)"},
    {"CURR", "直流电流"},
    {"CURR:AC", "交流电流"},
}};

struct ThermistorResistance
{
    int ohms;
    const char* kiloOhms;
};

constexpr std::array<ThermistorResistance, 3> kThermistors = {{
    {2252, "2.2"},
    {5000, "5"},
    {10000, "10"},
}};

/// The sensor's part of the name; empty for a thermistor that the catalogue does not have.
QString sensorText(SensorText kind, const QString& reply)
{
    if (kind == SensorText::Letter) {
        return reply;
    }
    const double ohms = reply.toDouble();
    const auto thermistor =
        std::find_if(kThermistors.cbegin(), kThermistors.cend(),
                     [ohms](const ThermistorResistance& row) { return ohms == row.ohms; });
    return thermistor != kThermistors.cend() ? QString::fromLatin1(thermistor->kiloOhms)
                                             : QString();
}

QString translated(const QString& name)
{
    return CommFunc::tr(name.toUtf8().constData());
}

} // namespace

QString displayNameOfFunction(const QString& reply, int channel, const InstrumentQuery& ask)
{
    const auto row =
        std::find_if(kNames.cbegin(), kNames.cend(), [&reply](const FunctionName& name) {
            return reply == QLatin1String(name.reply);
        });
    if (row == kNames.cend()) {
        return {};
    }
    const QString plainName = QString::fromUtf8(row->name);
    if (!row->asksTransducer) {
        return translated(plainName);
    }
    const QString transducer = ask(QStringLiteral("TEMP:TRAN:TYPE? (@%1)").arg(channel));
    if (!row->transducer || transducer != QLatin1String(row->transducer)) {
        return translated(plainName);
    }
    const QString sensor = ask(QString::fromLatin1(row->sensorQuery).arg(channel));
    const QString text = sensorText(row->sensorText, sensor);
    if (row->sensorText == SensorText::KiloOhms && text.isEmpty()) {
        return {};
    }
    return translated(QString::fromUtf8(row->sensorName).arg(text));
}
