#include "channels/optiongroup.h"

#include "channels/scalefunction.h"

namespace scn {

OptionGroups groupsOf(PanelKind kind)
{
    using G = OptionGroup;
    switch (kind) {
    case PanelKind::DcVoltage:
        return {G::Nplc, G::Delay, G::InputResistance};
    case PanelKind::AcAmplitude:
    case PanelKind::CycleTime:
        return {G::LowFrequency, G::Delay};
    case PanelKind::Resistance:
        return {G::Nplc, G::Delay, G::Offset};
    case PanelKind::Thermocouple:
        return {G::Nplc, G::Delay, G::AutoCheck, G::RefJunction};
    case PanelKind::Rtd:
        return {G::Nplc, G::Delay, G::SetReference, G::R0};
    case PanelKind::Thermistor:
        return {G::Nplc, G::Delay, G::SetReference};
    case PanelKind::DirectStrain:
        return {G::Nplc, G::Delay, G::GaugeFactor, G::StrainResistance};
    case PanelKind::Capacitance:
    case PanelKind::Diode:
        return {G::Delay};
    case PanelKind::BendingBridge:
        return {G::Nplc, G::Delay, G::GaugeFactor, G::DriveVoltage};
    case PanelKind::PoissonBridge:
        return {G::Nplc, G::Delay, G::GaugeFactor, G::DriveVoltage, G::PoissonRatio};
    case PanelKind::DcCurrent:
        return {G::Nplc, G::Delay};
    }
    return {};
}

OptionGroups groupsOfFunction(int functionIndex)
{
    const MeasurementFunction* function = functionAt(functionIndex);
    return function ? groupsOf(function->panel) : OptionGroups();
}

OptionGroups groupsOfScaleFunction(const QString& scaleFunction)
{
    switch (scaleFunctionOf(scaleFunction)) {
    case ScaleFunction::Percent:
        return {OptionGroup::PercentReference};
    case ScaleFunction::Dbm:
        return {OptionGroup::ReferenceResistance};
    case ScaleFunction::Db:
        return {OptionGroup::ReferenceResistance, OptionGroup::DbReference};
    case ScaleFunction::Linear:
        break;
    }
    return {};
}

} // namespace scn
